#include "scheduling/ReportRunner.h"

#include "core/Clock.h"
#include "core/State.h"
#include "core/Status.h"
#include "core/platform/EventLog.h"
#include "data/Connection.h"
#include "definitions/DefinitionStores.h"
#include "report/OutputTree.h"
#include "report/ReportRun.h"
#include "report/TablesOfContents.h"

namespace {

bool inProgress = false;

using Reports = std::vector<std::shared_ptr<clsReportDef>>;

bool isDue(const clsReportDef &report)
{
    bool due = false;
    for (const auto &schedule : report.ReportSchedules) {
        if (const auto definition = gScheduleDefs.find(schedule->ScheduleID))
            due = IsReportDue(*schedule, *definition) || due;
    }
    return due;
}

/// False when the user refused a prompt, which cancels the run.
bool askForRange(const clsReportDef &report, RunHost *host)
{
    const auto chart = gChartDefs.find(report.ChartID);
    if (!host || !chart || chart->ChartDuration != CustomRange)
        return true;
    return host->askCustomRange(*chart);
}

Reports chooseReports(const QStringList &reportIds, RunChoice choice, RunHost *host)
{
    Reports chosen;
    for (const QString &id : reportIds) {
        const auto report = gReportDefs.find(id);
        if (!report || (choice == RunChoice::Due && !isDue(*report)))
            continue;
        if (!askForRange(*report, host)) {
            CancelRequested = true;
            return {};
        }
        chosen.push_back(report);
    }
    return chosen;
}

void stampLastRun(clsReportDef &report)
{
    for (const auto &schedule : report.ReportSchedules)
        schedule->LastRunDate = now();
    SaveReportDefs();
}

void produce(Reports chosen, RunResult &result)
{
    const DatabaseRun oneState; // all reports show the same samples
    SaveChartDefs();
    QString errorText;
    if (!GenerateMasterTOC(errorText))
        ++result.failed;
    CopyTemplateFiles();
    // The master table of contents has read the report definitions afresh.
    std::erase_if(chosen, [](std::shared_ptr<clsReportDef> &report) {
        report = gReportDefs.find(report->ReportID);
        return !report;
    });
    announceSamples(chosen);
    for (const auto &report : chosen) {
        if (CancelRequested)
            return;
        clsChartOutputBuilder builder;
        if (!GenerateReportTOC(*report, errorText, builder)) {
            ++result.failed;
            continue;
        }
        const ReportOutcome outcome = GenerateReport(*report);
        result.chartsWithoutImage += static_cast<int>(outcome.chartErrors.size());
        if (outcome.failed())
            ++result.failed;
        else if (!CancelRequested)
            stampLastRun(*report);
    }
}

void finish(const RunResult &result, RunHost *host)
{
    if (result.cancelled) {
        if (gAutoMode)
            LogEvent(runEvent, EventInformation,
                     QStringLiteral("Report AutoGraph execution cancelled."));
        else if (host)
            host->showMessage(QStringLiteral("Report Execution"),
                              QStringLiteral("Report execution cancelled."));
    }
    CloseDatabase();
    if (host && !gAutoMode && !result.cancelled && result.failed == 0) {
        QString page = QLatin1String("file://") + outputFolder() + QLatin1String("REPORTS.HTM");
        host->openInBrowser(page.replace(u'\\', u'/'));
    }
    if (result.cancelled)
        ShowStatus(QStringLiteral("Report run cancelled by user."));
}

} // namespace

bool runInProgress()
{
    return inProgress;
}

RunResult runReports(const QStringList &reportIds, RunChoice choice, RunHost *host)
{
    RunResult result;
    if (inProgress)
        return result;
    inProgress = true;
    CancelRequested = false;
    ShowStatus(QStringLiteral("Starting report build."));
    LoadReportDefs();
    LoadChartDefs();
    LoadScheduleDefs();
    const Reports chosen = chooseReports(reportIds, choice, host);
    result.reports = static_cast<int>(chosen.size());
    if (!CancelRequested)
        produce(chosen, result);
    result.cancelled = CancelRequested;
    finish(result, host);
    inProgress = false;
    return result;
}
