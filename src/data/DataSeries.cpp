#include "data/DataSeries.h"

#include "core/Numbers.h"
#include "core/Status.h"
#include "data/Buckets.h"
#include "definitions/GraphDef.h"

#include <QLocale>

#include <array>

namespace {

/// Without the point that some languages put behind an abbreviation.
QString shortName(QString name)
{
    return name.remove(u'.');
}

/// Month and weekday names of the user's locale, fetched once for a whole axis.
struct Names
{
    Names()
    {
        const QLocale locale;
        for (int i = 0; i < 12; ++i)
            months[static_cast<size_t>(i)] =
                shortName(locale.monthName(i + 1, QLocale::ShortFormat));
        for (int i = 0; i < 7; ++i)
            days[static_cast<size_t>(i)] = shortName(locale.dayName(i + 1, QLocale::ShortFormat));
    }
    const QString &month(const QDate &date) const
    {
        return months[static_cast<size_t>(date.month() - 1)];
    }
    const QString &weekday(const QDate &date) const
    {
        return days[static_cast<size_t>(date.dayOfWeek() - 1)];
    }

    std::array<QString, 12> months;
    std::array<QString, 7> days;
};

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

QString shortLabel(const QDateTime &wall, int frequency, const Names &names)
{
    const QDate date = wall.date();
    switch (frequency) {
    case 0:
        return clockText(wall);
    case 1:
        return hourText(wall);
    case 2:
        return names.weekday(date) + QLatin1Char(' ') + names.month(date) + QLatin1Char(' ') +
               digits(date.day(), 2);
    case 3:
        return names.month(date) + QLatin1String(" '") + digits(date.year() % 100, 2);
    default:
        return digits(date.year(), 4);
    }
}

QString longLabel(const QDateTime &wall, int frequency, const Names &names)
{
    const QDate date = wall.date();
    switch (frequency) {
    case 0:
    case 1:
        return names.month(date) + QLatin1Char(' ') + digits(date.day(), 2) + QLatin1String(" - ") +
               (frequency == 0 ? clockText(wall) : hourText(wall));
    case 2:
        return digits(date.year(), 4) + QLatin1Char('-') + names.month(date) + QLatin1Char('-') +
               digits(date.day(), 2);
    case 3:
        return digits(date.year(), 4) + QLatin1Char('-') + names.month(date);
    default:
        return digits(date.year(), 4);
    }
}

void fill(SeriesBucket &place, const SummaryRow &row, bool isStateItem)
{
    // A counter's bucket whose samples are all without a value is a gap like one without samples.
    place.count = isStateItem ? row.QCount : row.ValueCount;
    place.successes = row.sumiState;
    place.mean = row.avgiValue;
    place.least = row.miniValue;
    place.greatest = row.maxiValue;
}

void fillAxis(const std::vector<SummaryRow> &summary, qint64 first, qint64 last, DataSeries &series)
{
    const Names names;
    const bool isStateItem = series.scale == stateScale;
    auto row = summary.begin();
    for (qint64 at = first; at <= last;) {
        const Bucket bucket = bucketAt(at, series.frequency, series.minuteInterval);
        if (series.buckets.size() == maxChartIntervals)
            throw Error(Overflow, QStringLiteral("Overflow: the period has more than the %1 "
                                                 "intervals that a chart can have")
                                      .arg(groupedNumber(maxChartIntervals, 0)));
        SeriesBucket &place = series.buckets.emplace_back();
        place.start = bucket.start;
        place.end = bucket.end;
        place.wallStart = bucket.wallStart;
        place.label = shortLabel(bucket.wallStart, series.frequency, names);
        place.longLabel = longLabel(bucket.wallStart, series.frequency, names);
        if (row != summary.end() && row->start < bucket.end) {
            if (row->start != bucket.start)
                throw Error(TypeMismatch,
                            QStringLiteral("The summary row %1 is no interval of this series")
                                .arg(row->QDate));
            fill(place, *row++, isStateItem);
        }
        at = bucket.end;
    }
}

} // namespace

std::optional<Error> GenerateDataSeries(const std::vector<SummaryRow> &summary, qint64 start,
                                        qint64 end, qint64 latest, DataSeries &series)
{
    series.buckets.clear();
    try {
        qint64 first = start;
        qint64 last = std::min(end, latest);
        if (!summary.empty()) {
            first = std::min(first, summary.front().start);
            last = std::max(last, summary.back().start);
        }
        fillAxis(summary, first, last, series);
        return std::nullopt;
    } catch (const Error &error) {
        ShowStatus(QLatin1String("Error while generating data series ") + errorTail(error));
        return error;
    }
}
