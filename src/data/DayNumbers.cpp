#include "data/DayNumbers.h"

#include "core/Error.h"

#include <QString>

#include <cmath>

namespace {
constexpr qint64 dayLength = 86'400'000;
constexpr qint64 firstDay = -25'569 * dayLength; // 1899-12-30 as an instant
constexpr double leastDay = -657'434;            // 0100-01-01
constexpr double mostDay = 2'958'466;            // 10000-01-01
} // namespace

double dayNumber(qint64 instant)
{
    return static_cast<double>(instant - firstDay) / static_cast<double>(dayLength);
}

qint64 instantOfDay(double day)
{
    if (!(day >= leastDay && day < mostDay))
        throw Error(Overflow, QStringLiteral("Overflow: %1 is the number of no day").arg(day));
    return static_cast<qint64>(std::nearbyint(day * static_cast<double>(dayLength))) + firstDay;
}
