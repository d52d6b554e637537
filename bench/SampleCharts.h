#pragma once

#include "charts/ChartJob.h"

/// Believable charts, always the same for the same seed.
namespace sample {

/// Buckets of `minutes` minutes (60: by hour, 1440: by day), without samples.
DataSeries emptySeries(int count, int minutes, int scale);

/// Latencies with a daily rhythm, noise and a few peaks.
CounterChart counterChart(int count, int minutes, unsigned seed);

/// A device that mostly answers, with an outage and a gap in the recording.
StateChart stateChart(int count, int minutes, unsigned seed);

DeviceRateChart deviceChart(int count, unsigned seed);

} // namespace sample
