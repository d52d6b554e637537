#include "base/Clock.h"
#include "definitions/Definitions.h"
#include "report/OutputTree.h"
#include "scheduling/DueState.h"
#include "support/Rows.h"
#include "support/Sandbox.h"
#include "support/Zones.h"

/// Why a report is due or not, at 13:14 on 1 April 2024, a Monday.
class TestDueState : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void says_data()
    {
        // lastRun: empty for never; the same for each schedule
        const Rows<QString, QStringList, bool, QString, QString> row("lastRun", "schedules", "due",
                                                                     "next", "why");
        row("no schedule", "", {}, false, "", "it has no schedule");
        row("switched off", "", {"OFF"}, false, "", "schedule 'Off' is switched off");
        row("a day that no month has", "2024-03-31T08:00:02", {"NEVER"}, false, "",
            "schedule 'Never' never runs");
        row("ran this hour", "2024-04-01T13:00:02", {"HOURLY"}, false, "2024-04-01T14:00:00",
            "not due before 2024-04-01 14:00 by schedule 'Hourly'");
        row("due", "2024-04-01T12:59:59", {"HOURLY"}, true, "2024-04-01T13:00:00",
            "due since 2024-04-01 13:00 by schedule 'Hourly'");
        row("missed and made up", "2024-03-31T10:00:02", {"HOURLY"}, true, "2024-03-31T11:00:00",
            "due since 2024-03-31 11:00 by schedule 'Hourly'");
        row("missed and skipped", "2024-03-31T08:00:02", {"STRICT"}, false, "2024-04-02T08:00:00",
            "not due before 2024-04-02 08:00 by schedule 'Strict'; the run of 2024-04-01 08:00 was "
            "missed by more than 30 minutes and is skipped");
        row("missed by less", "2024-04-01T08:00:02", {"STRICT13"}, true, "2024-04-01T13:00:00",
            "due since 2024-04-01 13:00 by schedule 'Strict 13'");
        row("due by one of two", "2024-04-01T12:59:59", {"STRICT", "HOURLY"}, true,
            "2024-04-01T13:00:00", "due since 2024-04-01 13:00 by schedule 'Hourly'");
        row("the earlier of two", "2024-04-01T13:00:02", {"STRICT", "HOURLY"}, false,
            "2024-04-01T14:00:00", "not due before 2024-04-01 14:00 by schedule 'Hourly'");
    }
    void says()
    {
        QFETCH(QString, lastRun);
        QFETCH(QStringList, schedules);
        QFETCH(QString, next);
        const Sandbox box;
        const LocalZone zone("UTC");
        const FrozenClock clock("2024-04-01T13:14:15");
        box.write("ChartSchedules.XML", R"(<SCHEDULES>
<SCHEDULE ScheduleID="HOURLY" ScheduleName="Hourly" SchedInterval="3" Reschedule="0"
 HourList="0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23"/>
<SCHEDULE ScheduleID="STRICT" ScheduleName="Strict" SchedInterval="3" Reschedule="1"
 RescheduleTime="30" HourList="8"/>
<SCHEDULE ScheduleID="STRICT13" ScheduleName="Strict 13" SchedInterval="3" Reschedule="1"
 RescheduleTime="30" HourList="13"/>
<SCHEDULE ScheduleID="NEVER" ScheduleName="Never" SchedInterval="6" MonthList="1,2,3"
 MonthDayList="32" HourList="8"/>
<SCHEDULE ScheduleID="OFF" ScheduleName="Off" SchedInterval="0"/>
</SCHEDULES>)");
        definitions().LoadScheduleDefs();
        clsReportDef report;
        for (const QString &id : schedules) {
            auto entry = std::make_shared<clsReportSchedule>();
            entry->ScheduleID = id;
            if (!lastRun.isEmpty())
                entry->LastRunDate = at(qPrintable(lastRun));
            report.ReportSchedules.add(id, entry);
        }
        const ScheduledReport scheduled = scheduledReport(report);
        const DueState state = dueState(scheduled);
        QTEST(state.why, "why");
        QTEST(state.due, "due");
        QCOMPARE(state.next, next.isEmpty() ? QDateTime() : at(qPrintable(next)));
        QVERIFY(!latestRun(scheduled, {}, false).time.isValid()); // chosen, but never run
        QCOMPARE(latestRun(scheduled, {}, true).time.isValid(), !lastRun.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestDueState)
#include "tst_DueState.moc"
