#include "../support/Sandbox.h"
#include "core/Clock.h"
#include "core/Error.h"
#include "core/Xml.h"
#include "definitions/GraphDef.h"

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

private Q_SLOTS:
    void fixedPeriods_data()
    {
        QTest::addColumn<QString>("present");
        QTest::addColumn<int>("duration");
        QTest::addColumn<QString>("first"); // 00:00:00 of that day
        QTest::addColumn<QString>("last");  // 23:59:59 of that day
        const auto row = [](const char *name, const char *present, int duration, const char *first,
                            const char *last) {
            QTest::newRow(name) << QString::fromLatin1(present) << duration
                                << QString::fromLatin1(first) << QString::fromLatin1(last);
        };
        const char *leap = "2024-02-29T14:30:15"; // a Thursday
        row("today", leap, Today, "2024-02-29", "2024-02-29");
        row("this week", leap, ThisWeek, "2024-02-25", "2024-03-02");
        row("this week on a Sunday", "2024-02-25T00:00:00", ThisWeek, "2024-02-25", "2024-03-02");
        row("this week on a Saturday", "2024-03-02T23:59:59", ThisWeek, "2024-02-25", "2024-03-02");
        row("this month, leap year", leap, ThisMonth, "2024-02-01", "2024-02-29");
        row("this month, common year", "2023-02-28T01:00:00", ThisMonth, "2023-02-01",
            "2023-02-28");
        row("this month, December", "2023-12-31T23:59:59", ThisMonth, "2023-12-01", "2023-12-31");
        row("this year", leap, ThisYear, "2024-01-01", "2024-12-31");
        row("yesterday", "2024-03-01T00:00:00", Yesterday, "2024-02-29", "2024-02-29");
        row("last week", leap, LastWeek, "2024-02-18", "2024-02-24");
        row("last week on a Sunday", "2024-02-25T12:00:00", LastWeek, "2024-02-18", "2024-02-24");
        row("last week over the year", "2024-01-02T12:00:00", LastWeek, "2023-12-24", "2023-12-30");
        row("last month", "2024-03-31T12:00:00", LastMonth, "2024-02-01", "2024-02-29");
        row("last month in January", "2024-01-31T12:00:00", LastMonth, "2023-12-01", "2023-12-31");
        row("last year", leap, LastYear, "2023-01-01", "2023-12-31");
    }
    void fixedPeriods()
    {
        QFETCH(QString, present);
        QFETCH(int, duration);
        QFETCH(QString, first);
        QFETCH(QString, last);
        const FrozenClock clock(present);
        clsGraphDef chart;
        chart.SubFrequency = FixedPeriod;
        chart.ChartDuration = duration;
        chart.SetStart();
        QCOMPARE(shown(chart.StartTime), first + " 00:00:00");
        QCOMPARE(shown(chart.EndTime), last + " 23:59:59");
    }

    void lastIntervals_data()
    {
        QTest::addColumn<QString>("end");
        QTest::addColumn<int>("frequency");
        QTest::addColumn<int>("minutes");
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("start");
        const auto row = [](const char *name, const char *end, int frequency, int minutes,
                            int count, const char *start) {
            QTest::newRow(name) << QString::fromLatin1(end) << frequency << minutes << count
                                << QString::fromLatin1(start);
        };
        const char *march = "2023-03-31 14:00:00";
        row("minutes", march, ByMinute, 5, 24, "2023-03-31 12:00:00");
        row("minutes, none", march, ByMinute, 0, 24, march);
        row("minutes, negative interval", march, ByMinute, -5, 24, march);
        row("minutes, negative count", march, ByMinute, 5, -12, "2023-03-31 15:00:00");
        row("minutes, most", march, ByMinute, most, most, "0100-01-01 00:00:00");
        row("minutes, least", march, ByMinute, most, least, "9999-12-31 23:59:59");
        row("hours", march, ByHour, 0, 36, "2023-03-30 02:00:00");
        row("hours, most", march, ByHour, 0, most, "0100-01-01 00:00:00");
        row("days keep the time", march, ByDay, 0, 31, "2023-02-28 14:00:00");
        row("days, most", march, ByDay, 0, most, "0100-01-01 00:00:00");
        row("days, least", march, ByDay, 0, least, "9999-12-31 23:59:59");
        row("month that is shorter", march, ByMonth, 0, 1, "2023-03-03 00:00:00");
        row("month that is shorter, leap year", "2024-03-31 14:00:00", ByMonth, 0, 1,
            "2024-03-02 00:00:00");
        row("months count on from the rollover", march, ByMonth, 0, 2, "2023-02-03 00:00:00");
        row("months over January", "2023-01-15 09:00:00", ByMonth, 0, 13, "2021-12-15 00:00:00");
        row("30 days", "2023-12-31 09:00:00", ByMonth, 0, 1, "2023-12-01 00:00:00");
        row("months, none", march, ByMonth, 0, 0, march);
        row("months, negative", march, ByMonth, 0, -3, march);
        row("months, most", march, ByMonth, 0, most, "0100-01-01 00:00:00");
        row("year", march, ByYear, 0, 2, "2021-03-31 00:00:00");
        row("year from 29 February", "2024-02-29 10:00:00", ByYear, 0, 4, "2020-03-01 00:00:00");
        row("years, none", march, ByYear, 0, 0, march);
        row("years, most", march, ByYear, 0, most, "0100-01-01 00:00:00");
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
        chart.EndTime = QDateTime::fromString(end, QStringLiteral("yyyy-MM-dd HH:mm:ss"));
        chart.EndTime.setTimeSpec(Qt::UTC);
        chart.SetStart();
        QTEST(shown(chart.StartTime), "start");
        QCOMPARE(shown(chart.EndTime), end);
    }

    void otherPeriodsStay_data()
    {
        QTest::addColumn<int>("subFrequency");
        QTest::addColumn<int>("duration");
        QTest::newRow("custom range") << 1 << int(CustomRange);
        QTest::newRow("code 3") << 3 << int(Today);
        QTest::newRow("negative code") << -1 << int(Today);
        QTest::newRow("fixed, custom duration") << int(FixedPeriod) << int(CustomRange);
        QTest::newRow("fixed, negative duration") << int(FixedPeriod) << -1;
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
        QCOMPARE(shown(chart.StartTime), u"2020-01-01 01:02:03");
        QCOMPARE(shown(chart.EndTime), u"2020-02-01 04:05:06");
    }

    void labelStep_data()
    {
        QTest::addColumn<int>("frequency");
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("step");
        QTest::newRow("24") << 0 << 24 << 1;
        QTest::newRow("30") << 0 << 30 << 1;
        QTest::newRow("31") << 0 << 31 << 2;
        QTest::newRow("48") << 0 << 48 << 2;
        QTest::newRow("60") << 0 << 60 << 2;
        QTest::newRow("61") << 0 << 61 << 5;
        QTest::newRow("by hour") << 1 << 61 << 1;
    }
    void labelStep()
    {
        QFETCH(int, frequency);
        QFETCH(int, count);
        clsGraphDef chart;
        chart.ChartFrequency = frequency;
        chart.IntervalCount = count;
        chart.LabelStep = 7;
        chart.SetStart();
        QTEST(chart.LabelStep, "step");
    }

    void elementWithoutAttributes()
    {
        Sandbox sandbox;
        const LocalZone zone("Europe/Berlin");
        const FrozenClock clock(QStringLiteral("2024-07-01T12:00:00"));
        clsGraphDef chart;
        const QString before = chart.ChartID;
        chart.SetXMLConfig(QStringLiteral("<CHART/>"));
        QVERIFY(chart.ChartID != before);
        QCOMPARE(chart.ChartID.size(), 38);
        QCOMPARE(chart.ChartTitle, u"Un Named Chart");
        QCOMPARE(chart.SampleLabel, u"Un Named Data");
        QCOMPARE(chart.MinuteInterval, 5);
        QCOMPARE(chart.IntervalCount, 24);
        QCOMPARE(chart.ChartFrequency, 0);
        QCOMPARE(chart.StateTemplateFile, u"StateChart.HTML");
        QCOMPARE(chart.CountTemplateFile, u"CountChart.HTML");
        QCOMPARE(chart.ChartQuality, 2);
        QCOMPARE(chart.StartTime, now());
        QCOMPARE(chart.EndTime, now());
    }

    void textOutlivesTheElement()
    {
        Sandbox sandbox;
        const LocalZone zone("America/New_York");
        const QString text = QStringLiteral(
            "<CHART ChartID=\"{Ä-1}\" Title=\"Größe &quot;A&quot; &lt;&amp;> 日本\" "
            "SampleLabel=\"two&#10;lines\" Frequency=\"3\" SubFreq=\"7\" MinuteInterval=\"-15\" "
            "IntervalCount=\"96\" ChartDuration=\"8\" StateFile=\"S.HTML\" CountFile=\"C.HTML\" "
            "Details=\"-1\" DetailCount=\"12\" StartTime=\"2024-03-05T13:07:09-00:00\" "
            "EndTime=\"2024-07-05T13:07:09-00:00\" ChartQuality=\"3\" />");
        clsGraphDef chart;
        chart.SetXMLConfig(text);
        QCOMPARE(chart.SampleLabel, u"two\nlines");
        QVERIFY(chart.Details);
        QCOMPARE(shown(chart.StartTime), u"2024-03-05 08:07:09");
        QCOMPARE(shown(chart.EndTime), u"2024-07-05 09:07:09");

        // The order of the attributes is part of the form.
        QStringList names;
        pugi::xml_document document;
        parseXml(document, chart.XMLConfig());
        for (const pugi::xml_attribute &attribute : document.document_element().attributes())
            names.append(QString::fromUtf8(attribute.name()));
        QCOMPARE(names.join(u' '),
                 u"ChartID Title SampleLabel Frequency SubFreq MinuteInterval IntervalCount "
                 u"ChartDuration StateFile CountFile Details DetailCount StartTime EndTime "
                 u"ChartQuality");
        clsGraphDef again;
        again.SetXMLConfig(chart.XMLConfig());
        QCOMPARE(again.XMLConfig(), chart.XMLConfig());
        QCOMPARE(again.ChartTitle, QStringLiteral("Größe \"A\" <&> 日本"));
        QCOMPARE(again.SampleLabel, chart.SampleLabel);
        QCOMPARE(again.MinuteInterval, -15);
    }

    void numbersAreReadLeniently()
    {
        Sandbox sandbox;
        clsGraphDef chart;
        chart.ChartQuality = 1;
        chart.SetXMLConfig(QStringLiteral(
            "<CHART Frequency=\"abc\" SubFreq=\" 2x\" IntervalCount=\"2.5\" MinuteInterval=\"3.5\" "
            "Details=\"0.1\" DetailCount=\"\" Unknown=\"1\"><More/></CHART>"));
        QCOMPARE(chart.ChartFrequency, 0);
        QCOMPARE(chart.SubFrequency, 2);
        QCOMPARE(chart.IntervalCount, 2);
        QCOMPARE(chart.MinuteInterval, 4);
        QVERIFY(chart.Details);
        QCOMPARE(chart.ChartQuality, 1);
        try {
            chart.SetXMLConfig(QStringLiteral("<CHART IntervalCount=\"4294967296\"/>"));
            QFAIL("no error");
        } catch (const Error &error) {
            QCOMPARE(error.number, int(Overflow));
            QVERIFY2(error.description.startsWith(u"IntervalCount"), error.what());
        }
    }

    void readsTemplates()
    {
        Sandbox sandbox;
        sandbox.write(QStringLiteral("State.HTML"), "st\xC3\xA4te");
        sandbox.write(QStringLiteral("other/Count.HTML"), "c\xF6unt");
        const QString full = sandbox.path(QStringLiteral("OTHER")) + QLatin1String("\\count.html");
        clsGraphDef chart;
        chart.SetXMLConfig(
            QStringLiteral("<CHART StateFile=\"STATE.html\" CountFile=\"%1\"/>").arg(full));
        QCOMPARE(chart.StateTemplateData, QStringLiteral("stäte"));
        QCOMPARE(chart.CountTemplateData, QStringLiteral("cöunt"));
        QCOMPARE(chart.StateTemplateFile, u"STATE.html");
        QCOMPARE(chart.CountTemplateFile, full);
        QCOMPARE(sandbox.status, QStringList());
    }

    void missingTemplateKeepsTheDefinition()
    {
        Sandbox sandbox;
        sandbox.write(QStringLiteral("CountChart.HTML"), "count");
        clsGraphDef chart;
        chart.StateTemplateData = QStringLiteral("old");
        chart.SetXMLConfig(QStringLiteral("<CHART Title=\"T\"/>"));
        QCOMPARE(chart.ChartTitle, u"T");
        QCOMPARE(chart.StateTemplateData, QString());
        QCOMPARE(chart.CountTemplateData, u"count");
        QCOMPARE(sandbox.status.size(), 1);
        const QString path = sandbox.path(QStringLiteral("StateChart.HTML"));
        QVERIFY2(sandbox.status[0].startsWith(
                     QStringLiteral("Error reading chart template '%1' [53] ").arg(path)),
                 qPrintable(sandbox.status[0]));
    }
};

QTEST_GUILESS_MAIN(TestGraphDef)
#include "tst_graphdef.moc"
