#pragma once

#include "report/TablesOfContents.h"
#include "scheduling/DueState.h"

/// The master table of contents beside the definitions and the run history.

/// A report definition with all that its entry there is made of. A value.
struct ListedReport
{
    ContentsEntry entry; ///< but for its standing
    ScheduledReport schedules;
};

/// Those of gReportDefs, in their order. Main thread only.
std::vector<ListedReport> listedReports();

/// Their entries as things stand now. Any thread.
std::vector<ContentsEntry> contentsEntries(const std::vector<ListedReport> &reports,
                                           const OutputTree &tree, const RunHistory &history);

/// Brings the page in step with gReportDefs, when there is one already; for changes outside of a
/// run. A failure is shown as a status line. Main thread only.
void refreshReportList();
