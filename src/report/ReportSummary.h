#pragma once

#include "report/DeviceCounts.h"
#include "report/DeviceReport.h"

#include <vector>

/// Ends a report: the chart of success rates by device, the report page, the summary page and
/// "repsum.csv", all in the report's folder. `devices` come in the order of the pages: the reverse
/// of the report's. Throws Error.
void GenerateReportSummary(const ReportContext &context, const std::vector<DeviceCounts> &devices);
