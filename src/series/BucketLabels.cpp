#include "series/BucketLabels.h"

#include "definitions/clsGraphDef.h"

namespace {

/// Without the point that some languages put after an abbreviation.
QString shortName(QString name)
{
    return name.remove(u'.');
}

QString digits(int number, int count)
{
    return QString::number(number).rightJustified(count, u'0');
}

QString clockText(const QDateTime &wall)
{
    return digits(wall.time().hour(), 2) + QLatin1Char(':') + digits(wall.time().minute(), 2);
}

QString hourText(const QDateTime &wall)
{
    return digits(wall.time().hour(), 2) + QLatin1String(":00");
}

} // namespace

BucketLabels::BucketLabels(ChartFrequencyCode frequency, const QLocale &locale)
    : m_frequency(frequency)
{
    for (int i = 0; i < 12; ++i)
        m_months[static_cast<size_t>(i)] = shortName(locale.monthName(i + 1, QLocale::ShortFormat));
    for (int i = 0; i < 7; ++i)
        m_days[static_cast<size_t>(i)] = shortName(locale.dayName(i + 1, QLocale::ShortFormat));
}

const QString &BucketLabels::month(const QDate &date) const
{
    return m_months[static_cast<size_t>(date.month() - 1)];
}

const QString &BucketLabels::weekday(const QDate &date) const
{
    return m_days[static_cast<size_t>(date.dayOfWeek() - 1)];
}

QString BucketLabels::shortForm(const QDateTime &wallStart) const
{
    const QDate date = wallStart.date();
    switch (m_frequency) {
    case ByMinute:
        return clockText(wallStart);
    case ByHour:
        return hourText(wallStart);
    case ByDay:
        return weekday(date) + QLatin1Char(' ') + month(date) + QLatin1Char(' ') +
               digits(date.day(), 2);
    case ByMonth:
        return month(date) + QLatin1String(" '") + digits(date.year() % 100, 2);
    default:
        return digits(date.year(), 4);
    }
}

QString BucketLabels::longForm(const QDateTime &wallStart) const
{
    const QDate date = wallStart.date();
    switch (m_frequency) {
    case ByMinute:
    case ByHour:
        return month(date) + QLatin1Char(' ') + digits(date.day(), 2) + QLatin1String(" - ") +
               (m_frequency == ByMinute ? clockText(wallStart) : hourText(wallStart));
    case ByDay:
        return digits(date.year(), 4) + QLatin1Char('-') + month(date) + QLatin1Char('-') +
               digits(date.day(), 2);
    case ByMonth:
        return digits(date.year(), 4) + QLatin1Char('-') + month(date);
    default:
        return digits(date.year(), 4);
    }
}
