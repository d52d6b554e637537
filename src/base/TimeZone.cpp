#include "base/TimeZone.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/ProgramState.h"

#include <QFile>
#include <QFileInfo>
#include <QTimeZone>

#include <algorithm>
#include <cstdlib>

namespace {

constexpr qint64 second = 1000;
constexpr qint64 day = 86'400 * second;

/// The id of the zone in a file: one of the system's own files, a link to one, or a copy. Empty for
/// any other.
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
    constexpr qint64 maxBytes = 1 << 20;
    try {
        const QByteArray rules = readFile(path, maxBytes);
        for (const QByteArray &id : QTimeZone::availableTimeZoneIds()) {
            const QString file = QLatin1String("/usr/share/zoneinfo/") + QString::fromLatin1(id);
            if (QFileInfo(file).size() == rules.size() && readFile(file, maxBytes) == rules)
                return id;
        }
    } catch (const Error &) {
        // No file: the system does not know this zone either.
    }
    return QByteArray();
}

/// The zone that the variable TZ names; not valid when it is empty, or that zone is not known.
QTimeZone namedZone()
{
    QByteArray name = qgetenv("TZ");
    if (name.startsWith(':'))
        name.remove(0, 1);
    if (name.startsWith('/'))
        name = zoneOfFile(QFile::decodeName(name));
    // Qt takes any word for a rule such as "EST5EDT", which has an offset.
    const bool isKnown =
        QTimeZone::isTimeZoneIdAvailable(name) ||
        std::any_of(name.begin(), name.end(), [](char c) { return c >= '0' && c <= '9'; });
    return isKnown ? QTimeZone(name) : QTimeZone();
}

/// Qt reads the variable TZ only on some systems, and never a file in it.
QTimeZone localZone()
{
    const QTimeZone named = namedZone();
    if (named.isValid())
        return named;
    const QTimeZone system = QTimeZone::systemTimeZone(); // it may have an unknown name of TZ's
    const bool isSystems =
        qEnvironmentVariableIsEmpty("TZ") || QTimeZone::isTimeZoneIdAvailable(system.id());
    return isSystems ? system : QTimeZone::utc();
}

/// Threads share it; nothing but reloadTimeZone() changes it.
struct CurrentZone
{
    QTimeZone zone = localZone();
    size_t key = qHash(zone.id()); ///< differs between zones
};

const StatePart<CurrentZone> current;

/// The span that a thread asked for last, as questions come in order of time.
struct LastSpan
{
    size_t zoneKey = 0;
    OffsetSpan span{0, 0, 0}; // empty: contains nothing
};

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

/// The span around an instant, from the zone's rules.
OffsetSpan findSpan(const QTimeZone &zone, qint64 instant)
{
    OffsetSpan span;
    span.offset = offsetAt(zone, instant);
    if (!zone.hasTransitions())
        return span;
    // A transition may change only the name: continue until the offset differs.
    for (QTimeZone::OffsetData at = zone.nextTransition(utcDateTime(instant)); at.atUtc.isValid();
         at = zone.nextTransition(at.atUtc)) {
        if (at.offsetFromUtc * second != span.offset) {
            span.to = at.atUtc.toMSecsSinceEpoch();
            break;
        }
    }
    for (QTimeZone::OffsetData at = zone.previousTransition(utcDateTime(instant + 1));
         at.atUtc.isValid(); at = zone.previousTransition(at.atUtc)) {
        const qint64 when = at.atUtc.toMSecsSinceEpoch();
        if (offsetAt(zone, when - 1) != span.offset) {
            span.from = when;
            break;
        }
    }
    return span;
}

} // namespace

OffsetSpan offsetSpanAt(qint64 instant)
{
    thread_local LastSpan last; // has no destructor: on Windows those may run too late
    if (last.zoneKey != current->key || !last.span.contains(instant))
        last = {current->key, findSpan(current->zone, instant)};
    return last.span;
}

qint64 wallMillisecondsAt(qint64 instant)
{
    return instant + offsetSpanAt(instant).offset;
}

qint64 instantOfWall(qint64 wallMilliseconds)
{
    // Offsets are less than a day and changes more than two days apart, so the offsets a day before
    // and after are the only candidates.
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
    const QString id = QString::fromLatin1(current->zone.id());
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

QString timeZoneFault()
{
    if (qEnvironmentVariableIsEmpty("TZ") || namedZone().isValid())
        return QString();
    return QStringLiteral("the variable TZ names no known time zone: '%1'; times are in %2")
        .arg(qEnvironmentVariable("TZ"), zoneText(0, 0));
}

void reloadTimeZone()
{
    *current = CurrentZone();
}
