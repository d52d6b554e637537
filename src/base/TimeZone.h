#pragma once

#include <QDateTime>
#include <QString>

#include <limits>

/// The local time zone, with the rules that apply at each date-time, the same on every system. It
/// is the zone in the environment variable TZ, given by its id or its file
/// (":/usr/share/zoneinfo/Europe/Berlin"), else the system's. All functions but reloadTimeZone()
/// may be called on any thread.

/// A period in which one offset from UTC applies: instants from <= t < to.
struct OffsetSpan
{
    qint64 from = std::numeric_limits<qint64>::min();
    qint64 to = std::numeric_limits<qint64>::max();
    qint64 offset = 0; ///< milliseconds to add to an instant to get the wall time

    bool contains(qint64 instant) const { return instant >= from && instant < to; }
};

/// The span around an instant. Adjacent spans have different offsets.
OffsetSpan offsetSpanAt(qint64 instant);

/// Wall time as milliseconds since 1970-01-01 00:00 on the wall.
qint64 wallMillisecondsAt(qint64 instant);

/// The instant of a wall time in those milliseconds: for a wall time that occurs twice its first
/// occurrence, for a skipped one by the offset before the change.
qint64 instantOfWall(qint64 wallMilliseconds);

/// The same conversions between wall times and UTC date-times, to the second (fractions dropped).
QDateTime LocalToUTC(const QDateTime &local);
QDateTime UTCToLocal(const QDateTime &utc);

/// The wall time of an instant and the instant of a wall time, to the millisecond.
QDateTime wallTime(qint64 instant);
qint64 instantOf(const QDateTime &wall);

/// The zone for readers of a period: "Europe/Berlin, UTC+02:00"; both offsets if they differ,
/// "Europe/Berlin, UTC+01:00 to UTC+02:00"; "UTC".
QString zoneText(qint64 from, qint64 to);

/// An instant for files that programs read, with the local zone's offset at that time:
/// "2024-03-31T03:00:00+02:00".
QString isoTimeText(qint64 instant);

/// What is wrong with the variable TZ: it names no zone that is known here. Empty: nothing.
QString timeZoneFault();

/// Reads the zone afresh from the environment; for tests that change TZ. Main thread, while
/// no other one runs.
void reloadTimeZone();
