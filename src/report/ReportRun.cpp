#include "report/ReportRun.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "charts/ChartStyle.h"
#include "charts/ImageFile.h"
#include "config/Program.h"
#include "definitions/Dates.h"
#include "definitions/TemplateFile.h"
#include "report/DeviceJob.h"
#include "report/OutputTree.h"
#include "report/PdfReport.h"
#include "report/ReportSummary.h"
#include "report/RequiredTemplates.h"

#include <QFile>

#include <algorithm>
#include <deque>

namespace {

/// One report's run, step by step. `step` is the last element of an error's text.
class ReportRun
{
public:
    ReportRun(const PlannedReport &plan, SampleReader &samples, RunSession &session,
              ReportOutcome &outcome)
        : m_plan(plan)
        , m_samples(samples)
        , m_session(session)
        , m_outcome(outcome)
    {}

    QString step;

    void run()
    {
        show(QLatin1String("Generating Report: [") + m_plan.title + u']');
        show(QStringLiteral("Loading chart definitions.")); // the plan holds them
        step = QStringLiteral("Setting Chart Def.");
        if (m_plan.error)
            throw *m_plan.error;
        clsChartOutputBuilder builder;
        if (!isPdfAlone())
            builder.LoadTOCTemplates(m_session.settings, m_session.log);
        if (!openDatabase())
            return;
        if (!isPdfAlone())
            requireTemplates(m_plan, *m_database->inventory(), builder, m_session.settings);
        if (!m_plan.knowsAllDevices)
            throw Error(DatabaseError, QStringLiteral("The database could not be asked which "
                                                      "devices the report's rules find"));
        if (m_plan.devices.empty())
            throw Error(DatabaseError,
                        m_plan.rules.empty()
                            ? QStringLiteral("The report has no device to ask for")
                            : QStringLiteral("The report's rules find no device to ask for"));
        if (!showExtent()) {
            show(QLatin1String("No device data available for report ") + m_plan.title);
            if (isPdfAlone() && !program().CancelRequested)
                throw Error(ItemNotFound,
                            QStringLiteral("The database knows none of the report's devices"));
            return;
        }
        if (!fontsAvailable())
            throw Error(FileNotFound, QString::fromUtf16(noFontsMessage));
        warmUpFonts();
        const ReportContext context(m_plan, builder, m_session.settings);
        openPdf(context);
        ReportFacts facts;
        try {
            runDevices(context, facts);
        } catch (...) {
            // What is left of a report that ended early is nobody's any more.
            m_session.pool.cancel();
            m_session.pool.waitForDone();
            throw;
        }
        if (program().CancelRequested)
            return;
        // Pages list the devices in the reverse of the report's order.
        std::reverse(facts.devices.begin(), facts.devices.end());
        facts.figures.period = m_plan.service.period();
        if (m_plan.precedingService)
            facts.figures.precedingPeriod = m_plan.precedingService->period();
        summarize(facts.figures, m_plan.service, m_plan.precedingService);
        if (!isPdfAlone())
            GenerateReportSummary(context, facts, m_session, m_outcome);
        finishPdf(context, facts.figures);
    }

private:
    bool isPdfAlone() const { return m_plan.pdf == PlannedReport::Pdf::Alone; }

    void openPdf(const ReportContext &context)
    {
        if (m_plan.pdf == PlannedReport::Pdf::None)
            return;
        step = QStringLiteral("Writing PDF");
        m_pdfPath = isPdfAlone() ? m_plan.pdfPath : context.folder + pdfName;
        withPdf([&] { m_pdf = std::make_unique<PdfReport>(context, m_pdfPath); });
    }

    /// Goes on with the PDF. What goes wrong with it does not keep the pages from being made.
    template <typename Work>
    void withPdf(Work work)
    {
        if (m_pdfError)
            return;
        try {
            work();
        } catch (const std::exception &exception) {
            m_pdfError = errorOf(exception);
            m_pdf.reset();
            if (isPdfAlone())
                throw;
        }
    }

    /// Nobody shall take the file of an earlier run for one that belongs to the new pages.
    static void removeEarlierPdf(const ReportContext &context)
    {
        QFile::remove(exactPath(context.folder + pdfName));
    }

    void finishPdf(const ReportContext &context, const ReportFigures &figures)
    {
        if (m_plan.pdf == PlannedReport::Pdf::None) {
            removeEarlierPdf(context);
            return;
        }
        show(QLatin1String("Writing PDF: ") + m_pdfPath);
        withPdf([&] { m_pdf->finish(figures); });
        if (!m_pdfError)
            return;
        removeEarlierPdf(context);
        m_outcome.chartErrors.append(pdfName + u' ' + errorTail(*m_pdfError));
        show(QStringLiteral("Error writing PDF '%1' ").arg(m_pdfPath) + errorTail(*m_pdfError));
    }

    void show(const QString &line) const { m_session.log.status(line); }

    bool openDatabase()
    {
        try {
            m_database = &m_session.openDatabase();
            return true;
        } catch (const ShownError &error) {
            m_outcome.errorText = error.description;
            show(QLatin1String("Unable to generate report - database failure: ") +
                 error.description);
            return false;
        }
    }

    /// Shows how much the database holds. False when it knows none of the report's devices, and
    /// after a cancel.
    bool showExtent()
    {
        show(QStringLiteral("Calculating DBLength"));
        const SampleReader::Range units = m_samples.unitsOf(m_plan);
        m_samples.prepare(*m_database, units.first); // which counts the samples as well
        const qint64 sampleCount = m_database->sampleCount();
        if (program().CancelRequested)
            return false;
        m_inventory = m_database->inventory();
        show(QStringLiteral("Evaluating "));
        show(QStringLiteral("Total Devices: %1").arg(m_inventory->devices().size()));
        show(QStringLiteral("Total Fields: %1").arg(m_inventory->items().size()));
        show(QLatin1String("Total Values: ") + groupedNumber(static_cast<double>(sampleCount), 0));
        show(QStringLiteral("Loading selected devices list..."));
        for (size_t unit = units.first; unit < units.last; ++unit) {
            if (m_inventory->device(m_samples.device(unit).muid))
                m_known.push_back(unit); // the others are no longer in the database
        }
        return !m_known.empty() && !program().CancelRequested;
    }

    QString folderOf(size_t known) const
    {
        return known < m_known.size() ? folderSafe(m_samples.device(m_known[known]).muid)
                                      : QString();
    }

    void runDevices(const ReportContext &context, ReportFacts &facts)
    {
        // Enough jobs under way to keep the pool busy, few enough to bound what they hold.
        const size_t maxJobs = 2 * m_session.pool.size() + 2;
        std::deque<std::shared_ptr<DeviceJob>> jobs;
        for (size_t i = 0; i < m_known.size() && !program().CancelRequested; ++i) {
            const std::shared_ptr<DeviceJob> job = newJob(context, i);
            if (program().CancelRequested) // the samples may not be complete
                break;
            job->start(m_session.pool);
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
        show(QLatin1String("Summarizing ") + row->name);
        m_session.progress.device = row->name;
        m_session.progress.item.clear();
        m_session.showProgress();
        show(QStringLiteral("Generating Device Report: [%1][%2]").arg(m_plan.title, row->name));
        show(QStringLiteral("Creating graph data..."));
        std::unique_ptr<DeviceQuestions> questions = m_samples.take(*m_database, m_known[known]);
        for (const QString &item : questions->itemNames()) {
            for (const QString &line :
                 {QLatin1String("Generating Chart: [") + item + u']',
                  QStringLiteral("Submitting query..."), QStringLiteral("Calculating..."),
                  QStringLiteral("Generating series..."), QStringLiteral("Generating output...")})
                show(line);
        }
        show(QStringLiteral("Calculating Device Summary..."));
        const QString folder = context.folder + folderOf(known) + pathSeparator;
        return std::make_shared<DeviceJob>(
            context, std::move(questions), folder,
            Neighbours{known > 0 ? folderOf(known - 1) : QString(), folderOf(known + 1)},
            m_session);
    }

    void finishDevice(DeviceJob &job, ReportFacts &facts)
    {
        constexpr std::chrono::milliseconds betweenLooks(10);
        const int before = m_session.progress.done;
        while (!job.waitUntilDone(betweenLooks)) {
            if (const int done = before + job.itemsDone(); done != m_session.progress.done) {
                m_session.progress.done = done;
                m_session.showProgress();
            }
        }
        DeviceResult result = job.result();
        for (const auto &[path, error] : result.chartErrors) {
            m_outcome.chartErrors.append(path + u' ' + errorTail(error));
            show(QStringLiteral("Error generating chart '%1' ").arg(path) + errorTail(error));
        }
        m_outcome.samples += result.samples;
        m_outcome.charts += result.charts;
        m_outcome.devicePages += isPdfAlone() ? 0 : 1;
        m_session.progress.done = before + result.charts;
        m_session.showProgress();
        if (m_pdf)
            withPdf([&] { m_pdf->addDevice(result.figures, result.paper); });
        facts.add(std::move(result));
    }

    const PlannedReport &m_plan;
    SampleReader &m_samples;
    RunSession &m_session;
    ReportOutcome &m_outcome;
    MonitoringDatabase *m_database = nullptr; ///< once it is open
    std::shared_ptr<const Inventory> m_inventory;
    std::vector<size_t> m_known; ///< units of the devices that the database knows
    QString m_pdfPath;
    std::unique_ptr<PdfReport> m_pdf; ///< while it is written
    std::optional<Error> m_pdfError;  ///< why it is not
};

} // namespace

ReportOutcome GenerateReport(const PlannedReport &plan, SampleReader &samples, RunSession &session)
{
    ReportOutcome outcome;
    ReportRun run(plan, samples, session, outcome);
    try {
        run.run();
    } catch (const std::exception &exception) {
        const Error error = errorOf(exception);
        outcome.errorText = QLatin1String("Error Generating Report ") + errorTail(error) +
                            QLatin1String(" - ") + run.step;
        session.log.status(outcome.errorText);
    }
    return outcome;
}

void checkImageFormat(const RunSession &session)
{
    if (isImageFormat(session.settings.IMG_Format))
        return;
    const QString text = QStringLiteral("Charts are written as PNG: IMG_Format '%1' is not PNG, "
                                        "JPEG or BMP")
                             .arg(session.settings.IMG_Format);
    session.log.status(text);
    session.log.unattendedEvent(EventWarning, text);
}

QStringList CopyTemplateFiles(const RunSession &session)
{
    QStringList errors;
    const QString source = NormalizeFolder(session.settings.PTH_Config());
    const QString target = session.tree.folder();
    for (const QString &name : session.settings.CopyFileList) {
        session.log.status(QLatin1String("Copy template: ") + name);
        try {
            if (const QString fault = companionFault(name, source); !fault.isEmpty())
                throw Error(fileExists(source + name) ? PermissionDenied : FileNotFound, fault);
            copyFile(source + name, target + name);
        } catch (const Error &error) {
            errors.append(QStringLiteral("Error copying template '%1' ").arg(name) +
                          errorTail(error));
            session.log.status(errors.last());
        }
    }
    return errors;
}
