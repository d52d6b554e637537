#include "base/Clock.h"
#include "definitions/clsReportDef.h"
#include "definitions/clsScheduleDef.h"
#include "support/Errors.h"
#include "support/Rows.h"
#include "support/Sandbox.h"
#include "support/Zones.h"

namespace {
const QString allDays = "1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,"
                        "28,29,30,31";
const QString allMonths = "1,2,3,4,5,6,7,8,9,10,11,12";

QString shown(const QDateTime &date)
{
    return date.toString(u"yyyy-MM-ddTHH:mm");
}

/// A schedule of every day and month.
clsScheduleDef daily(const QString &hours)
{
    clsScheduleDef schedule;
    schedule.SchedInterval = Daily;
    schedule.HourList = hours;
    schedule.MonthDayList = allDays;
    schedule.MonthList = allMonths;
    return schedule;
}

} // namespace

class TestScheduleDef : public QObject
{
    Q_OBJECT

    const ProgramState m_state;

private Q_SLOTS:
    void findsTheNextSlot()
    {
        const auto next = [](const QString &hours, const QString &start) {
            QStringList found;
            for (const int interval : {int(Daily), 9, -1}) { // other codes are like daily
                clsScheduleDef schedule = daily(hours);
                schedule.SchedInterval = SchedIntervalCode(interval);
                schedule.CalcNextSchedule(at(start.toLatin1()));
                found.append(shown(schedule.NextRunTime));
            }
            found.removeDuplicates();
            return found.join(u'|');
        };
        QCOMPARE(next("10,11", "2024-03-05T10:00"), "2024-03-05T11:00");
        QCOMPARE(next("11", "2024-03-05T10:59"), "2024-03-05T11:00");
        QCOMPARE(next("10", "2024-03-05T10:05"), "2024-03-06T10:00"); // the same hour: a day away
        QCOMPARE(next("0", "2023-12-31T23:30"), "2024-01-01T00:00");
        QCOMPARE(next("00", "2024-03-05T10:00"), "2024-03-06T00:00");
        QCOMPARE(next("1, 2", "2024-03-05T01:00"), "2024-03-06T01:00"); // a blank hides the 2
        QCOMPARE(next("", "2023-03-05T23:00"), "2024-03-04T23:00");     // the last hour tried
        QCOMPARE(next("6", ""), "1899-12-30T06:00");                    // no start
    }

    void findsTheNextSlotOfListedDays()
    {
        const auto next = [](int interval, const QString &hours, const QString &weekDays,
                             const QString &monthDays, const QString &months,
                             const QString &start) {
            clsScheduleDef schedule = daily(hours);
            schedule.SchedInterval = SchedIntervalCode(interval);
            schedule.WeekDayList = weekDays;
            schedule.MonthDayList = monthDays;
            schedule.MonthList = months;
            schedule.CalcNextSchedule(at(start.toLatin1()));
            return shown(schedule.NextRunTime);
        };
        const char *march = "2024-03-05T10:00"; // a Tuesday
        QCOMPARE(next(Daily, "07", "", "09", "04", march), "2024-04-09T07:00");
        QCOMPARE(next(Daily, " 12 ", "", " 6 ", " 3 ", march), "2024-03-06T12:00");
        QCOMPARE(next(Daily, "0", "", "29", "2", "2024-01-01T00:00"), "2024-02-29T00:00");
        QCOMPARE(next(Weekly, "6", "1", "", allMonths, march), "2024-03-10T06:00"); // Sunday
        QCOMPARE(next(Weekly, "6", "7", "", allMonths, march), "2024-03-09T06:00"); // Saturday
        QCOMPARE(next(Weekly, "6", "4", "1", allMonths, march), "2024-03-06T06:00");
        QCOMPARE(next(Monthly, "6", "4", "1", allMonths, march), "2024-04-01T06:00");
        QCOMPARE(next(Yearly, "6", "", "1", "1", march), "2025-01-01T06:00");

        // Where none is found: the last of the 8760 hours tried.
        const char *sunday = "2023-03-05T10:30";
        QCOMPARE(next(Weekly, "6", "01", "", allMonths, sunday), "2024-03-04T10:00");
        QCOMPARE(next(Weekly, "6", "0", "", allMonths, sunday), "2024-03-04T10:00");
        QCOMPARE(next(Daily, "1", "", "32", allMonths, sunday), "2024-03-04T10:00");
        QCOMPARE(next(Daily, "0", "", "29", "2", "2024-02-29T00:30"), "2025-02-28T00:00");
    }

    void skipsMissedSlots_data()
    {
        const Rows<bool, int, QString, QString, bool> row("reschedule", "tolerance", "lastRun",
                                                          "next", "due");
        // It is 2024-03-05 10:30:59; slots are at 4, 10 and 16 o'clock.
        row("kept", false, 0, "2024-03-01T10:05", "2024-03-01T16:00", true);
        row("within the tolerance", true, 30, "2024-03-01T10:05", "2024-03-05T10:00", true);
        row("a minute late", true, 29, "2024-03-01T10:05", "2024-03-05T16:00", false);
        row("wide tolerance", true, 390, "2024-03-01T10:05", "2024-03-05T04:00", true);
        row("negative tolerance", true, -1, "2024-03-01T10:05", "2024-03-05T16:00", false);
        row("run at its slot", true, 59, "2024-03-05T10:00", "2024-03-05T16:00", false);
        row("an hour shown twice", true, 59, "2024-03-05T11:30", "2024-03-05T16:00", false);
        // A last run in the future counts as none, and the slots missed before are not looked at.
        row("last run in the future", true, 59, "2099-03-06T05:00", "2024-03-05T10:00", true);
        row("future, kept", false, 59, "2024-03-05T11:31", "1899-12-30T04:00", true);
        row("run long ago", true, 29, "2022-01-01T00:30", "2024-03-05T16:00", false);
        row("never run", true, 59, "1899-12-30T00:00", "2024-03-05T10:00", true);
    }
    void skipsMissedSlots()
    {
        QFETCH(bool, reschedule);
        QFETCH(int, tolerance);
        QFETCH(QString, lastRun);
        const LocalZone zone("America/New_York");
        const FrozenClock clock("2024-03-05T10:30:59");
        clsScheduleDef schedule = daily("4,10,16");
        schedule.Reschedule = reschedule;
        schedule.RescheduleTime = tolerance;
        clsReportSchedule entry;
        entry.LastRunDate = at(lastRun.toLatin1());
        QTEST(IsReportDue(entry, schedule), "due");
        QTEST(shown(schedule.NextRunTime), "next");
    }
    void neverIsNotAYear()
    {
        // The last run was at 2024-01-01 00:05, the hour is 0.
        const std::tuple<const char *, const char *, const char *, bool, bool> cases[] = {
            {"1", "1", "2024-12-31T23:59", false, true},
            {"1", "1", "2025-01-01T00:00", true, true},
            {"29", "2", "2024-02-29T00:00", true, true},
            {"30,31,32", "2", "2030-01-01T00:00", false, false},
            {"1", "", "2030-01-01T00:00", false, false}};
        for (const auto &[day, month, now, due, ever] : cases) {
            clsScheduleDef schedule = daily("0");
            schedule.MonthDayList = day;
            schedule.MonthList = month;
            clsReportSchedule entry;
            entry.LastRunDate = at("2024-01-01T00:05");
            const FrozenClock clock(QString{now});
            for (const bool reschedule : {false, true}) {
                schedule.Reschedule = reschedule;
                QCOMPARE(IsReportDue(entry, schedule), due);
            }
            QCOMPARE(everRuns(schedule), ever);
            QCOMPARE(nextRuns(schedule, at("2096-02-29T00:00"), 2).size(), size_t(ever ? 2 : 0));
        }
    }

    void textOutlivesTheElement()
    {
        const LocalZone zone("Europe/Berlin");
        const QString text =
            "<SCHEDULE SchedInterval=\"6\" ScheduleID=\"{Ä}\" ScheduleName=\"&quot;\" "
            "HourList=\"1\" "
            "WeekDayList=\"0\" MonthDayList=\"32\" MonthList=\"2\" "
            "StartTime=\"2024-07-01T10:00:00-00:00\" EndTime=\"2024-08-01T10:00:00-00:00\" "
            "Reschedule=\"-1\" RescheduleTime=\"-32768\"/>";
        clsScheduleDef schedule;
        schedule.SetXMLConfig(text);
        QCOMPARE(schedule.XMLConfig(), text);
        QCOMPARE(shown(schedule.EndTime), "2024-08-01T12:00");
        for (const int tooWide : {-32769, 32768}) {
            schedule.RescheduleTime = tooWide;
            QCOMPARE(errorOf([&] { schedule.XMLConfig(); }).number, int(Overflow));
        }
    }
};

QTEST_GUILESS_MAIN(TestScheduleDef)
#include "tst_clsScheduleDef.moc"
