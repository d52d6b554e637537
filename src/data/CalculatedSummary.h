#pragma once

#include "core/Error.h"
#include "data/DataSeries.h"

#include <optional>

/// The samples of one data item, folded into the buckets of an axis as they are read, in any order:
/// 48 bytes a bucket up to the last one that holds a sample, nothing for each sample. Values count
/// in ten-thousandths, rounded half to even; a NULL value leaves mean and extremes alone, a NULL
/// state adds nothing. Used by one thread at a time.
class CalculatedSummary
{
public:
    /// `latest`: an instant up to which every bucket is shown, empty or not.
    CalculatedSummary(SharedAxis axis, qint64 latest);

    /// Adds a sample; one whose instant lies outside of the axis is counted, but in no bucket. A
    /// value beyond +-922,337,203,685,477 spoils the item: `error` then says so, and what comes
    /// after is passed over.
    void addSample(qint64 instant, qint64 state, std::optional<double> value);

    qint64 sampleCount() const { return m_samples; }

    static constexpr qint64 bytesPerBucket = 48;

    std::optional<Error> error; ///< why the item cannot be charted

    /// The values of all buckets up to that of `latest`, or to the last with a sample where that is
    /// later. `scale`: of a state item, stateScale, a bucket counts its samples; of others those
    /// with a value, so that a bucket whose samples all lack one is a gap. Means are rounded to 6
    /// decimals, halves to even; extremes have 4.
    DataSeries series(int scale) const;

private:
    // Wide enough for the sum of as many values as there can be, so that no sum overflows.
    __extension__ using WideInteger = __int128;

    struct Sums
    {
        WideInteger units = 0; ///< of values
        qint64 leastUnits = 0;
        qint64 greatestUnits = 0;
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
