#pragma once

#include <QtGlobal>

#include <cmath>
#include <optional>

/// Date-times as databases count them: days since 1899-12-30 00:00, the time of day as the
/// fraction. Instants are milliseconds since 1970-01-01 UTC. Pure functions, any thread.

inline constexpr qint64 millisecondsPerDay = 86'400'000;
inline constexpr qint64 epochDay = 25'569;     ///< 1970-01-01
inline constexpr double firstDay = -657'434;   ///< 0100-01-01
inline constexpr double endOfDays = 2'958'466; ///< the day after 9999-12-31

/// The day number of an instant. All day numbers in SQL texts come from here, so that equal
/// milliseconds are equal numbers and inclusive bounds are exact.
double dayNumber(qint64 instant);

/// The instant of a day number, rounded to the millisecond. Throws Error(Overflow) outside the
/// years 100 to 9999.
qint64 instantOfDay(double day);

/// The instant of a date in an Access file: a day number, except that the fraction of a negative
/// one counts forward too (-1.25 is 06:00 on 1899-12-29). Rounded to the millisecond; null outside
/// the years 100 to 9999.
inline std::optional<qint64> instantOfAccessDate(double day)
{
    if (!(day > firstDay - 1 && day < endOfDays))
        return std::nullopt;
    if (day < 0)
        day = 2 * std::trunc(day) - day;
    // Shifted so that all are positive, and cutting off the fraction rounds.
    constexpr qint64 shift = 700'000 * millisecondsPerDay;
    return static_cast<qint64>(day * millisecondsPerDay + (shift + 0.5)) - shift -
           epochDay * millisecondsPerDay;
}
