#include "base/Clock.h"
#include "definitions/clsGraphDef.h"
#include "support/Errors.h"
#include "support/Sandbox.h"

#include <QTest>

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

    const ProgramState m_state;

private Q_SLOTS:
    /// From 00:00:00 of the first to 23:59:59 of the last day.
    void fixedPeriods()
    {
        const auto days = [](const QString &present, ChartDurationCode duration) {
            const FrozenClock clock(present);
            clsGraphDef chart;
            chart.SubFrequency = FixedPeriod;
            chart.ChartDuration = duration;
            chart.SetStart();
            return QString(shown(chart.StartTime) + u' ' + shown(chart.EndTime))
                .remove(" 00:00:00")
                .remove(" 23:59:59");
        };
        const char *leap = "2024-02-29T14:30:15"; // a Thursday
        QCOMPARE(days(leap, ThisWeek), "2024-02-25 2024-03-02");
        QCOMPARE(days("2024-03-02T23:59:59", ThisWeek), "2024-02-25 2024-03-02");
        QCOMPARE(days(leap, ThisMonth), "2024-02-01 2024-02-29");
        QCOMPARE(days(leap, ThisYear), "2024-01-01 2024-12-31");
        QCOMPARE(days("2024-03-01T00:00:00", Yesterday), "2024-02-29 2024-02-29");
        QCOMPARE(days(leap, LastWeek), "2024-02-18 2024-02-24");
        QCOMPARE(days("2024-02-25T12:00:00", LastWeek), "2024-02-18 2024-02-24");
        QCOMPARE(days("2024-01-02T12:00:00", LastWeek), "2023-12-24 2023-12-30");
        QCOMPARE(days("2024-03-31T12:00:00", LastMonth), "2024-02-01 2024-02-29");
        QCOMPARE(days(leap, LastYear), "2023-01-01 2023-12-31");
        QCOMPARE(days("2024-03-03T12:00:00", ThisMondayWeek), "2024-02-26 2024-03-03"); // a Sunday
        QCOMPARE(days("2024-03-04T00:00:00", ThisMondayWeek), "2024-03-04 2024-03-10");
        QCOMPARE(days("2024-03-03T12:00:00", LastMondayWeek), "2024-02-19 2024-02-25");
        QCOMPARE(days(leap, Last7Days), "2024-02-22 2024-02-28");
        QCOMPARE(days("2024-03-31T23:00:00", ThisQuarter), "2024-01-01 2024-03-31");
        QCOMPARE(days(leap, LastQuarter), "2023-10-01 2023-12-31");
        QCOMPARE(days("2024-12-31T12:00:00", LastQuarter), "2024-07-01 2024-09-30");
    }

    void precedingPeriods()
    {
        const auto before = [](const QString &present, ChartDurationCode duration) {
            const FrozenClock clock(present);
            clsGraphDef chart;
            chart.SubFrequency = duration == CustomRange ? LastIntervals : FixedPeriod;
            chart.ChartDuration = duration;
            chart.EndTime = now();
            chart.ChartFrequency = ByHour;
            chart.IntervalCount = 36;
            chart.SetStart();
            const DateRange period = chart.precedingPeriod(now());
            return shown(period.start) + u' ' + shown(period.end);
        };
        const char *leap = "2024-03-31T14:30:15"; // a Sunday
        QCOMPARE(before(leap, Today), "2024-03-30 00:00:00 2024-03-30 14:30:15");
        QCOMPARE(before(leap, ThisWeek), "2024-03-24 00:00:00 2024-03-24 14:30:15");
        QCOMPARE(before(leap, ThisMonth), "2024-02-01 00:00:00 2024-02-29 23:59:59");
        QCOMPARE(before("2024-03-12T01:00:00", ThisMonth),
                 "2024-02-01 00:00:00 2024-02-12 01:00:00");
        QCOMPARE(before(leap, ThisYear), "2023-01-01 00:00:00 2023-04-01 14:30:15");
        QCOMPARE(before(leap, Yesterday), "2024-03-29 00:00:00 2024-03-29 23:59:59");
        QCOMPARE(before(leap, LastWeek), "2024-03-17 00:00:00 2024-03-23 23:59:59");
        QCOMPARE(before(leap, LastMonth), "2024-01-01 00:00:00 2024-01-31 23:59:59");
        QCOMPARE(before(leap, LastYear), "2022-01-01 00:00:00 2022-12-31 23:59:59");
        QCOMPARE(before(leap, ThisMondayWeek), "2024-03-18 00:00:00 2024-03-24 14:30:15");
        QCOMPARE(before(leap, LastMondayWeek), "2024-03-11 00:00:00 2024-03-17 23:59:59");
        QCOMPARE(before(leap, Last7Days), "2024-03-17 00:00:00 2024-03-23 23:59:59");
        QCOMPARE(before("2024-05-02T01:00:00", ThisQuarter),
                 "2024-01-01 00:00:00 2024-02-01 01:00:00");
        QCOMPARE(before(leap, LastQuarter), "2023-07-01 00:00:00 2023-09-30 23:59:59");
        QCOMPARE(before(leap, CustomRange), "2024-03-28 14:30:15 2024-03-30 02:30:14");
    }

    void lastIntervals()
    {
        const auto start = [](const QString &end, ChartFrequencyCode frequency, int minutes,
                              int count) {
            clsGraphDef chart;
            chart.ChartFrequency = frequency;
            chart.MinuteInterval = minutes;
            chart.IntervalCount = count;
            chart.StartTime = wallDateTime(QDate(2020, 1, 1));
            chart.EndTime = QDateTime::fromString(end + 'Z', Qt::ISODate);
            chart.SetStart();
            return shown(chart.EndTime) == end ? shown(chart.StartTime) : "the end has moved";
        };
        const char *march = "2023-03-31 14:00:00";
        const char *first = "0100-01-01 00:00:00";
        const char *last = "9999-12-31 23:59:59";
        QCOMPARE(start(march, ByMinute, 5, 24), "2023-03-31 12:00:00");
        QCOMPARE(start(march, ByMinute, 5, -12), "2023-03-31 15:00:00");
        QCOMPARE(start(march, ByMinute, most, most), first);
        QCOMPARE(start(march, ByMinute, most, least), last);
        QCOMPARE(start(march, ByHour, 0, 36), "2023-03-30 02:00:00");
        QCOMPARE(start(march, ByDay, 0, 31), "2023-02-28 14:00:00");
        QCOMPARE(start(march, ByDay, 0, most), first);
        QCOMPARE(start(march, ByMonth, 0, 1), "2023-03-03 00:00:00"); // a shorter month: rolls over
        QCOMPARE(start(march, ByMonth, 0, 2), "2023-02-03 00:00:00"); // and counts on from there
        QCOMPARE(start("2023-01-15 09:00:00", ByMonth, 0, 13), "2021-12-15 00:00:00");
        QCOMPARE(start(march, ByMonth, 0, most), first);
        QCOMPARE(start(march, ByYear, 0, 2), "2021-03-31 00:00:00");
        QCOMPARE(start("2024-02-29 10:00:00", ByYear, 0, 4), "2020-03-01 00:00:00");
        QCOMPARE(start(march, ByYear, 0, most), first);
        QCOMPARE(start(march, ChartFrequencyCode(5), 5, 24),
                 "2020-01-01 00:00:00"); // unknown: stays
    }

    void labelStepFollowsTheMinutes()
    {
        const auto step = [](ChartFrequencyCode frequency, int count) {
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
        QCOMPARE(shown(chart.EndTime), "2024-07-05 09:07:09");
    }

    void numbersAreReadLeniently()
    {
        Sandbox sandbox;
        clsGraphDef chart;
        const QString before = chart.ChartID;
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
        QVERIFY(chart.ChartID != before); // no id: a new one
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
        QCOMPARE(sandbox.status, QStringList());

        // One that is missing is empty, and the definition is read all the same.
        chart.SetXMLConfig("<CHART Title=\"T\" CountFile=\"" + full + "\"/>");
        QCOMPARE(chart.ChartTitle, "T");
        QCOMPARE(chart.StateTemplateData, "");
        QCOMPARE(chart.CountTemplateData, "cöunt");
        const QString error = "Error reading chart template '" + sandbox.path("StateChart.HTML");
        QCOMPARE(sandbox.status.size(), 1);
        QVERIFY2(sandbox.status[0].startsWith(error + "' [53] "), qPrintable(sandbox.status[0]));
    }
    void takesPagesForTemplates()
    {
        const Sandbox box;
        const auto read = [&box](const QString &name) {
            clsGraphDef chart;
            chart.SetXMLConfig(QString("<CHART StateFile='%1' CountFile=''/>").arg(name));
            return chart.StateTemplateData;
        };
        for (const auto &[content, expected] :
             {std::pair("<META Charset='ISO-8859-1'>", "<META Charset='utf-8'>"),
              {"<meta http-equiv=x content=\"text/html; charset=cp1252\">",
               "<meta http-equiv=x content=\"text/html; charset=utf-8\">"},
              {"<?xml version='1.0' encoding='latin1'?>", "<?xml version='1.0' encoding='utf-8'?>"},
              {"<meta charset=UTF-8>charset=x", "<meta charset=UTF-8>charset=x"}}) {
            box.write("a.HTM", content);
            QCOMPARE(read("a.HTM"), expected);
        }
        QCOMPARE(box.status, QStringList());
        box.write("VantrelV6.Config", "secret");
        box.write("folder.html/x", "secret");
        QVERIFY(QFile::link(box.path("VantrelV6.Config"), box.path("link.html")));
        for (const char *name : {"VantrelV6.Config", "folder.html", "link.html"})
            QCOMPARE(read(name), "");
        QCOMPARE(box.status.size(), 3);
    }
};

QTEST_GUILESS_MAIN(TestGraphDef)
#include "tst_clsGraphDef.moc"
