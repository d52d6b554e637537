#include "series/BucketAxis.h"

#include "base/Error.h"
#include "base/Numbers.h"
#include "base/TimeZone.h"
#include "definitions/clsGraphDef.h"
#include "series/BucketLabels.h"
#include "series/Buckets.h"

#include <algorithm>

namespace {

std::vector<AxisBucket> bucketsBetween(qint64 first, qint64 last, ChartFrequencyCode frequency,
                                       int minuteInterval)
{
    std::vector<AxisBucket> buckets;
    for (qint64 at = first; at <= last;) {
        const Bucket bucket = bucketAt(at, frequency, minuteInterval);
        if (buckets.size() == maxChartIntervals)
            throw Error(Overflow, QStringLiteral("Overflow: the period has more than the %1 "
                                                 "intervals that a chart can have")
                                      .arg(groupedNumber(maxChartIntervals, 0)));
        buckets.push_back({bucket.start, bucket.end, bucket.wallStart, {}, {}, {}, {}});
        at = bucket.end;
    }
    return buckets;
}

std::vector<AxisBucket> labelled(std::vector<AxisBucket> buckets, ChartFrequencyCode frequency)
{
    const BucketLabels labels(frequency);
    const BucketLabels plainLabels(frequency, QLocale::c());
    for (AxisBucket &bucket : buckets) {
        bucket.label = labels.shortForm(bucket.wallStart);
        bucket.longLabel = labels.longForm(bucket.wallStart);
        bucket.plainLabel = plainLabels.longForm(bucket.wallStart);
        bucket.isoStart = isoTimeText(bucket.start);
    }
    return buckets;
}

} // namespace

BucketAxis::BucketAxis(qint64 first, qint64 last, ChartFrequencyCode frequency, int minuteInterval,
                       Labels labels)
    : BucketAxis(bucketsBetween(first, last, frequency, minuteInterval), frequency, minuteInterval)
{
    if (labels == Labels::Made)
        m_buckets = labelled(std::move(m_buckets), frequency);
}

BucketAxis::BucketAxis(std::vector<AxisBucket> buckets, ChartFrequencyCode frequency,
                       int minuteInterval)
    : m_frequency(frequency)
    , m_minuteInterval(minuteInterval)
    , m_buckets(std::move(buckets))
{
    if (m_buckets.empty())
        return;
    m_bounds.clear();
    m_bounds.reserve(m_buckets.size() + 1);
    for (const AxisBucket &bucket : m_buckets)
        m_bounds.push_back(bucket.start);
    m_bounds.push_back(m_buckets.back().end);
}

size_t BucketAxis::indexOf(qint64 instant, size_t hint) const
{
    if (hint < size() && holds(hint, instant))
        return hint;
    if (hint + 1 < size() && holds(hint + 1, instant))
        return hint + 1;
    const size_t count = countUpTo(instant);
    return count > 0 && holds(count - 1, instant) ? count - 1 : size();
}

size_t BucketAxis::countUpTo(qint64 instant) const
{
    const auto starts = m_bounds.begin();
    return static_cast<size_t>(
        std::upper_bound(starts, starts + static_cast<std::ptrdiff_t>(size()), instant) - starts);
}
