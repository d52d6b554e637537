#include "charts/ChartPainter.h"
#include "charts/Curve.h"
#include "charts/PlotArea.h"

#include <algorithm>
#include <cmath>

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

std::vector<LegendEntry> legendOf(const CounterChart &chart, bool hasMoving, const Lines &lines)
{
    const CounterStatistics &statistics = chart.statistics;
    if (statistics.count == 0)
        return {};
    std::vector<LegendEntry> legend = {
        {LegendMark::Area, QStringLiteral("Mean"), {}},
        {LegendMark::Solid, QStringLiteral("Min to max"), {}, linePen(ink::bandFill, 1)},
        {LegendMark::Line, QStringLiteral("95th Percentile"),
         readableValue(statistics.percentile95, chart.unit), lines.percentile}};
    if (hasMoving)
        legend.push_back({LegendMark::Line,
                          QStringLiteral("Moving x%1").arg(statistics.movingPeriod),
                          {},
                          lines.moving});
    legend.push_back({LegendMark::Line, QStringLiteral("Sample Avg."),
                      readableValue(statistics.mean, chart.unit), lines.average});
    return legend;
}

} // namespace

void paintCounterChart(QPainter &painter, const CounterChart &chart, const QSizeF &size)
{
    const ChartStyle style(size, chart.frame.quality);
    const CounterStatistics &statistics = chart.statistics;
    const Lines lines = linesOf(style);
    const bool hasMoving = statistics.count >= statistics.movingPeriod;
    const auto axis = [&](int maxSteps) {
        return valueAxis(statistics.minSample, statistics.maxSample, chart.unit, maxSteps);
    };

    const QString unit = axis(4).unit;
    QString axisTitle = chart.valueLabel;
    if (!unit.isEmpty())
        axisTitle += axisTitle.isEmpty() ? unit : QStringLiteral(" (%1)").arg(unit);
    axisTitle += QStringLiteral(", ") + bucketText(chart.series);
    const QRectF room =
        drawSurroundings(painter, chart.frame, size, style,
                         {axisTitle, legendOf(chart, hasMoving, lines), {statistics.footer()}});
    if (chart.series.buckets.empty()) {
        drawNoDataMessage(painter, room, style);
        return;
    }

    const TimePlot plot(room, chart.series, chart.frame.labelStep, style, axis);
    if (statistics.count == 0) {
        plot.drawGrid(painter);
        plot.drawTimes(painter);
        drawNoDataMessage(painter, plot.area(), style);
        return;
    }
    const Curve curve = curveOf(chart.series, plot);
    const double base = plot.y(std::clamp(0.0, plot.values().min, plot.values().max));
    drawArea(painter, curve, base, QColor::fromRgba(ink::valueFill));
    drawBand(painter, curve, QColor::fromRgba(ink::bandFill));
    plot.drawGrid(painter);
    plot.drawTimeGrid(painter);
    plot.drawLevel(painter, statistics.mean, lines.average);
    plot.drawLevel(painter, statistics.percentile95, lines.percentile);
    if (hasMoving)
        drawPoints(painter, chart.series, statistics.moving, plot, lines.moving);
    drawValues(painter, curve, linePen(ink::value, std::max(1.0, 1.5 * style.scale)));
    plot.drawValues(painter);
    plot.drawTimes(painter);
}
