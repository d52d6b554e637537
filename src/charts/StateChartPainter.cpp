#include "charts/ChartPainter.h"
#include "charts/ChartStatistics.h"
#include "charts/PlotArea.h"

#include <algorithm>
#include <cmath>

namespace {

/// What one column of the plot shows: a bucket, or the worst of those that share a pixel.
struct Column
{
    double left = 0;
    double right = 0;
    qint64 successes = 0;
    qint64 failures = 0;

    bool hasData() const { return successes + failures > 0; }
    /// Shows the bucket instead if its rate is lower; any rate comes before a gap.
    void add(const BucketValue &bucket)
    {
        const bool isWorse =
            static_cast<double>(bucket.successes) * static_cast<double>(successes + failures) <
            static_cast<double>(successes) * static_cast<double>(bucket.count);
        if (bucket.isEmpty() || (hasData() && !isWorse))
            return;
        successes = bucket.successes;
        failures = bucket.failures();
    }
    bool sameLook(const Column &other) const
    {
        return hasData() == other.hasData() && failures == 0 && other.failures == 0;
    }
};

/// Columns on whole pixels, one for each bucket if buckets are wide enough, else one for each
/// pixel.
std::vector<Column> columnsOf(const DataSeries &series, const TimePlot &plot)
{
    std::vector<Column> columns;
    for (size_t i = 0; i < series.buckets.size(); ++i) {
        const BucketValue &bucket = series.buckets[i];
        const double left = std::floor(plot.x(series.interval(i).start) + 1e-6);
        const double right = std::max(left + 1, std::floor(plot.x(series.interval(i).end) + 1e-6));
        if (columns.empty() || columns.back().left < left)
            columns.push_back({left, right, 0, 0});
        Column &column = columns.back();
        column.right = std::max(column.right, right);
        column.add(bucket);
    }
    return columns;
}

/// Whether buckets share columns, which depends only on the chart's width.
bool sharesColumns(const StateChart &chart, const QSizeF &size, const ChartStyle &style)
{
    if (chart.series.buckets.empty())
        return false;
    const TimePlot plot(insideOf(size, style), chart.series, chart.frame.labelStep, style,
                        percentAxis);
    return columnsOf(chart.series, plot).size() < chart.series.buckets.size();
}

/// Joins adjacent columns that look the same, so that a period without failures is one rectangle.
std::vector<Column> joined(const std::vector<Column> &columns)
{
    std::vector<Column> runs;
    for (const Column &column : columns) {
        if (!runs.empty() && runs.back().sameLook(column)) {
            runs.back().right = column.right;
            runs.back().successes += column.successes;
        } else {
            runs.push_back(column);
        }
    }
    return runs;
}

void drawColumn(QPainter &painter, const Column &column, double gap, const TimePlot &plot,
                const ChartStyle &style)
{
    const double top = plot.y(100);
    const double bottom = plot.area().bottom();
    const double left = column.left;
    const double width = std::max(1.0, column.right - gap - left);
    if (!column.hasData()) {
        drawNoData(painter, QRectF(left, top, width, bottom - top), style);
        return;
    }
    if (column.failures == 0) {
        fillBox(painter, QRectF(left, top, width, bottom - top), ink::successFill);
        fillBox(painter, QRectF(left, top, width, style.px(2)), ink::success);
        return;
    }
    // Failures hang from the top and are always thick enough to be seen.
    const double rate = successRate(column.successes, column.failures);
    double edge = std::max(std::round(plot.y(rate)), top + style.px(4));
    if (column.successes > 0)
        edge = std::min(edge, bottom - style.px(2));
    fillBox(painter, QRectF(left, top, width, edge - top), ink::failure);
    fillBox(painter, QRectF(left, edge, width, bottom - edge), ink::partialFill);
}

/// Draws the rates over the columns if all have room for one.
void drawRates(QPainter &painter, const DataSeries &series, const TimePlot &plot,
               const ChartStyle &style)
{
    const double widest = style.small.width(rateLabel(100)) + style.px(4);
    for (size_t i = 0; i < series.buckets.size(); ++i) {
        if (plot.x(series.interval(i).end) - plot.x(series.interval(i).start) < widest)
            return;
    }
    for (size_t i = 0; i < series.buckets.size(); ++i) {
        const BucketValue &bucket = series.buckets[i];
        if (bucket.isEmpty())
            continue;
        const double rate = successRate(bucket.successes, bucket.failures());
        const double height = style.small.height();
        const double edge = bucket.failures() == 0 ? plot.y(100) : plot.y(std::min(rate, 98.0));
        const bool below = edge + height + style.px(8) < plot.area().bottom();
        const double top = below ? edge + style.px(6) : plot.y(100) + style.px(6);
        drawText(painter, style.small, below ? ink::text : ink::ground,
                 (plot.x(series.interval(i).start) + plot.x(series.interval(i).end)) / 2, top,
                 rateLabel(rate), Qt::AlignHCenter);
    }
}

std::vector<LegendEntry> legendOf(const DataSeries &series, const StateStatistics &statistics,
                                  const QPen &overallPen)
{
    std::vector<LegendEntry> legend;
    if (statistics.bucketsWithData > 0) {
        legend.push_back({LegendMark::Success, QStringLiteral("Success%"), {}});
        if (statistics.failures > 0)
            legend.push_back({LegendMark::Partial, QStringLiteral("With failures"), {}});
    }
    if (statistics.bucketsWithData < static_cast<qint64>(series.buckets.size()))
        legend.push_back({LegendMark::NoData, QStringLiteral("No data"), {}});
    if (statistics.bucketsWithData > 0)
        legend.push_back({LegendMark::Line, QStringLiteral("Overall%"),
                          rateLabel(successRate(statistics.successes, statistics.failures)),
                          overallPen});
    return legend;
}

} // namespace

void paintStateChart(QPainter &painter, const StateChart &chart, const QSizeF &size)
{
    const ChartStyle style(size, chart.frame.quality);
    const StateStatistics &statistics = chart.statistics;
    const QPen overallPen = linePen(ink::text, style.px(1.4), {5, 3});
    QString axisTitle = QStringLiteral("Success rate %1").arg(bucketText(chart.series));
    if (sharesColumns(chart, size, style))
        axisTitle += QLatin1String(", the worst of each pixel column");
    const QRectF room = drawSurroundings(painter, chart.frame, size, style,
                                         {axisTitle,
                                          legendOf(chart.series, statistics, overallPen),
                                          {statistics.averageLine(), statistics.totalsLine()}});
    if (chart.series.buckets.empty()) {
        drawNoDataMessage(painter, room, style);
        return;
    }

    const TimePlot plot(room, chart.series, chart.frame.labelStep, style, percentAxis);
    std::vector<Column> columns = columnsOf(chart.series, plot);
    const double pitch = plot.area().width() / static_cast<double>(columns.size());
    const double gap = pitch >= 12 ? std::round(pitch / 8) : 0;
    if (gap == 0)
        columns = joined(columns);
    for (const Column &column : columns)
        drawColumn(painter, column, gap, plot, style);
    plot.drawGrid(painter);
    if (statistics.bucketsWithData == 0) {
        drawNoDataMessage(painter, plot.area(), style);
    } else {
        drawRates(painter, chart.series, plot, style);
        plot.drawLevel(painter, statistics.overallRate, overallPen);
    }
    plot.drawValues(painter);
    plot.drawTimes(painter);
}
