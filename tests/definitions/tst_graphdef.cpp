#include "core/Clock.h"
#include "definitions/GraphDef.h"
#include "support/Errors.h"
#include "support/Rows.h"
#include "support/Sandbox.h"

#include <limits>

namespace {

constexpr qint32 most = std::numeric_limits<qint32>::max();
constexpr qint32 least = std::numeric_limits<qint32>::min();

QString shown(const QDateTime &date)
{
    return date.toString(u"yyyy-MM-dd HH:mm:ss");
}

} // namespace

class TestGraphDef : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fixedPeriods_data()
    {
        // From 00:00:00 of the first to 23:59:59 of the last day.
        const Rows<QString, int, QString> row("present", "duration", "days");
        const char *leap = "2024-02-29T14:30:15"; // a Thursday
        const char *january = "2024-01-31T12:00:00";
        const char *saturday = "2024-03-02T23:59:59";
        row("today", leap, Today, "2024-02-29 2024-02-29");
        row("this week", leap, ThisWeek, "2024-02-25 2024-03-02");
        row("on a Sunday", "2024-02-25T00:00:00", ThisWeek, "2024-02-25 2024-03-02");
        row("on a Saturday", saturday, ThisWeek, "2024-02-25 2024-03-02");
        row("leap year", leap, ThisMonth, "2024-02-01 2024-02-29");
        row("common year", "2023-02-28T01:00:00", ThisMonth, "2023-02-01 2023-02-28");
        row("December", "2023-12-31T23:59:59", ThisMonth, "2023-12-01 2023-12-31");
        row("this year", leap, ThisYear, "2024-01-01 2024-12-31");
        row("yesterday", "2024-03-01T00:00:00", Yesterday, "2024-02-29 2024-02-29");
        row("last week", leap, LastWeek, "2024-02-18 2024-02-24");
        row("last, on a Sunday", "2024-02-25T12:00:00", LastWeek, "2024-02-18 2024-02-24");
        row("over the year", "2024-01-02T12:00:00", LastWeek, "2023-12-24 2023-12-30");
        row("last month", "2024-03-31T12:00:00", LastMonth, "2024-02-01 2024-02-29");
        row("last month in January", january, LastMonth, "2023-12-01 2023-12-31");
        row("last year", leap, LastYear, "2023-01-01 2023-12-31");
    }
    void fixedPeriods()
    {
        QFETCH(QString, present);
        QFETCH(int, duration);
        QFETCH(QString, days);
        const FrozenClock clock(present);
        clsGraphDef chart;
        chart.SubFrequency = FixedPeriod;
        chart.ChartDuration = duration;
        chart.SetStart();
        QCOMPARE(shown(chart.StartTime), days.section(' ', 0, 0) + " 00:00:00");
        QCOMPARE(shown(chart.EndTime), days.section(' ', 1, 1) + " 23:59:59");
    }

    void lastIntervals_data()
    {
        const Rows<QString, int, int, int, QString> row("end", "frequency", "minutes", "count",
                                                        "start");
        const char *march = "2023-03-31 14:00:00";
        const char *leap = "2024-03-31 14:00:00";
        const char *first = "0100-01-01 00:00:00";
        const char *last = "9999-12-31 23:59:59";
        row("minutes", march, ByMinute, 5, 24, "2023-03-31 12:00:00");
        row("minutes, none", march, ByMinute, 0, 24, march);
        row("minutes, negative interval", march, ByMinute, -5, 24, march);
        row("minutes, negative count", march, ByMinute, 5, -12, "2023-03-31 15:00:00");
        row("minutes, most", march, ByMinute, most, most, first);
        row("minutes, least", march, ByMinute, most, least, last);
        row("hours", march, ByHour, 0, 36, "2023-03-30 02:00:00");
        row("hours, most", march, ByHour, 0, most, first);
        row("days keep the time", march, ByDay, 0, 31, "2023-02-28 14:00:00");
        row("days, most", march, ByDay, 0, most, first);
        row("days, least", march, ByDay, 0, least, last);
        row("month that is shorter", march, ByMonth, 0, 1, "2023-03-03 00:00:00");
        row("month that is shorter, leap year", leap, ByMonth, 0, 1, "2024-03-02 00:00:00");
        row("months count on from the rollover", march, ByMonth, 0, 2, "2023-02-03 00:00:00");
        row("over January", "2023-01-15 09:00:00", ByMonth, 0, 13, "2021-12-15 00:00:00");
        row("30 days", "2023-12-31 09:00:00", ByMonth, 0, 1, "2023-12-01 00:00:00");
        row("months, none", march, ByMonth, 0, 0, march);
        row("months, negative", march, ByMonth, 0, -3, march);
        row("months, most", march, ByMonth, 0, most, first);
        row("year", march, ByYear, 0, 2, "2021-03-31 00:00:00");
        row("from 29 February", "2024-02-29 10:00:00", ByYear, 0, 4, "2020-03-01 00:00:00");
        row("years, none", march, ByYear, 0, 0, march);
        row("years, most", march, ByYear, 0, most, first);
        row("unknown frequency", march, 5, 5, 24, "2020-01-01 00:00:00");
    }
    void lastIntervals()
    {
        QFETCH(QString, end);
        QFETCH(int, frequency);
        QFETCH(int, minutes);
        QFETCH(int, count);
        clsGraphDef chart;
        chart.ChartFrequency = frequency;
        chart.MinuteInterval = minutes;
        chart.IntervalCount = count;
        chart.StartTime = wallDateTime(QDate(2020, 1, 1));
        chart.EndTime = QDateTime::fromString(end + 'Z', Qt::ISODate);
        chart.SetStart();
        QTEST(shown(chart.StartTime), "start");
        QCOMPARE(shown(chart.EndTime), end);
    }

    void otherPeriodsStay_data()
    {
        const Rows<int, int> row("subFrequency", "duration");
        row("custom range", 1, CustomRange);
        row("code 3", 3, Today);
        row("negative code", -1, Today);
        row("fixed, custom duration", FixedPeriod, CustomRange);
        row("fixed, negative duration", FixedPeriod, -1);
    }
    void otherPeriodsStay()
    {
        QFETCH(int, subFrequency);
        QFETCH(int, duration);
        clsGraphDef chart;
        chart.SubFrequency = subFrequency;
        chart.ChartDuration = duration;
        chart.IntervalCount = 24;
        chart.StartTime = wallDateTime(QDate(2020, 1, 1), QTime(1, 2, 3));
        chart.EndTime = wallDateTime(QDate(2020, 2, 1), QTime(4, 5, 6));
        chart.SetStart();
        QCOMPARE(shown(chart.StartTime), "2020-01-01 01:02:03");
        QCOMPARE(shown(chart.EndTime), "2020-02-01 04:05:06");
    }

    void labelStepFollowsTheMinutes()
    {
        const auto step = [](int frequency, int count) {
            clsGraphDef chart;
            chart.ChartFrequency = frequency;
            chart.IntervalCount = count;
            chart.LabelStep = 7;
            chart.SetStart();
            return chart.LabelStep;
        };
        QCOMPARE(step(ByMinute, 30), 1);
        QCOMPARE(step(ByMinute, 31), 2);
        QCOMPARE(step(ByMinute, 60), 2);
        QCOMPARE(step(ByMinute, 61), 5);
        QCOMPARE(step(ByHour, 61), 1);
    }

    void elementWithoutAttributes()
    {
        Sandbox sandbox;
        const LocalZone zone("Europe/Berlin");
        const FrozenClock clock("2024-07-01T12:00:00");
        clsGraphDef chart;
        const QString before = chart.ChartID;
        chart.SetXMLConfig("<CHART title='of another case'/>");
        QVERIFY(chart.ChartID != before);
        QCOMPARE(chart.XMLConfig(),
                 "<CHART ChartID=\"" + chart.ChartID +
                     "\" Title=\"Un Named Chart\" SampleLabel=\"Un Named Data\" Frequency=\"0\" "
                     "SubFreq=\"0\" MinuteInterval=\"5\" IntervalCount=\"24\" ChartDuration=\"0\" "
                     "StateFile=\"StateChart.HTML\" CountFile=\"CountChart.HTML\" Details=\"0\" "
                     "DetailCount=\"0\" StartTime=\"2024-07-01T10:00:00-00:00\" "
                     "EndTime=\"2024-07-01T10:00:00-00:00\" ChartQuality=\"2\"/>");
    }

    void textOutlivesTheElement()
    {
        Sandbox sandbox;
        const LocalZone zone("America/New_York");
        const QString text =
            "<CHART ChartID=\"{Ä-1}\" Title=\"Größe &quot;A&quot; &lt;&amp;> 日本\" "
            "SampleLabel=\"two&#10;lines\" Frequency=\"3\" SubFreq=\"7\" MinuteInterval=\"-15\" "
            "IntervalCount=\"96\" ChartDuration=\"8\" StateFile=\"S.HTML\" CountFile=\"C.HTML\" "
            "Details=\"-1\" DetailCount=\"12\" StartTime=\"2024-03-05T13:07:09-00:00\" "
            "EndTime=\"2024-07-05T13:07:09-00:00\" ChartQuality=\"3\"/>";
        clsGraphDef chart;
        chart.SetXMLConfig(text);
        QCOMPARE(chart.XMLConfig(), text);
        QCOMPARE(chart.ChartTitle, "Größe \"A\" <&> 日本");
        QCOMPARE(chart.SampleLabel, "two\nlines");
        QCOMPARE(chart.MinuteInterval, -15);
        QVERIFY(chart.Details);
        QCOMPARE(shown(chart.StartTime), "2024-03-05 08:07:09");
        QCOMPARE(shown(chart.EndTime), "2024-07-05 09:07:09");
    }

    void numbersAreReadLeniently()
    {
        Sandbox sandbox;
        clsGraphDef chart;
        chart.ChartQuality = 1;
        chart.SetXMLConfig("<CHART Frequency=\"abc\" SubFreq=\" 2x\" IntervalCount=\"2.5\" "
                           "MinuteInterval=\"3.5\" Details=\"0.1\" DetailCount=\"\" "
                           "Unknown=\"1\"><More/></CHART>");
        QCOMPARE(chart.ChartFrequency, 0);
        QCOMPARE(chart.SubFrequency, 2);
        QCOMPARE(chart.IntervalCount, 2);
        QCOMPARE(chart.MinuteInterval, 4);
        QVERIFY(chart.Details);
        QCOMPARE(chart.ChartQuality, 1);
        const QString failure =
            failureOf([&] { chart.SetXMLConfig("<CHART IntervalCount=\"4294967296\"/>"); });
        QVERIFY2(failure.startsWith("[6] IntervalCount"), qPrintable(failure));
    }

    void readsTemplates()
    {
        Sandbox sandbox;
        sandbox.write("State.HTML", "st\xC3\xA4te");
        sandbox.write("other/Count.HTML", "c\xF6unt");
        const QString full = sandbox.path("OTHER") + "\\count.html";
        clsGraphDef chart;
        chart.SetXMLConfig("<CHART StateFile=\"STATE.html\" CountFile=\"" + full + "\"/>");
        QCOMPARE(chart.StateTemplateData, "stäte");
        QCOMPARE(chart.CountTemplateData, "cöunt");
        QCOMPARE(chart.StateTemplateFile, "STATE.html");
        QCOMPARE(chart.CountTemplateFile, full);
        QCOMPARE(sandbox.status, QStringList());
    }

    void missingTemplateKeepsTheDefinition()
    {
        Sandbox sandbox;
        sandbox.write("CountChart.HTML", "count");
        clsGraphDef chart;
        chart.StateTemplateData = "old";
        chart.SetXMLConfig("<CHART Title=\"T\"/>");
        QCOMPARE(chart.ChartTitle, "T");
        QCOMPARE(chart.StateTemplateData, "");
        QCOMPARE(chart.CountTemplateData, "count");
        QCOMPARE(sandbox.status.size(), 1);
        const QString path = sandbox.path("StateChart.HTML");
        QVERIFY2(sandbox.status[0].startsWith("Error reading chart template '" + path + "' [53] "),
                 qPrintable(sandbox.status[0]));
    }
};

QTEST_GUILESS_MAIN(TestGraphDef)
#include "tst_graphdef.moc"
