#include "core/TimeZone.h"

#include <QTimeZone>

#include <algorithm>

namespace {

constexpr qint64 second = 1000;
constexpr qint64 day = 86'400 * second;

/// On some systems Qt does not look at the variable TZ by itself.
QTimeZone localZone()
{
    const QTimeZone named(qgetenv("TZ"));
    return named.isValid() ? named : QTimeZone::systemTimeZone();
}

struct Zone
{
    QTimeZone zone = localZone();
    OffsetSpan last{0, 0, 0}; // empty: contains nothing
};

Zone &local()
{
    static Zone zone;
    return zone;
}

QDateTime utcDateTime(qint64 milliseconds)
{
    return QDateTime::fromMSecsSinceEpoch(milliseconds, Qt::UTC);
}

qint64 offsetAt(const QTimeZone &zone, qint64 instant)
{
    return zone.offsetFromUtc(utcDateTime(instant)) * second;
}

/// "UTC+02:00"
QString offsetText(qint64 offset)
{
    const qint64 minutes = std::abs(offset) / (60 * second);
    return QStringLiteral("UTC%1%2:%3")
        .arg(QLatin1Char(offset < 0 ? '-' : '+'))
        .arg(minutes / 60, 2, 10, QLatin1Char('0'))
        .arg(minutes % 60, 2, 10, QLatin1Char('0'));
}

} // namespace

OffsetSpan offsetSpanAt(qint64 instant)
{
    Zone &zone = local();
    if (zone.last.contains(instant))
        return zone.last;

    OffsetSpan span;
    span.offset = offsetAt(zone.zone, instant);
    if (zone.zone.hasTransitions()) {
        // A transition may change the name alone: go on until the offset differs.
        for (QTimeZone::OffsetData at = zone.zone.nextTransition(utcDateTime(instant));
             at.atUtc.isValid(); at = zone.zone.nextTransition(at.atUtc)) {
            if (at.offsetFromUtc * second != span.offset) {
                span.to = at.atUtc.toMSecsSinceEpoch();
                break;
            }
        }
        for (QTimeZone::OffsetData at = zone.zone.previousTransition(utcDateTime(instant + 1));
             at.atUtc.isValid(); at = zone.zone.previousTransition(at.atUtc)) {
            const qint64 when = at.atUtc.toMSecsSinceEpoch();
            if (offsetAt(zone.zone, when - 1) != span.offset) {
                span.from = when;
                break;
            }
        }
    }
    zone.last = span;
    return span;
}

qint64 wallMillisecondsAt(qint64 instant)
{
    return instant + offsetSpanAt(instant).offset;
}

qint64 instantOfWall(qint64 wallMilliseconds)
{
    // No zone is a day or more away from UTC and no two changes lie within two days, so the
    // offsets a day before and after are the only candidates.
    const qint64 before = offsetSpanAt(wallMilliseconds - day).offset;
    const qint64 after = offsetSpanAt(wallMilliseconds + day).offset;
    const qint64 first = wallMilliseconds - before;
    if (before == after || offsetSpanAt(first).offset == before)
        return first;
    const qint64 second_ = wallMilliseconds - after;
    return offsetSpanAt(second_).offset == after ? second_ : first;
}

QDateTime LocalToUTC(const QDateTime &wall)
{
    return utcDateTime(instantOf(wall) / second * second);
}

QDateTime UTCToLocal(const QDateTime &utc)
{
    return wallTime(utc.toMSecsSinceEpoch() / second * second);
}

QDateTime wallTime(qint64 instant)
{
    return utcDateTime(wallMillisecondsAt(instant));
}

qint64 instantOf(const QDateTime &wall)
{
    Q_ASSERT(wall.timeSpec() == Qt::UTC);
    return instantOfWall(wall.toMSecsSinceEpoch());
}

QString zoneText(qint64 from, qint64 to)
{
    const qint64 first = offsetSpanAt(from).offset;
    const qint64 last = offsetSpanAt(to).offset;
    const QString id = QString::fromLatin1(local().zone.id());
    const bool plainUtc =
        first == 0 && last == 0 &&
        (id.isEmpty() || id == u"UTC" || id == u"Etc/UTC" || id == u"Etc/UCT" || id == u"Z");
    if (plainUtc)
        return QStringLiteral("UTC");
    QString shift = offsetText(first);
    if (last != first)
        shift += QLatin1String(" to ") + offsetText(last);
    return id.isEmpty() ? shift : id + QLatin1String(", ") + shift;
}

void reloadTimeZone()
{
    local() = Zone();
}
