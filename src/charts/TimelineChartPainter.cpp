#include "charts/ChartFramePainter.h"
#include "charts/ChartPainter.h"
#include "charts/TimeAxis.h"

#include <algorithm>
#include <cmath>

namespace {

using Row = TimelineChart::Row;
using Trend = TimelineChart::Trend;

constexpr size_t maxDayLines = 62;

enum class Look { Well, SomeFailed, AllFailed, NoData, Excluded };

/// Adjacent parts that look the same.
struct Run
{
    Look look = Look::Well;
    double failed = 0; ///< share of the tests, 0 to 1
    size_t first = 0;
    size_t end = 0;

    bool looksLike(const Run &other) const { return look == other.look && failed == other.failed; }
};

Run runOf(const TimelinePart &part, bool isExcluded, size_t index)
{
    Run run{Look::Well, 0, index, index + 1};
    if (part.tests == 0)
        run.look = isExcluded ? Look::Excluded : Look::NoData;
    else if (part.failures == part.tests)
        run.look = Look::AllFailed;
    else if (part.failures > 0) {
        run.look = Look::SomeFailed;
        run.failed = static_cast<double>(part.failures) / static_cast<double>(part.tests);
    }
    return run;
}

std::vector<Run> runsOf(const TimelineParts &parts, const std::vector<bool> &excluded)
{
    std::vector<Run> runs;
    for (size_t i = 0; i < parts.size(); ++i) {
        const Run run = runOf(parts[i], i < excluded.size() && excluded[i], i);
        if (!runs.empty() && runs.back().looksLike(run))
            runs.back().end = run.end;
        else
            runs.push_back(run);
    }
    return runs;
}

bool has(const TimelineChart &chart, Look look)
{
    return std::any_of(chart.rows.begin(), chart.rows.end(), [&](const Row &row) {
        const std::vector<Run> runs = runsOf(row.parts, chart.excluded);
        return std::any_of(runs.begin(), runs.end(),
                           [look](const Run &run) { return run.look == look; });
    });
}

/// Where the columns and rows are.
struct Layout
{
    QRectF bars;
    double nameLeft = 0;
    double nameWidth = 0;
    double rateLeft = 0;
    double changeRight = 0;
    double pitch = 0; ///< height of a row

    double x(size_t part) const
    {
        return std::round(bars.left() +
                          bars.width() * static_cast<double>(part) / timelinePartCount);
    }
};

double minPitch(const ChartStyle &style)
{
    return std::ceil(style.label.height()) + style.px(5);
}

double footHeight(const ChartStyle &style)
{
    return style.px(5) + 2 * std::ceil(style.label.height());
}

Layout layOut(const TimelineChart &chart, const QRectF &room, const ChartStyle &style)
{
    double name = 0;
    double rate = 0;
    double change = 0;
    for (const Row &row : chart.rows) {
        name = std::max(name, style.label.width(row.name.simplified()));
        rate = std::max(rate, style.strong.width(row.rate));
        change = std::max(change, style.label.width(row.change));
    }
    Layout layout;
    layout.nameLeft = room.left();
    layout.nameWidth = std::min(std::ceil(name), std::floor(room.width() * 0.24));
    layout.changeRight = room.right();
    const double changeWidth = change > 0 ? std::ceil(change) + style.px(10) : 0;
    layout.rateLeft = std::floor(room.right() - changeWidth - rate);
    const double left = std::ceil(room.left() + layout.nameWidth + style.px(8));
    const double right = std::max(left + 1, layout.rateLeft - style.px(8));
    const double bottom = std::max(room.top() + 1, room.bottom() - footHeight(style));
    layout.bars = QRectF(QPointF(left, std::ceil(room.top())), QPointF(right, std::floor(bottom)));
    layout.pitch =
        layout.bars.height() / static_cast<double>(std::max<size_t>(1, chart.rows.size()));
    return layout;
}

void drawRun(QPainter &painter, const Run &run, const QRectF &box, const ChartStyle &style)
{
    switch (run.look) {
    case Look::Well:
        fillBox(painter, box, ink::successFill);
        return;
    case Look::AllFailed:
        fillBox(painter, box, ink::failure);
        return;
    case Look::NoData:
        drawNoData(painter, box, style);
        return;
    case Look::Excluded:
        drawExcluded(painter, box, style);
        return;
    case Look::SomeFailed:
        break;
    }
    // High enough to be seen, and never as high as where all failed.
    const double height = std::round(box.height() * (0.25 + 0.55 * run.failed));
    fillBox(painter, box, ink::successFill);
    fillBox(painter, box.adjusted(0, box.height() - height, 0, 0), ink::someFailed);
}

QRgb colorOf(Trend trend)
{
    switch (trend) {
    case Trend::Better:
        return ink::better;
    case Trend::Worse:
        return ink::failure;
    case Trend::None:
        break;
    }
    return ink::quietText;
}

void drawRow(QPainter &painter, const TimelineChart &chart, size_t index, const Layout &layout,
             const ChartStyle &style)
{
    const Row &row = chart.rows[index];
    const double top = layout.bars.top() + static_cast<double>(index) * layout.pitch;
    const double textTop = top + (layout.pitch - style.label.height()) / 2;
    drawText(painter, style.label, ink::text, layout.nameLeft + layout.nameWidth, textTop,
             style.label.elided(row.name.simplified(), layout.nameWidth + 0.01), Qt::AlignRight);
    drawText(painter, row.isBad ? style.strong : style.label, row.isBad ? ink::failure : ink::text,
             layout.rateLeft, textTop, row.rate);
    drawText(painter, style.label, colorOf(row.trend), layout.changeRight, textTop, row.change,
             Qt::AlignRight);

    const double thickness = std::clamp(std::round(layout.pitch * 0.7), 3.0, style.px(20));
    const double barTop = std::round(top + (layout.pitch - thickness) / 2);
    for (const Run &run : runsOf(row.parts, chart.excluded)) {
        const double left = layout.x(run.first);
        const double right = std::max(left + 1, layout.x(run.end));
        drawRun(painter, run, QRectF(left, barTop, right - left, thickness), style);
    }
}

/// An axis of round times over a period, whose first and last intervals are cut to it.
DataSeries intervalsOf(const Period &period)
{
    constexpr qint64 hour = 3600;
    constexpr qint64 day = 24 * hour;
    const qint64 seconds = period.seconds();
    const ChartFrequencyCode frequency = seconds <= 6 * hour      ? ByMinute
                                         : seconds <= 3 * day     ? ByHour
                                         : seconds <= 1'500 * day ? ByDay
                                                                  : ByMonth;
    const BucketAxis whole(period.from * 1000, period.to * 1000, frequency, 5,
                           BucketAxis::Labels::None);
    std::vector<AxisBucket> buckets;
    for (size_t i = 0; i < whole.size(); ++i) {
        AxisBucket bucket = whole[i];
        bucket.start = std::max(bucket.start, period.from * 1000);
        bucket.end = std::min(bucket.end, period.to * 1000);
        if (bucket.start < bucket.end)
            buckets.push_back(bucket);
    }
    DataSeries series;
    series.buckets.resize(buckets.size());
    series.axis = std::make_shared<const BucketAxis>(std::move(buckets), frequency, 5);
    return series;
}

void drawTimes(QPainter &painter, const TimelineChart &chart, const Layout &layout,
               const ChartStyle &style)
{
    const DataSeries intervals = intervalsOf(chart.period);
    if (intervals.buckets.empty())
        return;
    const TimeAxis axis =
        timeAxis(intervals, chart.frame.labelStep, layout.bars.width(),
                 [&style](const QString &text) { return style.label.width(text); });
    const double top = layout.bars.bottom();
    const auto drawLine = [&](double x) {
        fillBox(painter,
                QRectF(std::round(layout.bars.left() + x), layout.bars.top(), style.hairline(),
                       layout.bars.height() + style.px(4)),
                ink::grid);
    };
    // Labels of few days stand between the midnights, others at their lines.
    const bool isBetween = !axis.ticks.front().onEdge && intervals.buckets.size() <= maxDayLines;
    for (size_t i = 1; isBetween && i < intervals.buckets.size(); ++i)
        drawLine(axis.x(intervals.interval(i).start));
    for (const TimeTick &tick : axis.ticks) {
        const double x = layout.bars.left() + tick.x;
        if (!isBetween)
            drawLine(tick.x);
        const auto middle = [&](const QString &text) { // kept inside the chart
            const double half = style.label.width(text) / 2;
            const double min = layout.nameLeft + half;
            return std::clamp(x, min, std::max(min, layout.changeRight - half));
        };
        drawText(painter, style.label, ink::quietText, middle(tick.label), top + style.px(4),
                 tick.label, Qt::AlignHCenter);
        drawText(painter, style.label, ink::text, middle(tick.context),
                 top + style.px(4) + std::ceil(style.label.height()), tick.context,
                 Qt::AlignHCenter);
    }
}

std::vector<LegendEntry> legendOf(const TimelineChart &chart)
{
    std::vector<LegendEntry> legend = {
        {LegendMark::Solid, QStringLiteral("All well"), {}, linePen(ink::successFill, 1)},
        {LegendMark::SomeFailed, QStringLiteral("Some tests failed: the higher, the more"), {}},
        {LegendMark::Solid, QStringLiteral("All failed"), {}, linePen(ink::failure, 1)}};
    if (has(chart, Look::NoData))
        legend.push_back({LegendMark::NoData, QStringLiteral("No data"), {}});
    if (has(chart, Look::Excluded))
        legend.push_back(
            {LegendMark::Excluded, QStringLiteral("Maintenance, outside service hours"), {}});
    return legend;
}

/// As at the normal size of charts, which keeps many rows on one screen.
ChartStyle styleOf(const TimelineChart &chart)
{
    return {QSizeF(640, 390), chart.frame.quality};
}

} // namespace

int timelineChartHeight(const TimelineChart &chart)
{
    const ChartStyle style = styleOf(chart);
    constexpr double surroundings = 104; // two rows of legend, two of notes
    return static_cast<int>(std::ceil(surroundings + footHeight(style) +
                                      static_cast<double>(chart.rows.size()) * minPitch(style)));
}

void paintTimelineChart(QPainter &painter, const TimelineChart &chart, const QSizeF &size)
{
    const ChartStyle style = styleOf(chart);
    QStringList footers;
    if (!chart.note.isEmpty())
        footers.append(chart.note);
    const QRectF room =
        drawSurroundings(painter, chart.frame, size, style, {QString(), legendOf(chart), footers});
    if (chart.rows.empty()) {
        drawNoDataMessage(painter, room, style);
        return;
    }
    const Layout layout = layOut(chart, room, style);
    for (size_t i = 0; i < chart.rows.size(); ++i)
        drawRow(painter, chart, i, layout, style);
    drawTimes(painter, chart, layout, style);
}
