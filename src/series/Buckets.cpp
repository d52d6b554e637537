#include "series/Buckets.h"

#include "base/Error.h"
#include "base/TimeZone.h"
#include "definitions/clsGraphDef.h"

#include <algorithm>

namespace {

constexpr qint64 minute = 60'000;
constexpr qint64 hour = 60 * minute;
constexpr qint64 day = 24 * hour;

/// The range of wall times that share a key: start <= wall < end, in milliseconds since 1970-01-01
/// 00:00 on the wall.
struct WallRange
{
    qint64 start;
    qint64 end;
};

qint64 floorTo(qint64 value, qint64 unit)
{
    const qint64 rest = value % unit;
    return value - (rest < 0 ? rest + unit : rest);
}

qint64 wallOf(const QDate &date)
{
    return (date.toJulianDay() - 2'440'588) * day; // the Julian day of 1970-01-01
}

QDate dateOf(qint64 wall)
{
    return QDate::fromJulianDay(floorTo(wall, day) / day + 2'440'588);
}

WallRange minuteRange(qint64 wall, qint64 interval)
{
    const qint64 length = (interval < 2 ? 1 : interval) * minute;
    const qint64 hourStart = floorTo(wall, hour);
    const qint64 start = hourStart + floorTo(wall - hourStart, length);
    return {start, std::min(start + length, hourStart + hour)};
}

WallRange wallRange(qint64 wall, ChartFrequencyCode frequency, int minuteInterval)
{
    switch (frequency) {
    case ByMinute:
        return minuteRange(wall, minuteInterval);
    case ByHour: {
        const qint64 start = floorTo(wall, hour);
        return {start, start + hour};
    }
    case ByDay: {
        const qint64 start = floorTo(wall, day);
        return {start, start + day};
    }
    case ByMonth: {
        const QDate date = dateOf(wall);
        const QDate first(date.year(), date.month(), 1);
        return {wallOf(first), wallOf(first.addMonths(1))};
    }
    case ByYear: {
        const QDate first(dateOf(wall).year(), 1, 1);
        return {wallOf(first), wallOf(first.addYears(1))};
    }
    default:
        throw Error(TypeMismatch,
                    QStringLiteral("The chart frequency %1 is not 0 to 4").arg(frequency));
    }
}

bool holds(const WallRange &range, qint64 wall)
{
    return wall >= range.start && wall < range.end;
}

/// The start of the time with this range's key, searched backwards from a span that overlaps it:
/// across every change of the offset at which the wall clock stays within the range.
qint64 stretchStart(const WallRange &range, OffsetSpan span)
{
    while (range.start - span.offset <= span.from) {
        const OffsetSpan previous = offsetSpanAt(span.from - 1);
        if (!holds(range, span.from - 1 + previous.offset))
            return span.from;
        span = previous;
    }
    return range.start - span.offset;
}

qint64 stretchEnd(const WallRange &range, OffsetSpan span)
{
    while (range.end - span.offset >= span.to) {
        const OffsetSpan next = offsetSpanAt(span.to);
        if (!holds(range, span.to + next.offset))
            return span.to;
        span = next;
    }
    return range.end - span.offset;
}

/// The number at a position of a key; -1 if there are other characters.
int digitsAt(QStringView key, qsizetype from, qsizetype count)
{
    if (from + count > key.size())
        return -1;
    int number = 0;
    for (const QChar character : key.mid(from, count)) {
        if (character < u'0' || character > u'9')
            return -1;
        number = number * 10 + (character.unicode() - u'0');
    }
    return number;
}

} // namespace

Bucket bucketAt(qint64 instant, ChartFrequencyCode frequency, int minuteInterval)
{
    const OffsetSpan span = offsetSpanAt(instant);
    const WallRange range = wallRange(instant + span.offset, frequency, minuteInterval);
    return {stretchStart(range, span), stretchEnd(range, span),
            QDateTime::fromMSecsSinceEpoch(range.start, Qt::UTC)};
}

QString bucketKey(const QDateTime &wallStart, ChartFrequencyCode frequency)
{
    const QDate date = wallStart.date();
    const QTime time = wallStart.time();
    QString key;
    key.reserve(12);
    const auto append = [&key](int number, int digits) {
        for (int unit = digits == 4 ? 1000 : 10; unit > 0; unit /= 10)
            key += QChar(u'0' + number / unit % 10);
    };
    append(date.year(), 4);
    if (frequency <= ByMonth)
        append(date.month(), 2);
    if (frequency <= ByDay)
        append(date.day(), 2);
    if (frequency <= ByHour)
        append(time.hour(), 2);
    if (frequency <= ByMinute)
        append(time.minute(), 2);
    return key;
}

QDateTime BucketStartDate(const QString &key, ChartFrequencyCode frequency)
{
    const QDate date(digitsAt(key, 0, 4), frequency <= ByMonth ? digitsAt(key, 4, 2) : 1,
                     frequency <= ByDay ? digitsAt(key, 6, 2) : 1);
    const QTime time(frequency <= ByHour ? digitsAt(key, 8, 2) : 0,
                     frequency <= ByMinute ? digitsAt(key, 10, 2) : 0);
    if (!date.isValid() || !time.isValid() || date.year() < 0)
        return {};
    return QDateTime(date, time, Qt::UTC);
}
