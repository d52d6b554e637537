#pragma once

#include "base/Error.h"
#include "series/DataSeries.h"
#include "series/SampleSink.h"

#include <optional>

/// The samples of one data item, folded into the buckets of an axis as they are read, in any order:
/// 48 bytes a bucket up to the last one with a sample, nothing for each sample. Values are kept in
/// ten-thousandths, rounded half to even; a NULL value does not count for mean, min and max, a NULL
/// state adds nothing. Used by one thread at a time.
class CalculatedSummary : public SampleSink
{
public:
    /// Every bucket up to that of the instant `latest` is shown, empty or not.
    CalculatedSummary(SharedAxis axis, qint64 latest);

    /// Adds a sample; one outside the axis is counted, but in no bucket. A value beyond
    /// +-922,337,203,685,477 makes the item unusable: `error` is set and later samples are ignored.
    void addSample(qint64 instant, qint64 state, std::optional<double> value) override;

    qint64 sampleCount() const { return m_samples; }

    static constexpr qint64 bytesPerBucket = 48;

    std::optional<Error> error; ///< why the item cannot be charted

    /// The values of all buckets up to that of `latest`, or up to the last one with a sample if
    /// that is later. With `scale` stateScale a bucket counts its samples, else those with a value,
    /// so that a bucket without any is a gap. Means are rounded to 6 decimals, halves to even; min
    /// and max have 4.
    DataSeries series(int scale) const;

private:
    // Wide enough for the sum of as many values as there can be, so that no sum overflows.
    __extension__ using WideInteger = __int128;

    struct Sums
    {
        WideInteger units = 0; ///< of values
        qint64 minUnits = 0;
        qint64 maxUnits = 0;
        qint64 states = 0;
        quint32 samples = 0;
        quint32 values = 0; ///< samples whose value is not NULL
    };
    static_assert(sizeof(Sums) == bytesPerBucket);

    SharedAxis m_axis;
    size_t m_shown; ///< buckets up to that of `latest`
    std::vector<Sums> m_sums;
    size_t m_last = 0; ///< index of the bucket that the last sample went to
    qint64 m_samples = 0;
};
