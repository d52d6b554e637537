#include "report/ReportSummary.h"

#include "charts/ChartPainter.h"
#include "core/Error.h"
#include "core/Files.h"
#include "core/GrapherConfig.h"
#include "core/Numbers.h"
#include "core/Paths.h"
#include "core/State.h"
#include "core/Status.h"
#include "definitions/Dates.h"
#include "report/Csv.h"
#include "report/OutputTree.h"
#include "report/StateRow.h"
#include "report/SummaryFigures.h"

#include <algorithm>

namespace {

const QString imageName = QStringLiteral("DEVSUM.PNG");
const QString overallName = QStringLiteral("OVERALL.PNG");
const QString citedTransparentImage = QLatin1String("../") + transparentImage;

void copyTransparentImage(const QString &path)
{
    copyFile(NormalizeFolder(gConfig->PTH_Config()) + transparentImage, path);
}

/// An image of the summary, as the pages cite it.
struct SummaryImage
{
    QString name;
    QSize size;
    PendingOutcome outcome = {}; ///< not valid: nothing was drawn
    Outcome problem = {};

    QString cited() const { return problem || !outcome.valid() ? citedTransparentImage : name; }
};

SummaryImage newImage(const QString &name)
{
    return {name, QSize(gConfig->IMG_Width, gConfig->IMG_Height)};
}

void draw(SummaryImage &image, const ReportContext &context, Chart chart, WorkerPool &pool)
{
    image.size = chartSize(chart);
    image.outcome = pool.submit(std::move(chart), context.folder + image.name, gConfig->IMG_Format);
}

/// Draws the summary image, or puts the transparent one in its place when there is nothing to draw.
SummaryImage DrawDeviceSummaryImage(const ReportContext &context, const ReportFacts &facts,
                                    bool noData, WorkerPool &pool)
{
    SummaryImage image = newImage(imageName);
    if (noData) {
        copyTransparentImage(context.folder + imageName);
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

/// Draws the success rate of all state items that count over the report's period. Without any such
/// item the image is the transparent one, and cited as that.
SummaryImage drawOverallImage(const ReportContext &context, const ReportFacts &facts,
                              WorkerPool &pool)
{
    SummaryImage image = newImage(overallName);
    if (!facts.hasCounted)
        copyTransparentImage(context.folder + overallName);
    else if (facts.testsError)
        image.problem = facts.testsError;
    else
        draw(image, context,
             StateChart{context.chartFrame(
                            context.plan.chart.ChartTitle,
                            QStringLiteral("All global state items of the report's devices")),
                        facts.tests},
             pool);
    return image;
}

PageValue notDrawnText(const Error &problem)
{
    return PageValue::plain(
        QStringLiteral("This chart could not be drawn: %1").arg(problem.description));
}

/// The key figures of the overall image; nothing where no state item counts.
PageValue overallAlternative(const ReportFacts &facts, const Outcome &problem)
{
    if (problem)
        return notDrawnText(*problem);
    if (!facts.hasCounted)
        return QString();
    StateRow total;
    for (const BucketValue &bucket : facts.tests.buckets) {
        total.successes += static_cast<double>(bucket.successes);
        total.failures += static_cast<double>(bucket.failures());
    }
    if (total.tests() == 0)
        return QStringLiteral("All global state items: no data in this period");
    return QStringLiteral(
               "All global state items by time: success rate %1 %, %2 of %3 tests failed")
        .arg(total.rateText(), plainNumber(total.failures), plainNumber(total.tests()));
}

StateRow rowOf(const DeviceCounts &counts)
{
    return {counts.name, static_cast<double>(counts.successes),
            static_cast<double>(counts.failures), linkText(counts.folder) + u'/' + devicePageName};
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
    std::stable_sort(rows.begin(), rows.end(), [](const StateRow &a, const StateRow &b) {
        return a.successes * b.tests() < b.successes * a.tests();
    });
    PageText text;
    for (size_t i = 0; i < std::min(atAGlance, rows.size()); ++i)
        text.write(rows[i].filled(rowTemplate));
    return PageValue::html(text.text());
}

/// The key figures of the summary image, for readers who do not see it; of one that is missing they
/// learn why.
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
                    .arg(total.rateText(), plainNumber(total.failures), plainNumber(total.tests()));
    return text;
}

/// Waits for an image of the summary; the transparent one stands in for one that failed.
void finishImage(SummaryImage &image, const ReportContext &context, ReportOutcome &outcome)
{
    if (image.outcome.valid())
        image.problem = awaited(image.outcome);
    if (!image.problem)
        return;
    const QString path = context.folder + image.name;
    outcome.chartErrors.append(image.name + u' ' + errorTail(*image.problem));
    ShowStatus(QStringLiteral("Error generating chart '%1' ").arg(path) +
               errorTail(*image.problem));
    copyTransparentImage(path);
}

/// Tells the readers that charts are missing; empty when none is.
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
    devices.push_back(std::move(result.counts));
    hasCounted = hasCounted || result.hasCounted;
    if (result.testsError)
        testsError = result.testsError;
    tests.scale = stateScale;
    tests.axis = result.tests.axis;
    addTests(tests, result.tests);
}

void GenerateReportSummary(const ReportContext &context, const ReportFacts &facts, WorkerPool &pool,
                           ReportOutcome &outcome)
{
    const PlannedReport &report = context.plan;
    const std::vector<DeviceCounts> &devices = facts.devices;
    ShowStatus(QLatin1String("Generating Summary: [") + report.title + u']');

    StateRow total;
    SummaryFigures figures;
    for (const DeviceCounts &device : devices) {
        total.successes += static_cast<double>(device.successes);
        total.failures += static_cast<double>(device.failures);
        figures.addDevice(static_cast<double>(device.successes),
                          static_cast<double>(device.failures));
    }
    SummaryImage image = DrawDeviceSummaryImage(context, facts, total.tests() == 0, pool);
    SummaryImage overall = drawOverallImage(context, facts, pool);
    finishImage(image, context, outcome);
    finishImage(overall, context, outcome);

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
            {QLatin1String("overall.alt"), overallAlternative(facts, overall.problem)},
            {QLatin1String("report.note"), noteText(outcome)},
            {QLatin1String("report.worst"), worstRows(devices, context.builder.STATE_DetailItem)},
        });
    const Placeholders totals = figures.placeholders();
    pageValues.insert(pageValues.end(), totals.begin(), totals.end());
    PageText reportPage;
    reportPage.write(fillTemplate(context.builder.REPORT, onNewPage(pageValues)));
    saveExactFile(context.folder + gConfig->TOU_REPORT, reportPage.bytes());

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
            {QLatin1String("sample.csv"), summaryCsvName},
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
    saveExactFile(context.folder + summaryCsvName, csv.bytes());
    saveExactFile(context.folder + gConfig->TOU_REP_Summary, page.bytes());
}
