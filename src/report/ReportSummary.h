#pragma once

#include "report/DeviceReport.h"

#include <QString>

#include <vector>

/// The counts of one device over the report's period.
struct DeviceCounts
{
    QString name;
    QString folder;       ///< the device's folder below the report's
    bool hasData = false; ///< false: the summary query had no row for it
    qint64 successes = 0;
    qint64 failures = 0;
};

/// Ends a report: the chart of success rates by device, the report page, the summary page and
/// "repsum.csv", all in the report's folder. `devices` come in the order of the pages: the reverse
/// of the report's. Throws Error.
void GenerateReportSummary(const ReportContext &context, const std::vector<DeviceCounts> &devices);
