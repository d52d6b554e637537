#include "base/Durations.h"

#include "base/Numbers.h"

#include <algorithm>

namespace {

QString counted(qint64 number, QLatin1String unit)
{
    return QString::number(number) + u' ' + unit +
           (number == 1 ? QLatin1String() : QLatin1String("s"));
}

} // namespace

QString durationText(qint64 seconds)
{
    constexpr qint64 minute = 60;
    if (seconds < minute)
        return counted(std::max<qint64>(0, seconds), QLatin1String("second"));
    const qint64 minutes = (seconds + minute / 2) / minute;
    if (minutes < 60)
        return counted(minutes, QLatin1String("minute"));
    return QStringLiteral("%1 h %2 min")
        .arg(groupedNumber(static_cast<double>(minutes / 60), 0))
        .arg(minutes % 60, 2, 10, QLatin1Char('0'));
}
