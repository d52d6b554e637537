#include "charts/ChartStatistics.h"

#include "base/Numbers.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

double roundToThree(double value)
{
    return std::nearbyint(value * 1000) / 1000;
}

qint64 averageCount(qint64 sum, qint64 count)
{
    return static_cast<qint64>(
        std::nearbyint(static_cast<double>(sum) / static_cast<double>(count)));
}

/// A number without the minus sign that rounding leaves at a zero.
QString footerNumber(double value, int decimals)
{
    const QString text = groupedNumber(value, decimals);
    const bool isZero =
        std::none_of(text.begin(), text.end(), [](QChar c) { return c >= u'1' && c <= u'9'; });
    return isZero ? groupedNumber(0, decimals) : text;
}

std::vector<std::optional<double>> movingByBucket(const DataSeries &series,
                                                  const std::vector<double> &values, int period)
{
    const std::vector<double> means = movingAverage(values, period);
    std::vector<std::optional<double>> moving(series.buckets.size());
    const auto length = static_cast<size_t>(period);
    size_t count = 0; // values up to the bucket
    for (size_t i = 0; i < moving.size(); ++i) {
        if (!series.buckets[i].isEmpty() && ++count >= length)
            moving[i] = means[count - length];
    }
    return moving;
}

} // namespace

double successRate(qint64 successes, qint64 failures)
{
    const double total = static_cast<double>(successes + failures);
    return roundToThree(static_cast<double>(successes) / total * 100);
}

QString rateLabel(double rate)
{
    return QString::number(rate, 'f', 3) + u'%';
}

QString sparseNumber(double value)
{
    QString text = QString::number(roundToThree(value), 'f', 3);
    while (text.endsWith(u'0'))
        text.chop(1);
    if (text.startsWith(u"0."))
        text.remove(0, 1);
    return text;
}

QString StateStatistics::averageLine() const
{
    if (bucketsWithData == 0)
        return QStringLiteral("AVERAGE - Count:0  Success:0  Fail:0  Avg Success Rate:0%");
    return QStringLiteral("AVERAGE - Count:%1  Success:%2  Fail:%3  Avg Success Rate:%4%")
        .arg(averageCount(successes + failures, bucketsWithData))
        .arg(averageCount(successes, bucketsWithData))
        .arg(averageCount(failures, bucketsWithData))
        .arg(sparseNumber(overallRate));
}

QString StateStatistics::totalsLine() const
{
    return QStringLiteral("TOTALS - Samples:%1  Total:%2  Success:%3  Fail:%4")
        .arg(bucketsWithData)
        .arg(failures + successes)
        .arg(successes)
        .arg(failures);
}

StateStatistics stateStatistics(const DataSeries &series)
{
    StateStatistics result;
    for (const BucketValue &bucket : series.buckets) {
        if (bucket.isEmpty())
            continue;
        result.successes += bucket.successes;
        result.failures += bucket.failures();
        ++result.bucketsWithData;
    }
    const qint64 total = result.successes + result.failures;
    if (total >= 1)
        result.overallRate =
            static_cast<double>(result.successes) / static_cast<double>(total) * 100;
    return result;
}

int CounterStatistics::decimals() const
{
    static constexpr std::array<double, 5> bounds = {0.5, 0.05, 0.005, 0.0005, 0.00005};
    const double leading = min > 0 ? min : max;
    const auto below = [&](double bound) { return leading < bound; };
    return 1 + static_cast<int>(std::count_if(bounds.begin(), bounds.end(), below));
}

QString CounterStatistics::footer() const
{
    const int digits = decimals();
    return QStringLiteral("Samples: %1 Max: %2 Min: %3 Avg: %4 95th: %5")
        .arg(QString::number(count), footerNumber(max, digits), footerNumber(min, digits),
             footerNumber(mean, digits), footerNumber(percentile95, digits));
}

CounterStatistics counterStatistics(const DataSeries &series)
{
    CounterStatistics result;
    std::vector<double> values;
    values.reserve(series.buckets.size());
    double sum = 0;
    for (const BucketValue &bucket : series.buckets) {
        if (bucket.isEmpty())
            continue;
        const bool isFirst = values.empty();
        result.minSample = isFirst ? bucket.min : std::min(result.minSample, bucket.min);
        result.maxSample = isFirst ? bucket.max : std::max(result.maxSample, bucket.max);
        values.push_back(bucket.mean);
        sum += bucket.mean;
    }
    result.movingPeriod = movingPeriod(static_cast<qsizetype>(series.buckets.size()));
    result.moving = movingByBucket(series, values, result.movingPeriod);
    if (values.empty())
        return result;
    const auto [min, max] = std::minmax_element(values.begin(), values.end());
    result.count = static_cast<qint64>(values.size());
    result.min = *min;
    result.max = *max;
    result.mean = sum / static_cast<double>(values.size());
    result.percentile95 = percentile95(std::move(values));
    return result;
}

double percentile95(std::vector<double> values)
{
    if (values.empty())
        return 0;
    const double exact = static_cast<double>(values.size()) * 0.95;
    const auto number = static_cast<std::ptrdiff_t>(std::nearbyint(exact));
    if (number < 1)
        return 0;
    const auto last = values.end() - 1;
    const auto wanted = values.begin() + (number - 1);
    if (wanted < last)
        std::nth_element(values.begin(), wanted, last);
    return *wanted;
}

int movingPeriod(qsizetype bucketCount)
{
    return static_cast<int>(std::max<qsizetype>(2, bucketCount / 10));
}

std::vector<double> movingAverage(const std::vector<double> &values, int period)
{
    const auto length = static_cast<size_t>(period);
    if (values.size() < length)
        return {};
    // Running sums forwards from the start and backwards from the end of each block of `length`
    // values: every window is the end of one block and the start of the next. Nothing is
    // subtracted, so that a huge value leaves no rounding error in the means after it.
    std::vector<double> forwards(values);
    std::vector<double> backwards(values);
    for (size_t i = 1; i < values.size(); ++i) {
        if (i % length != 0)
            forwards[i] += forwards[i - 1];
    }
    for (size_t i = values.size() - 1; i-- > 0;) {
        if ((i + 1) % length != 0)
            backwards[i] += backwards[i + 1];
    }
    std::vector<double> means(values.size() - length + 1);
    for (size_t i = 0; i < means.size(); ++i) {
        const bool wholeBlock = i % length == 0;
        means[i] =
            (wholeBlock ? forwards[i + length - 1] : backwards[i] + forwards[i + length - 1]) /
            period;
    }
    return means;
}
