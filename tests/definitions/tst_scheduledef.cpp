#include "../support/Sandbox.h"
#include "core/Clock.h"
#include "core/Error.h"
#include "core/Xml.h"
#include "definitions/ReportDef.h"
#include "definitions/ScheduleDef.h"

#include <QRandomGenerator>
#include <QTest>

namespace {

const QString allDays = QStringLiteral("1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,"
                                       "23,24,25,26,27,28,29,30,31");
const QString allMonths = QStringLiteral("1,2,3,4,5,6,7,8,9,10,11,12");

QDateTime wall(const QString &text)
{
    QDateTime date = QDateTime::fromString(text, Qt::ISODate);
    date.setTimeSpec(Qt::UTC);
    return date;
}

/// The search step by step, hour by hour, with texts: slow and plain.
QDateTime plainSearch(const clsScheduleDef &schedule, const QDateTime &start)
{
    const auto lists = [](const QString &list, int number, bool twoDigits) {
        const QString framed = u',' + list.trimmed() + u',';
        return framed.contains(QStringLiteral(",%1,").arg(number)) ||
               (twoDigits &&
                framed.contains(QStringLiteral(",%1,").arg(number, 2, 10, QLatin1Char('0'))));
    };
    QDateTime candidate(start.date(), QTime(start.time().hour(), 0), Qt::UTC);
    for (int tried = 1;; ++tried) {
        candidate = candidate.addSecs(3600);
        const QDate date = candidate.date();
        bool found = lists(schedule.HourList, candidate.time().hour(), true) &&
                     (schedule.SchedInterval == 3
                          ? lists(schedule.WeekDayList,
                                  date.dayOfWeek() == 7 ? 1 : date.dayOfWeek() + 1, false)
                          : lists(schedule.MonthDayList, date.day(), true)) &&
                     lists(schedule.MonthList, date.month(), true);
        if (found && schedule.Reschedule && candidate < now() &&
            candidate.msecsTo(now()) / 60'000 > schedule.RescheduleTime)
            found = false;
        if (found || tried == 8760)
            return candidate;
    }
}

QString randomList(QRandomGenerator &random, int from, int to)
{
    QStringList numbers;
    const int count = random.bounded(4) == 0 ? random.bounded(10) : random.bounded(1, 4);
    for (int i = 0; i < count; ++i) {
        const int number = random.bounded(from, to + 1);
        numbers.append(
            QStringLiteral("%1").arg(number, random.bounded(1, 3), 10, QLatin1Char('0')));
    }
    return numbers.join(random.bounded(8) == 0 ? QStringLiteral(", ") : QStringLiteral(","));
}

} // namespace

class TestScheduleDef : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsTheNextSlot_data()
    {
        QTest::addColumn<int>("interval");
        QTest::addColumn<QString>("hours");
        QTest::addColumn<QString>("weekDays");
        QTest::addColumn<QString>("monthDays");
        QTest::addColumn<QString>("months");
        QTest::addColumn<QString>("start");
        QTest::addColumn<QString>("next");
        const auto row = [](const char *name, int interval, const char *hours, const char *weekDays,
                            const QString &monthDays, const QString &months, const char *start,
                            const char *next) {
            QTest::newRow(name) << interval << QString::fromLatin1(hours)
                                << QString::fromLatin1(weekDays) << monthDays << months
                                << QString::fromLatin1(start) << QString::fromLatin1(next);
        };
        const auto text = [](const char *list) { return QString::fromLatin1(list); };
        row("next hour of two", Daily, "10,11", "", allDays, allMonths, "2024-03-05T10:00:00",
            "2024-03-05T11:00:00");
        row("minutes are ignored", Daily, "11", "", allDays, allMonths, "2024-03-05T10:59:59",
            "2024-03-05T11:00:00");
        row("the same hour is a day away", Daily, "10", "", allDays, allMonths,
            "2024-03-05T10:05:00", "2024-03-06T10:00:00");
        row("over the year", Daily, "0", "", allDays, allMonths, "2023-12-31T23:30:00",
            "2024-01-01T00:00:00");
        row("leading zero", Daily, "07", "", text("09"), text("04"), "2024-03-05T10:00:00",
            "2024-04-09T07:00:00");
        row("leading zero of 0", Daily, "00", "", allDays, allMonths, "2024-03-05T10:00:00",
            "2024-03-06T00:00:00");
        row("blank after the comma", Daily, "1, 2", "", allDays, allMonths, "2024-03-05T01:00:00",
            "2024-03-06T01:00:00");
        row("outer blanks", Daily, " 2 ", "", text(" 6 "), text(" 3 "), "2024-03-05T01:00:00",
            "2024-03-06T02:00:00");
        row("29 February", Daily, "0", "", text("29"), text("2"), "2024-01-01T00:00:00",
            "2024-02-29T00:00:00");
        row("Sunday is 1", Weekly, "6", "1", QString(), allMonths, "2024-03-05T10:00:00",
            "2024-03-10T06:00:00");
        row("Saturday is 7", Weekly, "6", "7", QString(), allMonths, "2024-03-05T10:00:00",
            "2024-03-09T06:00:00");
        row("weekly ignores month days", Weekly, "6", "4", text("1"), allMonths,
            "2024-03-05T10:00:00", "2024-03-06T06:00:00");
        row("monthly ignores week days", Monthly, "6", "4", text("1"), allMonths,
            "2024-03-05T10:00:00", "2024-04-01T06:00:00");
        row("yearly", Yearly, "6", "", text("1"), text("1"), "2024-03-05T10:00:00",
            "2025-01-01T06:00:00");
        row("code 9 like daily", 9, "6", "", allDays, allMonths, "2024-03-05T10:00:00",
            "2024-03-06T06:00:00");
        row("negative code like daily", -1, "6", "", allDays, allMonths, "2024-03-05T10:00:00",
            "2024-03-06T06:00:00");
        row("week day with a zero", Weekly, "6", "01", QString(), allMonths, "2023-03-05T10:30:00",
            "2024-03-04T10:00:00");
        row("day 32", Daily, "1", "", text("32"), allMonths, "2023-03-05T10:30:00",
            "2024-03-04T10:00:00");
        row("week day 0", Weekly, "1", "0", QString(), allMonths, "2023-03-05T00:00:00",
            "2024-03-04T00:00:00");
        row("no hours", Daily, "", "", allDays, allMonths, "2023-03-05T23:00:00",
            "2024-03-04T23:00:00");
        row("29 February out of reach", Daily, "0", "", text("29"), text("2"),
            "2024-02-29T00:30:00", "2025-02-28T00:00:00");
    }
    void findsTheNextSlot()
    {
        QFETCH(int, interval);
        QFETCH(QString, hours);
        QFETCH(QString, weekDays);
        QFETCH(QString, monthDays);
        QFETCH(QString, months);
        QFETCH(QString, start);
        clsScheduleDef schedule;
        schedule.SchedInterval = interval;
        schedule.HourList = hours;
        schedule.WeekDayList = weekDays;
        schedule.MonthDayList = monthDays;
        schedule.MonthList = months;
        schedule.CalcNextSchedule(wall(start));
        QTEST(schedule.NextRunTime.toString(u"yyyy-MM-ddTHH:mm:ss"), "next");
    }

    void skipsMissedSlots_data()
    {
        QTest::addColumn<bool>("reschedule");
        QTest::addColumn<int>("tolerance");
        QTest::addColumn<QString>("lastRun");
        QTest::addColumn<QString>("next");
        QTest::addColumn<bool>("due");
        const auto row = [](const char *name, bool reschedule, int tolerance, const char *lastRun,
                            const char *next, bool due) {
            QTest::newRow(name) << reschedule << tolerance << QString::fromLatin1(lastRun)
                                << QString::fromLatin1(next) << due;
        };
        // It is 2024-03-05 10:30:59; slots are at 4, 10 and 16 o'clock.
        row("kept", false, 0, "2024-03-01T10:05:00", "2024-03-01T16:00:00", true);
        row("within the tolerance", true, 30, "2024-03-01T10:05:00", "2024-03-05T10:00:00", true);
        row("a minute late", true, 29, "2024-03-01T10:05:00", "2024-03-05T16:00:00", false);
        row("wide tolerance", true, 390, "2024-03-01T10:05:00", "2024-03-05T04:00:00", true);
        row("negative tolerance", true, -1, "2024-03-01T10:05:00", "2024-03-05T16:00:00", false);
        row("run at its slot", true, 59, "2024-03-05T10:00:10", "2024-03-05T16:00:00", false);
        row("last run in the future", true, 59, "2024-03-06T05:00:00", "2024-03-06T10:00:00",
            false);
        // More than a year back no slot within the tolerance is reached, and the last hour tried
        // has long come.
        row("run long ago", true, 59, "2022-01-01T00:30:00", "2023-01-01T00:00:00", true);
        row("never run", true, 59, "1899-12-30T00:00:00", "1900-12-30T00:00:00", true);
    }
    void skipsMissedSlots()
    {
        QFETCH(bool, reschedule);
        QFETCH(int, tolerance);
        QFETCH(QString, lastRun);
        const LocalZone zone("America/New_York");
        const FrozenClock clock(QStringLiteral("2024-03-05T10:30:59"));
        clsScheduleDef schedule;
        schedule.SchedInterval = Daily;
        schedule.HourList = QStringLiteral("4,10,16");
        schedule.MonthDayList = allDays;
        schedule.MonthList = allMonths;
        schedule.Reschedule = reschedule;
        schedule.RescheduleTime = tolerance;
        clsReportSchedule entry;
        entry.LastRunDate = wall(lastRun);
        const bool due = IsReportDue(entry, schedule);
        QTEST(schedule.NextRunTime.toString(u"yyyy-MM-ddTHH:mm:ss"), "next");
        QTEST(due, "due");
    }

    void dueFromTheVeryMoment()
    {
        clsScheduleDef schedule;
        schedule.SchedInterval = Daily;
        schedule.HourList = QStringLiteral("11");
        schedule.MonthDayList = allDays;
        schedule.MonthList = allMonths;
        clsReportSchedule entry;
        entry.LastRunDate = wall(QStringLiteral("2024-03-05T10:30:00"));
        FrozenClock clock(QStringLiteral("2024-03-05T11:00:00"));
        QVERIFY(IsReportDue(entry, schedule));
        clock.advance(-1);
        QVERIFY(!IsReportDue(entry, schedule));
    }

    void notScheduledIsNeverDue()
    {
        const FrozenClock clock(QStringLiteral("2024-03-05T10:30:59"));
        clsScheduleDef schedule;
        schedule.HourList = QStringLiteral("10");
        schedule.MonthDayList = allDays;
        schedule.MonthList = allMonths;
        QVERIFY(!IsReportDue(clsReportSchedule(), schedule));
        QCOMPARE(schedule.NextRunTime, now());
    }

    void agreesWithThePlainSearch()
    {
        const FrozenClock clock(QStringLiteral("2024-06-15T12:34:56"));
        QRandomGenerator random(20240615);
        int found = 0;
        for (int i = 0; i < 60; ++i) {
            clsScheduleDef schedule;
            schedule.SchedInterval = random.bounded(1, 6);
            schedule.HourList = randomList(random, 0, 25);
            schedule.WeekDayList = randomList(random, 0, 7);
            schedule.MonthDayList = randomList(random, 1, 32);
            schedule.MonthList = random.bounded(2) ? allMonths : randomList(random, 1, 12);
            schedule.Reschedule = random.bounded(2) != 0;
            schedule.RescheduleTime = random.bounded(2000);
            const QDateTime start = now()
                                        .addSecs(random.bounded(-700 * 24, 30 * 24) * 3600)
                                        .addSecs(random.bounded(3600));
            const QDateTime expected = plainSearch(schedule, start);
            schedule.CalcNextSchedule(start);
            QVERIFY2(schedule.NextRunTime == expected,
                     qPrintable(schedule.XMLConfig() + start.toString(Qt::ISODate) +
                                expected.toString(Qt::ISODate)));
            if (start.secsTo(expected) < 8759 * 3600)
                ++found;
        }
        QVERIFY2(found > 10 && found < 58, qPrintable(QString::number(found)));
    }

    void elementWithoutAttributes()
    {
        const LocalZone zone("Europe/Berlin");
        const FrozenClock clock(QStringLiteral("2024-07-01T12:00:00"));
        clsScheduleDef schedule;
        const QString before = schedule.ScheduleID;
        schedule.SetXMLConfig(QStringLiteral("<SCHEDULE/>"));
        QVERIFY(schedule.ScheduleID != before);
        QCOMPARE(schedule.XMLConfig(),
                 QStringLiteral("<SCHEDULE SchedInterval=\"2\" ScheduleID=\"%1\" "
                                "ScheduleName=\"New Schedule\" HourList=\"1\" "
                                "WeekDayList=\"0,1,2,3,4,5,6,7\" MonthDayList=\"32\" "
                                "MonthList=\"1,2,3,4,5,6,7,8,9,10,11,12\" "
                                "StartTime=\"2024-07-01T10:00:00-00:00\" "
                                "EndTime=\"2024-07-01T10:00:00-00:00\" Reschedule=\"-1\" "
                                "RescheduleTime=\"59\"/>")
                     .arg(schedule.ScheduleID));
        clsScheduleDef again;
        again.SetXMLConfig(schedule.XMLConfig());
        QCOMPARE(again.XMLConfig(), schedule.XMLConfig());
    }

    void toleranceHasSixteenBits_data()
    {
        QTest::addColumn<int>("tolerance");
        QTest::addColumn<bool>("fits");
        QTest::newRow("most") << 32767 << true;
        QTest::newRow("beyond") << 32768 << false;
        QTest::newRow("least") << -32768 << true;
        QTest::newRow("below") << -32769 << false;
    }
    void toleranceHasSixteenBits()
    {
        QFETCH(int, tolerance);
        clsScheduleDef schedule;
        schedule.RescheduleTime = tolerance;
        int number = 0;
        try {
            QVERIFY(schedule.XMLConfig().contains(
                QStringLiteral("RescheduleTime=\"%1\"").arg(tolerance)));
        } catch (const Error &error) {
            number = error.number;
        }
        QTEST(number == 0, "fits");
        QVERIFY(number == 0 || number == Overflow);
    }

    void malformedTextThrows()
    {
        clsScheduleDef schedule;
        QVERIFY_EXCEPTION_THROWN(schedule.SetXMLConfig(QStringLiteral("<SCHEDULE")), Error);
    }
};

QTEST_GUILESS_MAIN(TestScheduleDef)
#include "tst_scheduledef.moc"
