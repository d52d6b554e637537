#pragma once

#include <QtGlobal>

/// Date-times as the Access dialect counts them: days since 1899-12-30 00:00, the time of day as
/// the fraction. All days that pass through SQL are made here, so that equal milliseconds are equal
/// numbers and inclusive bounds are exact.

/// The day number of an instant (milliseconds since 1970-01-01 UTC).
double dayNumber(qint64 instant);

/// The instant of a day number, rounded to the millisecond. Throws Error(Overflow) where
/// the day does not lie within the years 100 to 9999.
qint64 instantOfDay(double day);
