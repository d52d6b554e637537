#pragma once

#include "charts/ChartJob.h"

#include <QString>

#include <vector>

/// The yardstick: the same charts drawn by `rrdtool graph`.

struct Result
{
    double seconds = 0;
    double processorSeconds = 0; ///< of all threads; less affected by other load
    double meanBytes = 0;
};

/// Mean size of a folder's files of a pattern, in bytes.
double meanSize(const QString &folder, const QString &pattern);

/// Draws charts with buckets of `minutes` minutes with one rrdtool process that reads commands from
/// its standard input, each from a file made before; images of 640 by 390 with the parts of ours.
/// Throws Error with rrdtool's message.
Result benchRrdtool(const QString &folder, const std::vector<CounterChart> &charts, int minutes);
