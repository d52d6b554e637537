#include "ListRecordset.h"
#include "Zones.h"
#include "core/Error.h"
#include "core/State.h"
#include "core/Status.h"
#include "data/DataSeries.h"

#include <QLocale>
#include <QTest>

namespace {

struct Sample
{
    const char *utcTime;
    QVariant state;
    QVariant value;
};

std::vector<SummaryRow> summaryOf(const QList<Sample> &samples, int frequency, int interval = 0)
{
    std::vector<std::vector<QVariant>> rows;
    for (const Sample &sample : samples)
        rows.push_back({qint64(7), utc(sample.utcTime), sample.state, sample.value});
    // Other spellings and another order than the names asked for.
    ListRecordset raw({QStringLiteral("DATAIDENT"), QStringLiteral("IDate"),
                       QStringLiteral("istate"), QStringLiteral("IVALUE")},
                      std::move(rows));
    return BuildCalculatedSummary(raw, frequency, interval);
}

/// One line a row: key, count, states, mean, least, greatest.
QStringList lines(const std::vector<SummaryRow> &summary)
{
    QStringList result;
    for (const SummaryRow &row : summary)
        result.append(QStringLiteral("%1 %2 %3 %4 %5 %6")
                          .arg(row.QDate)
                          .arg(row.QCount)
                          .arg(row.sumiState)
                          .arg(row.avgiValue, 0, 'f', 6)
                          .arg(row.miniValue, 0, 'f', 4)
                          .arg(row.maxiValue, 0, 'f', 4));
    return result;
}

QStringList labels(const DataSeries &series)
{
    QStringList result;
    for (const SeriesBucket &bucket : series.buckets)
        result.append(bucket.label);
    return result;
}

} // namespace

class tst_Series : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }
    void cleanup() { resetState(); }

    void summary_data();
    void summary();
    void summaryRefusesHugeValues();
    void summaryKeepsBounds();
    void axis_data();
    void axis();
    void labelForms_data();
    void labelForms();
    void labelsFollowTheLocale();
    void stateItem();
    void counterItem();
    void failureIsShown();
};

void tst_Series::summary_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<int>("frequency");
    QTest::addColumn<int>("interval");
    QTest::addColumn<QList<Sample>>("samples");
    QTest::addColumn<QStringList>("rows");
    const QVariant none;
    const QByteArray utcZone("UTC");

    QTest::newRow("no samples") << utcZone << 1 << 0 << QList<Sample>() << QStringList();
    QTest::newRow("one sample") << utcZone << 1 << 0
                                << QList<Sample>{{"2024-03-01T10:07:00", 1, 12.5}}
                                << QStringList{
                                       QStringLiteral("2024030110 1 1 12.500000 12.5000 12.5000")};
    QTest::newRow("two samples, first value sets both extremes")
        << utcZone << 2 << 0
        << QList<Sample>{{"2024-03-01T10:07:00", 1, -3.0}, {"2024-03-01T22:00:00", 0, -1.0}}
        << QStringList{QStringLiteral("20240301 2 1 -2.000000 -3.0000 -1.0000")};
    QTest::newRow("interval of 15")
        << utcZone << 0 << 15
        << QList<Sample>{{"2024-03-01T10:07:00", 1, 1},
                         {"2024-03-01T10:14:59.999", 1, 2},
                         {"2024-03-01T10:15:00", 1, 3}}
        << QStringList{QStringLiteral("202403011000 2 2 1.500000 1.0000 2.0000"),
                       QStringLiteral("202403011015 1 1 3.000000 3.0000 3.0000")};
    QTest::newRow("interval of 25: the last of an hour is shorter")
        << utcZone << 0 << 25
        << QList<Sample>{{"2024-03-01T10:24:00", 1, 1},
                         {"2024-03-01T10:25:00", 1, 2},
                         {"2024-03-01T10:50:00", 1, 3},
                         {"2024-03-01T11:00:00", 1, 4}}
        << QStringList{QStringLiteral("202403011000 1 1 1.000000 1.0000 1.0000"),
                       QStringLiteral("202403011025 1 1 2.000000 2.0000 2.0000"),
                       QStringLiteral("202403011050 1 1 3.000000 3.0000 3.0000"),
                       QStringLiteral("202403011100 1 1 4.000000 4.0000 4.0000")};
    QTest::newRow("days follow local time")
        << QByteArray("Europe/Berlin") << 2 << 0
        << QList<Sample>{{"2024-07-01T21:59:00", 1, 1}, {"2024-07-01T22:00:00", 1, 2}}
        << QStringList{QStringLiteral("20240701 1 1 1.000000 1.0000 1.0000"),
                       QStringLiteral("20240702 1 1 2.000000 2.0000 2.0000")};
    QTest::newRow("months and years")
        << QByteArray("America/New_York") << 3 << 0
        << QList<Sample>{{"2025-01-01T04:59:00", 1, 1}, {"2025-01-01T05:00:00", 1, 2}}
        << QStringList{QStringLiteral("202412 1 1 1.000000 1.0000 1.0000"),
                       QStringLiteral("202501 1 1 2.000000 2.0000 2.0000")};
    QTest::newRow("a repeated quarter of an hour comes twice")
        << QByteArray("Europe/Berlin") << 0 << 15
        << QList<Sample>{{"2024-10-27T00:05:00", 1, 1}, {"2024-10-27T01:05:00", 1, 2}}
        << QStringList{QStringLiteral("202410270200 1 1 1.000000 1.0000 1.0000"),
                       QStringLiteral("202410270200 1 1 2.000000 2.0000 2.0000")};
    QTest::newRow("a repeated hour is one bucket")
        << QByteArray("Europe/Berlin") << 1 << 0
        << QList<Sample>{{"2024-10-27T00:05:00", 1, 1}, {"2024-10-27T01:05:00", 1, 2}}
        << QStringList{QStringLiteral("2024102702 2 2 1.500000 1.0000 2.0000")};
    QTest::newRow("values are rounded to four decimals, halves to even")
        << utcZone << 4 << 0
        << QList<Sample>{{"2024-03-01T10:00:00", 0, 0.03125}, // 312.5 units
                         {"2024-03-01T11:00:00", 0, 0.09375}} // 937.5 units
        << QStringList{QStringLiteral("2024 2 0 0.062500 0.0312 0.0938")};
    QTest::newRow("the mean is rounded to six")
        << utcZone << 4 << 0
        << QList<Sample>{{"2024-03-01T10:00:00", 0, 1},
                         {"2024-03-01T11:00:00", 0, 1},
                         {"2024-03-01T12:00:00", 0, 0}}
        << QStringList{QStringLiteral("2024 3 0 0.666667 0.0000 1.0000")};
    QTest::newRow("a negative mean too")
        << utcZone << 4 << 0
        << QList<Sample>{{"2024-03-01T10:00:00", 0, -1},
                         {"2024-03-01T11:00:00", 0, -1},
                         {"2024-03-01T12:00:00", 0, 0}}
        << QStringList{QStringLiteral("2024 3 0 -0.666667 -1.0000 0.0000")};
    QTest::newRow("the sum of the largest values")
        << utcZone << 4 << 0
        << QList<Sample>{{"2024-03-01T10:00:00", 0, 9e14}, {"2024-03-01T11:00:00", 0, 9e14}}
        << QStringList{QStringLiteral(
               "2024 2 0 900000000000000.000000 900000000000000.0000 900000000000000.0000")};
    QTest::newRow("NULL leaves sums and extremes alone")
        << utcZone << 2 << 0
        << QList<Sample>{{"2024-03-01T10:00:00", none, 4},
                         {"2024-03-01T11:00:00", 1, none},
                         {"2024-03-01T12:00:00", 1, 6}}
        << QStringList{QStringLiteral("20240301 3 2 5.000000 4.0000 6.0000")};
    QTest::newRow("states of Access's True")
        << utcZone << 2 << 0
        << QList<Sample>{{"2024-03-01T10:00:00", -1, 0}, {"2024-03-01T11:00:00", -1, 0}}
        << QStringList{QStringLiteral("20240301 2 -2 0.000000 0.0000 0.0000")};
}

void tst_Series::summary()
{
    QFETCH(QByteArray, zone);
    QFETCH(int, frequency);
    QFETCH(int, interval);
    QFETCH(QList<Sample>, samples);
    setZone(zone.constData());
    QTEST(lines(summaryOf(samples, frequency, interval)), "rows");
}

void tst_Series::summaryRefusesHugeValues()
{
    setZone("UTC");
    for (const double value : {1e15, -1e15, qInf(), qQNaN()}) {
        try {
            summaryOf({{"2024-03-01T10:00:00", 1, value}}, 1);
            QFAIL("a value that is no fixed-point number was summed");
        } catch (const Error &error) {
            QCOMPARE(error.number, int(Overflow));
        }
    }
}

void tst_Series::summaryKeepsBounds()
{
    setZone("Europe/Berlin");
    const auto rows = summaryOf({{"2024-03-31T12:00:00", 1, 1}}, 2);
    QCOMPARE(rows.size(), size_t(1));
    QCOMPARE(rows[0].DataIDent, qint64(7));
    QCOMPARE(rows[0].start, utc("2024-03-30T23:00:00"));
    QCOMPARE(rows[0].end, utc("2024-03-31T22:00:00"));
}

void tst_Series::axis_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<int>("frequency");
    QTest::addColumn<int>("interval");
    QTest::addColumn<qint64>("start");
    QTest::addColumn<qint64>("end");
    QTest::addColumn<qint64>("latest");
    QTest::addColumn<QList<Sample>>("samples");
    QTest::addColumn<QStringList>("expected");
    const qint64 never = utc("2999-01-01T00:00:00");
    const auto list = [](const char *text) {
        return QString::fromLatin1(text).split(u',', Qt::SkipEmptyParts);
    };

    QTest::newRow("both ends count")
        << QByteArray("UTC") << 1 << 0 << utc("2024-03-01T10:30:00") << utc("2024-03-01T13:00:00")
        << never << QList<Sample>() << list("10:00,11:00,12:00,13:00");
    QTest::newRow("one bucket") << QByteArray("UTC") << 2 << 0 << utc("2024-03-01T10:30:00")
                                << utc("2024-03-01T10:30:00") << never << QList<Sample>()
                                << list("Fri Mar 01");
    QTest::newRow("not beyond now")
        << QByteArray("UTC") << 1 << 0 << utc("2024-03-01T10:00:00") << utc("2024-03-01T23:59:59")
        << utc("2024-03-01T12:10:00") << QList<Sample>() << list("10:00,11:00,12:00");
    QTest::newRow("a period to come has no axis")
        << QByteArray("UTC") << 1 << 0 << utc("2024-03-01T10:00:00") << utc("2024-03-01T12:00:00")
        << utc("2024-02-01T00:00:00") << QList<Sample>() << QStringList();
    QTest::newRow("a sample after now and one before the start are shown")
        << QByteArray("UTC") << 1 << 0 << utc("2024-03-01T10:00:00") << utc("2024-03-01T12:00:00")
        << utc("2024-03-01T11:00:00")
        << QList<Sample>{{"2024-03-01T08:20:00", 1, 1}, {"2024-03-01T13:00:00", 1, 1}}
        << list("08:00,09:00,10:00,11:00,12:00,13:00");
    QTest::newRow("from December to January")
        << QByteArray("Europe/Berlin") << 3 << 0 << utc("2024-10-31T23:00:00")
        << utc("2025-01-31T22:59:59") << never << QList<Sample>()
        << list("Nov '24,Dec '24,Jan '25");
    QTest::newRow("hours around the skipped one")
        << QByteArray("Europe/Berlin") << 1 << 0 << utc("2024-03-31T00:00:00")
        << utc("2024-03-31T02:00:00") << never << QList<Sample>() << list("01:00,03:00,04:00");
    QTest::newRow("half hours around a repeated one")
        << QByteArray("Europe/Berlin") << 0 << 30 << utc("2024-10-26T23:30:00")
        << utc("2024-10-27T02:00:00") << never << QList<Sample>()
        << list("01:30,02:00,02:30,02:00,02:30,03:00");
    QTest::newRow("years") << QByteArray("America/New_York") << 4 << 0 << utc("2023-01-01T00:00:00")
                           << utc("2024-12-31T00:00:00") << never << QList<Sample>()
                           << list("2022,2023,2024");
}

void tst_Series::axis()
{
    QFETCH(QByteArray, zone);
    QFETCH(int, frequency);
    QFETCH(int, interval);
    QFETCH(qint64, start);
    QFETCH(qint64, end);
    QFETCH(qint64, latest);
    QFETCH(QList<Sample>, samples);
    setZone(zone.constData());
    DataSeries series;
    series.frequency = frequency;
    series.minuteInterval = interval;

    const auto rows = summaryOf(samples, series.frequency, series.minuteInterval);
    QVERIFY(GenerateDataSeries(rows, start, end, latest, series));
    QTEST(labels(series), "expected");
    for (size_t i = 1; i < series.buckets.size(); ++i)
        QCOMPARE(series.buckets[i].start, series.buckets[i - 1].end);
    size_t filled = 0;
    for (const SeriesBucket &bucket : series.buckets)
        filled += bucket.isEmpty() ? 0 : 1;
    QCOMPARE(filled, rows.size());
}

void tst_Series::labelForms_data()
{
    QTest::addColumn<int>("frequency");
    QTest::addColumn<QString>("shortForm");
    QTest::addColumn<QString>("longForm");
    QTest::newRow("minute") << 0 << QStringLiteral("07:05") << QStringLiteral("Mar 01 - 07:05");
    QTest::newRow("hour") << 1 << QStringLiteral("07:00") << QStringLiteral("Mar 01 - 07:00");
    QTest::newRow("day") << 2 << QStringLiteral("Fri Mar 01") << QStringLiteral("2024-Mar-01");
    QTest::newRow("month") << 3 << QStringLiteral("Mar '24") << QStringLiteral("2024-Mar");
    QTest::newRow("year") << 4 << QStringLiteral("2024") << QStringLiteral("2024");
}

void tst_Series::labelForms()
{
    QFETCH(int, frequency);
    setZone("UTC");
    DataSeries series;
    series.frequency = frequency;
    const qint64 instant = utc("2024-03-01T07:05:09");
    QVERIFY(GenerateDataSeries({}, instant, instant, instant, series));
    QCOMPARE(series.buckets.size(), size_t(1));
    QTEST(series.buckets[0].label, "shortForm");
    QTEST(series.buckets[0].longLabel, "longForm");
}

void tst_Series::labelsFollowTheLocale()
{
    setZone("UTC");
    QLocale::setDefault(QLocale(QLocale::French, QLocale::France));
    DataSeries series;
    series.frequency = 2;
    const qint64 instant = utc("2024-08-01T07:05:09");
    QVERIFY(GenerateDataSeries({}, instant, instant, instant, series));
    QCOMPARE(series.buckets[0].label, QString::fromUtf8("jeu août 01"));
}

void tst_Series::stateItem()
{
    setZone("UTC");
    QList<Sample> samples;
    for (int i = 0; i < 10; ++i)
        samples.append({"2024-03-01T10:00:00", i < 7 ? 1 : 0, QVariant()});
    DataSeries series;
    series.frequency = 1;
    series.scale = stateScale;
    const qint64 start = utc("2024-03-01T09:00:00");
    const qint64 end = utc("2024-03-01T10:59:59");
    QVERIFY(GenerateDataSeries(summaryOf(samples, 1), start, end, end, series));
    QCOMPARE(series.buckets.size(), size_t(2));
    QVERIFY(series.buckets[0].isEmpty());
    QVERIFY(!series.buckets[1].isEmpty());
    QCOMPARE(series.buckets[1].successes, qint64(7));
    QCOMPARE(series.buckets[1].failures(), qint64(3));
}

void tst_Series::counterItem()
{
    setZone("UTC");
    const QList<Sample> samples{{"2024-03-01T09:00:00", 1, QVariant()},
                                {"2024-03-01T10:00:00", 1, 2},
                                {"2024-03-01T10:30:00", 1, 5}};
    DataSeries series;
    series.frequency = 1;
    series.scale = 3;
    const qint64 start = utc("2024-03-01T09:00:00");
    const qint64 end = utc("2024-03-01T10:59:59");
    QVERIFY(GenerateDataSeries(summaryOf(samples, 1), start, end, end, series));
    QVERIFY2(series.buckets[0].isEmpty(), "samples without a value are no zero");
    QCOMPARE(series.buckets[1].mean, 3.5);
    QCOMPARE(series.buckets[1].least, 2.0);
    QCOMPARE(series.buckets[1].greatest, 5.0);
    QCOMPARE(series.buckets[1].wallStart, at("2024-03-01T10:00:00"));
}

void tst_Series::failureIsShown()
{
    setZone("UTC");
    QStringList shown;
    gStartupDone = true;
    setStatusSink([&shown](const QString &line) { shown.append(line); });
    DataSeries series;
    series.frequency = 1;
    const qint64 start = utc("2024-03-01T09:00:00");
    auto rows = summaryOf({{"2024-03-01T10:00:00", 1, 1}}, 1);
    rows[0].start += 60'000; // no hour begins there
    QVERIFY(!GenerateDataSeries(rows, start, start, start, series));
    QCOMPARE(shown.size(), 1);
    QVERIFY2(shown[0].startsWith(u"Error while generating data series [13] "),
             qPrintable(shown[0]));
    QCOMPARE(series.buckets.at(0).label, QStringLiteral("09:00"));
}

QTEST_GUILESS_MAIN(tst_Series)
#include "tst_Series.moc"
