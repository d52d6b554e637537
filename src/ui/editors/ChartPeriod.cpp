#include "ui/editors/ChartPeriod.h"

#include "base/Clock.h"
#include "base/Error.h"
#include "base/Numbers.h"
#include "base/TimeZone.h"
#include "config/Program.h"
#include "config/clsGrapherConfig.h"
#include "report/OutputTree.h"
#include "series/BucketAxis.h"
#include "series/Buckets.h"

#include <QLocale>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr qint64 minute = 60'000; // milliseconds
constexpr qint64 hour = 60 * minute;
constexpr qint64 day = 24 * hour;

/// Milliseconds of one interval, at least; 0 for an unknown frequency.
qint64 shortestInterval(const clsGraphDef &chart)
{
    switch (chart.ChartFrequency) {
    case ByMinute:
        return std::clamp(chart.MinuteInterval, 1, 60) * minute;
    case ByHour:
        return hour;
    case ByDay:
        return day;
    case ByMonth:
        return 28 * day;
    case ByYear:
        return 365 * day;
    default:
        return 0;
    }
}

QString intervalInWords(const clsGraphDef &chart)
{
    switch (chart.ChartFrequency) {
    case ByMinute:
        return chart.MinuteInterval == 1 ? QStringLiteral("a minute")
                                         : QStringLiteral("%1 minutes").arg(chart.MinuteInterval);
    case ByHour:
        return QStringLiteral("an hour");
    case ByDay:
        return QStringLiteral("a day");
    case ByMonth:
        return QStringLiteral("a month");
    case ByYear:
        return QStringLiteral("a year");
    default:
        return QStringLiteral("an unknown kind");
    }
}

QString countInWords(qint64 count)
{
    return groupedNumber(static_cast<double>(count), 0) +
           (count == 1 ? QLatin1String(" interval") : QLatin1String(" intervals"));
}

QString spanInWords(const clsGraphDef &chart)
{
    switch (spanOf(chart)) {
    case ChartSpan::LastIntervals:
        return chart.ChartDuration == CustomRange ? QStringLiteral("Up to the stored end")
                                                  : QStringLiteral("If run now");
    case ChartSpan::Calendar:
        return durationName(chart.ChartDuration).isEmpty() ? QStringLiteral("Unknown period")
                                                           : durationName(chart.ChartDuration);
    case ChartSpan::Custom:
        break;
    }
    return QStringLiteral("Custom range");
}

/// A pseudo-random number from 0 to 1 for a seed.
double noise(quint64 seed)
{
    seed += 0x9E3779B97F4A7C15U;
    seed = (seed ^ (seed >> 30)) * 0xBF58476D1CE4E5B9U;
    seed = (seed ^ (seed >> 27)) * 0x94D049BB133111EBU;
    return static_cast<double>((seed ^ (seed >> 31)) >> 11) / 9007199254740992.0; // 2^53
}

/// Where in the sample data a bucket is.
struct SampleContext
{
    double part;    ///< of the period before it
    qint64 stretch; ///< milliseconds in which failures are clustered
};

/// One test every five minutes, with failures in a few periods; values that vary with the hour.
BucketValue sampleValue(const AxisBucket &bucket, const SampleContext &context)
{
    const auto seed = static_cast<quint64>(bucket.start / minute);
    const auto stretch = static_cast<quint64>(bucket.start / context.stretch);
    BucketValue value;
    value.count = std::max<qint64>(1, (bucket.end - bucket.start) / (5 * minute));
    value.successes = value.count;
    if (noise(stretch) < 0.06)
        value.successes -=
            std::llround(static_cast<double>(value.count) * (0.1 + 0.6 * noise(seed + 1)));
    const double turns = static_cast<double>(bucket.wallStart.time().msecsSinceStartOfDay()) /
                             static_cast<double>(day) +
                         context.part * 3;
    value.mean = 45 + 20 * std::sin(2 * std::numbers::pi * turns) + 10 * noise(seed + 2);
    value.min = value.mean - 3 - 8 * noise(seed + 3);
    value.max = value.mean + 3 + 18 * noise(seed + 4);
    return value;
}

/// A short gap, so that the preview shows how gaps look.
bool inGap(double part)
{
    return part > 0.60 && part < 0.63;
}

DataSeries sampleSeries(const clsGraphDef &chart, qint64 start, qint64 end)
{
    DataSeries series;
    series.axis =
        std::make_shared<const BucketAxis>(start, end, chart.ChartFrequency, chart.MinuteInterval);
    series.buckets.resize(series.axis->size());
    const qint64 stretch = std::max((end - start) / 60, shortestInterval(chart));
    for (size_t i = 0; i < series.buckets.size(); ++i) {
        const qint64 at = std::max(start, series.interval(i).start);
        const double part = static_cast<double>(at - start) / static_cast<double>(end - start + 1);
        if (!inGap(part))
            series.buckets[i] = sampleValue(series.interval(i), {part, stretch});
    }
    return series;
}

/// The number of intervals of a chart. The last n intervals touch n + 1, as they start within one.
qint64 intervalsTold(const clsGraphDef &run)
{
    return spanOf(run) == ChartSpan::LastIntervals ? std::max(run.IntervalCount, 0)
                                                   : intervalsTouched(run);
}

} // namespace

QString momentInWords(const QDateTime &wall)
{
    return QLocale().toString(wall, QStringLiteral("dddd yyyy-MM-dd HH:mm"));
}

QStringList frequencyNames()
{
    return {QStringLiteral("Minutes"), QStringLiteral("Hour"), QStringLiteral("Day"),
            QStringLiteral("Month"), QStringLiteral("Year")};
}

QString durationName(qint32 code)
{
    static const QStringList names = {
        QStringLiteral("Today"),
        QStringLiteral("This Week"),
        QStringLiteral("This Month"),
        QStringLiteral("This Year"),
        QStringLiteral("Yesterday"),
        QStringLiteral("Last Week"),
        QStringLiteral("Last Month"),
        QStringLiteral("Last Year"),
        QString(),
        QStringLiteral("This Week from Monday"),
        QStringLiteral("Last Week from Monday"),
        QStringLiteral("Last 7 Full Days"),
        QStringLiteral("This Quarter"),
        QStringLiteral("Last Quarter"),
    };
    return names.value(code);
}

QStringList qualityNames()
{
    return {QStringLiteral("Plain, smallest files"), QStringLiteral("Plain lines, smooth text"),
            QStringLiteral("Smooth"), QStringLiteral("Smooth, twice the pixels")};
}

ChartSpan spanOf(const clsGraphDef &chart)
{
    if (chart.SubFrequency == LastIntervals)
        return ChartSpan::LastIntervals;
    return chart.SubFrequency == FixedPeriod && chart.ChartDuration != CustomRange
               ? ChartSpan::Calendar
               : ChartSpan::Custom;
}

qint64 intervalsTouched(const clsGraphDef &chart)
{
    const qint64 shortest = shortestInterval(chart);
    if (shortest == 0 || chart.EndTime < chart.StartTime)
        return 0;
    const qint64 estimate = chart.StartTime.msecsTo(chart.EndTime) / shortest + 1;
    if (estimate > maxSensibleIntervals + 1)
        return estimate;
    qint64 count = 0;
    const qint64 end = instantOf(chart.EndTime);
    for (qint64 at = instantOf(chart.StartTime); at <= end; ++count)
        at = bucketAt(at, chart.ChartFrequency, chart.MinuteInterval).end;
    return count;
}

QString periodInWords(const clsGraphDef &chart)
{
    const clsGraphDef run = chartOfRun(chart, now());
    return QStringLiteral("%1: %2 to %3, %4 of %5")
        .arg(spanInWords(run), momentInWords(run.StartTime), momentInWords(run.EndTime),
             countInWords(intervalsTold(run)), intervalInWords(run));
}

QString shortPeriodInWords(const clsGraphDef &chart)
{
    const clsGraphDef run = chartOfRun(chart, now());
    const QString intervals =
        QStringLiteral("%1 of %2").arg(countInWords(intervalsTold(run)), intervalInWords(run));
    if (spanOf(run) == ChartSpan::LastIntervals)
        return QLatin1String("Last ") + intervals;
    return spanInWords(run) + QLatin1String(", ") + intervals;
}

QString tooManyIntervals(const clsGraphDef &chart)
{
    const clsGraphDef run = chartOfRun(chart, now());
    if (intervalsTouched(run) <= maxChartIntervals)
        return {};
    return QStringLiteral("%1: a chart can have at most %2. Choose longer intervals or a shorter "
                          "period.")
        .arg(countInWords(intervalsTold(run)), groupedNumber(maxChartIntervals, 0));
}

QStringList periodWarnings(const clsGraphDef &chart)
{
    const clsGraphDef run = chartOfRun(chart, now());
    const ChartSpan span = spanOf(run);
    QStringList warnings;
    if (shortestInterval(run) == 0)
        warnings += QStringLiteral("The file holds a kind of interval that is not known (code %1). "
                                   "Choose another one.")
                        .arg(run.ChartFrequency);
    if (span == ChartSpan::LastIntervals && run.IntervalCount <= 0)
        warnings += QStringLiteral("No intervals: the chart would be empty. Enter how many it "
                                   "shows.");
    if (span == ChartSpan::Calendar && durationName(run.ChartDuration).isEmpty())
        warnings += QStringLiteral("The file holds a calendar period that is not known (code %1). "
                                   "Choose another one.")
                        .arg(run.ChartDuration);
    if (run.ChartFrequency == ByMinute) {
        if (run.MinuteInterval <= 0)
            warnings += QStringLiteral("An interval needs at least 1 minute.");
        else if (run.MinuteInterval > 60)
            warnings += QStringLiteral("Intervals of minutes end with the hour, at the latest. "
                                       "Choose Hour for longer ones.");
        else if (60 % run.MinuteInterval != 0)
            warnings +=
                QStringLiteral("The last interval of each hour is shorter: an hour is not a "
                               "multiple of %1 minutes.")
                    .arg(run.MinuteInterval);
    }
    if (span != ChartSpan::LastIntervals && run.EndTime <= run.StartTime)
        warnings += QStringLiteral("The range ends before it starts.");
    else if (span == ChartSpan::Custom && run.StartTime > now())
        warnings += QStringLiteral("The range lies in the future: there are no samples yet.");
    if (const QString fault = tooManyIntervals(chart); !fault.isEmpty())
        warnings += fault;
    else if (const qint64 count = intervalsTold(run); count > maxSensibleIntervals)
        warnings += QStringLiteral("%1: more than a chart can show, and slow to make. Choose "
                                   "longer intervals or a shorter period.")
                        .arg(countInWords(count));
    return warnings;
}

Chart sampleChart(const clsGraphDef &chart, SampleItem item, qint64 latest, QString &note)
{
    clsGraphDef run = chartOfRun(chart, wallTime(latest));
    qint64 start = instantOf(run.StartTime);
    const qint64 end = instantOf(run.EndTime);
    const qint64 seen = std::min(end, latest);
    const qint64 shortest = shortestInterval(run);
    if (shortest == 0)
        throw Error(TypeMismatch, QStringLiteral("The kind of interval is not known."));
    note.clear();
    if (seen - start > maxSensibleIntervals * shortest) {
        start = seen - maxSensibleIntervals * shortest;
        note = QStringLiteral("The preview shows the last %1 only.")
                   .arg(countInWords(maxSensibleIntervals));
    } else if (start <= latest && end > latest) {
        note = QStringLiteral("Charts reach up to the time of the run.");
    }

    DataSeries series = sampleSeries(run, start, seen);
    series.scale = item == SampleItem::State ? stateScale : 1;

    ChartFrame frame;
    frame.title = run.ChartTitle;
    frame.subtitle = item == SampleItem::State ? QStringLiteral("Sample device \u2013 Ping")
                                               : QStringLiteral("Sample device \u2013 Round trip");
    frame.period = periodText(run.StartTime, run.EndTime);
    frame.zone = zoneText(instantOf(run.StartTime), end);
    frame.credit = QStringLiteral("Vantrel Graphing Tool, %1").arg(now().date().year());
    frame.size = QSize(gConfig().IMG_Width, gConfig().IMG_Height);
    frame.quality = run.ChartQuality;
    frame.labelStep = run.LabelStep;
    if (item == SampleItem::State)
        return StateChart{frame, std::move(series)};
    return CounterChart{frame, run.SampleLabel, QStringLiteral("ms"), std::move(series)};
}
