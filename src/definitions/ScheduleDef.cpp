#include "definitions/ScheduleDef.h"

#include "core/Clock.h"
#include "core/Error.h"
#include "core/Xml.h"
#include "definitions/ReportDef.h"

#include <algorithm>
#include <array>
#include <limits>

namespace {

constexpr qint64 hoursOfYear = 8760;         // of 365 days
constexpr qint64 hoursOfEver = 9 * 366 * 24; // 29 February may be eight years away

/// Which numbers up to 31 a list names, found out once so that the search only looks them up.
using Listed = std::array<bool, 32>;

enum class Form { Plain, PlainOrTwoDigits };

Listed listed(const QString &list, Form form)
{
    const QString framed = u',' + list.trimmed() + u',';
    const auto names = [&framed](const QString &number) {
        return framed.contains(u',' + number + u',');
    };
    Listed result{};
    for (int number = 0; number < int(result.size()); ++number) {
        bool found = names(QString::number(number));
        if (!found && form == Form::PlainOrTwoDigits)
            found = names(QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0')));
        result[size_t(number)] = found;
    }
    return result;
}

/// The whole hours that a schedule lists.
class SlotTest
{
public:
    explicit SlotTest(const clsScheduleDef &schedule)
        : m_hours(listed(schedule.HourList, Form::PlainOrTwoDigits))
        , m_weekly(schedule.SchedInterval == Weekly)
        , m_days(m_weekly ? listed(schedule.WeekDayList, Form::Plain)
                          : listed(schedule.MonthDayList, Form::PlainOrTwoDigits))
        , m_months(listed(schedule.MonthList, Form::PlainOrTwoDigits))
    {}

    /// Whether there is such an hour in any year.
    bool hasAny() const
    {
        constexpr int leapYear = 2000; // its days stand for those of all years
        const auto namesHour = std::find(m_hours.begin(), m_hours.begin() + 24, true);
        if (namesHour == m_hours.begin() + 24)
            return false;
        const QDate end(leapYear + 1, 1, 1);
        for (QDate date(leapYear, 1, 1); date < end; date = date.addDays(1)) {
            if ((*this)(date, static_cast<int>(namesHour - m_hours.begin())))
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
    Listed m_hours;
    bool m_weekly;
    Listed m_days;
    Listed m_months;
};

struct Slot
{
    QDateTime time; ///< the last hour tried where none was found
    bool found = false;
};

/// The first hour after the hour of `start` that passes `accept(date, hour)`.
template <typename Accept>
Slot firstSlot(const QDateTime &start, qint64 mostHours, Accept accept)
{
    QDate date = start.isValid() ? start.date() : zeroDate().date();
    int hour = start.isValid() ? start.time().hour() : 0;
    for (qint64 tried = 0; tried < mostHours; ++tried) {
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
bool isMissed(const clsScheduleDef &schedule, const QDateTime &slot, const QDateTime &present)
{
    return schedule.Reschedule && slot < present &&
           slot.secsTo(present) / 60 > schedule.RescheduleTime;
}

Slot searchSlot(const clsScheduleDef &schedule, const SlotTest &isListed, const QDateTime &start,
                qint64 mostHours)
{
    const QDateTime present = now();
    return firstSlot(start, mostHours, [&](const QDate &date, int hour) {
        return isListed(date, hour) &&
               !isMissed(schedule, wallDateTime(date, QTime(hour, 0)), present);
    });
}

/// Where the search for the slot after a run begins. Slots that are missed anyway are not looked
/// at: there are too many of them after a long time.
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
                                   "'%2' is no 16-bit integer")
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
    SchedInterval = integerAttr(element, "SchedInterval", Daily);
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

bool everRuns(const clsScheduleDef &schedule)
{
    return schedule.SchedInterval != NotScheduled && SlotTest(schedule).hasAny();
}

bool ranInFuture(const clsReportSchedule &reportSchedule)
{
    constexpr int ambiguous = 3600; // seconds: the clocks of autumn show an hour twice
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
