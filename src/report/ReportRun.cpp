#include "report/ReportRun.h"

#include "charts/ChartStyle.h"
#include "charts/ImageFile.h"
#include "core/Error.h"
#include "core/Files.h"
#include "core/GrapherConfig.h"
#include "core/Numbers.h"
#include "core/Paths.h"
#include "core/State.h"
#include "core/Trouble.h"
#include "core/platform/EventLog.h"
#include "data/Connection.h"
#include "definitions/Dates.h"
#include "definitions/TemplateFile.h"
#include "report/DeviceJob.h"
#include "report/OutputTree.h"
#include "report/ReportSummary.h"
#include "report/RequiredTemplates.h"

#include <algorithm>
#include <deque>

namespace {

/// One report's run, step by step. `step` is the last element of an error's text.
class ReportRun
{
public:
    ReportRun(const PlannedReport &plan, SampleReader &samples, ReportOutcome &outcome,
              Progress &progress, WorkerPool &pool)
        : m_plan(plan)
        , m_samples(samples)
        , m_outcome(outcome)
        , m_progress(progress)
        , m_pool(pool)
    {}

    QString step;

    void run()
    {
        ShowStatus(QLatin1String("Generating Report: [") + m_plan.title + u']');
        ShowStatus(QStringLiteral("Loading chart definitions.")); // the plan holds them
        step = QStringLiteral("Setting Chart Def.");
        if (m_plan.error)
            throw *m_plan.error;
        clsChartOutputBuilder builder;
        builder.LoadTOCTemplates();
        if (!OpenDatabase(m_outcome.errorText)) {
            ShowStatus(QLatin1String("Unable to generate report - database failure: ") +
                       m_outcome.errorText);
            return;
        }
        requireTemplates(m_plan, *gConnection->inventory(), builder);
        if (m_plan.devices.empty())
            throw Error(DatabaseError, QStringLiteral("The report has no device to ask for"));
        if (!showExtent()) {
            ShowStatus(QLatin1String("No device data available for report ") + m_plan.title);
            return;
        }
        if (!fontsAvailable())
            throw Error(FileNotFound, QString::fromUtf16(noFontsMessage));
        warmUpFonts();
        const ReportContext context(m_plan, builder);
        ReportFacts facts;
        try {
            runDevices(context, facts);
        } catch (...) {
            // What is left of a report that ended early is nobody's any more.
            m_pool.cancel();
            m_pool.waitForDone();
            throw;
        }
        if (CancelRequested)
            return;
        // Pages list the devices in the reverse of the report's order.
        std::reverse(facts.devices.begin(), facts.devices.end());
        GenerateReportSummary(context, facts, m_pool, m_outcome);
    }

private:
    /// Shows how much the database holds. False when it knows none of the report's devices, and
    /// after a cancel.
    bool showExtent()
    {
        ShowStatus(QStringLiteral("Calculating DBLength"));
        const SampleReader::Range units = m_samples.unitsOf(m_plan);
        m_samples.prepare(*gConnection, units.first); // which counts the samples as well
        const qint64 sampleCount = gConnection->sampleCount();
        if (CancelRequested)
            return false;
        m_inventory = gConnection->inventory();
        ShowStatus(QStringLiteral("Evaluating "));
        ShowStatus(QStringLiteral("Total Devices: %1").arg(m_inventory->devices().size()));
        ShowStatus(QStringLiteral("Total Fields: %1").arg(m_inventory->items().size()));
        ShowStatus(QLatin1String("Total Values: ") +
                   groupedNumber(static_cast<double>(sampleCount), 0));
        ShowStatus(QStringLiteral("Loading selected devices list..."));
        for (size_t unit = units.first; unit < units.last; ++unit) {
            if (m_inventory->device(m_samples.device(unit).muid))
                m_known.push_back(unit); // the others are no longer in the database
        }
        return !m_known.empty() && !CancelRequested;
    }

    QString folderOf(size_t known) const
    {
        return known < m_known.size() ? folderSafe(m_samples.device(m_known[known]).muid)
                                      : QString();
    }

    void runDevices(const ReportContext &context, ReportFacts &facts)
    {
        // Enough jobs under way to keep the pool busy, few enough to bound what they hold.
        const size_t maxJobs = 2 * m_pool.size() + 2;
        std::deque<std::shared_ptr<DeviceJob>> jobs;
        for (size_t i = 0; i < m_known.size() && !CancelRequested; ++i) {
            const std::shared_ptr<DeviceJob> job = newJob(context, i);
            if (CancelRequested) // the samples may not be complete
                break;
            job->start(m_pool);
            jobs.push_back(job);
            if (jobs.size() < maxJobs)
                continue;
            finishDevice(*jobs.front(), facts);
            jobs.pop_front();
        }
        // A cancel finishes what is under way.
        for (const std::shared_ptr<DeviceJob> &job : jobs)
            finishDevice(*job, facts);
    }

    std::shared_ptr<DeviceJob> newJob(const ReportContext &context, size_t known)
    {
        const DeviceRow *row = m_inventory->device(m_samples.device(m_known[known]).muid);
        ShowStatus(QLatin1String("Summarizing ") + row->name);
        m_progress.device = row->name;
        m_progress.item.clear();
        showProgress(m_progress);
        ShowStatus(
            QStringLiteral("Generating Device Report: [%1][%2]").arg(m_plan.title, row->name));
        ShowStatus(QStringLiteral("Creating graph data..."));
        std::unique_ptr<DeviceQuestions> questions = m_samples.take(*gConnection, m_known[known]);
        for (const QString &item : questions->itemNames()) {
            for (const QString &line :
                 {QLatin1String("Generating Chart: [") + item + u']',
                  QStringLiteral("Submitting query..."), QStringLiteral("Calculating..."),
                  QStringLiteral("Generating series..."), QStringLiteral("Generating output...")})
                ShowStatus(line);
        }
        ShowStatus(QStringLiteral("Calculating Device Summary..."));
        const QString folder = context.folder + folderOf(known) + pathSeparator;
        return std::make_shared<DeviceJob>(
            context, std::move(questions), folder,
            Neighbours{known > 0 ? folderOf(known - 1) : QString(), folderOf(known + 1)});
    }

    void finishDevice(DeviceJob &job, ReportFacts &facts)
    {
        constexpr std::chrono::milliseconds betweenLooks(10);
        const int before = m_progress.done;
        while (!job.waitUntilDone(betweenLooks)) {
            if (const int done = before + job.itemsDone(); done != m_progress.done) {
                m_progress.done = done;
                showProgress(m_progress);
            }
            yieldToUser();
        }
        DeviceResult result = job.result();
        for (const auto &[path, error] : result.chartErrors) {
            m_outcome.chartErrors.append(path + u' ' + errorTail(error));
            ShowStatus(QStringLiteral("Error generating chart '%1' ").arg(path) + errorTail(error));
        }
        m_outcome.samples += result.samples;
        m_outcome.charts += result.charts;
        ++m_outcome.devicePages;
        m_progress.done = before + result.charts;
        showProgress(m_progress);
        facts.add(std::move(result));
    }

    const PlannedReport &m_plan;
    SampleReader &m_samples;
    ReportOutcome &m_outcome;
    Progress &m_progress;
    WorkerPool &m_pool;
    std::shared_ptr<const Inventory> m_inventory;
    std::vector<size_t> m_known; ///< units of the devices that the database knows
};

} // namespace

ReportOutcome GenerateReport(const PlannedReport &plan, SampleReader &samples, Progress &progress,
                             WorkerPool &pool)
{
    ReportOutcome outcome;
    ReportRun run(plan, samples, outcome, progress, pool);
    try {
        run.run();
    } catch (const std::exception &exception) {
        const Error error = errorOf(exception);
        outcome.errorNumber = error.number;
        outcome.errorText = QLatin1String("Error Generating Report ") + errorTail(error) +
                            QLatin1String(" - ") + run.step;
        ShowStatus(outcome.errorText);
    }
    return outcome;
}

void checkImageFormat()
{
    if (isImageFormat(gConfig->IMG_Format))
        return;
    const QString text = QStringLiteral("Charts are written as PNG: IMG_Format '%1' is not PNG, "
                                        "JPEG or BMP")
                             .arg(gConfig->IMG_Format);
    ShowStatus(text);
    if (gAutoMode)
        LogEvent(runEvent, EventWarning, text);
}

void CopyTemplateFiles()
{
    const QString source = NormalizeFolder(gConfig->PTH_Config());
    const QString target = outputFolder();
    for (const QString &name : gConfig->CopyFileList) {
        ShowStatus(QLatin1String("Copy template: ") + name);
        try {
            if (const QString fault = companionFault(name); !fault.isEmpty())
                throw Error(fileExists(source + name) ? PermissionDenied : FileNotFound, fault);
            copyFile(source + name, target + name);
        } catch (const Error &error) {
            const QString text =
                QStringLiteral("Error copying template '%1' ").arg(name) + errorTail(error);
            ShowStatus(text);
            tellTrouble(text);
            if (gAutoMode)
                LogEvent(runEvent, EventWarning, text);
        }
    }
}
