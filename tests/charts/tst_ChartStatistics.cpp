#include "ChartSamples.h"
#include "charts/ChartStatistics.h"
#include "support/Rows.h"

#include <numeric>

class ChartStatisticsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ratesHaveThreeDecimals()
    {
        const auto rate = [](qint64 successes, qint64 failures) {
            return rateLabel(successRate(successes, failures));
        };
        QCOMPARE(rate(1, 2), "33.333%");
        QCOMPARE(rate(1, 63), "1.562%"); // 1.5625, to the even digit
        QCOMPARE(rate(3, 61), "4.688%"); // 4.6875, to the even digit
        QCOMPARE(rate(999'999, 1), "100.000%");
    }

    void sparseNumbersKeepTheirPoint()
    {
        QCOMPARE(sparseNumber(100), "100.");
        QCOMPARE(sparseNumber(0.5), ".5");
        QCOMPARE(sparseNumber(0), ".");
        QCOMPARE(sparseNumber(66.66666), "66.667");
        QCOMPARE(sparseNumber(12.3125), "12.312"); // half to even
        QCOMPARE(sparseNumber(99.9996), "100.");
    }

    void stateFooters_data()
    {
        const Rows<Counts, QString, QString> row("counts", "average", "totals");
        const char *nothing = "Count:0  Success:0  Fail:0  Avg Success Rate:0%";
        const char *noTotals = "Samples:0  Total:0  Success:0  Fail:0";
        row("no bucket", {}, nothing, noTotals);
        row("gaps only", {{0, 0}, {0, 0}}, nothing, noTotals);
        row("one bucket", {{3, 1}}, "Count:4  Success:3  Fail:1  Avg Success Rate:75.%",
            "Samples:1  Total:4  Success:3  Fail:1");
        row("gaps do not count", {{10, 0}, {0, 0}, {5, 5}},
            "Count:10  Success:8  Fail:2  Avg Success Rate:75.%",
            "Samples:2  Total:20  Success:15  Fail:5");
        row("halves to even", {{3, 0}, {2, 7}},
            "Count:6  Success:2  Fail:4  Avg Success Rate:41.667%",
            "Samples:2  Total:12  Success:5  Fail:7");
        row("all failed", {{0, 4}, {0, 2}}, "Count:3  Success:0  Fail:3  Avg Success Rate:.%",
            "Samples:2  Total:6  Success:0  Fail:6");
        row("more than 16 and 32 bits", {{5'000'000'000, 70'000}},
            "Count:5000070000  Success:5000000000  Fail:70000  Avg Success Rate:99.999%",
            "Samples:1  Total:5000070000  Success:5000000000  Fail:70000");
    }
    void stateFooters()
    {
        QFETCH(Counts, counts);
        QFETCH(QString, average);
        QFETCH(QString, totals);
        const StateStatistics statistics = stateStatistics(stateSeries(counts));
        QCOMPARE(statistics.averageLine(), "AVERAGE - " + average);
        QCOMPARE(statistics.totalsLine(), "TOTALS - " + totals);
    }

    /// The last value in time keeps its place behind the others, which are sorted.
    void percentileOfKnownLists()
    {
        const auto ascending = [](int n) {
            std::vector<double> values(size_t(n), 0.0);
            std::iota(values.begin(), values.end(), 1.0);
            return values;
        };
        const auto descending = [&](int n) {
            const std::vector<double> values = ascending(n);
            return std::vector<double>(values.rbegin(), values.rend());
        };
        QCOMPARE(percentile95({}), 0.0);
        QCOMPARE(percentile95({9, 3}), 3.0);
        QCOMPARE(percentile95(descending(10)), 1.0);
        QCOMPARE(percentile95(ascending(20)), 19.0);
        QCOMPARE(percentile95(descending(20)), 20.0);
        QCOMPARE(percentile95(ascending(30)), 28.0);  // of 28.5
        QCOMPARE(percentile95(descending(50)), 49.0); // of 47.5
        QCOMPARE(percentile95(std::vector<double>(40, 2.5)), 2.5);
    }

    void counterFooters_data()
    {
        const Rows<QList<double>, QString> row("means", "footer");
        row("none", {}, "Samples: 0 Max: 0.000000 Min: 0.000000 Avg: 0.000000 95th: 0.000000");
        row("gaps do not count", {noValue, 1, noValue, 3},
            "Samples: 2 Max: 3.0 Min: 1.0 Avg: 2.0 95th: 3.0");
        row("grouping", {1'234'567.25, 1'000'000},
            "Samples: 2 Max: 1,234,567.3 Min: 1,000,000.0 Avg: 1,117,283.6 95th: 1,000,000.0");
        row("min is zero: max decides", {0, 0.25},
            "Samples: 2 Max: 0.25 Min: 0.00 Avg: 0.13 95th: 0.25");
        row("negative", {-3, 8}, "Samples: 2 Max: 8.0 Min: -3.0 Avg: 2.5 95th: 8.0");
        row("no minus before a zero", {-0.01, 9.99},
            "Samples: 2 Max: 10.0 Min: 0.0 Avg: 5.0 95th: 10.0");
    }
    void counterFooters()
    {
        QFETCH(QList<double>, means);
        QTEST(counterStatistics(counterSeries(means)).footer(), "footer");
    }

    void decimalsFollowTheLeastValue()
    {
        const auto decimals = [](double min, double max) {
            CounterStatistics statistics;
            statistics.min = min;
            statistics.max = max;
            return statistics.decimals();
        };
        QCOMPARE(decimals(0.00004, 9), 6);
        QCOMPARE(decimals(0.00005, 9), 5);
        QCOMPARE(decimals(0.05, 9), 2);
        QCOMPARE(decimals(0.5, 9), 1);
        QCOMPARE(decimals(0, 0.04), 3);
        QCOMPARE(decimals(-5, 9), 1);
        QCOMPARE(decimals(-5, -1), 6);
    }

    void movingAverageIsTheMeanOfTheLastValues()
    {
        using Means = std::vector<double>;
        QCOMPARE(movingPeriod(29), 2);
        QCOMPARE(movingPeriod(30), 3);
        QCOMPARE(movingPeriod(168), 16);
        QVERIFY(movingAverage({}, 2).empty());
        QVERIFY(movingAverage({5}, 2).empty());
        QCOMPARE(movingAverage({5, 7}, 2), Means{6});
        QCOMPARE(movingAverage({1, 4, 2, 9, -5}, 3), (Means{7.0 / 3, 5, 2}));
        QCOMPARE(movingAverage({1, 4, 2, 9, -6}, 5), Means{2});
        // A huge value leaves no trace in later means.
        QCOMPARE(movingAverage({1e18, 1, 3, 5, 7}, 2), (Means{5e17, 2, 4, 6}));
    }
};

QTEST_APPLESS_MAIN(ChartStatisticsTest)
#include "tst_ChartStatistics.moc"
