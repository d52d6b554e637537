#include "scheduling/RunPlan.h"

#include "base/Clock.h"
#include "config/Program.h"
#include "platform/EventLog.h"

namespace {

QString modeText(RunMode mode)
{
    switch (mode) {
    case RunMode::Scheduled:
        return scheduledMode;
    case RunMode::OnRequest:
        return QStringLiteral("on request");
    case RunMode::Window:
        break;
    }
    return QStringLiteral("window");
}

/// A report taken into a run.
struct Chosen
{
    std::shared_ptr<clsReportDef> report;
    QDateTime dueSince; ///< invalid: it was not due
};

void warnOfFutureRuns(const clsReportDef &report, RunMode mode)
{
    for (const auto &entry : report.ReportSchedules) {
        if (!ranInFuture(*entry))
            continue;
        const QString text = QStringLiteral("Warning: the report '%1': %2")
                                 .arg(report.ReportTitle, futureRunText(*entry));
        ShowStatus(text);
        if (mode == RunMode::Scheduled)
            LogEvent(runEvent, EventWarning, text);
    }
}

std::vector<Chosen> chooseReports(const RunOrder &order)
{
    std::vector<Chosen> chosen;
    for (const QString &id : order.reportIds) {
        const auto report = definitions().gReportDefs.find(id);
        if (!report)
            continue;
        const DueState state = dueState(scheduledReport(*report));
        warnOfFutureRuns(*report, order.mode);
        if (order.choice == RunChoice::All || state.due)
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
    for (const auto &chart : definitions().gChartDefs) {
        if (chart->ChartDuration != CustomRange)
            continue;
        QStringList titles;
        for (const Chosen &entry : chosen) {
            if (definitions().gChartDefs.find(entry.report->ChartID) == chart)
                titles.append(entry.report->ReportTitle);
        }
        if (titles.isEmpty())
            continue;
        if (!host->askCustomRange(*chart, titles)) {
            program().CancelRequested = true;
            break;
        }
        asked.push_back(chart);
    }
    return asked;
}

void noteUnread(const QStringList &errors, RunPlan &plan)
{
    for (const QString &error : errors) {
        plan.errors.append(QLatin1String("Error reading definitions: ") + error);
        ShowStatus(plan.errors.last());
    }
}

/// False when nothing can be read of a definition file and nobody wants the run all the same. A
/// single definition that cannot be read is named; the others are good.
bool acceptDefinitions(RunHost *host, RunPlan &plan)
{
    noteUnread(definitions().errors(), plan);
    const QStringList errors = definitions().fileErrors();
    if (errors.isEmpty())
        return true;
    if (!host) {
        noteUnread(errors, plan);
        return false;
    }
    if (!host->acceptErrors(errors))
        program().CancelRequested = true;
    return !program().CancelRequested;
}

/// The record of a report before it is produced: what it takes over from the last run.
ReportRecord newRecord(const Chosen &chosen, const std::vector<RunRecord> &past)
{
    ReportRecord record;
    record.id = chosen.report->ReportID;
    record.title = chosen.report->ReportTitle;
    record.dueSince = chosen.dueSince;
    if (const ReportRecord *last = lastRecord(past, record.id)) { // until all pages are made anew
        record.mixedPages = last->mixedPages;
        record.figures = last->figures;
    }
    return record;
}

void addReports(const std::vector<Chosen> &chosen, const QString &pdfPath, RunPlan &plan)
{
    using Pdf = PlannedReport::Pdf;
    const qint64 runInstant = currentInstant();
    const std::vector<RunRecord> past = plan.history.runs();
    for (const Chosen &entry : chosen) {
        const auto chart = definitions().gChartDefs.find(entry.report->ChartID);
        plan.reports.push_back(plannedReport(*entry.report, chart.get(), runInstant));
        PlannedReport &planned = plan.reports.back();
        if (plan.settings.PdfReports)
            planned.pdf = Pdf::Beside;
        if (plan.isPdfAlone) {
            planned.pdf = Pdf::Alone;
            planned.pdfPath = pdfPath;
        }
        plan.record.reports.push_back(newRecord(entry, past));
    }
    plan.contents = listedReports();
}

} // namespace

Attendance RunPlan::attendance() const
{
    return record.mode == scheduledMode ? Attendance::Unattended : Attendance::Attended;
}

RunPlan planRun(const RunOrder &order, RunHost *host)
{
    program().CancelRequested = false;
    RunPlan plan{{}, {}, {}, gConfig(), databaseSource(), runHistory(), {}};
    plan.record.start = currentInstant();
    plan.record.mode = modeText(order.mode);
    plan.isPdfAlone = !order.pdfPath.isEmpty();
    ShowStatus(QStringLiteral("Starting report build."));
    definitions().LoadReportDefs();
    definitions().LoadChartDefs();
    definitions().LoadScheduleDefs();
    if (!acceptDefinitions(host, plan))
        return plan;
    const std::vector<Chosen> chosen = chooseReports(order);
    const auto asked = askForRanges(chosen, host);
    if (program().CancelRequested)
        return plan;
    // The next run proposes them; this one has them in its plans.
    try {
        definitions().saveChartPeriods(asked);
    } catch (const Error &error) {
        plan.errors.append(QLatin1String("Error saving chart definitions ") + errorTail(error));
    }
    try {
        addReports(chosen, order.pdfPath, plan);
        plan.isProducing = true;
    } catch (const std::exception &exception) {
        plan.errors.append(QLatin1String("Error running reports ") + errorTail(errorOf(exception)));
        ShowStatus(plan.errors.last());
        plan.record.reports.clear();
    }
    return plan;
}
