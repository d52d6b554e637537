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
#include "report/ChartFrames.h"
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

/// Draws the summary image, or puts the transparent one in its place when there is nothing to draw.
clsChartImageRef DrawDeviceSummaryImage(const ReportContext &context,
                                        const std::vector<DeviceCounts> &devices, bool noData)
{
    clsChartImageRef image{imageName, QSize(gConfig->IMG_Width, gConfig->IMG_Height), {}};
    const QString path = reportFolder(context.report) + imageName;
    if (noData) {
        copyTransparentImage(path);
        return image;
    }
    DeviceRateChart chart;
    chart.frame = chartFrame(context, QStringLiteral("Success Rate by Device"),
                             QLatin1String("Basis: ") + context.chart.ChartTitle);
    chart.valueAxisTitle = QStringLiteral("Total Tests Performed");
    chart.categoryAxisTitle = QStringLiteral("Device");
    for (const DeviceCounts &device : devices)
        chart.devices.push_back({device.name, device.successes, device.failures, device.hasData});
    image.size = chartSize(chart);
    image.outcome = context.pool.submit(std::move(chart), path, gConfig->IMG_Format);
    return image;
}

/// The tests of all state items that count, by time. Throws Error(Overflow).
DataSeries overallSeries(const ReportContext &context)
{
    if (context.overall.problem)
        throw *context.overall.problem;
    return seriesOf(context, context.overall.rows(), stateScale);
}

/// Draws the success rate of all state items that count over the report's period. Without any such
/// item the image is the transparent one, and cited as that.
clsChartImageRef drawOverallImage(const ReportContext &context)
{
    clsChartImageRef image{overallName, QSize(gConfig->IMG_Width, gConfig->IMG_Height), {}};
    const QString path = reportFolder(context.report) + overallName;
    if (!context.overall.hasItems()) {
        copyTransparentImage(path);
        image.fileName = citedTransparentImage;
        return image;
    }
    const ChartFrame frame =
        chartFrame(context, context.chart.ChartTitle,
                   QStringLiteral("All global state items of the report's devices"));
    Chart chart;
    try {
        chart = StateChart{frame, overallSeries(context)};
    } catch (const Error &error) {
        image.outcome = failedOutcome(error);
        return image;
    }
    image.size = chartSize(chart);
    image.outcome = context.pool.submit(std::move(chart), path, gConfig->IMG_Format);
    return image;
}

PageValue notDrawnText(const Error &problem)
{
    return PageValue::plain(
        QStringLiteral("This chart could not be drawn: %1").arg(problem.description));
}

/// The key figures of the overall image; nothing where no state item counts.
PageValue overallAlternative(const ReportContext &context, const Outcome &problem)
{
    if (problem)
        return notDrawnText(*problem);
    if (!context.overall.hasItems())
        return QString();
    StateRow total;
    for (const SummaryRow &row : context.overall.rows()) {
        total.successes += static_cast<double>(row.sumiState);
        total.failures += static_cast<double>(row.QCount - row.sumiState);
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
Outcome finishImage(const ReportContext &context, const clsChartImageRef &image)
{
    if (!image.outcome.valid())
        return std::nullopt;
    Outcome problem = awaited(image.outcome);
    if (problem) {
        const QString path = reportFolder(context.report) + image.fileName;
        context.outcome.chartErrors.append(image.fileName + u' ' + errorTail(*problem));
        ShowStatus(QStringLiteral("Error generating chart '%1' ").arg(path) + errorTail(*problem));
        copyTransparentImage(path);
    }
    return problem;
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

void GenerateReportSummary(const ReportContext &context, const std::vector<DeviceCounts> &devices)
{
    const clsReportDef &report = context.report;
    ShowStatus(QLatin1String("Generating Summary: [") + report.ReportTitle + u']');

    StateRow total;
    SummaryFigures figures;
    for (const DeviceCounts &device : devices) {
        total.successes += static_cast<double>(device.successes);
        total.failures += static_cast<double>(device.failures);
        figures.addDevice(static_cast<double>(device.successes),
                          static_cast<double>(device.failures));
    }
    const clsChartImageRef image = DrawDeviceSummaryImage(context, devices, total.tests() == 0);
    clsChartImageRef overall = drawOverallImage(context);
    const Outcome problem = finishImage(context, image);
    const Outcome overallProblem = finishImage(context, overall);
    if (overallProblem)
        overall.fileName = citedTransparentImage;

    const QString folder = reportFolder(report);
    const QString range = dateRangeText(context.chart.StartTime, context.chart.EndTime);
    Placeholders pageValues = {
        {QLatin1String("report.title"), report.ReportTitle},
        {QLatin1String("report.date"), reportDateText(report.RunDate)},
        {QLatin1String("report.time"), reportTimeText(report.RunDate)},
        {QLatin1String("report.id"), linkText(folderSafe(report.ReportID))},
        {QLatin1String("report.daterange"), range},
        {QLatin1String("report.zone"), context.zone},
        {QLatin1String("chart.title"), context.chart.ChartTitle},
        {QLatin1String("img.width"), QString::number(image.size.width())},
        {QLatin1String("img.height"), QString::number(image.size.height())},
        {QLatin1String("img.alt"), summaryAlternative(total, devices.size(), problem)},
        {QLatin1String("overall.graph"), overall.fileName},
        {QLatin1String("overall.width"), QString::number(overall.size.width())},
        {QLatin1String("overall.height"), QString::number(overall.size.height())},
        {QLatin1String("overall.alt"), overallAlternative(context, overallProblem)},
        {QLatin1String("report.note"), noteText(context.outcome)},
        {QLatin1String("report.worst"), worstRows(devices, context.builder.STATE_DetailItem)},
    };
    const Placeholders totals = figures.placeholders();
    pageValues.insert(pageValues.end(), totals.begin(), totals.end());
    PageText reportPage;
    reportPage.write(fillTemplate(context.builder.REPORT, onNewPage(pageValues)));
    saveExactFile(folder + gConfig->TOU_REPORT, reportPage.bytes());

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
            {QLatin1String("sample.name"), report.ReportTitle},
            {QLatin1String("sample.description"), context.chart.SampleLabel},
            {QLatin1String("sample.scale"), QString()},
            {QLatin1String("sample.csv"), summaryCsvName},
            {QLatin1String("report.daterange"), range},
            {QLatin1String("chart.title"), QLatin1String("Basis: ") + context.chart.ChartTitle},
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
    saveExactFile(folder + summaryCsvName, csv.bytes());
    saveExactFile(folder + gConfig->TOU_REP_Summary, page.bytes());
}
