#pragma once

#include <QDateTime>

/// Two kinds of time run through the program:
///
/// - a *wall time* is what a calendar and a clock on the wall show, without a zone. It is a
///   QDateTime of spec UTC with local date and time fields, so that adding days or hours never
///   involves a daylight-saving rule. Definitions, schedules and pages use wall times.
/// - an *instant* is a count of milliseconds since 1970-01-01 UTC (qint64). Samples and everything
///   that measures duration use instants. base/TimeZone.h converts between the two.

/// The current instant. The only source of "now" in the program.
qint64 currentInstant();

/// The current wall time in the local zone, to the millisecond.
QDateTime now();

/// Holds the clock still at an instant for as long as the object lives; for tests.
class FrozenClock
{
public:
    explicit FrozenClock(qint64 instant);
    /// Freezes at the instant of a local wall time written as ISO text ("2024-03-31T14:00:00").
    explicit FrozenClock(const QString &wallTime);
    ~FrozenClock();
    FrozenClock(const FrozenClock &) = delete;
    FrozenClock &operator=(const FrozenClock &) = delete;

    void advance(qint64 milliseconds);
};
