#include "core/TimeZone.h"

#include "core/Error.h"
#include "core/Files.h"

#include <QFile>
#include <QFileInfo>
#include <QTimeZone>

#include <algorithm>

namespace {

constexpr qint64 second = 1000;
constexpr qint64 day = 86'400 * second;

/// The id of the zone whose rules a file holds: one of the system's own files, a link to one, or a
/// copy. Empty for any other.
QByteArray zoneOfFile(const QString &path)
{
    for (const QString &file : {path, QFileInfo(path).canonicalFilePath()}) {
        for (const QLatin1String tree :
             {QLatin1String("/zoneinfo/posix/"), QLatin1String("/zoneinfo/")}) {
            const qsizetype at = file.lastIndexOf(tree);
            const QByteArray id = at < 0 ? QByteArray() : file.mid(at + tree.size()).toUtf8();
            if (QTimeZone(id).isValid())
                return id;
        }
    }
    constexpr qint64 mostBytes = 1 << 20;
    try {
        const QByteArray rules = readFile(path, mostBytes);
        for (const QByteArray &id : QTimeZone::availableTimeZoneIds()) {
            const QString file = QLatin1String("/usr/share/zoneinfo/") + QString::fromLatin1(id);
            if (QFileInfo(file).size() == rules.size() && readFile(file, mostBytes) == rules)
                return id;
        }
    } catch (const Error &) {
        // No file: the system does not know this zone either.
    }
    return QByteArray();
}

/// On some systems Qt does not look at the variable TZ by itself, on none at a file that it names.
QTimeZone localZone()
{
    QByteArray name = qgetenv("TZ");
    if (name.startsWith(':'))
        name.remove(0, 1);
    const QTimeZone named(name.startsWith('/') ? zoneOfFile(QFile::decodeName(name)) : name);
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

QString isoTimeText(qint64 instant)
{
    constexpr qint64 minute = 60'000;
    const qint64 offset = offsetSpanAt(instant).offset / minute; // some old ones have seconds, too
    const QDateTime wall = QDateTime::fromMSecsSinceEpoch(instant + offset * minute, Qt::UTC);
    const qint64 size = qAbs(offset);
    return wall.toString(u"yyyy-MM-ddTHH:mm:ss") + QLatin1Char(offset < 0 ? '-' : '+') +
           QStringLiteral("%1:%2")
               .arg(size / 60, 2, 10, QLatin1Char('0'))
               .arg(size % 60, 2, 10, QLatin1Char('0'));
}

void reloadTimeZone()
{
    local() = Zone();
}
