#pragma once

#include "charts/ChartJob.h"

/// Realistic charts, the same for the same seed.
namespace sample {

/// Latencies with a daily rhythm, noise and a few peaks.
CounterChart counterChart(int count, int minutes, unsigned seed);

/// A device that mostly answers, with an outage and a gap in the recording.
StateChart stateChart(int count, int minutes, unsigned seed);

DeviceRateChart deviceChart(int count, unsigned seed);

} // namespace sample
