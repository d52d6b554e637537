#include "report/ReportSummary.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "charts/ChartPainter.h"
#include "definitions/Dates.h"
#include "report/Archive.h"
#include "report/Csv.h"
#include "report/MachineFiles.h"
#include "report/OutputTree.h"
#include "report/ReportTimeline.h"
#include "report/StateRow.h"

#include <QFile>

#include <algorithm>

namespace {

const QString csvName = QStringLiteral("repsum.csv");
const QString imageName = QStringLiteral("DEVSUM.PNG");
const QString overallName = QStringLiteral("OVERALL.PNG");
const QString timelineName = QStringLiteral("TIMELINE.PNG");
const QString citedTransparentImage = QLatin1String("../") + transparentImage;

void putTransparentImage(const ReportContext &context, const QString &name)
{
    copyFile(NormalizeFolder(context.settings.PTH_Config()) + transparentImage,
             context.folder + name);
}

/// An image of the summary.
struct SummaryImage
{
    QString name;
    QSize size;
    PendingOutcome outcome = {}; ///< not valid: nothing was drawn
    Outcome problem = {};

    QString cited() const { return problem || !outcome.valid() ? citedTransparentImage : name; }
};

void draw(SummaryImage &image, const ReportContext &context, Chart chart, WorkerPool &pool)
{
    image.size = chartSize(chart);
    image.outcome =
        pool.submit(std::move(chart), context.folder + image.name, context.settings.IMG_Format);
}

/// Draws the summary image, or uses the transparent one when there is nothing to draw.
SummaryImage DrawDeviceSummaryImage(const ReportContext &context, const ReportFacts &facts,
                                    bool noData, WorkerPool &pool)
{
    SummaryImage image{imageName, context.imageSize()};
    if (noData) {
        putTransparentImage(context, imageName);
        return image;
    }
    DeviceRateChart chart;
    chart.frame = context.chartFrame(QStringLiteral("Success Rate by Device"),
                                     QLatin1String("Basis: ") + context.plan.chart.ChartTitle);
    chart.valueAxisTitle = QStringLiteral("Total Tests Performed");
    chart.categoryAxisTitle = QStringLiteral("Device");
    for (const DeviceCounts &device : facts.devices)
        chart.devices.push_back({device.name, device.successes, device.failures, device.hasData});
    draw(image, context, std::move(chart), pool);
    return image;
}

/// Draws the success rate of all state items that count over the report's period; without any the
/// image is the transparent one.
SummaryImage drawOverallImage(const ReportContext &context, const ReportFacts &facts,
                              const StateStatistics &tests, WorkerPool &pool)
{
    SummaryImage image{overallName, context.imageSize()};
    if (!facts.hasCounted)
        putTransparentImage(context, overallName);
    else if (facts.testsError)
        image.problem = facts.testsError;
    else
        draw(image, context,
             StateChart{context.chartFrame(
                            context.plan.chart.ChartTitle,
                            QStringLiteral("All global state items of the report's devices")),
                        facts.tests, tests},
             pool);
    return image;
}

/// Draws when each device was up; without state items that count there is no such image.
SummaryImage drawTimeline(const ReportContext &context, const ReportFacts &facts, WorkerPool &pool)
{
    SummaryImage image{timelineName, context.imageSize()};
    if (facts.hasCounted)
        draw(image, context, timelineChart(context, facts.figures), pool);
    else
        QFile::remove(exactPath(context.folder + timelineName)); // that of an earlier run
    return image;
}

PageValue notDrawnText(const Error &problem)
{
    return PageValue::plain(
        QStringLiteral("This chart could not be drawn: %1").arg(problem.description));
}

/// The key figures of the overall image; empty if no state item counts.
PageValue overallAlternative(const ReportFacts &facts, const StateStatistics &tests,
                             const Outcome &problem)
{
    if (problem)
        return notDrawnText(*problem);
    if (!facts.hasCounted)
        return QString();
    const StateRow total{{}, tests.successes, tests.failures};
    if (total.tests() == 0)
        return QStringLiteral("All global state items: no data in this period");
    return QStringLiteral(
               "All global state items by time: success rate %1 %, %2 of %3 tests failed")
        .arg(total.rateText())
        .arg(total.failures)
        .arg(total.tests());
}

StateRow rowOf(const DeviceCounts &counts)
{
    return {counts.name, counts.successes, counts.failures,
            linkText(counts.folder) + u'/' + devicePageName};
}

/// The rows of the devices with failed tests, the lowest success rate first.
PageValue worstRows(const std::vector<DeviceCounts> &devices, const QString &rowTemplate)
{
    constexpr size_t atAGlance = 10;
    std::vector<StateRow> rows;
    for (const DeviceCounts &device : devices) {
        if (device.failures > 0)
            rows.push_back(rowOf(device));
    }
    std::stable_sort(rows.begin(), rows.end(),
                     [](const StateRow &a, const StateRow &b) { return a.rate() < b.rate(); });
    PageText text;
    for (size_t i = 0; i < std::min(atAGlance, rows.size()); ++i)
        text.write(rows[i].filled(rowTemplate));
    return PageValue::html(text.text());
}

/// The key figures of the summary image as its alternative text; of a missing one the reason.
PageValue summaryAlternative(const StateRow &total, size_t devices, const Outcome &problem)
{
    if (problem)
        return notDrawnText(*problem);
    QString text = QStringLiteral("Success rate by device, %1 %2: ")
                       .arg(devices)
                       .arg(devices == 1 ? QLatin1String("device") : QLatin1String("devices"));
    if (total.tests() == 0)
        text += QLatin1String("no data in this period");
    else
        text += QStringLiteral("success rate %1 %, %2 of %3 tests failed")
                    .arg(total.rateText())
                    .arg(total.failures)
                    .arg(total.tests());
    return text;
}

/// Waits for an image of the summary; a failed one is replaced by the transparent one.
void finishImage(SummaryImage &image, const ReportContext &context, const RunLog &log,
                 ReportOutcome &outcome)
{
    if (image.outcome.valid())
        image.problem = image.outcome.get();
    if (!image.problem)
        return;
    outcome.chartErrors.append(image.name + u' ' + errorTail(*image.problem));
    log.status(QStringLiteral("Error generating chart '%1' ").arg(context.folder + image.name) +
               errorTail(*image.problem));
    putTransparentImage(context, image.name);
}

/// The note that charts are missing; empty when none is.
QString noteText(const ReportOutcome &outcome)
{
    const qsizetype missing = outcome.chartErrors.size();
    if (missing == 0)
        return QString();
    return missing == 1
               ? QStringLiteral("1 chart could not be drawn; its values are in the tables.")
               : QStringLiteral("%1 charts could not be drawn; their values are in the tables.")
                     .arg(missing);
}

} // namespace

void ReportFacts::add(DeviceResult result)
{
    figures.devices.push_back(std::move(result.figures));
    devices.push_back(std::move(result.counts));
    hasCounted = hasCounted || result.hasCounted;
    if (result.testsError)
        testsError = result.testsError;
    tests.scale = stateScale;
    tests.axis = result.tests.axis;
    addTests(tests, result.tests);
}

void GenerateReportSummary(const ReportContext &context, const ReportFacts &facts,
                           RunSession &session, ReportOutcome &outcome)
{
    saveExactFile(context.folder + outagesCsvName, outagesCsv(facts.figures));
    saveExactFile(context.folder + reportJsonName,
                  reportJson(context.plan.id, context.plan.title, facts.figures));
    const PlannedReport &report = context.plan;
    const std::vector<DeviceCounts> &devices = facts.devices;
    session.log.status(QLatin1String("Generating Summary: [") + report.title + u']');

    SummaryFigures figures;
    for (const DeviceCounts &device : devices)
        figures.addDevice(device.successes, device.failures);
    const StateRow total = figures.total();
    const StateStatistics overallTests = stateStatistics(facts.tests);
    SummaryImage image = DrawDeviceSummaryImage(context, facts, total.tests() == 0, session.pool);
    SummaryImage overall = drawOverallImage(context, facts, overallTests, session.pool);
    SummaryImage timeline = drawTimeline(context, facts, session.pool);
    finishImage(image, context, session.log, outcome);
    finishImage(overall, context, session.log, outcome);
    finishImage(timeline, context, session.log, outcome);

    Placeholders pageValues = context.placeholders();
    pageValues.insert(
        pageValues.end(),
        {
            {QLatin1String("img.width"), QString::number(image.size.width())},
            {QLatin1String("img.height"), QString::number(image.size.height())},
            {QLatin1String("img.alt"), summaryAlternative(total, devices.size(), image.problem)},
            {QLatin1String("overall.graph"), overall.cited()},
            {QLatin1String("overall.width"), QString::number(overall.size.width())},
            {QLatin1String("overall.height"), QString::number(overall.size.height())},
            {QLatin1String("overall.alt"),
             overallAlternative(facts, overallTests, overall.problem)},
            {QLatin1String("report.note"), noteText(outcome)},
            {QLatin1String("report.archive"),
             archiveSection(ReportArchive(context.folder).runs(),
                            {facts.figures.period.from, facts.figures.period.to,
                             facts.figures.present.rate()})},
            {QLatin1String("report.worst"), worstRows(devices, context.builder.STATE_DetailItem)},
        });
    const Placeholders totals = figures.placeholders();
    pageValues.insert(pageValues.end(), totals.begin(), totals.end());
    PageText reportPage;
    reportPage.write(fillTemplate(context.builder.REPORT, onNewPage(pageValues)));
    saveExactFile(context.folder + context.settings.TOU_REPORT, reportPage.bytes());

    CsvText csv;
    csv.text(QStringLiteral("Sample"))
        .text(QStringLiteral("Success"))
        .text(QStringLiteral("Critial"))
        .text(QStringLiteral("Total"))
        .text(QStringLiteral("SuccessRate"))
        .endRecord();

    constexpr QLatin1String listMarker("%%state.detail%%");
    constexpr QLatin1String rowMarker("%%detail.items%%");
    const ListParts summary =
        fillListTemplate(context.builder.REP_Summary, listMarker, onNewPage(pageValues));
    const ListParts table = fillListTemplate(
        context.builder.STATE_Detail, rowMarker,
        {
            {QLatin1String("sample.name"), report.title},
            {QLatin1String("sample.description"), report.chart.SampleLabel},
            {QLatin1String("sample.scale"), QString()},
            {QLatin1String("sample.csv"), csvName},
            {QLatin1String("report.daterange"), context.range},
            {QLatin1String("chart.title"), QLatin1String("Basis: ") + report.chart.ChartTitle},
        });
    PageText page;
    page.write(summary.before);
    page.write(table.before);
    for (const DeviceCounts &device : devices) {
        const StateRow row = rowOf(device);
        page.write(row.filled(context.builder.STATE_DetailItem));
        csv.text(device.name);
        row.addCounts(csv);
        if (row.tests() == 0)
            csv.empty();
        else
            csv.fixed(row.rate());
        csv.endRecord();
    }
    page.write(total.filledAsTotal(context.builder.STATE_DetailItem));
    page.write(table.behind);
    page.write(summary.behind);
    saveExactFile(context.folder + csvName, csv.bytes());
    saveExactFile(context.folder + context.settings.TOU_REP_Summary, page.bytes());
    outcome.figures = figures;
}
