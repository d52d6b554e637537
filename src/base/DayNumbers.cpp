#include "base/DayNumbers.h"

#include "base/Error.h"

#include <QString>

double dayNumber(qint64 instant)
{
    return static_cast<double>(instant + epochDay * millisecondsPerDay) /
           static_cast<double>(millisecondsPerDay);
}

qint64 instantOfDay(double day)
{
    if (!(day >= firstDay && day < endOfDays))
        throw Error(Overflow, QStringLiteral("Overflow: %1 is not the number of a day").arg(day));
    return static_cast<qint64>(std::nearbyint(day * static_cast<double>(millisecondsPerDay))) -
           epochDay * millisecondsPerDay;
}
