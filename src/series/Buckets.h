#pragma once

#include "definitions/clsGraphDef.h"

#include <QDateTime>
#include <QString>

/// Time buckets of a chart: the one that an instant belongs to, by the wall clock of the local
/// zone. A bucket is the longest time around the instant in which the bucket's key does not change:
/// a day has 23 or 25 hours when daylight saving begins or ends, an hour that the wall clock shows
/// twice in a row is one bucket of two hours, and the minute buckets of that hour occur twice.
/// Hours that the clock skips have no bucket.
struct Bucket
{
    qint64 start = 0; ///< instants: start <= t < end
    qint64 end = 0;
    QDateTime wallStart; ///< the start by the wall clock, as in the key
};

/// The bucket of an instant. `frequency` is a ChartFrequencyCode; Error(TypeMismatch) for another
/// number. Minute buckets begin at multiples of `minuteInterval` within each hour (the last of an
/// hour is shorter where 60 is not a multiple); below 2 means 1.
Bucket bucketAt(qint64 instant, ChartFrequencyCode frequency, int minuteInterval);

/// "yyyyMMddHHmm", "yyyyMMddHH", "yyyyMMdd", "yyyyMM" or "yyyy" of a bucket's start.
QString bucketKey(const QDateTime &wallStart, ChartFrequencyCode frequency);

/// The start that a key stands for; invalid for a malformed key.
QDateTime BucketStartDate(const QString &key, ChartFrequencyCode frequency);
