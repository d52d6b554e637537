#pragma once

#include "data/DataSeries.h"

#include <QString>

#include <utility>
#include <vector>

/// The numbers that stand on charts. Pure functions, safe on any thread. Counts are kept in 64
/// bits, so that sums and averages of any period come out right instead of ending in an overflow.

/// A success rate in percent, rounded to 3 decimals, halves to even. `successes + failures` > 0.
double successRate(qint64 successes, qint64 failures);

/// "75.000%".
QString rateLabel(double rate);

/// A number in the pattern "###.###": at most three decimals (halves to even), no leading zero, and
/// a decimal point that stays even without digits: 99.5 is "99.5", 100 is "100.", 0.5 is ".5", 0 is
/// ".".
QString sparseNumber(double value);

/// The sums of a state series.
struct StateStatistics
{
    qint64 successes = 0;
    qint64 failures = 0;
    qint64 bucketsWithData = 0;
    double overallRate = 0; ///< percent; 0 without samples

    /// "AVERAGE - Count:4  Success:3  Fail:1  Avg Success Rate:75.%", averages by bucket with data,
    /// each rounded half to even.
    QString averageLine() const;
    /// "TOTALS - Samples:1  Total:4  Success:3  Fail:1".
    QString totalsLine() const;
};
StateStatistics stateStatistics(const DataSeries &series);

/// The numbers of a counter series; its samples are the means of the buckets that hold any.
struct CounterStatistics
{
    std::vector<double> values; ///< the samples in order of time
    double least = 0;
    double greatest = 0;
    double mean = 0;
    double percentile95 = 0; ///< see `percentile95()`

    qint64 count() const { return static_cast<qint64>(values.size()); }
    /// Decimals of all numbers of the footer, so that the least one still shows a digit.
    int decimals() const;
    /// "Samples: 3 Max: 1,234.5 Min: 0.2 Avg: 411.9 95th: 1,234.5".
    QString footer() const;
};
CounterStatistics counterStatistics(const DataSeries &series);

/// The least and the greatest single value of a counter in all buckets; zeros when there is none.
std::pair<double, double> valueRange(const DataSeries &series);

/// The product's 95th percentile: all values but the last in time are sorted ascending, the last
/// keeps its place at the end, and the value number 0.95 n is taken (halves to even, from 1). So
/// the last value in time is the result for n = 10. 0 when there are none.
double percentile95(std::vector<double> values);

/// Period of the moving average: a tenth of all buckets, empty ones included, rounded down, and at
/// least 2.
int movingPeriod(qsizetype bucketCount);

/// The mean of the last `period` values up to each one; entry i belongs to values[period - 1 + i],
/// so that no mean is told of fewer values. Empty when there are fewer than `period` values.
std::vector<double> movingAverage(const std::vector<double> &values, int period);
