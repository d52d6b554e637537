#pragma once

#include "core/Error.h"
#include "data/CalculatedSummary.h"

#include <QDateTime>
#include <QString>

#include <optional>
#include <vector>

inline constexpr int stateScale =
    21; ///< the scale of items whose samples are successes or failures

/// One place on a chart's time axis.
struct SeriesBucket
{
    qint64 start = 0;     ///< instant at which the bucket begins
    qint64 end = 0;       ///< instant at which the next one begins
    QDateTime wallStart;  ///< what the wall clock shows at its begin, by the bucket's key
    QString label;        ///< short form, for the axis
    QString longLabel;    ///< long form, for hints and tables
    qint64 count = 0;     ///< samples; 0 marks an empty bucket, shown as a gap
    qint64 successes = 0; ///< sum of the states
    double mean = 0;
    double least = 0;
    double greatest = 0;

    bool isEmpty() const { return count == 0; }
    qint64 failures() const { return count - successes; }
};

/// The series of one data item: every bucket from the period's start to its end, empty ones
/// included, so that all charts of a report share one time axis.
struct DataSeries
{
    int frequency = 0;      ///< 0 minute interval, 1 hour, 2 day, 3 month, 4 year
    int minuteInterval = 0; ///< for frequency 0
    int scale = 0;          ///< `stateScale` marks a state item
    std::vector<SeriesBucket> buckets;
};

/// Fills `series.buckets` from an item's summary rows. The axis runs from the bucket of `start` to
/// the bucket of `end` (instants, both inclusive), or of `latest` where that is earlier; rows
/// outside of it are added with the empty buckets between. A failure, more than maxChartIntervals
/// among them, becomes the status line "Error while generating data series [number] description"
/// and is returned; the buckets then hold what was done before.
std::optional<Error> GenerateDataSeries(const std::vector<SummaryRow> &summary, qint64 start,
                                        qint64 end, qint64 latest, DataSeries &series);
