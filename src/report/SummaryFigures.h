#pragma once

#include "report/StateRow.h"
#include "report/Templates.h"

/// The totals of a report: how many devices and tests, and how many of them failed.
struct SummaryFigures
{
    int devices = 0;
    int troubled = 0; ///< devices with failed tests
    int silent = 0;   ///< devices without tests
    qint64 successes = 0;
    qint64 failures = 0;

    void addDevice(qint64 deviceSuccesses, qint64 deviceFailures);

    StateRow total() const { return {QString(), successes, failures}; }

    /// "total.rate" ("n/a" without tests), "total.tests", "total.failed", "total.devices",
    /// "total.troubled" and "total.silent".
    Placeholders placeholders() const;
};
