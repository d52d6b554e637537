#include "charts/TimeAxis.h"

#include "definitions/clsGraphDef.h"

#include <QLocale>

#include <algorithm>
#include <array>
#include <optional>

namespace {

enum class Unit { Minute, Hour, Day, Week, Month, Year };

struct Step
{
    Unit unit;
    int count;
    const char16_t *label;
    const char16_t *context; ///< empty: none
};

constexpr char16_t clock[] = u"HH:mm";
constexpr char16_t date[] = u"ddd MMM d";
constexpr char16_t monthAndYear[] = u"MMMM yyyy";

constexpr std::array steps = {
    Step{Unit::Minute, 1, clock, date},     Step{Unit::Minute, 2, clock, date},
    Step{Unit::Minute, 5, clock, date},     Step{Unit::Minute, 10, clock, date},
    Step{Unit::Minute, 15, clock, date},    Step{Unit::Minute, 20, clock, date},
    Step{Unit::Minute, 30, clock, date},    Step{Unit::Hour, 1, clock, date},
    Step{Unit::Hour, 2, clock, date},       Step{Unit::Hour, 3, clock, date},
    Step{Unit::Hour, 4, clock, date},       Step{Unit::Hour, 6, clock, date},
    Step{Unit::Hour, 12, clock, date},      Step{Unit::Day, 1, u"ddd d", monthAndYear},
    Step{Unit::Day, 1, u"d", monthAndYear}, Step{Unit::Week, 1, u"MMM d", u"yyyy"},
    Step{Unit::Month, 1, u"MMM", u"yyyy"},  Step{Unit::Month, 2, u"MMM", u"yyyy"},
    Step{Unit::Month, 3, u"MMM", u"yyyy"},  Step{Unit::Month, 6, u"MMM", u"yyyy"},
    Step{Unit::Year, 1, u"yyyy", u""},      Step{Unit::Year, 2, u"yyyy", u""},
    Step{Unit::Year, 5, u"yyyy", u""},      Step{Unit::Year, 10, u"yyyy", u""},
    Step{Unit::Year, 20, u"yyyy", u""},     Step{Unit::Year, 50, u"yyyy", u""},
    Step{Unit::Year, 100, u"yyyy", u""},    Step{Unit::Year, 1000, u"yyyy", u""},
};

Unit unitOf(ChartFrequencyCode frequency)
{
    switch (frequency) {
    case ByMinute:
        return Unit::Minute;
    case ByHour:
        return Unit::Hour;
    case ByDay:
        return Unit::Day;
    case ByMonth:
        return Unit::Month;
    default:
        return Unit::Year;
    }
}

/// The parts of a wall time.
struct Wall
{
    qint64 day = 0;
    int year = 0;
    int month = 1;
    int monthDay = 1;
    int minute = 0; ///< of the day
};

Wall wallOf(const QDateTime &time)
{
    Wall wall;
    wall.day = time.date().toJulianDay();
    time.date().getDate(&wall.year, &wall.month, &wall.monthDay);
    wall.minute = time.time().msecsSinceStartOfDay() / 60'000;
    return wall;
}

/// Number of the step's interval that contains a wall time; only differences have a meaning.
qint64 intervalOf(const Wall &wall, const Step &step)
{
    switch (step.unit) {
    case Unit::Minute:
        return wall.day * 1440 + wall.minute / step.count;
    case Unit::Hour:
        return wall.day * 1440 + wall.minute / (60 * step.count);
    case Unit::Day:
        return wall.day / step.count;
    case Unit::Week:
        return wall.day / 7; // Julian day 0 was a Monday
    case Unit::Month:
        return (wall.year * 12LL + wall.month - 1) / step.count;
    case Unit::Year:
        break;
    }
    return wall.year / step.count;
}

bool isRound(const Wall &wall, const Step &step)
{
    switch (step.unit) {
    case Unit::Minute:
        return wall.minute % step.count == 0;
    case Unit::Hour:
        return wall.minute % (60 * step.count) == 0;
    case Unit::Day:
        return wall.minute == 0;
    case Unit::Week:
        return wall.minute == 0 && wall.day % 7 == 0;
    case Unit::Month:
        return wall.minute == 0 && wall.monthDay == 1 && (wall.month - 1) % step.count == 0;
    case Unit::Year:
        break;
    }
    return wall.minute == 0 && wall.monthDay == 1 && wall.month == 1 && wall.year % step.count == 0;
}

/// Indexes of the buckets that start a step's interval. A day starts with its first bucket even
/// where the clock skipped midnight; a skipped hour has no tick. Stops once more than `max` are
/// found.
std::vector<size_t> tickBuckets(const std::vector<Wall> &walls, const Step &step, size_t max)
{
    std::vector<size_t> found;
    for (size_t i = 0; i < walls.size() && found.size() <= max; ++i) {
        const bool begins = i > 0 && step.unit >= Unit::Day &&
                            intervalOf(walls[i], step) > intervalOf(walls[i - 1], step);
        if (begins || isRound(walls[i], step))
            found.push_back(i);
    }
    return found;
}

QString formatted(const QLocale &locale, const QDateTime &time, QStringView pattern)
{
    return pattern.isEmpty() ? QString() : locale.toString(time, pattern);
}

/// Ticks with their labels at the buckets of these indexes. A context is given where it changes.
std::vector<TimeTick> ticksAt(const std::vector<size_t> &indexes, const DataSeries &series,
                              const TimeAxis &axis, const Step &step)
{
    const QLocale locale;
    const bool middle = unitOf(series.axis->frequency()) >= Unit::Day;
    std::vector<TimeTick> ticks;
    QString shown;
    for (const size_t i : indexes) {
        const AxisBucket &bucket = series.interval(i);
        TimeTick tick;
        tick.x = middle ? (axis.x(bucket.start) + axis.x(bucket.end)) / 2 : axis.x(bucket.start);
        tick.onEdge = !middle;
        tick.label = formatted(locale, bucket.wallStart, step.label);
        const QString context = formatted(locale, bucket.wallStart, step.context);
        if (context != shown)
            tick.context = shown = context;
        ticks.push_back(tick);
    }
    return ticks;
}

/// Whether there is enough space between all labels: half of their own width at least.
bool keepApart(const std::vector<TimeTick> &ticks,
               const std::function<double(const QString &)> &width)
{
    const double space = width(QStringLiteral("00"));
    double end = 0;
    for (size_t i = 0; i < ticks.size(); ++i) {
        const double half = width(ticks[i].label) / 2;
        if (i > 0 && ticks[i].x - half < end + std::max(space, half))
            return false;
        end = ticks[i].x + half;
    }
    return true;
}

/// Drops second lines that would run into the next one: the later one says more about the axis.
void dropCrowdedContexts(std::vector<TimeTick> &ticks,
                         const std::function<double(const QString &)> &width)
{
    const double space = width(QStringLiteral("00"));
    TimeTick *next = nullptr;
    for (auto tick = ticks.rbegin(); tick != ticks.rend(); ++tick) {
        if (tick->context.isEmpty())
            continue;
        const double reach = next ? (width(tick->context) + width(next->context)) / 2 + space : 0;
        if (next && next->x - tick->x < reach)
            tick->context.clear();
        else
            next = &*tick;
    }
}

/// The tick of an axis without round times: its first bucket.
TimeTick firstBucketTick(const DataSeries &series, const TimeAxis &axis)
{
    const Unit unit = unitOf(series.axis->frequency());
    const auto step = std::find_if(steps.begin(), steps.end(),
                                   [&](const Step &candidate) { return candidate.unit == unit; });
    return ticksAt({0}, series, axis, *step).front();
}

} // namespace

TimeAxis timeAxis(const DataSeries &series, int labelStep, double length,
                  const std::function<double(const QString &)> &width)
{
    TimeAxis axis;
    const size_t count = series.buckets.size();
    axis.start = series.interval(0).start;
    axis.end = std::max(series.interval(count - 1).end, axis.start + 1);
    axis.length = length;

    std::vector<Wall> walls;
    walls.reserve(count);
    for (size_t i = 0; i < count; ++i)
        walls.push_back(wallOf(series.interval(i).wallStart));

    const size_t minBuckets = static_cast<size_t>(std::max(1, labelStep));
    const double minWidth = width(QStringLiteral("00")) * 2;
    const auto maxTicks = static_cast<size_t>(std::max(1.0, length / minWidth)) + 1;
    for (const Step &step : steps) {
        if (step.unit < unitOf(series.axis->frequency()))
            continue;
        const std::vector<size_t> indexes = tickBuckets(walls, step, maxTicks);
        if (indexes.empty() || indexes.size() > maxTicks)
            continue;
        const auto close = [&](size_t a, size_t b) { return b - a < minBuckets; };
        if (std::adjacent_find(indexes.begin(), indexes.end(), close) != indexes.end())
            continue;
        std::vector<TimeTick> ticks = ticksAt(indexes, series, axis, step);
        if (!keepApart(ticks, width))
            continue;
        // The finest step wins; a coarser one has fewer ticks.
        axis.ticks = std::move(ticks);
        break;
    }
    if (axis.ticks.empty())
        axis.ticks.push_back(firstBucketTick(series, axis));
    dropCrowdedContexts(axis.ticks, width);
    return axis;
}
