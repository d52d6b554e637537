#pragma once

#include "report/Templates.h"

#include <QString>

#include <optional>

/// File name of a report's figures by device, in the report's folder.
inline const QString summaryCsvName = QStringLiteral("repsum.csv");

/// What a report comes to: how many devices and tests, and how many of them had trouble.
struct SummaryFigures
{
    int devices = 0;
    int troubled = 0; ///< devices with failed tests
    int silent = 0;   ///< devices without tests
    double successes = 0;
    double failures = 0;

    void addDevice(double deviceSuccesses, double deviceFailures);

    /// "total.rate" ("n/a" without tests), "total.tests", "total.failed", "total.devices",
    /// "total.troubled" and "total.silent".
    Placeholders placeholders() const;
};

/// The figures of a report that ran before, from its summary CSV file. Nothing when there is no
/// such file, or none of that form.
std::optional<SummaryFigures> readSummaryFigures(const QString &csvPath);
