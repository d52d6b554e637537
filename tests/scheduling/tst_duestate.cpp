#include "core/Clock.h"
#include "definitions/DefinitionStores.h"
#include "report/OutputTree.h"
#include "scheduling/DueState.h"
#include "support/Sandbox.h"

#include <QTest>

/// Why a report is due or not, at 13:14 on 1 April 2024, a Monday.
class TestDueState : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void says_data();
    void says();
};

void TestDueState::says_data()
{
    QTest::addColumn<QString>("lastRun"); // empty: never; one for each schedule
    QTest::addColumn<QString>("schedules");
    QTest::addColumn<bool>("due");
    QTest::addColumn<QString>("next");
    QTest::addColumn<QString>("why");

    QTest::newRow("no schedule") << ""
                                 << "" << false << ""
                                 << "it has no schedule";
    QTest::newRow("unknown") << ""
                             << "X" << false << ""
                             << "there is no schedule 'X'";
    QTest::newRow("switched off") << ""
                                  << "OFF" << false << ""
                                  << "schedule 'Off' is switched off";
    QTest::newRow("ran this hour") << "2024-04-01T13:00:02"
                                   << "HOURLY" << false << "2024-04-01T14:00"
                                   << "not due before 2024-04-01 14:00 by schedule 'Hourly'";
    QTest::newRow("due") << "2024-04-01T12:59:59"
                         << "HOURLY" << true << "2024-04-01T13:00"
                         << "due since 2024-04-01 13:00 by schedule 'Hourly'";
    QTest::newRow("missed and made up") << "2024-03-31T10:00:02"
                                        << "HOURLY" << true << "2024-03-31T11:00"
                                        << "due since 2024-03-31 11:00 by schedule 'Hourly'";
    QTest::newRow("missed and skipped")
        << "2024-03-31T08:00:02"
        << "STRICT" << false << "2024-04-02T08:00"
        << "not due before 2024-04-02 08:00 by schedule 'Strict'; the run of 2024-04-01 08:00 was "
           "missed by more than 30 minutes and is skipped";
    QTest::newRow("missed by less") << "2024-04-01T08:00:02"
                                    << "STRICT13" << true << "2024-04-01T13:00"
                                    << "due since 2024-04-01 13:00 by schedule 'Strict 13'";
    QTest::newRow("due by one of two") << "2024-04-01T12:59:59"
                                       << "STRICT,HOURLY" << true << "2024-04-01T13:00"
                                       << "due since 2024-04-01 13:00 by schedule 'Hourly'";
    QTest::newRow("the earlier of two") << "2024-04-01T13:00:02"
                                        << "STRICT,HOURLY" << false << "2024-04-01T14:00"
                                        << "not due before 2024-04-01 14:00 by schedule 'Hourly'";
}

void TestDueState::says()
{
    QFETCH(QString, lastRun);
    QFETCH(QString, schedules);
    QFETCH(QString, next);
    const LocalZone zone("UTC");
    const Sandbox box;
    const FrozenClock clock(QStringLiteral("2024-04-01T13:14:15"));
    box.write("ChartSchedules.XML", R"(<SCHEDULES>
<SCHEDULE ScheduleID="HOURLY" ScheduleName="Hourly" SchedInterval="3" Reschedule="0"
 HourList="0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23"/>
<SCHEDULE ScheduleID="STRICT" ScheduleName="Strict" SchedInterval="3" Reschedule="1"
 RescheduleTime="30" HourList="8"/>
<SCHEDULE ScheduleID="STRICT13" ScheduleName="Strict 13" SchedInterval="3" Reschedule="1"
 RescheduleTime="30" HourList="13"/>
<SCHEDULE ScheduleID="OFF" ScheduleName="Off" SchedInterval="0"/>
</SCHEDULES>)");
    LoadScheduleDefs();
    clsReportDef report;
    for (const QString &id : schedules.split(u',', Qt::SkipEmptyParts)) {
        auto entry = std::make_shared<clsReportSchedule>();
        entry->ScheduleID = id;
        if (!lastRun.isEmpty()) {
            entry->LastRunDate = QDateTime::fromString(lastRun, Qt::ISODate);
            entry->LastRunDate.setTimeSpec(Qt::UTC);
        }
        report.ReportSchedules.add(id, entry);
    }
    const DueState state = dueState(report);
    QTEST(state.why, "why");
    QTEST(state.due, "due");
    QCOMPARE(state.next.isValid() ? state.next.toString("yyyy-MM-ddTHH:mm") : QString(), next);
    QVERIFY(!lastRunDate(report).isValid()); // chosen, but never run
    gConfig->storedOutput = QStringLiteral("%%app.path%%/Reports");
    gConfig->TOU_REPORT = QStringLiteral("Report.htm");
    QDir().mkpath(reportFolder(report));
    saveFile(reportPage(report), "page");
    QCOMPARE(lastRunDate(report).isValid(), !lastRun.isEmpty());
    resetDefinitions();
}

QTEST_GUILESS_MAIN(TestDueState)
#include "tst_duestate.moc"
