#include "definitions/ScheduleDef.h"

#include "core/Clock.h"
#include "core/Error.h"
#include "core/Xml.h"
#include "definitions/ReportDef.h"

#include <array>
#include <limits>

namespace {

constexpr int hoursTried = 8760; // those of a year of 365 days

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

/// The first hour after the hour of `start` that passes `accept(slot)`; the last of the 8760 hours
/// tried where none does.
template <typename Accept>
QDateTime firstSlot(const QDateTime &start, Accept accept, bool *found = nullptr)
{
    QDate date = start.isValid() ? start.date() : zeroDate().date();
    int hour = start.isValid() ? start.time().hour() : 0;
    for (int tried = 0; tried < hoursTried; ++tried) {
        if (++hour > 23) {
            date = date.addDays(1);
            hour = 0;
        }
        if (accept(date, hour))
            return wallDateTime(date, QTime(hour, 0));
    }
    if (found)
        *found = false;
    return wallDateTime(date, QTime(hour, 0));
}

} // namespace

void clsScheduleDef::CalcNextSchedule(const QDateTime &start)
{
    const QDateTime present = now();
    if (SchedInterval == NotScheduled) {
        NextRunTime = present;
        return;
    }
    const SlotTest isListed(*this);
    const auto missed = [this, &present](const QDateTime &slot) {
        return Reschedule && slot < present && slot.secsTo(present) / 60 > RescheduleTime;
    };
    NextRunTime = firstSlot(start, [&](const QDate &date, int hour) {
        return isListed(date, hour) && !missed(wallDateTime(date, QTime(hour, 0)));
    });
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

bool IsReportDue(const clsReportSchedule &reportSchedule, clsScheduleDef &scheduleDef)
{
    scheduleDef.CalcNextSchedule(reportSchedule.LastRunDate);
    return scheduleDef.SchedInterval != NotScheduled && scheduleDef.NextRunTime <= now();
}

std::vector<QDateTime> nextRuns(const clsScheduleDef &schedule, const QDateTime &from, int most)
{
    std::vector<QDateTime> runs;
    if (schedule.SchedInterval == NotScheduled)
        return runs;
    const SlotTest isListed(schedule);
    bool found = true;
    QDateTime slot = from;
    while (static_cast<int>(runs.size()) < most) {
        slot = firstSlot(slot, isListed, &found);
        if (!found)
            break;
        runs.push_back(slot);
    }
    return runs;
}
