#include "scheduling/Standings.h"

#include "core/Clock.h"
#include "core/Files.h"
#include "core/GrapherConfig.h"
#include "core/State.h"
#include "definitions/DefinitionStores.h"
#include "report/OutputTree.h"
#include "scheduling/DueState.h"
#include "scheduling/RunHistory.h"

namespace {

/// What a reader of the pages has to know about a run that did not make them all anew.
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

ReportStanding standingOf(const clsReportDef &report, const std::vector<RunRecord> &runs)
{
    ReportStanding standing;
    const LatestRun last = latestRun(report, runs);
    if (last.time.isValid())
        standing.lastRun = standingTimeText(last.time);
    if (last.record) {
        standing.lastResult = resultText(last.record->result);
        standing.lastNote = noteOf(*last.record, fileExists(reportPage(report.ReportID)));
    }
    if (const QDateTime next = dueState(report).next; next.isValid())
        standing.nextDue = next <= now() ? QStringLiteral("now") : standingTimeText(next);
    return standing;
}

} // namespace

ReportStandings reportStandings()
{
    const std::vector<RunRecord> runs = readRuns();
    ReportStandings standings;
    for (const auto &report : gReportDefs)
        standings.insert(report->ReportID.toLower(), standingOf(*report, runs));
    return standings;
}

bool refreshReportList()
{
    QString errorText; // the status line has it
    return !fileExists(outputFolder() + gConfig->TOU_TOC) ||
           RefreshMasterTOC(errorText, reportStandings());
}
