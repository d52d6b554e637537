#include "scheduling/ReportRunner.h"

#include "base/Clock.h"
#include "base/Files.h"
#include "config/ExitStatus.h"
#include "config/Program.h"
#include "report/ReportRun.h"

namespace {

ReportResult resultOf(const ReportOutcome &outcome)
{
    if (outcome.failed())
        return ReportResult::Failed;
    if (program().CancelRequested)
        return ReportResult::Cancelled;
    if (!outcome.chartErrors.isEmpty())
        return ReportResult::Partial;
    return outcome.samples == 0 ? ReportResult::NoData : ReportResult::Ok;
}

/// The execution of one plan.
class RunExecution
{
public:
    RunExecution(RunPlan plan, const Observer &watcher,
                 std::function<void(const ReportRecord &)> onReport)
        : m_plan(std::move(plan))
        , m_onReport(std::move(onReport))
        , m_run(m_plan.record)
        , m_log(watcher, m_plan.attendance(),
                m_plan.attendance() == Attendance::Unattended
                    ? troublesOfToday(m_plan.history.runs())
                    : QStringList())
    {}

    RunResult execute()
    {
        for (const QString &error : m_plan.errors)
            noteError(error);
        if (m_plan.isProducing)
            produceSafely();
        conclude();
        m_result.cancelled = program().CancelRequested;
        if (m_result.cancelled)
            m_log.unattendedEvent(EventInformation,
                                  QStringLiteral("Report AutoGraph execution cancelled."));
        m_result.error = m_run.error;
        m_result.reports = static_cast<int>(m_run.reports.size());
        for (const ReportRecord &report : m_run.reports) {
            m_result.failedReports += report.result == ReportResult::Failed ? 1 : 0;
            m_result.chartsWithoutImage += report.chartsWithoutImage;
        }
        return std::move(m_result);
    }

private:
    /// Something outside of the reports went wrong: that makes the run a failed one. Once is enough
    /// for what each report would meet again.
    void noteError(const QString &text)
    {
        if (m_run.error.contains(text))
            return;
        m_run.error += m_run.error.isEmpty() ? text : QLatin1String("; ") + text;
        m_log.trouble(text);
        m_log.unattendedEvent(EventError, text);
    }

    /// The same for what the status lines have not said yet.
    void showAndNote(const QString &what, const Error &error)
    {
        const QString text = what + errorTail(error);
        m_log.status(text);
        noteError(text);
    }

    /// Puts on record what happened so far.
    void record()
    {
        if (m_plan.isPdfAlone)
            return;
        try {
            m_plan.history.save(m_run);
        } catch (const Error &error) {
            showAndNote(QStringLiteral("Error saving run history "), error);
        }
    }

    /// `produce`, whatever it meets.
    void produceSafely()
    {
        try {
            produce();
        } catch (const std::exception &exception) {
            showAndNote(QStringLiteral("Error running reports "), errorOf(exception));
        }
    }

    void produce()
    {
        RunSession session(m_plan.settings, m_plan.database, m_log);
        if (m_plan.isPdfAlone)
            openQuietly(session);
        else
            prepareOutput(session);
        completeDevices(session);
        produceReports(session);
        const MonitoringDatabase *database = session.database.get();
        const QStringList warnings = database ? database->warnings() : QStringList();
        for (const QString &warning : warnings)
            m_log.status(QLatin1String("Warning: ") + warning);
    }

    static void openQuietly(RunSession &session)
    {
        try {
            session.openDatabase();
        } catch (const ShownError &) {
            // The report meets the same error, and names it.
        }
    }

    void prepareOutput(RunSession &session)
    {
        try {
            GenerateMasterTOC(contents(), session);
        } catch (const ShownError &error) {
            noteError(error.description);
        }
        for (const QString &error : CopyTemplateFiles(session))
            noteError(error);
        checkImageFormat(session);
    }

    std::vector<ContentsEntry> contents() const
    {
        return contentsEntries(m_plan.contents, OutputTree(m_plan.settings), m_plan.history);
    }

    /// Finds the devices that rules choose, and puts those of all reports into their order, by
    /// which their samples are read.
    void completeDevices(RunSession &session)
    {
        const bool hasRules =
            std::any_of(m_plan.reports.begin(), m_plan.reports.end(),
                        [](const PlannedReport &report) { return !report.rules.empty(); });
        if (!session.database.get() && !hasRules)
            return;
        try {
            MonitoringDatabase *database = session.database.get();
            m_result.inventory = (database ? *database : session.openDatabase()).inventory();
            for (PlannedReport &report : m_plan.reports) {
                report.applyRules(*m_result.inventory);
                report.sortDevices(*m_result.inventory);
            }
        } catch (const Error &) {
            // The report that meets the same error names it.
        }
    }

    /// Each report in turn; what happened to one is on record before the next begins.
    void produceReports(RunSession &session)
    {
        for (const PlannedReport &report : m_plan.reports)
            session.progress.all += report.itemCount();
        SampleReader samples(m_plan.reports);
        int before = 0; // data items of the reports before this one
        for (size_t i = 0; i < m_plan.reports.size(); ++i) {
            ReportRecord &entry = m_run.reports[i];
            if (program().CancelRequested) {
                entry.result = ReportResult::Cancelled;
                continue;
            }
            entry.start = currentInstant();
            record();
            tell(entry);
            session.progress.report = entry.title;
            session.progress.device.clear();
            session.progress.item.clear();
            session.showProgress();
            produceReport(m_plan.reports[i], samples, session, entry);
            tell(entry);
            if (program().CancelRequested)
                continue; // the bar stays where the run ended
            // Items of devices that the database does not know count as done, too.
            session.progress.done = before += m_plan.reports[i].itemCount();
            session.showProgress();
        }
    }

    void tell(const ReportRecord &entry) const
    {
        if (m_onReport)
            m_onReport(entry);
    }

    /// Produces one report, and fills its record.
    void produceReport(const PlannedReport &report, SampleReader &samples, RunSession &session,
                       ReportRecord &entry)
    {
        const bool hadPages = fileExists(session.tree.reportPage(report.id));
        ReportOutcome outcome;
        try {
            if (!m_plan.isPdfAlone)
                GenerateReportTOC(report, session);
            outcome = GenerateReport(report, samples, session);
        } catch (const ShownError &error) {
            outcome.errorText = error.description;
        }
        entry.end = currentInstant();
        entry.result = resultOf(outcome);
        entry.charts = outcome.charts;
        entry.samples = outcome.samples;
        entry.error = outcome.errorText;
        entry.chartsWithoutImage = static_cast<int>(outcome.chartErrors.size());
        entry.chartErrors = outcome.chartErrors;
        if (outcome.figures)
            entry.figures = outcome.figures;
        const bool endedEarly =
            entry.result == ReportResult::Failed || entry.result == ReportResult::Cancelled;
        entry.mixedPages = endedEarly && hadPages && (outcome.devicePages > 0 || entry.mixedPages);
        reportTrouble(entry);
        if (endedEarly || m_plan.isPdfAlone)
            return;
        archive(report, session);
        stampLastRun(report.id);
    }

    void archive(const PlannedReport &report, const RunSession &session)
    {
        if (report.keep == 0)
            return;
        try {
            ReportArchive(session.tree.reportFolder(report.id)).keep(report.keep);
        } catch (const Error &error) {
            showAndNote(QStringLiteral("Error archiving report '%1' ").arg(report.title), error);
        }
    }

    /// What went wrong with a report, for those who were not there.
    void reportTrouble(const ReportRecord &entry)
    {
        constexpr qsizetype maxCharts = 20;
        const QString trouble = troubleOf(entry);
        if (!trouble.isEmpty())
            m_log.unattendedEvent(EventError, trouble);
        if (entry.result == ReportResult::Failed)
            m_log.trouble(trouble);
        const QString which = QStringLiteral("Report '%1': ").arg(entry.title);
        for (const QString &error : entry.chartErrors.mid(0, maxCharts))
            m_log.trouble(which + QLatin1String("no chart ") + error);
        if (const qsizetype more = entry.chartErrors.size() - maxCharts; more > 0)
            m_log.trouble(which + QStringLiteral("%1 more charts are missing").arg(more));
        if (entry.mixedPages) {
            const QString mixed = which + QLatin1String("new and old pages are mixed");
            m_log.status(mixed);
            m_log.trouble(mixed);
        }
    }

    /// Without its new date on file the report would count as not run.
    void stampLastRun(const QString &reportId)
    {
        const QDateTime date = now();
        m_result.runDates.emplace_back(reportId, date);
        QStringList scheduleIds;
        for (ListedReport &listed : m_plan.contents) {
            if (listed.entry.id != reportId)
                continue;
            for (ScheduledReport::Entry &entry : listed.schedules.entries) {
                entry.use.LastRunDate = date;
                scheduleIds.append(entry.use.ScheduleID);
            }
        }
        m_log.status(QStringLiteral("Saving report definition."));
        try {
            definitions().saveLastRunDates(reportId, scheduleIds, date);
        } catch (const Error &error) {
            const QString text =
                QLatin1String("Error saving report selections ") + errorTail(error);
            m_log.status(text);
            noteError(QLatin1String("The time of the last run was not saved: ") + text);
        }
    }

    /// Puts the run on record, and what became of its reports into the master table of contents.
    void conclude()
    {
        m_run.end = currentInstant();
        if (m_plan.isPdfAlone)
            return;
        record();
        m_plan.history.prune();
        if (m_run.reports.empty())
            return;
        try {
            RefreshMasterTOC(contents(), m_plan.settings, m_log);
        } catch (const ShownError &error) {
            noteError(error.description);
            record();
        }
    }

    RunPlan m_plan;
    std::function<void(const ReportRecord &)> m_onReport;
    RunRecord &m_run; ///< of the plan
    RunLog m_log;
    RunResult m_result;
};

} // namespace

int RunResult::exitStatus() const
{
    if (cancelled)
        return ExitStatus::Cancelled;
    return failed() ? ExitStatus::ReportFailed : ExitStatus::Done;
}

RunResult executeRun(RunPlan plan, const Observer &watcher,
                     std::function<void(const ReportRecord &)> onReport)
{
    try {
        return RunExecution(std::move(plan), watcher, std::move(onReport)).execute();
    } catch (const std::exception &exception) { // no memory, not even for the record
        RunResult result;
        result.error = QLatin1String("Error running reports ") + errorTail(errorOf(exception));
        return result;
    }
}

void finishRun(const RunResult &result)
{
    for (const auto &[id, date] : result.runDates) {
        const auto report = definitions().gReportDefs.find(id);
        if (!report)
            continue;
        for (const auto &schedule : report->ReportSchedules)
            schedule->LastRunDate = date;
        // Editors show the names of devices that the database no longer knows.
        for (const auto &device : report->ReportDevices) {
            const DeviceRow *row =
                result.inventory ? result.inventory->device(device->MUID) : nullptr;
            if (row)
                device->DisplayName = row->name;
        }
    }
    if (result.cancelled)
        ShowStatus(QStringLiteral("Report run cancelled by user."));
}

RunResult runReports(const RunOrder &order, RunHost *host)
{
    const RunResult result = executeRun(planRun(order, host), observer());
    finishRun(result);
    return result;
}
