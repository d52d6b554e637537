#pragma once

#include "data/BucketAxis.h"

#include <vector>

inline constexpr int stateScale =
    21; ///< the scale of items whose samples are successes or failures

/// What the samples of one bucket come to.
struct BucketValue
{
    qint64 count = 0;     ///< samples; 0 marks an empty bucket, shown as a gap
    qint64 successes = 0; ///< sum of the states
    double mean = 0;
    double least = 0;
    double greatest = 0;

    bool isEmpty() const { return count == 0; }
    qint64 failures() const { return count - successes; }
};

/// The series of one data item: a value for each place of the axis, from its start as far as the
/// item is charted, empty ones included.
struct DataSeries
{
    int scale = 0; ///< `stateScale` marks a state item
    SharedAxis axis = std::make_shared<const BucketAxis>();
    std::vector<BucketValue> buckets; ///< at most as many as the axis has places

    bool isState() const { return scale == stateScale; }
    const AxisBucket &place(size_t index) const { return (*axis)[index]; }
};
