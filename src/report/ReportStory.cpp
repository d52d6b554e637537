#include "report/ReportStory.h"

#include "base/Durations.h"
#include "base/Numbers.h"
#include "base/OneLine.h"
#include "base/TimeZone.h"
#include "figures/Rankings.h"

#include <QDate>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <set>

namespace {

constexpr qint64 day = 86'400;

QString number(qint64 count)
{
    return groupedNumber(static_cast<double>(count), 0);
}

QString counted(qint64 count, const char *one, const char *several)
{
    return number(count) + u' ' + QLatin1String(count == 1 ? one : several);
}

QString devicesText(qint64 count)
{
    return counted(count, "device", "devices");
}

QString nameOf(const DeviceFigures &device)
{
    const QString name = shownName(device.name);
    return name.isEmpty() ? shownName(device.muid) : name;
}

/// "A", "A and B", "A, B and C", "A, B, C and 12 more".
QString namesText(const QStringList &names)
{
    constexpr qsizetype atMost = 3;
    if (names.size() > atMost)
        return names.first(atMost).join(QLatin1String(", ")) +
               QStringLiteral(" and %1 more").arg(number(names.size() - atMost));
    if (names.size() < 2)
        return names.join(QString());
    return names.first(names.size() - 1).join(QLatin1String(", ")) + QLatin1String(" and ") +
           names.last();
}

/// The devices for which something holds.
template <typename Predicate>
QStringList namesOf(const ReportFigures &figures, Predicate holds)
{
    QStringList names;
    for (const DeviceFigures &device : figures.devices) {
        if (holds(device))
            names.append(nameOf(device));
    }
    return names;
}

/// "2 of 24 devices"; "the only device".
QString shareText(qsizetype part, qint64 whole)
{
    if (whole == 1)
        return QStringLiteral("The only device");
    return QStringLiteral("%1 of %2").arg(number(part), devicesText(whole));
}

bool hasState(const ReportFigures &figures)
{
    return std::any_of(figures.devices.begin(), figures.devices.end(),
                       [](const DeviceFigures &device) {
                           return std::any_of(device.items.begin(), device.items.end(),
                                              [](const ItemFigures &item) { return item.counts; });
                       });
}

bool isFirstOfMonth(qint64 second)
{
    const QDateTime wall = wallTime(second * 1000);
    return wall.date().day() == 1 && wall.time() == QTime(0, 0);
}

/// Whole days, or 0 where a length is none; the clock may have been changed between.
qint64 wholeDays(qint64 seconds)
{
    constexpr qint64 tolerance = 7'200;
    const qint64 days = (seconds + day / 2) / day;
    return std::abs(seconds - days * day) <= tolerance ? days : 0;
}

/// "day", "week", "month", "year"; empty for what has no name.
QLatin1String unitOf(qint64 from, qint64 to)
{
    const qint64 days = wholeDays(to - from);
    if (days == 1)
        return QLatin1String("day");
    if (days == 7)
        return QLatin1String("week");
    if (days >= 28 && isFirstOfMonth(from) && isFirstOfMonth(to)) {
        if (days <= 31)
            return QLatin1String("month");
        if (days == 365 || days == 366)
            return QLatin1String("year");
    }
    return {};
}

/// The preceding period after "in": "the week before", "the 30 days before", "the same time a week
/// before" where the present one still runs.
QString precedingName(const ReportFigures &figures)
{
    constexpr qint64 adjacent = 120; // between an end at 23:59 or 23:59:59 and the next midnight
    const Period &present = figures.period;
    const Period &preceding = *figures.precedingPeriod;
    const QLatin1String unit = unitOf(preceding.from, present.from);
    if (present.from - preceding.to > adjacent)
        return unit.isEmpty() ? QStringLiteral("the period before")
                              : QStringLiteral("the same time a %1 before").arg(unit);
    if (!unit.isEmpty())
        return QStringLiteral("the %1 before").arg(unit);
    const qint64 seconds = present.from - preceding.from;
    if (const qint64 days = wholeDays(seconds); days > 0)
        return QStringLiteral("the %1 days before").arg(number(days));
    return seconds > 2 * day ? QStringLiteral("the period before")
                             : QStringLiteral("the %1 before").arg(durationText(seconds));
}

/// The preceding period of a report that can be compared with it.
const Availability *comparableOf(const ReportFigures &figures)
{
    const bool isComparable =
        figures.precedingPeriod && figures.preceding &&
        comparability(figures.present.coverage(), figures.preceding->coverage()).isComparable;
    return isComparable ? &*figures.preceding : nullptr;
}

double pointsOf(const Availability &present, const Availability &preceding)
{
    return *present.rate() - *preceding.rate();
}

/// To the hundredth, as it is shown.
bool isEven(double points)
{
    return fixedNumber(std::abs(points), 2) == QLatin1String("0.00");
}

QString successSentence(const ReportFigures &figures)
{
    const Availability &present = figures.present;
    if (present.tests == 0)
        return QStringLiteral("No tests in this period.");
    QString text;
    if (present.failures == 0)
        text = present.tests == 1
                   ? QStringLiteral("The only test succeeded")
                   : QStringLiteral("All %1 tests succeeded").arg(number(present.tests));
    else if (present.tests == 1)
        text = QStringLiteral("The only test failed");
    else
        text = QStringLiteral("%1 of %2 tests succeeded")
                   .arg(rateText(present), number(present.tests));
    if (const Availability *preceding = comparableOf(figures)) {
        const double points = pointsOf(present, *preceding);
        if (isEven(points))
            text += QStringLiteral(", as in %1").arg(precedingName(figures));
        else
            text += QStringLiteral(", %1 points %2 than in %3")
                        .arg(fixedNumber(std::abs(points), 2),
                             points > 0 ? QLatin1String("more") : QLatin1String("less"),
                             precedingName(figures));
    }
    return text + u'.';
}

/// Why there is no comparison; empty where there is one, and where none is wanted.
QString comparisonSentence(const ReportFigures &figures)
{
    if (!figures.precedingPeriod || !figures.preceding || figures.present.tests == 0)
        return {};
    const Comparability answer =
        comparability(figures.present.coverage(), figures.preceding->coverage());
    if (answer.isComparable)
        return {};
    const bool none = figures.preceding->tests == 0;
    return QStringLiteral("Not compared with %1: %2.")
        .arg(precedingName(figures), none ? QStringLiteral("it has no tests") : answer.reason);
}

/// "99.5 %", or "their targets" where devices have different ones.
QString sharedTarget(const ReportFigures &figures)
{
    std::set<double> targets;
    for (const DeviceFigures &device : figures.devices) {
        if (device.target)
            targets.insert(device.target->target);
    }
    return targets.size() == 1 ? targetText(*targets.begin()) : QStringLiteral("their targets");
}

QString devicesWithTarget(const ReportFigures &figures)
{
    const bool all = static_cast<size_t>(figures.withTarget) == figures.devices.size();
    return devicesText(figures.withTarget) + (all ? QString() : QStringLiteral(" with a target"));
}

QString missedText(const ReportFigures &figures)
{
    if (figures.withTarget == 1)
        return QStringLiteral("%1 missed %2")
            .arg(namesOf(figures,
                         [](const DeviceFigures &device) { return device.target.has_value(); })
                     .join(QString()),
                 sharedTarget(figures));
    return QStringLiteral("%1 of %2 missed %3")
        .arg(number(figures.missedTarget), devicesWithTarget(figures), sharedTarget(figures));
}

QString targetSentence(const ReportFigures &figures)
{
    if (figures.withTarget == 0)
        return {};
    if (figures.missedTarget == 0)
        return figures.withTarget == 1
                   ? QStringLiteral("The device with a target met %1.").arg(sharedTarget(figures))
                   : QStringLiteral("All %1 met %2.")
                         .arg(devicesWithTarget(figures), sharedTarget(figures));
    if (figures.withTarget == 1)
        return missedText(figures) + u'.';
    const QStringList names = namesOf(figures, [](const DeviceFigures &device) {
        return device.target && !device.target->isMet();
    });
    return QStringLiteral("%1: %2.").arg(missedText(figures), namesText(names));
}

/// "52 minutes, 7 devices, first Zürich-Core-01, from 2026-11-18 18:42"; a device alone has no
/// first.
QString incidentText(const ReportFigures &figures, const Incident &incident)
{
    const QString first = nameOf(figures.devices[incident.devices.front().index]);
    const qsizetype devices = static_cast<qsizetype>(incident.devices.size());
    return QStringLiteral("%1, %2, from %3")
        .arg(durationText(incident.seconds()),
             devices == 1 ? first : QStringLiteral("%1, first %2").arg(devicesText(devices), first),
             storyTime(incident.begin));
}

QString incidentSentence(const ReportFigures &figures)
{
    const QString brief = figures.briefIncidents == 0
                              ? QString()
                              : counted(figures.briefIncidents, "brief one", "brief ones");
    if (figures.incidents.empty()) {
        if (figures.present.tests == 0)
            return {};
        return figures.briefIncidents == 0
                   ? QStringLiteral("No incidents.")
                   : QStringLiteral("No incidents but %1 of single devices.").arg(brief);
    }
    const Incident &worst = figures.incidents.front();
    const bool isLongest =
        std::none_of(figures.incidents.begin(), figures.incidents.end(),
                     [&worst](const Incident &other) { return other.seconds() > worst.seconds(); });
    QString text = counted(static_cast<qint64>(figures.incidents.size()), "incident", "incidents");
    if (!brief.isEmpty())
        text += QStringLiteral(" (and %1)").arg(brief);
    if (figures.incidents.size() > 1)
        text += isLongest ? QLatin1String("; the longest") : QLatin1String("; the worst");
    return QStringLiteral("%1: %2.").arg(text, incidentText(figures, worst));
}

bool isStillFailing(const DeviceFigures &device)
{
    return std::any_of(device.items.begin(), device.items.end(), [](const ItemFigures &item) {
        return item.counts && !item.present.outages.empty() &&
               item.present.outages.back().ending == OutageEnd::StillFailing;
    });
}

QString stillFailingSentence(const ReportFigures &figures)
{
    const QStringList names = namesOf(figures, isStillFailing);
    if (names.isEmpty())
        return {};
    return QStringLiteral("%1 still failing at the end: %2.")
        .arg(counted(names.size(), "device was", "devices were"), namesText(names));
}

QString withoutDataSentence(const ReportFigures &figures)
{
    const QStringList names = namesOf(figures, isWithoutData);
    if (names.isEmpty())
        return {};
    return QStringLiteral("%1 had no data: %2.")
        .arg(shareText(names.size(), static_cast<qint64>(figures.devices.size())),
             namesText(names));
}

/// What a report without tests holds.
QString countersText(const ReportFigures &figures)
{
    qint64 counters = 0;
    for (const DeviceFigures &device : figures.devices)
        counters += std::count_if(device.items.begin(), device.items.end(),
                                  [](const ItemFigures &item) { return !item.isState; });
    return QStringLiteral("%1 of %2")
        .arg(counted(counters, "counter", "counters"),
             devicesText(static_cast<qint64>(figures.devices.size())));
}

QString forecastSentence(const ReportFigures &figures)
{
    qint64 count = 0;
    const DeviceFigures *firstDevice = nullptr;
    const ItemFigures *first = nullptr;
    for (const DeviceFigures &device : figures.devices) {
        for (const ItemFigures &item : device.items) {
            if (!item.forecast)
                continue;
            ++count;
            if (!first || item.forecast->day < first->forecast->day) {
                first = &item;
                firstDevice = &device;
            }
        }
    }
    if (!first)
        return {};
    const QString date = QDate::fromJulianDay(first->forecast->day).toString(Qt::ISODate);
    const QString name =
        QStringLiteral("%1 of %2").arg(shownName(first->name), nameOf(*firstDevice));
    if (count == 1)
        return QStringLiteral("%1 is expected to reach its limit about %2.").arg(name, date);
    return QStringLiteral(
               "%1 counters are expected to reach their limits; the first: %2, about %3.")
        .arg(number(count), name, date);
}

QStringList sentencesOf(const ReportFigures &figures)
{
    QStringList sentences;
    if (!hasState(figures))
        sentences = {QStringLiteral("No state items count in this report: it shows %1.")
                         .arg(countersText(figures))};
    else
        sentences = {successSentence(figures), comparisonSentence(figures), targetSentence(figures),
                     incidentSentence(figures), stillFailingSentence(figures)};
    sentences << withoutDataSentence(figures) << forecastSentence(figures);
    sentences.removeAll(QString());
    return sentences;
}

QString verdictOf(const ReportFigures &figures)
{
    QStringList parts;
    if (!hasState(figures))
        parts.append(countersText(figures));
    else if (figures.present.tests == 0)
        return QStringLiteral("no data");
    else
        parts.append(figures.present.failures == 0 ? QStringLiteral("all tests succeeded")
                                                   : rateText(figures.present));
    if (figures.missedTarget > 0)
        parts.append(missedText(figures));
    else if (!figures.incidents.empty())
        parts.append(
            counted(static_cast<qint64>(figures.incidents.size()), "incident", "incidents"));
    else if (figures.present.failures > 0)
        parts.append(QStringLiteral("no incidents"));
    if (const qsizetype silent = namesOf(figures, isWithoutData).size())
        parts.append(QStringLiteral("%1 without data").arg(devicesText(silent)));
    return parts.join(QLatin1String(", "));
}

std::vector<StoryTile> tilesOf(const ReportFigures &figures)
{
    std::vector<StoryTile> tiles;
    const Availability &present = figures.present;
    const Availability *preceding = comparableOf(figures);
    const auto was = [preceding](const QString &text) {
        return preceding ? QStringLiteral("was ") + text : QString();
    };
    if (hasState(figures)) {
        const QString points =
            preceding ? QStringLiteral("%1 points against %2")
                            .arg(pointsText(present, figures.preceding), precedingName(figures))
                      : QString();
        tiles.push_back({QStringLiteral("Success rate"), rateText(present), points,
                         present.tests > 0 && present.failures == 0 ? Tone::Good : Tone::Neutral});
        if (figures.withTarget > 0) {
            const QString target = sharedTarget(figures);
            tiles.push_back({target.endsWith(u'%') ? QStringLiteral("Target %1 missed").arg(target)
                                                   : QStringLiteral("Target missed"),
                             number(figures.missedTarget),
                             QStringLiteral("of %1").arg(devicesWithTarget(figures)),
                             figures.missedTarget > 0 ? Tone::Bad : Tone::Good});
        }
        if (present.tests > 0) {
            tiles.push_back({QStringLiteral("Downtime, all devices"),
                             durationText(present.downtime.seconds),
                             preceding ? was(durationText(preceding->downtime.seconds)) : QString(),
                             present.downtime.seconds == 0 ? Tone::Good : Tone::Neutral});
            const auto incidents = static_cast<qint64>(figures.incidents.size());
            QStringList details;
            if (figures.briefIncidents > 0)
                details.append(QStringLiteral("beside ") +
                               counted(figures.briefIncidents, "brief one", "brief ones"));
            details.append(was(number(figures.precedingIncidents.value_or(0))));
            details.removeAll(QString());
            tiles.push_back({QStringLiteral("Incidents"), number(incidents),
                             details.join(QLatin1String(", ")),
                             incidents == 0 ? Tone::Good : Tone::Neutral});
        }
    }
    const QStringList silent = namesOf(figures, isWithoutData);
    tiles.push_back({QStringLiteral("Without data"), number(silent.size()),
                     silent.isEmpty() ? QStringLiteral("of %1").arg(devicesText(
                                            static_cast<qint64>(figures.devices.size())))
                                      : namesText(silent),
                     silent.isEmpty() ? Tone::Neutral : Tone::Bad});
    return tiles;
}

} // namespace

ReportStory storyOf(const ReportFigures &figures)
{
    return {sentencesOf(figures), verdictOf(figures), tilesOf(figures)};
}

QString rateText(const Availability &availability)
{
    const std::optional<double> rate = availability.rate();
    if (!rate)
        return QStringLiteral("no data");
    const QString text = fixedNumber(*rate, 2);
    if (availability.failures > 0 && text == QLatin1String("100.00"))
        return QStringLiteral("> 99.99 %");
    if (availability.failures < availability.tests && text == QLatin1String("0.00"))
        return QStringLiteral("< 0.01 %");
    return text + QLatin1String(" %");
}

QString pointsText(const Availability &present, const std::optional<Availability> &preceding)
{
    if (!preceding || !comparability(present.coverage(), preceding->coverage()).isComparable)
        return {};
    const double points = pointsOf(present, *preceding);
    if (isEven(points))
        return QStringLiteral("\u00B10");
    constexpr QChar minus(0x2212);
    return (points > 0 ? QChar(u'+') : minus) + fixedNumber(std::abs(points), 2);
}

QString targetText(double target)
{
    return trimmedNumber(target, 4) + QLatin1String(" %");
}

QString shownName(const QString &name)
{
    return oneLine(name).simplified();
}

QString storyTime(qint64 second)
{
    return wallTime(second * 1000).toString(QStringLiteral("yyyy-MM-dd HH:mm"));
}

bool isWithoutData(const DeviceFigures &device)
{
    bool counts = false;
    bool recorded = false;
    for (const ItemFigures &item : device.items) {
        counts = counts || item.counts;
        recorded = recorded || item.present.samples > 0;
    }
    return counts ? device.present.tests == 0 : !recorded;
}
