#include "data/DataSeries.h"

#include "core/Numbers.h"
#include "core/Status.h"
#include "data/BucketLabels.h"
#include "data/Buckets.h"
#include "definitions/GraphDef.h"

namespace {

void fill(SeriesBucket &place, const SummaryRow &row, bool isStateItem)
{
    // A counter's bucket whose samples are all without a value is a gap like one without samples.
    place.count = isStateItem ? row.QCount : row.ValueCount;
    place.successes = row.sumiState;
    place.mean = row.avgiValue;
    place.least = row.miniValue;
    place.greatest = row.maxiValue;
}

void fillAxis(const std::vector<SummaryRow> &summary, qint64 first, qint64 last, DataSeries &series)
{
    const BucketLabels labels(series.frequency);
    const bool isStateItem = series.scale == stateScale;
    auto row = summary.begin();
    for (qint64 at = first; at <= last;) {
        const Bucket bucket = bucketAt(at, series.frequency, series.minuteInterval);
        if (series.buckets.size() == maxChartIntervals)
            throw Error(Overflow, QStringLiteral("Overflow: the period has more than the %1 "
                                                 "intervals that a chart can have")
                                      .arg(groupedNumber(maxChartIntervals, 0)));
        SeriesBucket &place = series.buckets.emplace_back();
        place.start = bucket.start;
        place.end = bucket.end;
        place.wallStart = bucket.wallStart;
        place.label = labels.shortForm(bucket.wallStart);
        place.longLabel = labels.longForm(bucket.wallStart);
        if (row != summary.end() && row->start < bucket.end) {
            if (row->start != bucket.start)
                throw Error(TypeMismatch,
                            QStringLiteral("The summary row %1 is no interval of this series")
                                .arg(row->QDate));
            fill(place, *row++, isStateItem);
        }
        at = bucket.end;
    }
}

} // namespace

std::optional<Error> GenerateDataSeries(const std::vector<SummaryRow> &summary, qint64 start,
                                        qint64 end, qint64 latest, DataSeries &series)
{
    series.buckets.clear();
    try {
        qint64 first = start;
        qint64 last = std::min(end, latest);
        if (!summary.empty()) {
            first = std::min(first, summary.front().start);
            last = std::max(last, summary.back().start);
        }
        fillAxis(summary, first, last, series);
        return std::nullopt;
    } catch (const Error &error) {
        ShowStatus(QLatin1String("Error while generating data series ") + errorTail(error));
        return error;
    }
}
