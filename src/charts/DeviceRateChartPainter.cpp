#include "base/Numbers.h"
#include "charts/ChartFramePainter.h"
#include "charts/ChartPainter.h"
#include "charts/ChartStatistics.h"
#include "charts/ValueAxis.h"

#include <algorithm>
#include <cmath>

namespace {

using Device = DeviceRateChart::Device;

/// The parts of the plot: names, bars, rates, and the value axis at the foot.
struct Layout
{
    QRectF bars;
    double nameLeft = 0;
    double nameWidth = 0;
    double rateRight = 0;
    double pitch = 0; ///< height of a row
    size_t rows = 0;  ///< devices that have a row
    ValueAxis axis;

    double x(double value) const { return bars.left() + axis.position(value) * bars.width(); }
    double rowTop(size_t row) const { return bars.top() + static_cast<double>(row) * pitch; }
};

double minPitch(const ChartStyle &style)
{
    return std::ceil(style.label.height()) + style.px(1);
}

QString rateText(const Device &device)
{
    if (!device.hasData || device.successes + device.failures <= 0)
        return QStringLiteral("no data");
    return QString::number(successRate(device.successes, device.failures), 'f', 2) + u'%';
}

/// A value axis whose labels do not touch on `width`.
ValueAxis testsAxis(qint64 max, double width, const ChartStyle &style)
{
    for (int steps = 8; steps > 1; --steps) {
        ValueAxis axis = valueAxis(0, static_cast<double>(max), QString(), steps);
        double widest = 0;
        for (const QString &label : axis.labels)
            widest = std::max(widest, style.label.width(label));
        if ((widest + style.px(14)) * static_cast<double>(axis.labels.size() - 1) <= width)
            return axis;
    }
    return valueAxis(0, static_cast<double>(max), QString(), 1);
}

Layout layOut(const DeviceRateChart &chart, const QRectF &room, const ChartStyle &style)
{
    Layout layout;
    qint64 maxTests = 1;
    double widestName = 0;
    double widestRate = style.strong.width(QStringLiteral("100.00%"));
    for (const Device &device : chart.devices) {
        maxTests = std::max(maxTests, device.successes + device.failures);
        widestName = std::max(widestName, style.label.width(device.name.simplified()));
    }
    widestRate = std::max(widestRate, style.label.width(QStringLiteral("no data")));

    const double textHeight = std::ceil(style.label.height());
    const bool hasTitle = !chart.valueAxisTitle.isEmpty() && room.height() > textHeight * 6;
    const double foot = style.px(4) + textHeight * (hasTitle ? 2 : 1);
    layout.nameLeft = room.left();
    layout.nameWidth = std::min(std::ceil(widestName), std::floor(room.width() * 0.34));
    const double left = std::ceil(room.left() + layout.nameWidth + style.px(8));
    const double right = std::floor(room.right() - widestRate - style.px(8));
    layout.rateRight = room.right();
    layout.bars = QRectF(QPointF(left, std::ceil(room.top())),
                         QPointF(std::max(left + 1, right),
                                 std::max(room.top() + 1, std::floor(room.bottom() - foot))));
    layout.axis = testsAxis(maxTests, layout.bars.width(), style);

    const auto count = chart.devices.size();
    layout.rows = count;
    layout.pitch = layout.bars.height() / static_cast<double>(std::max<size_t>(1, count));
    if (layout.pitch < minPitch(style)) {
        // The last row that fits says how many more devices there are.
        const double fitting = std::floor(layout.bars.height() / minPitch(style));
        layout.rows = static_cast<size_t>(std::max(1.0, fitting)) - 1;
        layout.pitch = minPitch(style);
    }
    return layout;
}

void drawGrid(QPainter &painter, const Layout &layout, const ChartStyle &style,
              const QString &title)
{
    double end = layout.nameLeft;
    for (size_t i = 0; i < layout.axis.ticks.size(); ++i) {
        const double x = layout.x(layout.axis.ticks[i]);
        fillBox(painter,
                QRectF(std::round(x), layout.bars.top(), style.hairline(), layout.bars.height()),
                i == 0 ? ink::axis : ink::grid);
        const QString &label = layout.axis.labels[i];
        const double half = style.label.width(label) / 2;
        if (x - half < end)
            continue;
        drawText(painter, style.label, ink::quietText, x, layout.bars.bottom() + style.px(4), label,
                 Qt::AlignHCenter);
        end = x + half + style.px(6);
    }
    if (!title.isEmpty())
        drawText(painter, style.label, ink::text, layout.bars.left(),
                 layout.bars.bottom() + style.px(4) + std::ceil(style.label.height()),
                 style.label.elided(title, layout.rateRight - layout.bars.left()));
}

void drawRow(QPainter &painter, const Layout &layout, size_t row, const Device &device,
             const ChartStyle &style)
{
    const double top = layout.rowTop(row);
    const double textTop = top + (layout.pitch - style.label.height()) / 2;
    drawText(painter, style.label, ink::text, layout.nameLeft + layout.nameWidth, textTop,
             style.label.elided(device.name.simplified(), layout.nameWidth + 0.01), Qt::AlignRight);

    const bool hasData = device.hasData && device.successes + device.failures > 0;
    const bool flawless = hasData && device.failures == 0;
    drawText(painter, hasData && !flawless ? style.strong : style.label,
             hasData && !flawless ? ink::failure : ink::quietText, layout.rateRight, textTop,
             rateText(device), Qt::AlignRight);

    const double thickness =
        std::clamp(std::round(layout.pitch * 0.62), 3.0, std::max(3.0, style.px(24)));
    const double barTop = std::round(top + (layout.pitch - thickness) / 2);
    const double left = layout.bars.left();
    if (!hasData) {
        drawNoData(painter, QRectF(left, barTop, layout.bars.width(), thickness), style);
        return;
    }
    const double end = std::max(
        left + 1, std::round(layout.x(static_cast<double>(device.successes + device.failures))));
    double split = left;
    if (device.failures > 0)
        split = std::min(end, std::max(left + style.px(3),
                                       std::round(layout.x(static_cast<double>(device.failures)))));
    fillBox(painter, QRectF(left, barTop, split - left, thickness), ink::failure);
    fillBox(painter, QRectF(split, barTop, end - split, thickness),
            flawless ? ink::successBar : ink::partialFill);
}

} // namespace

int deviceRateChartHeight(const DeviceRateChart &chart)
{
    const ChartStyle style(chart.frame.size, chart.frame.quality);
    const double surroundings = 150 * style.scale;
    const double rows = static_cast<double>(chart.devices.size()) * (minPitch(style) + style.px(2));
    return static_cast<int>(std::min(1e6, std::ceil(surroundings + rows)));
}

void paintDeviceRateChart(QPainter &painter, const DeviceRateChart &chart, const QSizeF &size)
{
    const ChartStyle style(QSizeF(chart.frame.size).boundedTo(size), chart.frame.quality);
    qint64 successes = 0;
    qint64 failures = 0;
    bool hasGaps = false;
    for (const Device &device : chart.devices) {
        successes += device.successes;
        failures += device.failures;
        hasGaps = hasGaps || !device.hasData;
    }
    std::vector<LegendEntry> legend;
    if (successes + failures > 0) {
        legend.push_back({LegendMark::Solid, QStringLiteral("Critical"),
                          groupedNumber(static_cast<double>(failures), 0),
                          linePen(ink::failure, 1)});
        legend.push_back({LegendMark::Solid, QStringLiteral("Success"),
                          groupedNumber(static_cast<double>(successes), 0),
                          linePen(ink::successBar, 1)});
    }
    if (failures > 0)
        legend.push_back(
            {LegendMark::Solid, QStringLiteral("With failures"), {}, linePen(ink::partialFill, 1)});
    if (hasGaps)
        legend.push_back({LegendMark::NoData, QStringLiteral("No data"), {}});
    const QRectF room =
        drawSurroundings(painter, chart.frame, size, style, {chart.categoryAxisTitle, legend, {}});
    if (successes + failures == 0) {
        drawNoDataMessage(painter, room, style);
        return;
    }
    const Layout layout = layOut(chart, room, style);
    for (size_t row = 0; row < layout.rows; ++row)
        drawRow(painter, layout, row, chart.devices[row], style);
    if (layout.rows < chart.devices.size())
        drawText(painter, style.label, ink::quietText, layout.nameLeft, layout.rowTop(layout.rows),
                 style.label.elided(
                     QStringLiteral("and %1 more devices").arg(chart.devices.size() - layout.rows),
                     room.width()));
    drawGrid(painter, layout, style, chart.valueAxisTitle);
}
