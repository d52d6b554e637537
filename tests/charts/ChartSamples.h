#pragma once

#include "charts/ChartJob.h"

#include <QTimeZone>

/// Series for tests. A bucket is described by its wall time in a zone.

/// `count` buckets of `minutes` minutes from a wall time in UTC on, without samples.
inline DataSeries emptySeries(int count, int minutes = 60,
                              const QDateTime &from = QDateTime(QDate(2024, 3, 4), QTime(0, 0),
                                                                Qt::UTC))
{
    DataSeries series;
    std::vector<AxisBucket> places;
    for (int i = 0; i < count; ++i) {
        const QDateTime wall = from.addSecs(qint64(i) * minutes * 60);
        const qint64 start = wall.toMSecsSinceEpoch();
        places.push_back({start, start + qint64(minutes) * 60'000, wall, {}, {}, {}, {}});
    }
    series.axis = std::make_shared<const BucketAxis>(std::move(places),
                                                     minutes == 1440 ? ByDay
                                                     : minutes == 60 ? ByHour
                                                                     : ByMinute,
                                                     minutes);
    series.buckets.resize(series.axis->size());
    return series;
}

using Counts = QList<std::pair<qint64, qint64>>; ///< successes and failures of each bucket

inline DataSeries stateSeries(const Counts &counts, int minutes = 60)
{
    DataSeries series = emptySeries(static_cast<int>(counts.size()), minutes);
    series.scale = stateScale;
    for (qsizetype i = 0; i < counts.size(); ++i) {
        BucketValue &bucket = series.buckets[static_cast<size_t>(i)];
        bucket.successes = counts[i].first;
        bucket.count = counts[i].first + counts[i].second;
    }
    return series;
}

inline constexpr double noValue = -12345; ///< marks an empty bucket below

inline DataSeries counterSeries(const QList<double> &means, double spread = 0, int minutes = 60)
{
    DataSeries series = emptySeries(static_cast<int>(means.size()), minutes);
    for (qsizetype i = 0; i < means.size(); ++i) {
        if (means[i] == noValue)
            continue;
        BucketValue &bucket = series.buckets[static_cast<size_t>(i)];
        bucket.count = 4;
        bucket.mean = means[i];
        bucket.min = means[i] - spread;
        bucket.max = means[i] + spread;
    }
    return series;
}

inline ChartFrame sampleFrame(const QSize &size = {640, 390}, int quality = 2)
{
    ChartFrame frame;
    frame.title = "Last week by hour";
    frame.subtitle = "München router – Ping";
    frame.period = "2024-03-04 00:00 to 2024-03-10 23:59";
    frame.zone = "Europe/Berlin, UTC+01:00";
    frame.credit = "Vantrel Graphing Tool © 2024";
    frame.size = size;
    frame.quality = quality;
    return frame;
}
