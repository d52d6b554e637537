#include "data/CalculatedSummary.h"

#include "core/Error.h"
#include "data/Buckets.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace {

// Wide enough for the sum of as many values as there can be, so that no sum overflows.
__extension__ using WideInteger = __int128;

constexpr int unitsPerOne = 10'000; // values count in ten-thousandths
constexpr double mostUnits = 9.223372036854775e18;
constexpr double mostExact = 9'007'199'254'740'992; // up to here a double holds every integer

qint64 unitsOf(double value)
{
    const double units = std::nearbyint(value * unitsPerOne);
    if (!(std::abs(units) <= mostUnits))
        throw Error(Overflow,
                    QStringLiteral("Overflow: the value %1 is too large to be summed").arg(value));
    if (std::abs(units) <= mostExact)
        return static_cast<qint64>(units);
    // The product has lost digits that the value has.
    const double whole = std::trunc(value);
    return static_cast<qint64>(whole) * unitsPerOne +
           static_cast<qint64>(std::nearbyint((value - whole) * unitsPerOne));
}

/// A fixed-point number as a double, with all the digits that one can hold.
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
    if (rest < 0) { // towards minus infinity, so that one rule serves both signs
        --quotient;
        rest += divisor;
    }
    const WideInteger twice = rest * 2;
    if (twice > divisor || (twice == divisor && quotient % 2 != 0))
        ++quotient;
    return quotient;
}

class OpenBucket
{
public:
    OpenBucket(const Bucket &bucket, qint64 dataIdent, int frequency)
    {
        m_row.DataIDent = dataIdent;
        m_row.QDate = bucketKey(bucket.wallStart, frequency);
        m_row.start = bucket.start;
        m_row.end = bucket.end;
    }

    bool holds(qint64 instant) const { return instant >= m_row.start && instant < m_row.end; }

    void addSample(qint64 state)
    {
        ++m_row.QCount;
        m_row.sumiState += state;
    }

    void addValue(qint64 units)
    {
        if (m_row.ValueCount == 0)
            m_least = m_greatest = units;
        ++m_row.ValueCount;
        m_sum += units;
        m_least = std::min(m_least, units);
        m_greatest = std::max(m_greatest, units);
    }

    SummaryRow close()
    {
        if (m_row.ValueCount > 0) {
            // Millionths are a hundredth of the unit.
            const WideInteger millionths = dividedHalfEven(m_sum * 100, m_row.ValueCount);
            m_row.avgiValue = fromFixedPoint(millionths, 1'000'000);
            m_row.miniValue = fromFixedPoint(m_least, unitsPerOne);
            m_row.maxiValue = fromFixedPoint(m_greatest, unitsPerOne);
        }
        return std::move(m_row);
    }

private:
    SummaryRow m_row;
    WideInteger m_sum = 0;
    qint64 m_least = 0;
    qint64 m_greatest = 0;
};

} // namespace

std::vector<SummaryRow> BuildCalculatedSummary(Recordset &raw, int frequency, int minuteInterval)
{
    const int dataIdent = raw.column(QStringLiteral("DataIDent"));
    const int date = raw.column(QStringLiteral("iDate"));
    const int state = raw.column(QStringLiteral("iState"));
    const int value = raw.column(QStringLiteral("iValue"));

    std::vector<SummaryRow> summary;
    std::optional<OpenBucket> open;
    while (raw.next()) {
        const qint64 instant = raw.instant(date);
        if (!open || !open->holds(instant)) {
            if (open)
                summary.push_back(open->close());
            open.emplace(bucketAt(instant, frequency, minuteInterval), raw.integer(dataIdent),
                         frequency);
        }
        open->addSample(raw.isNull(state) ? 0 : raw.integer(state));
        if (!raw.isNull(value))
            open->addValue(unitsOf(raw.number(value)));
    }
    if (open)
        summary.push_back(open->close());
    return summary;
}
