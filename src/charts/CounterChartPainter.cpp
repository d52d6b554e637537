#include "charts/ChartPainter.h"
#include "charts/ChartStatistics.h"
#include "charts/Curve.h"
#include "charts/PlotArea.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace {

struct Lines
{
    QPen percentile;
    QPen moving;
    QPen average;
};

Lines linesOf(const ChartStyle &style)
{
    const double width = std::max(1.0, 1.3 * style.scale);
    return {linePen(ink::percentile, width, {6, 3}), linePen(ink::moving, width),
            linePen(ink::average, width, {1.5, 2.5})};
}

/// The moving average for each bucket; none where the bucket is empty or too early.
std::vector<std::optional<double>> movingOf(const DataSeries &series,
                                            const CounterStatistics &statistics)
{
    const int period = movingPeriod(static_cast<qsizetype>(series.buckets.size()));
    const std::vector<double> means = movingAverage(statistics.values, period);
    std::vector<std::optional<double>> moving(series.buckets.size());
    size_t sample = 0;
    for (size_t i = 0; i < series.buckets.size(); ++i) {
        if (series.buckets[i].isEmpty())
            continue;
        ++sample;
        if (sample >= static_cast<size_t>(period) && !means.empty())
            moving[i] = means[sample - static_cast<size_t>(period)];
    }
    return moving;
}

std::vector<LegendEntry> legendOf(const CounterChart &chart, const CounterStatistics &statistics,
                                  bool hasMoving, const Lines &lines)
{
    if (statistics.count() == 0)
        return {};
    const int period = movingPeriod(static_cast<qsizetype>(chart.series.buckets.size()));
    std::vector<LegendEntry> legend = {
        {Mark::Area, QStringLiteral("Mean"), {}},
        {Mark::Solid, QStringLiteral("Min to max"), {}, linePen(ink::bandFill, 1)},
        {Mark::Line, QStringLiteral("95th Percentile"),
         readableValue(statistics.percentile95, chart.unit), lines.percentile}};
    if (hasMoving)
        legend.push_back({Mark::Line, QStringLiteral("Moving x%1").arg(period), {}, lines.moving});
    legend.push_back({Mark::Line, QStringLiteral("Sample Avg."),
                      readableValue(statistics.mean, chart.unit), lines.average});
    return legend;
}

void drawLevel(QPainter &painter, const TimePlot &plot, double value, const QPen &pen)
{
    const double y = std::round(plot.y(value)) + 0.5;
    painter.setPen(pen);
    painter.drawLine(QPointF(plot.area().left(), y), QPointF(plot.area().right(), y));
}

} // namespace

void paintCounterChart(QPainter &painter, const CounterChart &chart, const QSizeF &size)
{
    const ChartStyle style(size, chart.frame.quality);
    const CounterStatistics statistics = counterStatistics(chart.series);
    const Lines lines = linesOf(style);
    const std::vector<std::optional<double>> moving = movingOf(chart.series, statistics);
    const bool hasMoving = std::any_of(moving.begin(), moving.end(),
                                       [](const auto &value) { return value.has_value(); });
    const auto [least, greatest] = valueRange(chart.series);

    const QString unit = valueAxis(least, greatest, chart.unit, 4).unit;
    QString axisTitle = chart.valueLabel;
    if (!unit.isEmpty())
        axisTitle += axisTitle.isEmpty() ? unit : QStringLiteral(" (%1)").arg(unit);
    axisTitle += QStringLiteral(", ") + bucketText(chart.series);
    const QRectF room = drawSurroundings(
        painter, chart.frame, size, style,
        {axisTitle, legendOf(chart, statistics, hasMoving, lines), {statistics.footer()}});
    if (chart.series.buckets.empty()) {
        drawNoDataMessage(painter, room, style);
        return;
    }

    const TimePlot plot(room, chart.series, chart.frame.labelStep, style,
                        [&, low = least, high = greatest](int mostSteps) {
                            return valueAxis(low, high, chart.unit, mostSteps);
                        });
    if (statistics.count() == 0) {
        plot.drawGrid(painter);
        plot.drawTimes(painter);
        drawNoDataMessage(painter, plot.area(), style);
        return;
    }
    const Curve curve = curveOf(chart.series, plot);
    const double base = plot.y(std::clamp(0.0, plot.values().least, plot.values().greatest));
    drawArea(painter, curve, base, QColor::fromRgba(ink::valueFill));
    drawBand(painter, curve, QColor::fromRgba(ink::bandFill));
    plot.drawGrid(painter);
    plot.drawTimeGrid(painter);
    drawLevel(painter, plot, statistics.mean, lines.average);
    drawLevel(painter, plot, statistics.percentile95, lines.percentile);
    if (hasMoving)
        drawPoints(painter, chart.series, moving, plot, lines.moving);
    drawValues(painter, curve, linePen(ink::value, std::max(1.0, 1.5 * style.scale)));
    plot.drawValues(painter);
    plot.drawTimes(painter);
}
