#pragma once

#include "definitions/clsGraphDef.h"

#include <QDateTime>
#include <QString>

#include <memory>
#include <vector>

/// One interval of a time axis.
struct AxisBucket
{
    qint64 start = 0;    ///< instant at which the bucket begins
    qint64 end = 0;      ///< instant at which the next one begins
    QDateTime wallStart; ///< what the wall clock shows at its start, by the bucket's key
    QString label;       ///< short form, for the axis
    QString longLabel;   ///< long form, for hints and tables
    QString plainLabel;  ///< the same in English, for files that programs read
    QString isoStart;    ///< `start` as "2024-03-31T03:00:00+02:00"
};

/// The time axis that all charts of a report share: every bucket of its period in order of time,
/// each beginning where the one before ends (see series/Buckets.h). A value that never changes;
/// read on any thread. Labels are in the default locale.
class BucketAxis
{
public:
    BucketAxis() = default; ///< without buckets

    /// From the bucket of one instant to the bucket of another, both included; without buckets when
    /// `last` is before `first`. Throws Error(Overflow) for more than maxChartIntervals
    /// of definitions/clsGraphDef.h, Error(TypeMismatch) for an unknown frequency.
    enum class Labels { Made, None };
    BucketAxis(qint64 first, qint64 last, ChartFrequencyCode frequency, int minuteInterval,
               Labels labels = Labels::Made);

    /// For charts of sample data.
    BucketAxis(std::vector<AxisBucket> buckets, ChartFrequencyCode frequency, int minuteInterval);

    ChartFrequencyCode frequency() const { return m_frequency; }
    int minuteInterval() const { return m_minuteInterval; } ///< for ByMinute
    size_t size() const { return m_buckets.size(); }
    const AxisBucket &operator[](size_t index) const { return m_buckets[index]; }

    /// The index of the bucket of an instant; size() when it is outside the axis. Tries `hint` and
    /// its successor first.
    size_t indexOf(qint64 instant, size_t hint = 0) const;

    /// How many buckets begin at or before an instant.
    size_t countUpTo(qint64 instant) const;

private:
    bool holds(size_t index, qint64 instant) const
    {
        return instant >= m_bounds[index] && instant < m_bounds[index + 1];
    }

    ChartFrequencyCode m_frequency = ByMinute;
    int m_minuteInterval = 0;
    std::vector<AxisBucket> m_buckets;
    std::vector<qint64> m_bounds{0}; ///< each bucket's start, and the end of the last
};

using SharedAxis = std::shared_ptr<const BucketAxis>;
