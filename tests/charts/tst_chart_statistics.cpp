#include "ChartSamples.h"
#include "charts/ChartStatistics.h"

#include <QTest>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

using Counts = QList<std::pair<qint64, qint64>>;

class ChartStatisticsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ratesHaveThreeDecimals_data()
    {
        QTest::addColumn<qint64>("successes");
        QTest::addColumn<qint64>("failures");
        QTest::addColumn<QString>("label");
        const auto row = [](qint64 successes, qint64 failures, const char *label) {
            QTest::newRow(label) << successes << failures << QString::fromLatin1(label);
        };
        row(3, 1, "75.000%");
        row(1, 2, "33.333%");
        row(2, 1, "66.667%");
        row(0, 5, "0.000%");
        row(7, 0, "100.000%");
        row(1, 63, "1.562%"); // 1.5625, to the even digit
        row(3, 61, "4.688%"); // 4.6875, to the even digit
        row(999'999, 1, "100.000%");
        row(1, 199, "0.500%");
    }
    void ratesHaveThreeDecimals()
    {
        QFETCH(qint64, successes);
        QFETCH(qint64, failures);
        QTEST(rateLabel(successRate(successes, failures)), "label");
    }

    void sparseNumbersKeepTheirPoint_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<QString>("text");
        QTest::newRow("whole") << 100.0 << QStringLiteral("100.");
        QTest::newRow("one decimal") << 99.5 << QStringLiteral("99.5");
        QTest::newRow("no leading zero") << 0.5 << QStringLiteral(".5");
        QTest::newRow("zero") << 0.0 << QStringLiteral(".");
        QTest::newRow("rounds") << 66.66666 << QStringLiteral("66.667");
        QTest::newRow("half to even") << 12.3125 << QStringLiteral("12.312");
        QTest::newRow("zeros inside stay") << 10.001 << QStringLiteral("10.001");
        QTest::newRow("rounds up to whole") << 99.9996 << QStringLiteral("100.");
        QTest::newRow("ten") << 10.0 << QStringLiteral("10.");
    }
    void sparseNumbersKeepTheirPoint()
    {
        QFETCH(double, value);
        QTEST(sparseNumber(value), "text");
    }

    void stateFooters_data()
    {
        QTest::addColumn<Counts>("counts");
        QTest::addColumn<QString>("average");
        QTest::addColumn<QString>("totals");
        const QString nothing =
            QStringLiteral("AVERAGE - Count:0  Success:0  Fail:0  Avg Success Rate:0%");
        const QString noTotals = QStringLiteral("TOTALS - Samples:0  Total:0  Success:0  Fail:0");
        QTest::newRow("no bucket") << Counts{} << nothing << noTotals;
        QTest::newRow("gaps only") << Counts{{0, 0}, {0, 0}} << nothing << noTotals;
        QTest::newRow("one bucket")
            << Counts{{3, 1}}
            << QStringLiteral("AVERAGE - Count:4  Success:3  Fail:1  Avg Success Rate:75.%")
            << QStringLiteral("TOTALS - Samples:1  Total:4  Success:3  Fail:1");
        QTest::newRow("gaps do not count")
            << Counts{{10, 0}, {0, 0}, {5, 5}}
            << QStringLiteral("AVERAGE - Count:10  Success:8  Fail:2  Avg Success Rate:75.%")
            << QStringLiteral("TOTALS - Samples:2  Total:20  Success:15  Fail:5");
        QTest::newRow("halves to even")
            << Counts{{3, 0}, {2, 7}}
            << QStringLiteral("AVERAGE - Count:6  Success:2  Fail:4  Avg Success Rate:41.667%")
            << QStringLiteral("TOTALS - Samples:2  Total:12  Success:5  Fail:7");
        QTest::newRow("all failed")
            << Counts{{0, 4}, {0, 2}}
            << QStringLiteral("AVERAGE - Count:3  Success:0  Fail:3  Avg Success Rate:.%")
            << QStringLiteral("TOTALS - Samples:2  Total:6  Success:0  Fail:6");
        QTest::newRow("more than 16 and 32 bits")
            << Counts{{5'000'000'000, 70'000}}
            << QStringLiteral("AVERAGE - Count:5000070000  Success:5000000000  Fail:70000  "
                              "Avg Success Rate:99.999%")
            << QStringLiteral("TOTALS - Samples:1  Total:5000070000  Success:5000000000  "
                              "Fail:70000");
    }
    void stateFooters()
    {
        QFETCH(Counts, counts);
        const StateStatistics statistics = stateStatistics(stateSeries(counts));
        QTEST(statistics.averageLine(), "average");
        QTEST(statistics.totalsLine(), "totals");
    }

    void percentileOfKnownLists_data()
    {
        QTest::addColumn<QList<double>>("values");
        QTest::addColumn<double>("percentile");
        const auto ascending = [](int n) {
            QList<double> values(n);
            std::iota(values.begin(), values.end(), 1.0);
            return values;
        };
        const auto descending = [&](int n) {
            QList<double> values = ascending(n);
            std::reverse(values.begin(), values.end());
            return values;
        };
        QTest::newRow("none") << QList<double>{} << 0.0;
        QTest::newRow("one") << QList<double>{7} << 7.0;
        QTest::newRow("two: the last one in time") << QList<double>{9, 3} << 3.0;
        QTest::newRow("ten: the last one in time") << descending(10) << 1.0;
        QTest::newRow("1 to 20") << ascending(20) << 19.0;
        QTest::newRow("20 to 1") << descending(20) << 20.0;
        QTest::newRow("30: half to even, 28") << ascending(30) << 28.0;
        QTest::newRow("50: half to even, 48") << ascending(50) << 48.0;
        QTest::newRow("all equal") << QList<double>(40, 2.5) << 2.5;
    }
    void percentileOfKnownLists()
    {
        QFETCH(QList<double>, values);
        QTEST(percentile95({values.begin(), values.end()}), "percentile");
    }

    /// Against the exchange sort that defines it.
    void percentileEqualsItsDefinition()
    {
        std::mt19937 random(1);
        for (size_t n = 1; n <= 130; ++n) {
            std::vector<double> values(n + 1);
            for (double &value : values)
                value = static_cast<double>(random() % 50) - 10;
            std::vector<double> sorted = values;
            for (size_t i = 1; i <= n; ++i) {
                for (size_t j = i + 1; j + 1 <= n; ++j) {
                    if (sorted[j] < sorted[i])
                        std::swap(sorted[i], sorted[j]);
                }
            }
            const auto k = static_cast<size_t>(std::nearbyint(static_cast<double>(n) * 0.95));
            QCOMPARE(percentile95({values.begin() + 1, values.end()}), sorted[k]);
        }
    }

    void counterFooters_data()
    {
        QTest::addColumn<QList<double>>("means");
        QTest::addColumn<QString>("footer");
        QTest::newRow("none") << QList<double>{}
                              << QStringLiteral("Samples: 0 Max: 0.000000 Min: 0.000000 "
                                                "Avg: 0.000000 95th: 0.000000");
        QTest::newRow("gaps do not count")
            << QList<double>{noValue, 1, noValue, 3}
            << QStringLiteral("Samples: 2 Max: 3.0 Min: 1.0 Avg: 2.0 95th: 3.0");
        QTest::newRow("grouping") << QList<double>{1'234'567.25, 1'000'000}
                                  << QStringLiteral("Samples: 2 Max: 1,234,567.3 "
                                                    "Min: 1,000,000.0 Avg: 1,117,283.6 "
                                                    "95th: 1,000,000.0");
        QTest::newRow("least is zero: greatest decides")
            << QList<double>{0, 0.25}
            << QStringLiteral("Samples: 2 Max: 0.25 Min: 0.00 Avg: 0.13 95th: 0.25");
        QTest::newRow("negative") << QList<double>{-3, 8}
                                  << QStringLiteral(
                                         "Samples: 2 Max: 8.0 Min: -3.0 Avg: 2.5 95th: 8.0");
        QTest::newRow("no minus before a zero")
            << QList<double>{-0.01, 9.99}
            << QStringLiteral("Samples: 2 Max: 10.0 Min: 0.0 Avg: 5.0 95th: 10.0");
    }
    void counterFooters()
    {
        QFETCH(QList<double>, means);
        QTEST(counterStatistics(counterSeries(means)).footer(), "footer");
    }

    void decimalsFollowTheLeastValue_data()
    {
        QTest::addColumn<double>("least");
        QTest::addColumn<double>("greatest");
        QTest::addColumn<int>("decimals");
        QTest::newRow("0.00004") << 0.00004 << 9.0 << 6;
        QTest::newRow("0.00005") << 0.00005 << 9.0 << 5;
        QTest::newRow("0.0004") << 0.0004 << 9.0 << 5;
        QTest::newRow("0.0005") << 0.0005 << 9.0 << 4;
        QTest::newRow("0.005") << 0.005 << 9.0 << 3;
        QTest::newRow("0.05") << 0.05 << 9.0 << 2;
        QTest::newRow("0.5") << 0.5 << 9.0 << 1;
        QTest::newRow("zero") << 0.0 << 0.04 << 3;
        QTest::newRow("negative") << -5.0 << 9.0 << 1;
        QTest::newRow("all negative") << -5.0 << -1.0 << 6;
    }
    void decimalsFollowTheLeastValue()
    {
        QFETCH(double, least);
        QFETCH(double, greatest);
        CounterStatistics statistics;
        statistics.least = least;
        statistics.greatest = greatest;
        QTEST(statistics.decimals(), "decimals");
    }

    void movingPeriods()
    {
        QCOMPARE(movingPeriod(0), 2);
        QCOMPARE(movingPeriod(29), 2);
        QCOMPARE(movingPeriod(30), 3);
        QCOMPARE(movingPeriod(168), 16);
    }

    void movingAverageIsTheMeanOfTheLastValues()
    {
        QVERIFY(movingAverage({}, 2).empty());
        QVERIFY(movingAverage({5}, 2).empty());
        QCOMPARE(movingAverage({5, 7}, 2), (std::vector<double>{6}));
        std::mt19937 random(2);
        std::vector<double> values(97);
        for (double &value : values)
            value = static_cast<double>(random() % 1000);
        for (const int period : {2, 3, 9, 10, 96, 97}) {
            const auto length = static_cast<size_t>(period);
            const std::vector<double> means = movingAverage(values, period);
            QCOMPARE(means.size(), values.size() - length + 1);
            for (size_t i = 0; i < means.size(); ++i) {
                const auto from = values.begin() + static_cast<std::ptrdiff_t>(i);
                QCOMPARE(means[i], std::accumulate(from, from + period, 0.0) / period);
            }
        }
    }

    void hugeValueLeavesNoTraceInLaterMeans()
    {
        const std::vector<double> means = movingAverage({1e18, 1, 3, 5, 7}, 2);
        QCOMPARE(means.back(), 6.0);
        QCOMPARE(means[1], 2.0);
    }
};

QTEST_APPLESS_MAIN(ChartStatisticsTest)
#include "tst_chart_statistics.moc"
