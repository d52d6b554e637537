#include "scheduling/ReportRunner.h"

#include "core/Clock.h"
#include "core/Files.h"
#include "core/State.h"
#include "core/Status.h"
#include "core/Trouble.h"
#include "core/platform/EventLog.h"
#include "data/Connection.h"
#include "definitions/DefinitionStores.h"
#include "report/OutputTree.h"
#include "report/ReportRun.h"
#include "report/TablesOfContents.h"
#include "scheduling/DueState.h"
#include "scheduling/RunHistory.h"
#include "scheduling/Standings.h"

namespace {

bool inProgress = false;

/// A report taken into a run.
struct Chosen
{
    std::shared_ptr<clsReportDef> report;
    QDateTime dueSince; ///< invalid: it was not due
};

void warnOfFutureRuns(const clsReportDef &report)
{
    for (const auto &entry : report.ReportSchedules) {
        if (!ranInFuture(*entry))
            continue;
        const QString text = QStringLiteral("Warning: the report '%1': %2")
                                 .arg(report.ReportTitle, futureRunText(*entry));
        ShowStatus(text);
        if (gAutoMode)
            LogEvent(runEvent, EventWarning, text);
    }
}

std::vector<Chosen> chooseReports(const QStringList &reportIds, RunChoice choice)
{
    std::vector<Chosen> chosen;
    for (const QString &id : reportIds) {
        const auto report = gReportDefs.find(id);
        if (!report)
            continue;
        const DueState state = dueState(*report);
        warnOfFutureRuns(*report);
        if (choice == RunChoice::All || state.due)
            chosen.push_back({report, state.due ? state.next : QDateTime()});
    }
    return chosen;
}

/// Lets the user set the range of each chart that has a custom one, once for all reports that share
/// it. A refusal cancels the run. Returns those charts.
std::vector<std::shared_ptr<clsGraphDef>> askForRanges(const std::vector<Chosen> &chosen,
                                                       RunHost *host)
{
    std::vector<std::shared_ptr<clsGraphDef>> asked;
    if (!host)
        return asked;
    for (const auto &chart : gChartDefs) {
        if (chart->ChartDuration != CustomRange)
            continue;
        QStringList titles;
        for (const Chosen &entry : chosen) {
            if (gChartDefs.find(entry.report->ChartID) == chart)
                titles.append(entry.report->ReportTitle);
        }
        if (titles.isEmpty())
            continue;
        if (!host->askCustomRange(*chart, titles)) {
            CancelRequested = true;
            break;
        }
        asked.push_back(chart);
    }
    return asked;
}

/// Something outside of the reports went wrong: that makes the run a failed one. Once is enough for
/// what each report would meet again.
void noteError(RunRecord &run, const QString &text)
{
    if (run.error.contains(text))
        return;
    run.error += run.error.isEmpty() ? text : QLatin1String("; ") + text;
    tellTrouble(text);
    if (gAutoMode)
        logTrouble(text);
}

/// Puts on record what happened so far.
void record(RunRecord &run)
{
    if (const std::optional<Error> error = saveRun(run))
        noteError(run, QLatin1String("Error saving run history ") + errorTail(*error));
}

void noteUnread(const QStringList &errors, RunRecord &run)
{
    for (const QString &error : errors) {
        const QString text = QLatin1String("Error reading definitions: ") + error;
        ShowStatus(text);
        noteError(run, text);
    }
}

/// False when nothing can be read of a definition file and nobody wants the run all the same. A
/// single definition that cannot be read is named; the others are good.
bool acceptDefinitions(RunHost *host, RunRecord &run)
{
    noteUnread(definitionErrors(), run);
    const QStringList errors = definitionFileErrors();
    if (errors.isEmpty())
        return true;
    if (!host) {
        noteUnread(errors, run);
        return false;
    }
    if (!host->acceptErrors(errors))
        CancelRequested = true;
    return !CancelRequested;
}

/// Without its new date on file the report would count as not run.
void stampLastRun(clsReportDef &report, RunRecord &run)
{
    for (const auto &schedule : report.ReportSchedules)
        schedule->LastRunDate = now();
    if (const std::optional<Error> error = saveLastRunDates(report))
        noteError(run, QLatin1String("The time of the last run was not saved: Error saving report "
                                     "selections ") +
                           errorTail(*error));
}

ReportResult resultOf(const ReportOutcome &outcome)
{
    if (outcome.failed())
        return ReportResult::Failed;
    if (CancelRequested)
        return ReportResult::Cancelled;
    if (!outcome.chartErrors.isEmpty())
        return ReportResult::Partial;
    return outcome.samples == 0 ? ReportResult::NoData : ReportResult::Ok;
}

/// What went wrong with a report, for those who were not there.
void tellOutcome(const ReportRecord &record)
{
    constexpr qsizetype mostCharts = 20;
    const QString trouble = troubleOf(record);
    if (gAutoMode && !trouble.isEmpty())
        logTrouble(trouble);
    if (record.result == ReportResult::Failed)
        tellTrouble(trouble);
    const QString which = QStringLiteral("Report '%1': ").arg(record.title);
    for (const QString &error : record.chartErrors.mid(0, mostCharts))
        tellTrouble(which + QLatin1String("no chart ") + error);
    if (const qsizetype more = record.chartErrors.size() - mostCharts; more > 0)
        tellTrouble(which + QStringLiteral("%1 more charts are missing").arg(more));
    if (record.mixedPages) {
        const QString mixed = which + QLatin1String("new and old pages are mixed");
        ShowStatus(mixed);
        tellTrouble(mixed);
    }
}

/// Produces one report, and fills its record in the run's.
void produceReport(clsReportDef &report, PlannedReport &plan, SampleReader &samples, RunRecord &run,
                   ReportRecord &record, Progress &progress, WorkerPool &pool)
{
    const bool hadPages = fileExists(reportPage(plan.id));
    ReportOutcome outcome;
    if (GenerateReportTOC(plan, outcome.errorText))
        outcome = GenerateReport(plan, samples, progress, pool);
    record.end = currentInstant();
    record.result = resultOf(outcome);
    record.charts = outcome.charts;
    record.samples = outcome.samples;
    record.error = outcome.errorText;
    record.chartsWithoutImage = static_cast<int>(outcome.chartErrors.size());
    record.chartErrors = outcome.chartErrors;
    const bool endedEarly =
        record.result == ReportResult::Failed || record.result == ReportResult::Cancelled;
    record.mixedPages = endedEarly && hadPages && (outcome.devicePages > 0 || record.mixedPages);
    tellOutcome(record);
    if (!endedEarly)
        stampLastRun(report, run);
}

/// Each report in turn; what happened to one is on record before the next begins.
void produceReports(const std::vector<Chosen> &chosen, std::vector<PlannedReport> &plans,
                    RunRecord &run)
{
    Progress progress;
    const std::vector<RunRecord> past = readRuns();
    for (const Chosen &entry : chosen) {
        ReportRecord record;
        const ReportRecord *last = lastRecord(past, entry.report->ReportID);
        record.mixedPages = last && last->mixedPages; // until all are made anew
        record.id = entry.report->ReportID;
        record.title = entry.report->ReportTitle;
        record.dueSince = entry.dueSince;
        run.reports.push_back(record);
    }
    for (const PlannedReport &plan : plans)
        progress.all += plan.itemCount();
    SampleReader samples(plans);
    WorkerPool pool; // its threads know their fonts once they have drawn a chart
    int before = 0;  // data items of the reports before this one
    for (size_t i = 0; i < chosen.size(); ++i) {
        ReportRecord &entry = run.reports[i];
        if (CancelRequested) {
            entry.result = ReportResult::Cancelled;
            continue;
        }
        entry.start = currentInstant();
        record(run);
        progress.report = entry.title;
        progress.device.clear();
        progress.item.clear();
        showProgress(progress);
        produceReport(*chosen[i].report, plans[i], samples, run, entry, progress, pool);
        if (CancelRequested)
            continue; // the bar stays where the run ended
        // Items of devices that the database does not know count as done, too.
        progress.done = before += plans[i].itemCount();
        showProgress(progress);
    }
}

void showDatabaseWarnings()
{
    const QStringList warnings = gConnection ? gConnection->warnings() : QStringList();
    for (const QString &warning : warnings)
        ShowStatus(QLatin1String("Warning: ") + warning);
}

/// Keeps the periods that the user gave for the next run; this one has them in its plans.
void savePeriods(const std::vector<std::shared_ptr<clsGraphDef>> &asked, RunRecord &run)
{
    if (const std::optional<Error> error = saveChartPeriods(asked))
        noteError(run, QLatin1String("Error saving chart definitions ") + errorTail(*error));
}

/// What the reports need, as it stands now.
std::vector<PlannedReport> plansOf(const std::vector<Chosen> &chosen)
{
    const qint64 runInstant = currentInstant();
    std::vector<PlannedReport> plans;
    for (const Chosen &entry : chosen) {
        const auto chart = gChartDefs.find(entry.report->ChartID);
        plans.push_back(plannedReport(*entry.report, chart.get(), runInstant));
    }
    return plans;
}

/// Puts the devices of all reports into their order, by which their samples are read, and keeps
/// their names, which editors show of a device that the database no longer knows.
void sortDevices(const std::vector<Chosen> &chosen, std::vector<PlannedReport> &plans)
{
    if (!gConnection)
        return;
    try {
        const std::shared_ptr<const Inventory> inventory = gConnection->inventory();
        for (PlannedReport &plan : plans)
            plan.sortDevices(*inventory);
        for (const Chosen &entry : chosen) {
            for (const auto &device : entry.report->ReportDevices) {
                if (const DeviceRow *row = inventory->device(device->MUID))
                    device->DisplayName = row->name;
            }
        }
    } catch (const Error &) {
        // The report that meets the same error names it.
    }
}

void produce(const std::vector<Chosen> &chosen, RunRecord &run)
{
    const DatabaseRun oneState; // all reports show the same devices and items
    std::vector<PlannedReport> plans = plansOf(chosen);
    QString errorText;
    if (!GenerateMasterTOC(errorText, reportStandings()))
        noteError(run, errorText);
    CopyTemplateFiles();
    checkImageFormat();
    sortDevices(chosen, plans);
    produceReports(chosen, plans, run);
    showDatabaseWarnings();
}

/// `produce`, whatever it meets.
void produceSafely(const std::vector<Chosen> &chosen, RunRecord &run)
{
    try {
        produce(chosen, run);
    } catch (const std::exception &exception) {
        const QString text =
            QLatin1String("Error running reports ") + errorTail(errorOf(exception));
        ShowStatus(text);
        noteError(run, text);
    }
}

/// Puts the run on record, and what became of its reports into the master table of contents.
void conclude(RunRecord &run)
{
    run.end = currentInstant();
    record(run);
    pruneRuns();
    QString errorText;
    if (run.reports.empty() || RefreshMasterTOC(errorText, reportStandings()))
        return;
    noteError(run, errorText);
    record(run);
}

RunResult resultOf(const RunRecord &run)
{
    RunResult result;
    result.cancelled = CancelRequested;
    result.reports = static_cast<int>(run.reports.size());
    result.error = run.error;
    for (const ReportRecord &report : run.reports) {
        result.failedReports += report.result == ReportResult::Failed ? 1 : 0;
        result.chartsWithoutImage += report.chartsWithoutImage;
    }
    return result;
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
    const bool isProduced = result.failedReports == 0 && result.error.isEmpty();
    if (host && !gAutoMode && !result.cancelled && isProduced) {
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
    if (inProgress)
        return {};
    inProgress = true;
    CancelRequested = false;
    RunRecord run;
    run.start = currentInstant();
    run.mode = gAutoMode ? scheduledMode
               : host    ? QStringLiteral("window")
                         : QStringLiteral("on request");
    const LoggedToday logged(gAutoMode ? troublesOfToday(readRuns()) : QStringList());
    ShowStatus(QStringLiteral("Starting report build."));
    LoadReportDefs();
    LoadChartDefs();
    LoadScheduleDefs();
    if (acceptDefinitions(host, run)) {
        const std::vector<Chosen> chosen = chooseReports(reportIds, choice);
        const auto asked = askForRanges(chosen, host);
        if (!CancelRequested) {
            savePeriods(asked, run);
            produceSafely(chosen, run);
        }
    }
    conclude(run);
    const RunResult result = resultOf(run);
    finish(result, host);
    inProgress = false;
    return result;
}
