#pragma once

#include "series/DataSeries.h"

#include <functional>
#include <vector>

/// The time axis of a chart. Positions are proportional to instants, so that a day of 23 hours is
/// shorter than others; the texts are wall times.

struct TimeTick
{
    double x = 0;       ///< middle of the label, from the left end of the axis
    QString label;      ///< "06:00", "Mon 4", "Mar"
    QString context;    ///< second line where the day, month or year changes: "Mon Mar 4", "2024"
    bool onEdge = true; ///< at the start of a bucket; else in the middle of one
};

struct TimeAxis
{
    qint64 start = 0;
    qint64 end = 1;
    double length = 1; ///< logical pixels
    std::vector<TimeTick> ticks;

    /// From the left end.
    double x(qint64 instant) const
    {
        return static_cast<double>(instant - start) / static_cast<double>(end - start) * length;
    }
};

/// Ticks at round times (hours, midnights, Mondays, first days of months and years) whose labels do
/// not touch, at most one every `labelStep` buckets. `width` measures a label. Needs at least one
/// bucket.
TimeAxis timeAxis(const DataSeries &series, int labelStep, double length,
                  const std::function<double(const QString &)> &width);
