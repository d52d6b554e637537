#pragma once

#include "definitions/Dates.h"

#include <bitset>
#include <pugixml.hpp>
#include <vector>

class clsReportSchedule;

/// Kinds of schedules. Only NotScheduled and Weekly make a difference to the search.
enum SchedIntervalCode : qint32 {
    NotScheduled = 0,
    DailyOld = 1, ///< as Daily
    Daily = 2,
    Weekly = 3,
    Monthly = 4,
    Yearly = 5
};

/// A schedule definition: the full hours at which a report is due.
///
/// The lists are numbers separated by commas, without blanks. An hour, month day or month matches
/// with and without a leading zero, a week day only without.
class clsScheduleDef
{
public:
    QString ScheduleID = NewID();
    QString ScheduleName = QStringLiteral("New Schedule");
    SchedIntervalCode SchedInterval = NotScheduled;
    QString HourList;                 ///< 0 to 23
    QString WeekDayList;              ///< 1 Sunday to 7 Saturday; used only by Weekly
    QString MonthDayList;             ///< 1 to 31 (32 never matches); used by all others
    QString MonthList;                ///< 1 to 12
    QDateTime StartTime = zeroDate(); ///< kept, not used by the search
    QDateTime EndTime = zeroDate();
    QDateTime NextRunTime = zeroDate(); ///< result of CalcNextSchedule, a wall time; never saved
    bool Reschedule = false;            ///< skip slots missed by more than RescheduleTime
    qint32 RescheduleTime = 59;         ///< minutes; 16 bits in a file

    /// Sets NextRunTime to the first matching full hour after the hour of `start`, by the wall
    /// clock without any daylight-saving rule. If none of the next 8760 hours matches, NextRunTime
    /// is the last of them; for NotScheduled it is the current time. False in both cases.
    bool CalcNextSchedule(const QDateTime &start);

    /// Appends the "SCHEDULE" element to `parent`. Throws Error(Overflow) when RescheduleTime does
    /// not fit 16 bits.
    pugi::xml_node XMLConfigEL(pugi::xml_node parent) const;

    QString XMLConfig() const;
    /// Throws Error on malformed XML and on numbers beyond 32 bits.
    void SetXMLConfig(const QString &text);
    void readElement(const pugi::xml_node &element);
};

inline constexpr int lastDay = 32; ///< "Last", a month day that never comes
/// The numbers of a schedule's list.
using ListedNumbers = std::bitset<lastDay + 1>;
enum class ListForm { Plain, PlainOrTwoDigits }; ///< week days are only plain
/// The numbers from 0 to 32 in a list, as the search for the next run reads it.
ListedNumbers listedNumbers(const QString &list, ListForm form);

/// Whether any hour of any year matches. If none does, or it is not scheduled, it is never due.
bool everRuns(const clsScheduleDef &schedule);

/// Why a schedule that is scheduled never runs, "no hour is checked"; empty when it does.
QString whyItNeverRuns(const clsScheduleDef &schedule);

/// Whether the last run is more than an hour in the future: the clock was wrong then, or is wrong
/// now. Such a report counts as one that never ran.
bool ranInFuture(const clsReportSchedule &reportSchedule);

/// Whether a report is due under one of its schedules: the first slot after its last run has come.
/// Sets `scheduleDef.NextRunTime` to that slot, as CalcNextSchedule would, however far away it is.
bool IsReportDue(const clsReportSchedule &reportSchedule, clsScheduleDef &scheduleDef);

/// The next `count` slots of a schedule after the hour of `from` if none is missed; none where
/// `everRuns` is false.
std::vector<QDateTime> nextRuns(const clsScheduleDef &schedule, const QDateTime &from, int count);
