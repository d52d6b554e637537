#include "definitions/ServiceHours.h"

#include "base/Clock.h"
#include "base/Error.h"
#include "base/TimeZone.h"

#include <QRegularExpression>

namespace {

constexpr int daysPerWeek = 7;
constexpr int minutesPerDay = 24 * 60;
constexpr int secondsPerMinute = 60;

const QStringList weekdays{QStringLiteral("mon"), QStringLiteral("tue"), QStringLiteral("wed"),
                           QStringLiteral("thu"), QStringLiteral("fri"), QStringLiteral("sat"),
                           QStringLiteral("sun")};

/// Minutes since midnight of "8:00" to "24:00"; -1 for anything later.
int minutesOf(const QString &hours, const QString &minutes)
{
    const int total = hours.toInt() * 60 + minutes.toInt();
    return minutes.toInt() < 60 && total <= minutesPerDay ? total : -1;
}

} // namespace

ServiceHours::ServiceHours(const QString &text)
    : m_text(text)
{
    static const QRegularExpression form(
        QStringLiteral("^([a-z]{3})(?:-([a-z]{3}))? +(\\d{1,2}):(\\d\\d)-(\\d{1,2}):(\\d\\d)$"));
    if (text.trimmed().isEmpty())
        return;
    for (const QString &part : text.split(u',')) {
        const auto match = form.match(part.trimmed().toLower());
        const auto first = weekdays.indexOf(match.captured(1));
        const auto last = match.captured(2).isEmpty() ? first : weekdays.indexOf(match.captured(2));
        const int begin = minutesOf(match.captured(3), match.captured(4));
        int end = minutesOf(match.captured(5), match.captured(6));
        if (!match.hasMatch() || first < 0 || last < 0 || begin < 0 || end < 0)
            throw Error(TypeMismatch, QStringLiteral("ServiceHours: '%1' is not of the form "
                                                     "'Mon-Fri 08:00-18:00'")
                                          .arg(part.trimmed()));
        if (end <= begin)
            end += minutesPerDay;
        for (auto day = first;; day = (day + 1) % daysPerWeek) { // "Sat-Mon" goes on over Sunday
            m_spans.push_back({static_cast<int>(day) + 1, begin, end});
            if (day == last)
                break;
        }
    }
}

std::vector<std::pair<qint64, qint64>> ServiceHours::stretches(qint64 from, qint64 to) const
{
    const auto secondOf = [](const QDate &date, int minute) {
        QDateTime wall(date.addDays(minute / minutesPerDay), QTime(0, 0), Qt::UTC);
        wall = wall.addSecs((minute % minutesPerDay) * secondsPerMinute);
        return instantOf(wall) / 1000;
    };
    std::vector<std::pair<qint64, qint64>> stretches;
    // Those of the day before may reach into the first day.
    const QDate last = wallTime(to * 1000).date();
    for (QDate day = wallTime(from * 1000).date().addDays(-1); day <= last; day = day.addDays(1)) {
        for (const Span &span : m_spans) {
            if (span.weekday != day.dayOfWeek())
                continue;
            const qint64 begin = secondOf(day, span.begin);
            const qint64 end = secondOf(day, span.end);
            if (begin < end && begin <= to && end > from)
                stretches.emplace_back(begin, end);
        }
    }
    return stretches;
}
