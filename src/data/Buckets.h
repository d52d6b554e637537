#pragma once

#include <QDateTime>
#include <QString>

/// Time buckets of a chart: which one an instant lies in, by the clock on the wall of the local
/// zone. A bucket is the longest stretch of time around the instant in which the bucket's key does
/// not change: a day has 23 or 25 hours where daylight saving begins or ends, an hour that the wall
/// clock shows twice in a row is one bucket of two hours, and minute buckets of that hour come
/// twice. Hours that the clock skips have no bucket.
struct Bucket
{
    qint64 start = 0; ///< instants: start <= t < end
    qint64 end = 0;
    QDateTime wallStart; ///< what the key says: the date and time at which the bucket begins
};

/// The bucket of an instant. `frequency`: 0 minutes, 1 hour, 2 day, 3 month, 4 year. Minute buckets
/// begin at multiples of `minuteInterval` within each hour (the last of an hour is shorter where 60
/// is no multiple); below 2 means 1.
Bucket bucketAt(qint64 instant, int frequency, int minuteInterval);

/// "yyyyMMddHHmm", "yyyyMMddHH", "yyyyMMdd", "yyyyMM" or "yyyy" of a bucket's begin.
QString bucketKey(const QDateTime &wallStart, int frequency);

/// The begin that a key tells; invalid for a malformed one.
QDateTime BucketStartDate(const QString &key, int frequency);
