#pragma once

#include "series/DataSeries.h"

#include <QString>

#include <optional>
#include <vector>

/// The figures on charts. Pure functions, safe on any thread. Counts have 64 bits, so that no
/// period overflows them.

/// A success rate in percent, rounded to 3 decimals, halves to even. `successes + failures` > 0.
double successRate(qint64 successes, qint64 failures);

/// "75.000%".
QString rateLabel(double rate);

/// A number in the pattern "###.###": at most three decimals (halves to even), no leading zero, and
/// always a decimal point: 99.5 is "99.5", 100 is "100.", 0.5 is ".5", 0 is ".".
QString sparseNumber(double value);

/// The figures of a state series.
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

/// The figures of a counter series; its values are the means of the buckets with data.
struct CounterStatistics
{
    qint64 count = 0; ///< values; without any the other numbers are zero
    double min = 0;
    double max = 0;
    double mean = 0;
    double percentile95 = 0; ///< see `percentile95()`
    double minSample = 0;    ///< of the single samples
    double maxSample = 0;
    int movingPeriod = 0; ///< see `movingPeriod()`
    /// The moving average by bucket; null where the bucket is empty or too early.
    std::vector<std::optional<double>> moving;

    /// Decimals of all numbers in the footer: enough for the smallest one to show a digit.
    int decimals() const;
    /// "Samples: 3 Max: 1,234.5 Min: 0.2 Avg: 411.9 95th: 1,234.5".
    QString footer() const;
};
CounterStatistics counterStatistics(const DataSeries &series);

/// The product's 95th percentile: all values but the last one in time are sorted ascending, the
/// last one stays at the end, and the value number 0.95 n is taken (halves to even, from 1). For n
/// = 10 that is the last value in time. 0 without values.
double percentile95(std::vector<double> values);

/// Period of the moving average: a tenth of all buckets, empty ones included, rounded down; at
/// least 2.
int movingPeriod(qsizetype bucketCount);

/// The mean of each `period` consecutive values; entry i belongs to values[period - 1 + i]. Empty
/// with fewer than `period` values.
std::vector<double> movingAverage(const std::vector<double> &values, int period);
