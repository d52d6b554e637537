#pragma once

#include "report/DeviceJob.h"
#include "report/ReportRun.h"

#include <vector>

/// What a report comes to: some hundred bytes a device, and one series.
struct ReportFacts
{
    std::vector<DeviceCounts> devices;
    bool hasCounted = false;         ///< some device has state items that count
    DataSeries tests;                ///< of all of those, by time
    std::optional<Error> testsError; ///< why tests are missing from them

    ReportFigures figures;

    void add(DeviceResult result);
};

/// Ends a report: the chart of success rates by device, the report page, the summary page and
/// "repsum.csv", "outages.csv" and "report.json", all in the report's folder. The devices come in
/// the order of the pages: the reverse of the report's. Throws Error.
void GenerateReportSummary(const ReportContext &context, const ReportFacts &facts,
                           RunSession &session, ReportOutcome &outcome);
