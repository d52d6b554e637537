#include "core/Numbers.h"
#include "report/Csv.h"
#include "report/GraphEntry.h"
#include "report/StateRow.h"
#include "report/SummaryFigures.h"
#include "report/Templates.h"
#include "support/Sandbox.h"

#include <QTest>

class TestTemplates : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cutsAtTheMarker_data();
    void cutsAtTheMarker();
    void fillsPlaceholders_data();
    void fillsPlaceholders();
    void saysWhetherTheChartScrolls_data();
    void saysWhetherTheChartScrolls();
    void joinsSeriesOfAState();
    void joinsSeriesOfACounter();
    void formatsStateRows_data();
    void formatsStateRows();
    void linksRowsOfDevices();
    void writesCsvRecords();
    void readsFiguresAgain_data();
    void readsFiguresAgain();
};

void TestTemplates::cutsAtTheMarker_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("behind");

    QTest::newRow("in the middle") << "ab%%m%%cd"
                                   << "ab"
                                   << "cd ";
    QTest::newRow("two characters behind") << "%%m%%cd"
                                           << ""
                                           << "cd ";
    QTest::newRow("one character behind is lost") << "ab%%m%%c"
                                                  << "ab"
                                                  << "";
    QTest::newRow("at the end") << "ab%%m%%"
                                << "ab"
                                << "";
    QTest::newRow("absent") << "abcd"
                            << "abcd"
                            << "";
    QTest::newRow("other case is absent") << "ab%%M%%cd"
                                          << "ab%%M%%cd"
                                          << "";
    QTest::newRow("first of two counts") << "a%%m%%b%%m%%c"
                                         << "a"
                                         << "b%%m%%c ";
    QTest::newRow("empty") << ""
                           << ""
                           << "";
}

void TestTemplates::cutsAtTheMarker()
{
    QFETCH(QString, text);
    QTEST(GetHTIPart(text, QLatin1String("%%m%%"), true), "before");
    QTEST(GetHTIPart(text, QLatin1String("%%m%%"), false), "behind");
}

void TestTemplates::fillsPlaceholders_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("filled");

    QTest::newRow("every occurrence") << "%%a%%-%%a%%"
                                      << "1-1";
    QTest::newRow("longer name of the same begin") << "%%a%% %%a.b%%"
                                                   << "1 2";
    QTest::newRow("unknown stays") << "%%x%% %%A%%"
                                   << "%%x%% %%A%%";
    QTest::newRow("behind an unknown one") << "%%x%%a%%"
                                           << "%%x1";
    QTest::newRow("odd percent signs") << "100%%%a%%"
                                       << "100%1";
    QTest::newRow("values are raw and final") << "%%raw%%"
                                              << "<b>%%a%%</b>";
    QTest::newRow("none") << "50% of 80%%"
                          << "50% of 80%%";
}

void TestTemplates::fillsPlaceholders()
{
    QFETCH(QString, text);
    const Placeholders values = {{QLatin1String("a"), QStringLiteral("1")},
                                 {QLatin1String("a.b"), QStringLiteral("2")},
                                 {QLatin1String("raw"), QStringLiteral("<b>%%a%%</b>")}};
    QTEST(fillTemplate(text, values), "filled");
}

void TestTemplates::saysWhetherTheChartScrolls_data()
{
    QTest::addColumn<int>("frequency");
    QTest::addColumn<int>("values");
    QTest::addColumn<QString>("filled");

    QTest::newRow("hours: 25 values fit") << 1 << 25 << "false 24";
    QTest::newRow("hours: 26 do not") << 1 << 26 << "true 24";
    QTest::newRow("minutes") << 0 << 121 << "false 120";
    QTest::newRow("days") << 2 << 32 << "true 30";
    QTest::newRow("months") << 3 << 13 << "false 12";
    QTest::newRow("years") << 4 << 12 << "true 10";
}

void TestTemplates::saysWhetherTheChartScrolls()
{
    QFETCH(int, frequency);
    QFETCH(int, values);
    clsGraphEntry entry;
    entry.frequency = frequency;
    entry.series1 = QStringList(values, QStringLiteral("1")).join(u',');
    QTEST(entry.FillChartTemplate(QStringLiteral("%%chart.scroll%% %%chart.maxscroll%%")),
          "filled");
    QCOMPARE(entry.pointCount, values - 1);
    QCOMPARE(entry.filled, 1);
}

static SeriesBucket bucketOf(const QString &label, qint64 count, qint64 successes, double mean = 0,
                             double least = 0, double greatest = 0)
{
    SeriesBucket bucket;
    bucket.longLabel = label;
    bucket.count = count;
    bucket.successes = successes;
    bucket.mean = mean;
    bucket.least = least;
    bucket.greatest = greatest;
    return bucket;
}

void TestTemplates::joinsSeriesOfAState()
{
    DataSeries series;
    series.scale = stateScale;
    series.frequency = 2;
    series.buckets = {bucketOf(QStringLiteral("a"), 4, 3), bucketOf(QStringLiteral("b"), 0, 0),
                      bucketOf(QStringLiteral("c"), 2, 2)};
    clsGraphEntry entry;
    entry.setSeries(series);
    entry.startTime = QDateTime({2024, 3, 1}, {4, 5, 6}, Qt::UTC);
    QCOMPARE(entry.FillChartTemplate(QStringLiteral(
                 "%%chart.series1%%|%%chart.series2%%|%%chart.series3%%|%%chart.labels%%|"
                 "%%chart.series1.total%%|%%chart.series2.total%%|%%chart.ranged%%|"
                 "%%chart.starttime%%")),
             QStringLiteral("3, ,2|1, ,0|75, ,100|a,b,c|5|1|true|2024-Mar-01 04:05"));
}

void TestTemplates::joinsSeriesOfACounter()
{
    DataSeries series;
    series.scale = 3;
    series.buckets = {bucketOf(QStringLiteral("a"), 2, 0, 1.5, -1, 4),
                      bucketOf(QStringLiteral("b"), 0, 0),
                      bucketOf(QStringLiteral("c"), 1, 0, 1234567.25, 0, 9)};
    clsGraphEntry entry;
    entry.setSeries(series);
    QCOMPARE(entry.series1, QStringLiteral("1.5, ,1234567.25"));
    QCOMPARE(entry.lowRange, QStringLiteral("-1"));
    QCOMPARE(entry.upperRange, QStringLiteral("9"));
    QCOMPARE(entry.ranged, QStringLiteral("false"));
}

void TestTemplates::formatsStateRows_data()
{
    QTest::addColumn<double>("successes");
    QTest::addColumn<double>("failures");
    QTest::addColumn<QString>("row");
    QTest::addColumn<QString>("total");
    QTest::addColumn<QByteArray>("record");

    QTest::newRow("some failed") << 2.0 << 1.0 << "x 2 1 3 66.67"
                                 << "<b>Total</b> <b>2</b> <b>1</b> <b>3</b> <b>66.67</b>"
                                 << QByteArray("2,1,3,66.6667\r\n");
    QTest::newRow("no tests") << 0.0 << 0.0 << "x 0 0 0 n/a"
                              << "<b>Total</b> <b>0</b> <b>0</b> <b>0</b> <b>n/a</b>"
                              << QByteArray("0,0,0,0\r\n");
    QTest::newRow("many") << 123456789.0 << 0.0 << "x 123456789 0 123456789 100.00"
                          << "<b>Total</b> <b>123456789</b> <b>0</b> <b>123456789</b> "
                             "<b>100.00</b>"
                          << QByteArray("123456789,0,123456789,100\r\n");
}

void TestTemplates::formatsStateRows()
{
    QFETCH(double, successes);
    QFETCH(double, failures);
    const QString rowTemplate = QStringLiteral(
        "%%sample.label%% %%successcount%% %%criticalcount%% %%totalcount%% %%successrate%%");
    const StateRow row{QStringLiteral("x"), successes, failures};
    QTEST(row.filled(rowTemplate), "row");
    QTEST(row.filledAsTotal(rowTemplate), "total");
    CsvText csv;
    row.addCounts(csv);
    csv.endRecord();
    QTEST(csv.bytes(), "record");
}

void TestTemplates::writesCsvRecords()
{
    CsvText csv;
    csv.text(QStringLiteral("Zürich \"A\", 1")).number(0.1).number(-12).fixed(99.99995);
    csv.endRecord();
    csv.text(QString());
    csv.endRecord();
    QCOMPARE(csv.bytes(), QByteArray("\"Zürich \"\"A\"\", 1\",0.1,-12,100\r\n\"\"\r\n"));
}

void TestTemplates::linksRowsOfDevices()
{
    const QString rowTemplate = QStringLiteral("<a%%sample.href%%>%%sample.label%%</a>");
    const StateRow device{QStringLiteral("x"), 1, 0, QStringLiteral("M\"1/DEVREP.HTM")};
    QCOMPARE(device.filled(rowTemplate), QStringLiteral("<a href=\"M&quot;1/DEVREP.HTM\">x</a>"));
    QCOMPARE(device.filledAsTotal(rowTemplate), QStringLiteral("<a><b>Total</b></a>"));
    const StateRow bucket{QStringLiteral("x"), 1, 0};
    QCOMPARE(bucket.filled(rowTemplate), QStringLiteral("<a>x</a>"));
}

void TestTemplates::readsFiguresAgain_data()
{
    QTest::addColumn<QByteArray>("records");
    QTest::addColumn<QString>("figures"); ///< empty: none

    QTest::newRow("devices") << QByteArray("\"a\",3,1,4,75\r\n\"b\",2,0,2,100\r\n\"c\",0,0,0,0\r\n")
                             << "83.33 of 6, 1 failed at 1, 1 silent of 3";
    QTest::newRow("names with commas, quotes and line ends")
        << QByteArray("\"a,\"\"b\"\"\r\n,1\",0,2,2,0\r\n\"\",1,0,1,100\r\n")
        << "33.33 of 3, 2 failed at 1, 0 silent of 2";
    QTest::newRow("no devices") << QByteArray() << "n/a of 0, 0 failed at 0, 0 silent of 0";
    QTest::newRow("cut short") << QByteArray("\"a\",3,1,4,75\r\n\"b\",2") << "";
    QTest::newRow("no numbers") << QByteArray("\"a\",x,1,4,75\r\n") << "";
}

void TestTemplates::readsFiguresAgain()
{
    QFETCH(QByteArray, records);
    const Sandbox box;
    QVERIFY(!readSummaryFigures(box.path(QStringLiteral("repsum.csv"))));
    box.write(QStringLiteral("repsum.csv"), "\"Sample\",\"Success\"\r\n" + records);
    const auto figures = readSummaryFigures(box.path(QStringLiteral("repsum.csv")));
    QTEST(figures ? fillTemplate(QStringLiteral("%%total.rate%% of %%total.tests%%, "
                                                "%%total.failed%% failed at %%total.troubled%%, "
                                                "%%total.silent%% silent of %%total.devices%%"),
                                 figures->placeholders())
                  : QString(),
          "figures");
}

QTEST_GUILESS_MAIN(TestTemplates)
#include "tst_templates.moc"
