#include "definitions/clsScheduleDef.h"

#include "base/Clock.h"
#include "base/Error.h"
#include "base/Xml.h"
#include "definitions/clsReportDef.h"

#include <algorithm>
#include <limits>

namespace {

constexpr qint64 hoursOfYear = 8760;         // of 365 days
constexpr qint64 hoursOfEver = 9 * 366 * 24; // 29 February may be eight years away

/// The full hours of a schedule; its lists are parsed once for the whole search.
class SlotTest
{
public:
    explicit SlotTest(const clsScheduleDef &schedule)
        : m_hours(listedNumbers(schedule.HourList, ListForm::PlainOrTwoDigits))
        , m_weekly(schedule.SchedInterval == Weekly)
        , m_days(m_weekly ? listedNumbers(schedule.WeekDayList, ListForm::Plain)
                          : listedNumbers(schedule.MonthDayList, ListForm::PlainOrTwoDigits))
        , m_months(listedNumbers(schedule.MonthList, ListForm::PlainOrTwoDigits))
    {}

    /// Whether there is such an hour in any year.
    bool hasAny() const
    {
        constexpr int leapYear = 2000; // its days are those of all years
        int hour = 0;
        while (hour < 24 && !m_hours[size_t(hour)])
            ++hour;
        if (hour == 24)
            return false;
        const QDate end(leapYear + 1, 1, 1);
        for (QDate date(leapYear, 1, 1); date < end; date = date.addDays(1)) {
            if ((*this)(date, hour))
                return true;
        }
        return false;
    }

    bool operator()(const QDate &date, int hour) const
    {
        if (!m_hours[size_t(hour)])
            return false;
        const int day = m_weekly ? date.dayOfWeek() % 7 + 1 : date.day();
        return m_days[size_t(day)] && m_months[size_t(date.month())];
    }

private:
    ListedNumbers m_hours;
    bool m_weekly;
    ListedNumbers m_days;
    ListedNumbers m_months;
};

struct Slot
{
    QDateTime time; ///< the last hour tried if none was found
    bool found = false;
};

/// The first hour after the hour of `start` for which `accept(date, hour)` is true.
template <typename Accept>
Slot firstSlot(const QDateTime &start, qint64 maxHours, Accept accept)
{
    QDate date = start.isValid() ? start.date() : zeroDate().date();
    int hour = start.isValid() ? start.time().hour() : 0;
    for (qint64 tried = 0; tried < maxHours; ++tried) {
        if (++hour > 23) {
            date = date.addDays(1);
            hour = 0;
        }
        if (accept(date, hour))
            return {wallDateTime(date, QTime(hour, 0)), true};
    }
    return {wallDateTime(date, QTime(hour, 0)), false};
}

/// Whether a slot was missed by more than the schedule allows.
bool isMissed(const clsScheduleDef &schedule, const QDateTime &slot, const QDateTime &current)
{
    return schedule.Reschedule && slot < current &&
           slot.secsTo(current) / 60 > schedule.RescheduleTime;
}

Slot searchSlot(const clsScheduleDef &schedule, const SlotTest &isListed, const QDateTime &start,
                qint64 maxHours)
{
    const QDateTime current = now();
    return firstSlot(start, maxHours, [&](const QDate &date, int hour) {
        return isListed(date, hour) &&
               !isMissed(schedule, wallDateTime(date, QTime(hour, 0)), current);
    });
}

/// Where the search for the slot after a run starts. Slots that are missed anyway are skipped, as
/// there are too many of them after a long time.
QDateTime searchStart(const clsScheduleDef &schedule, const clsReportSchedule &entry)
{
    const QDateTime start = ranInFuture(entry) ? zeroDate() : entry.LastRunDate;
    if (!schedule.Reschedule)
        return start;
    const qint64 minutes = std::max(schedule.RescheduleTime, 0) + qint64(61);
    return std::max(start, now().addSecs(-minutes * 60));
}

} // namespace

bool clsScheduleDef::CalcNextSchedule(const QDateTime &start)
{
    if (SchedInterval == NotScheduled) {
        NextRunTime = now();
        return false;
    }
    const Slot slot = searchSlot(*this, SlotTest(*this), start, hoursOfYear);
    NextRunTime = slot.time;
    return slot.found;
}

pugi::xml_node clsScheduleDef::XMLConfigEL(pugi::xml_node parent) const
{
    using Narrow = std::numeric_limits<qint16>;
    if (RescheduleTime < Narrow::min() || RescheduleTime > Narrow::max())
        throw Error(Overflow,
                    QStringLiteral("Overflow: the tolerance of %1 minutes of the schedule "
                                   "'%2' is not a 16-bit integer")
                        .arg(RescheduleTime)
                        .arg(ScheduleName));
    pugi::xml_node element = parent.append_child("SCHEDULE");
    setAttr(element, "SchedInterval", SchedInterval);
    setAttr(element, "ScheduleID", ScheduleID);
    setAttr(element, "ScheduleName", ScheduleName);
    setAttr(element, "HourList", HourList);
    setAttr(element, "WeekDayList", WeekDayList);
    setAttr(element, "MonthDayList", MonthDayList);
    setAttr(element, "MonthList", MonthList);
    setAttr(element, "StartTime", DateToXML(StartTime));
    setAttr(element, "EndTime", DateToXML(EndTime));
    setAttr(element, "Reschedule", xmlBoolean(Reschedule));
    setAttr(element, "RescheduleTime", RescheduleTime);
    return element;
}

QString clsScheduleDef::XMLConfig() const
{
    pugi::xml_document document;
    return elementText(XMLConfigEL(document));
}

void clsScheduleDef::SetXMLConfig(const QString &text)
{
    pugi::xml_document document;
    parseXml(document, text);
    readElement(document.document_element());
}

void clsScheduleDef::readElement(const pugi::xml_node &element)
{
    SchedInterval = codeAttr(element, "SchedInterval", Daily);
    ScheduleName = GetAttr(element, "ScheduleName", QStringLiteral("New Schedule"));
    ScheduleID = GetAttr(element, "ScheduleID", NewID());
    HourList = GetAttr(element, "HourList", QStringLiteral("1"));
    WeekDayList = GetAttr(element, "WeekDayList", QStringLiteral("0,1,2,3,4,5,6,7"));
    MonthDayList = GetAttr(element, "MonthDayList", QStringLiteral("32"));
    MonthList = GetAttr(element, "MonthList", QStringLiteral("1,2,3,4,5,6,7,8,9,10,11,12"));
    StartTime = dateAttr(element, "StartTime");
    EndTime = dateAttr(element, "EndTime");
    Reschedule = xmlBoolean(GetAttr(element, "Reschedule", QStringLiteral("1")));
    RescheduleTime = integerAttr(element, "RescheduleTime", 59);
}

ListedNumbers listedNumbers(const QString &list, ListForm form)
{
    const QString framed = u',' + list.trimmed() + u',';
    const auto names = [&framed](const QString &number) {
        return framed.contains(u',' + number + u',');
    };
    ListedNumbers result;
    for (size_t number = 0; number < result.size(); ++number) {
        const QString plain = QString::number(number);
        result[number] = names(plain) ||
                         (form == ListForm::PlainOrTwoDigits && number < 10 && names(u'0' + plain));
    }
    return result;
}

bool everRuns(const clsScheduleDef &schedule)
{
    return schedule.SchedInterval != NotScheduled && SlotTest(schedule).hasAny();
}

QString whyItNeverRuns(const clsScheduleDef &schedule)
{
    if (schedule.SchedInterval == NotScheduled || everRuns(schedule))
        return QString();
    const auto namesAny = [](const QString &list, size_t first, size_t last) {
        const ListedNumbers listed = listedNumbers(list, ListForm::PlainOrTwoDigits);
        while (first <= last && !listed[first])
            ++first;
        return first <= last;
    };
    if (!namesAny(schedule.HourList, 0, 23))
        return QStringLiteral("no hour is checked");
    if (!namesAny(schedule.MonthList, 1, 12))
        return QStringLiteral("no month is checked");
    if (schedule.SchedInterval == Weekly)
        return QStringLiteral("no day of the week is checked");
    if (namesAny(schedule.MonthDayList, 1, lastDay - 1))
        return QStringLiteral("none of the checked days comes in the checked months");
    if (namesAny(schedule.MonthDayList, lastDay, lastDay))
        return QStringLiteral("\u201cLast\u201d is the only day checked, and it never comes. Check "
                              "day 1 instead, with a chart of the last month");
    return QStringLiteral("no day of the month is checked");
}

bool ranInFuture(const clsReportSchedule &reportSchedule)
{
    constexpr int ambiguous = 3600; // seconds: clocks show an hour twice in autumn
    return reportSchedule.LastRunDate > now().addSecs(ambiguous);
}

bool IsReportDue(const clsReportSchedule &reportSchedule, clsScheduleDef &scheduleDef)
{
    const SlotTest isListed(scheduleDef);
    if (scheduleDef.SchedInterval == NotScheduled || !isListed.hasAny()) {
        scheduleDef.CalcNextSchedule(reportSchedule.LastRunDate);
        return false;
    }
    scheduleDef.NextRunTime =
        searchSlot(scheduleDef, isListed, searchStart(scheduleDef, reportSchedule), hoursOfEver)
            .time;
    return scheduleDef.NextRunTime <= now();
}

std::vector<QDateTime> nextRuns(const clsScheduleDef &schedule, const QDateTime &from, int most)
{
    std::vector<QDateTime> runs;
    const SlotTest isListed(schedule);
    if (schedule.SchedInterval == NotScheduled || !isListed.hasAny())
        return runs;
    QDateTime slot = from;
    while (static_cast<int>(runs.size()) < most) {
        slot = firstSlot(slot, hoursOfEver, isListed).time;
        runs.push_back(slot);
    }
    return runs;
}
