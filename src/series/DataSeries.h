#pragma once

#include "series/BucketAxis.h"

#include <vector>

/// The scale of items whose samples are successes or failures.
inline constexpr int stateScale = 21;

/// The samples of one bucket, summed up.
struct BucketValue
{
    qint64 count = 0;     ///< samples; 0 marks an empty bucket, shown as a gap
    qint64 successes = 0; ///< sum of the states
    double mean = 0;
    double min = 0;
    double max = 0;

    bool isEmpty() const { return count == 0; }
    qint64 failures() const { return count - successes; }
};

/// The series of one data item: a value for each interval of the axis, empty ones included, from
/// its start to where the item's chart ends.
struct DataSeries
{
    int scale = 0; ///< `stateScale` marks a state item
    SharedAxis axis = std::make_shared<const BucketAxis>();
    std::vector<BucketValue> buckets; ///< at most as many as the axis has intervals

    bool isState() const { return scale == stateScale; }
    const AxisBucket &interval(size_t index) const { return (*axis)[index]; }
};
