#include "series/CalculatedSummary.h"

#include <algorithm>
#include <cmath>

namespace {

__extension__ using WideInteger = __int128;

constexpr int unitsPerOne = 10'000; // values count in ten-thousandths
constexpr double maxUnits = 9.223372036854775e18;
constexpr double maxExact = 9'007'199'254'740'992; // up to here a double holds every integer

qint64 unitsOf(double value)
{
    const double units = std::nearbyint(value * unitsPerOne);
    if (!(std::abs(units) <= maxUnits))
        throw Error(Overflow,
                    QStringLiteral("Overflow: the value %1 is too large to be summed").arg(value));
    if (std::abs(units) <= maxExact)
        return static_cast<qint64>(units);
    // The product has fewer digits than the value.
    const double whole = std::trunc(value);
    return static_cast<qint64>(whole) * unitsPerOne +
           static_cast<qint64>(std::nearbyint((value - whole) * unitsPerOne));
}

/// A fixed-point number as a double, as exactly as possible.
double fromFixedPoint(WideInteger number, int perOne)
{
    const WideInteger whole = number / perOne;
    const WideInteger rest = number % perOne;
    return static_cast<double>(whole) + static_cast<double>(rest) / perOne;
}

/// Quotient rounded to the nearest integer, halves to the even one; `divisor` > 0.
WideInteger dividedHalfEven(WideInteger dividend, WideInteger divisor)
{
    WideInteger quotient = dividend / divisor;
    WideInteger rest = dividend % divisor;
    if (rest < 0) { // towards minus infinity, so that the rule is the same for both signs
        --quotient;
        rest += divisor;
    }
    const WideInteger twice = rest * 2;
    if (twice > divisor || (twice == divisor && quotient % 2 != 0))
        ++quotient;
    return quotient;
}

} // namespace

CalculatedSummary::CalculatedSummary(SharedAxis axis, qint64 latest)
    : m_axis(std::move(axis))
    , m_shown(m_axis->countUpTo(latest))
{}

void CalculatedSummary::addSample(qint64 instant, qint64 state, std::optional<double> value)
{
    if (error)
        return;
    ++m_samples;
    const size_t index = m_axis->indexOf(instant, m_last);
    if (index == m_axis->size())
        return;
    m_last = index;
    if (index >= m_sums.size()) {
        if (m_sums.empty())
            m_sums.reserve(std::max(m_shown, index + 1));
        m_sums.resize(index + 1);
    }
    Sums &sums = m_sums[index];
    ++sums.samples;
    sums.states += state;
    if (!value)
        return;
    qint64 units = 0;
    try {
        units = unitsOf(*value);
    } catch (const Error &tooLarge) {
        error = tooLarge;
        return;
    }
    if (sums.values++ == 0)
        sums.minUnits = sums.maxUnits = units;
    sums.units += units;
    sums.minUnits = std::min(sums.minUnits, units);
    sums.maxUnits = std::max(sums.maxUnits, units);
}

DataSeries CalculatedSummary::series(int scale) const
{
    DataSeries series;
    series.scale = scale;
    series.axis = m_axis;
    series.buckets.resize(std::max(m_shown, m_sums.size()));
    for (size_t i = 0; i < m_sums.size(); ++i) {
        const Sums &sums = m_sums[i];
        BucketValue &bucket = series.buckets[i];
        bucket.count = series.isState() ? sums.samples : sums.values;
        bucket.successes = sums.states;
        if (sums.values == 0)
            continue;
        // Millionths are a hundredth of the unit.
        bucket.mean = fromFixedPoint(dividedHalfEven(sums.units * 100, sums.values), 1'000'000);
        bucket.min = fromFixedPoint(sums.minUnits, unitsPerOne);
        bucket.max = fromFixedPoint(sums.maxUnits, unitsPerOne);
    }
    return series;
}
