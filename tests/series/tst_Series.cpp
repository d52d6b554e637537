#include "base/ProgramState.h"
#include "config/Program.h"
#include "definitions/clsGraphDef.h"
#include "series/Buckets.h"
#include "series/CalculatedSummary.h"
#include "support/Errors.h"
#include "support/Zones.h"

#include <QLocale>
#include <QTest>

namespace {
struct Sample
{
    const char *utcTime;
    QVariant state;
    QVariant value;
};
using Samples = QList<Sample>;

/// The series of an item from an instant to another; the axis spans all the samples, too.
DataSeries seriesOf(const Samples &samples, int scale, ChartFrequencyCode frequency, int interval,
                    const QByteArray &start, const QByteArray &end, const QByteArray &latest)
{
    CalculatedSummary summary(
        std::make_shared<const BucketAxis>(utc(start), utc(end), frequency, interval), utc(latest));
    for (const Sample &sample : samples)
        summary.addSample(utc(sample.utcTime), sample.state.toLongLong(),
                          sample.value.isNull() ? std::optional<double>()
                                                : sample.value.toDouble());
    if (summary.error)
        throw *summary.error;
    return summary.series(scale);
}

/// One line a bucket that holds samples: start, count, states, mean, min, max.
QStringList lines(const Samples &samples, ChartFrequencyCode frequency, int interval)
{
    if (samples.isEmpty())
        return {};
    const char *start = samples.first().utcTime;
    const char *end = samples.last().utcTime;
    const DataSeries counter = seriesOf(samples, 5, frequency, interval, start, end, end);
    const DataSeries state = seriesOf(samples, stateScale, frequency, interval, start, end, end);
    QStringList result;
    for (size_t i = 0; i < state.buckets.size(); ++i) {
        const BucketValue &tests = state.buckets[i];
        const BucketValue &values = counter.buckets[i];
        if (!tests.isEmpty())
            result.append(QString::asprintf(
                "%s %lld %lld %.6f %.4f %.4f",
                qPrintable(bucketKey(state.interval(i).wallStart, frequency)), tests.count,
                tests.successes, values.mean, values.min, values.max));
    }
    return result;
}

} // namespace

class tst_Series : public QObject
{
    Q_OBJECT

    const ProgramState m_state;

private Q_SLOTS:
    void init() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }
    void summary()
    {
        const QVariant none;
        const auto single = [](const Samples &samples, ChartFrequencyCode frequency = ByYear) {
            return lines(samples, frequency, 0).join(',');
        };
        const auto values = [&single](const QList<double> &numbers) {
            Samples samples;
            for (const double number : numbers)
                samples.append({"2024-03-01T10:00:00", 0, number});
            return single(samples);
        };
        setZone("UTC");
        QCOMPARE(single({}), "");
        QCOMPARE(values({-3, -1}), "2024 2 0 -2.000000 -3.0000 -1.0000");
        QCOMPARE(values({0.03125, 0.09375}), "2024 2 0 0.062500 0.0312 0.0938"); // halves to even
        QCOMPARE(values({1, 1, 0}), "2024 3 0 0.666667 0.0000 1.0000");
        QCOMPARE(values({-1, -1, 0}), "2024 3 0 -0.666667 -1.0000 0.0000");
        QCOMPARE(values({0, 0, 0, 0, 0, 0, 0, 0.0001}), "2024 8 0 0.000012 0.0000 0.0001");
        QCOMPARE(values({9e14, 9e14}),
                 "2024 2 0 900000000000000.000000 900000000000000.0000 900000000000000.0000");
        QCOMPARE(values({80467227701433.0, 80467227701433.0, -909167257005.0625}),
                 "2024 3 0 53341762715286.976563 -909167257005.0625 80467227701433.0000");
        QCOMPARE(single({{"2024-03-01T10:00:00", none, 4},
                         {"2024-03-01T11:00:00", 1, none},
                         {"2024-03-01T12:00:00", 1, 6}},
                        ByDay),
                 "20240301 3 2 5.000000 4.0000 6.0000");
        QCOMPARE(single({{"2024-03-01T10:00:00", -1, 0}, {"2024-03-01T11:00:00", -1, 0}}),
                 "2024 2 -2 0.000000 0.0000 0.0000"); // Access's True
        QCOMPARE(lines({{"2024-03-01T10:07:00", 1, 1},
                        {"2024-03-01T10:14:59.999", 1, 2},
                        {"2024-03-01T10:15:00", 1, 3}},
                       ByMinute, 15)
                     .join(','),
                 "202403011000 2 2 1.500000 1.0000 2.0000,202403011015 1 1 3.000000 3.0000 3.0000");
        setZone("Europe/Berlin"); // a repeated quarter of an hour comes twice, a repeated hour once
        const Samples repeated{{"2024-10-27T00:05:00", 1, 1}, {"2024-10-27T01:05:00", 1, 2}};
        QCOMPARE(lines(repeated, ByMinute, 15).join(','),
                 "202410270200 1 1 1.000000 1.0000 1.0000,202410270200 1 1 2.000000 2.0000 2.0000");
        QCOMPARE(single(repeated, ByHour), "2024102702 2 2 1.500000 1.0000 2.0000");
    }

    void summaryRefusesHugeValues()
    {
        setZone("UTC");
        for (const double value : {1e15, -1e15, qInf(), qQNaN()}) {
            const Samples samples{{"2024-03-01T10:00:00", 1, value}};
            QCOMPARE(errorOf([&] { lines(samples, ByHour, 0); }).number, int(Overflow));
        }
    }
    void axis()
    {
        const char *never = "2999-01-01T00:00:00";
        const auto labels = [](ChartFrequencyCode frequency, int interval, const char *start,
                               const char *end, const char *latest, const Samples &samples = {}) {
            const DataSeries series =
                seriesOf(samples, stateScale, frequency, interval, start, end, latest);
            QStringList found;
            for (size_t i = 0; i < series.buckets.size(); ++i)
                found.append(i == 0 || series.interval(i).start == series.interval(i - 1).end
                                 ? series.interval(i).label
                                 : "a gap");
            return found.join(u',');
        };
        setZone("UTC");
        const char *ten = "2024-03-01T10:00:00";
        QCOMPARE(labels(ByHour, 0, "2024-03-01T10:30:00", "2024-03-01T13:00:00", never),
                 "10:00,11:00,12:00,13:00");
        QCOMPARE(labels(ByHour, 0, ten, "2024-03-01T23:59:59", "2024-03-01T12:10:00"),
                 "10:00,11:00,12:00");
        QCOMPARE(labels(ByHour, 0, ten, "2024-03-01T12:00:00", "2024-02-01T00:00:00"), "");
        QCOMPARE(labels(ByHour, 0, ten, "2024-03-01T13:00:00", "2024-03-01T11:00:00",
                        {{"2024-03-01T12:00:00", 1, 1}}),
                 "10:00,11:00,12:00"); // a sample after now is shown
        setZone("Europe/Berlin");
        QCOMPARE(labels(ByMonth, 0, "2024-10-31T23:00:00", "2025-01-31T22:59:59", never),
                 "Nov '24,Dec '24,Jan '25");
        QCOMPARE(labels(ByHour, 0, "2024-03-31T00:00:00", "2024-03-31T02:00:00", never),
                 "01:00,03:00,04:00");
        QCOMPARE(labels(ByMinute, 30, "2024-10-26T23:30:00", "2024-10-27T02:00:00", never),
                 "01:30,02:00,02:30,02:00,02:30,03:00");
    }
    void labels()
    {
        const auto labels = [](ChartFrequencyCode frequency) {
            const char *time = "2024-03-01T07:05:09";
            const DataSeries series = seriesOf({}, 0, frequency, 0, time, time, time);
            return QString(series.interval(0).label + '|' + series.interval(0).longLabel);
        };
        setZone("UTC");
        QCOMPARE(labels(ByMinute), "07:05|Mar 01 - 07:05");
        QCOMPARE(labels(ByHour), "07:00|Mar 01 - 07:00");
        QCOMPARE(labels(ByDay), "Fri Mar 01|2024-Mar-01");
        QCOMPARE(labels(ByMonth), "Mar '24|2024-Mar");
        QCOMPARE(labels(ByYear), "2024|2024");
        QLocale::setDefault(QLocale(QLocale::French, QLocale::France));
        QCOMPARE(labels(ByDay), "ven mars 01|2024-mars-01");
    }

    void tooManyIntervals()
    {
        setZone("UTC");
        const auto hours = [](qint64 count) {
            return BucketAxis(0, (count - 1) * 3'600'000, ByHour, 0).size();
        };
        QCOMPARE(hours(maxChartIntervals), size_t(maxChartIntervals));
        QCOMPARE(errorOf([&] { hours(maxChartIntervals + 1); }).number, int(Overflow));
    }
};

QTEST_GUILESS_MAIN(tst_Series)
#include "tst_Series.moc"
