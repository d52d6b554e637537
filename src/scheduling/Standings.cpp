#include "scheduling/Standings.h"

#include "base/Clock.h"
#include "base/Files.h"
#include "config/Program.h"
#include "config/clsGrapherConfig.h"
#include "definitions/Definitions.h"

namespace {

/// The note on a run that did not make all pages.
QString noteOf(const ReportRecord &record, bool hasPages)
{
    QString end;
    if (record.result == ReportResult::Failed)
        end = QStringLiteral("The last run failed");
    else if (record.result == ReportResult::Cancelled)
        end = QStringLiteral("The last run was cancelled");
    else if (record.result == ReportResult::Unfinished)
        end = QStringLiteral("The last run was broken off");
    else
        return QString();
    if (!hasPages)
        return end + QLatin1String(": there are no finished pages yet.");
    if (record.mixedPages)
        return end + QLatin1String(": new and old pages are mixed.");
    if (record.result == ReportResult::Unfinished)
        return end + QLatin1String(": new and old pages may be mixed.");
    return end + QLatin1String(": the pages are those of an earlier run.");
}

ReportStanding standingOf(const ScheduledReport &report, const OutputTree &tree,
                          const std::vector<RunRecord> &runs)
{
    ReportStanding standing;
    standing.hasPages = fileExists(tree.reportPage(report.id));
    standing.archive = ReportArchive(tree.reportFolder(report.id)).runs();
    const LatestRun last = latestRun(report, runs, standing.hasPages);
    if (last.time.isValid())
        standing.lastRun = standingTimeText(last.time);
    if (last.record) {
        standing.lastResult = resultText(last.record->result);
        standing.lastNote = noteOf(*last.record, standing.hasPages);
        if (standing.hasPages)
            standing.figures = last.record->figures;
    }
    if (const QDateTime next = dueState(report).next; next.isValid())
        standing.nextDue = next <= now() ? QStringLiteral("now") : standingTimeText(next);
    return standing;
}

} // namespace

std::vector<ListedReport> listedReports()
{
    std::vector<ListedReport> listed;
    for (const auto &report : definitions().gReportDefs) {
        ContentsEntry entry{report->ReportID, report->ReportTitle, {}, {}, {}};
        if (const auto chart = definitions().gChartDefs.find(report->ChartID))
            entry.chartTitle = chart->ChartTitle;
        for (const auto &device : report->ReportDevices)
            entry.muids.append(device->MUID);
        listed.push_back({entry, scheduledReport(*report)});
    }
    return listed;
}

std::vector<ContentsEntry> contentsEntries(const std::vector<ListedReport> &reports,
                                           const OutputTree &tree, const RunHistory &history)
{
    const std::vector<RunRecord> runs = history.runs();
    std::vector<ContentsEntry> entries;
    for (const ListedReport &report : reports) {
        entries.push_back(report.entry);
        entries.back().standing = standingOf(report.schedules, tree, runs);
    }
    return entries;
}

void refreshReportList()
{
    const OutputTree tree(gConfig());
    if (!fileExists(tree.contentsPage()))
        return;
    try {
        RefreshMasterTOC(contentsEntries(listedReports(), tree, runHistory()), gConfig(),
                         RunLog(observer()));
    } catch (const ShownError &) { // that is all: the next run writes the page anew
    }
}
