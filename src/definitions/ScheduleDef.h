#pragma once

#include "definitions/Dates.h"

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

/// A schedule definition: the whole hours at which a report falls due.
///
/// The lists hold plain numbers separated by commas, without blanks inside. An hour, month day or
/// month matches with and without a leading zero, a week day only without.
class clsScheduleDef
{
public:
    QString ScheduleID = NewID();
    QString ScheduleName = QStringLiteral("New Schedule");
    qint32 SchedInterval = NotScheduled;
    QString HourList;                 ///< 0 to 23
    QString WeekDayList;              ///< 1 Sunday to 7 Saturday; used by Weekly alone
    QString MonthDayList;             ///< 1 to 31 (32 never matches); used by all others
    QString MonthList;                ///< 1 to 12
    QDateTime StartTime = zeroDate(); ///< kept, not used by the search
    QDateTime EndTime = zeroDate();
    QDateTime NextRunTime = zeroDate(); ///< result of CalcNextSchedule, a wall time; never saved
    bool Reschedule = false;            ///< skip slots missed by more than RescheduleTime
    qint32 RescheduleTime = 59;         ///< minutes; a file holds at most 16 bits

    /// Sets NextRunTime to the first matching whole hour after the hour of `start`, by the clock on
    /// the wall without any daylight-saving rule. Where none of the 8760 hours after it matches,
    /// NextRunTime is the last of them; for NotScheduled it is the present time. False in both
    /// cases.
    bool CalcNextSchedule(const QDateTime &start);

    /// Appends the "SCHEDULE" element to `parent`. Throws Error(Overflow) when RescheduleTime does
    /// not fit 16 bits.
    pugi::xml_node XMLConfigEL(pugi::xml_node parent) const;

    QString XMLConfig() const;
    /// Throws Error on malformed XML and on numbers beyond 32 bits.
    void SetXMLConfig(const QString &text);
    void readElement(const pugi::xml_node &element);
};

/// Whether any hour of any year matches. A schedule without one is never due, nor is one that is
/// not scheduled.
bool everRuns(const clsScheduleDef &schedule);

/// Whether the last run lies in the future, more than an hour ahead: the clock was wrong then, or
/// it is now. Such a report counts as one that never ran.
bool ranInFuture(const clsReportSchedule &reportSchedule);

/// Whether a report has fallen due under one of its schedules: the slot that follows its last run
/// has come. Sets `scheduleDef.NextRunTime` to that slot, as CalcNextSchedule would, however far
/// away it is.
bool IsReportDue(const clsReportSchedule &reportSchedule, clsScheduleDef &scheduleDef);

/// The next slots of a schedule after the hour of `from`, as the search finds them from slot to
/// slot when none is missed: `most` of them, or none where `everRuns` is false.
std::vector<QDateTime> nextRuns(const clsScheduleDef &schedule, const QDateTime &from, int most);
