#include "core/State.h"
#include "data/Buckets.h"
#include "data/CalculatedSummary.h"
#include "definitions/GraphDef.h"
#include "support/Errors.h"
#include "support/Rows.h"
#include "support/Zones.h"

#include <QLocale>

namespace {

struct Sample
{
    const char *utcTime;
    QVariant state;
    QVariant value;
};
using Samples = QList<Sample>;

/// The series of an item from an instant to another; the axis spans all the samples, too.
DataSeries seriesOf(const Samples &samples, int scale, int frequency, int interval,
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

/// One line a bucket that holds samples: start, count, states, mean, least, greatest.
QStringList lines(const Samples &samples, int frequency, int interval)
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
                qPrintable(bucketKey(state.place(i).wallStart, frequency)), tests.count,
                tests.successes, values.mean, values.least, values.greatest));
    }
    return result;
}

} // namespace

class tst_Series : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }
    void cleanup() { resetState(); }

    void summary_data()
    {
        const Rows<QByteArray, int, int, Samples, QStringList> row("zone", "frequency", "interval",
                                                                   "samples", "rows");
        const QVariant none;
        row("no samples", "UTC", 1, 0, {}, {});
        row("one sample", "UTC", 1, 0, {{"2024-03-01T10:07:00", 1, 12.5}},
            {"2024030110 1 1 12.500000 12.5000 12.5000"});
        row("two samples, first value sets both extremes", "UTC", 2, 0,
            {{"2024-03-01T10:07:00", 1, -3.0}, {"2024-03-01T22:00:00", 0, -1.0}},
            {"20240301 2 1 -2.000000 -3.0000 -1.0000"});
        row("interval of 15", "UTC", 0, 15,
            {{"2024-03-01T10:07:00", 1, 1},
             {"2024-03-01T10:14:59.999", 1, 2},
             {"2024-03-01T10:15:00", 1, 3}},
            {"202403011000 2 2 1.500000 1.0000 2.0000", "202403011015 1 1 3.000000 3.0000 3.0000"});
        row("a repeated quarter of an hour comes twice", "Europe/Berlin", 0, 15,
            {{"2024-10-27T00:05:00", 1, 1}, {"2024-10-27T01:05:00", 1, 2}},
            {"202410270200 1 1 1.000000 1.0000 1.0000", "202410270200 1 1 2.000000 2.0000 2.0000"});
        row("a repeated hour is one bucket", "Europe/Berlin", 1, 0,
            {{"2024-10-27T00:05:00", 1, 1}, {"2024-10-27T01:05:00", 1, 2}},
            {"2024102702 2 2 1.500000 1.0000 2.0000"});
        row("values are rounded to four decimals, halves to even", "UTC", 4, 0,
            {{"2024-03-01T10:00:00", 0, 0.03125}, {"2024-03-01T11:00:00", 0, 0.09375}},
            {"2024 2 0 0.062500 0.0312 0.0938"});
        row("the mean is rounded to six", "UTC", 4, 0,
            {{"2024-03-01T10:00:00", 0, 1},
             {"2024-03-01T11:00:00", 0, 1},
             {"2024-03-01T12:00:00", 0, 0}},
            {"2024 3 0 0.666667 0.0000 1.0000"});
        const Sample nothing{"2024-03-01T10:00:00", 0, 0};
        row("halves of a millionth to even", "UTC", 4, 0,
            Samples(7, nothing) + Samples{{"2024-03-01T11:00:00", 0, 0.0001}},
            {"2024 8 0 0.000012 0.0000 0.0001"});
        row("a negative mean too", "UTC", 4, 0,
            {{"2024-03-01T10:00:00", 0, -1},
             {"2024-03-01T11:00:00", 0, -1},
             {"2024-03-01T12:00:00", 0, 0}},
            {"2024 3 0 -0.666667 -1.0000 0.0000"});
        row("the sum of the largest values", "UTC", 4, 0,
            {{"2024-03-01T10:00:00", 0, 9e14}, {"2024-03-01T11:00:00", 0, 9e14}},
            {"2024 2 0 900000000000000.000000 900000000000000.0000 900000000000000.0000"});
        row("large values keep their digits", "UTC", 4, 0,
            {{"2024-03-01T10:00:00", 0, 80467227701433.0},
             {"2024-03-01T11:00:00", 0, 80467227701433.0},
             {"2024-03-01T12:00:00", 0, -909167257005.0625}},
            {"2024 3 0 53341762715286.976563 -909167257005.0625 80467227701433.0000"});
        row("NULL leaves sums and extremes alone", "UTC", 2, 0,
            {{"2024-03-01T10:00:00", none, 4},
             {"2024-03-01T11:00:00", 1, none},
             {"2024-03-01T12:00:00", 1, 6}},
            {"20240301 3 2 5.000000 4.0000 6.0000"});
        row("states of Access's True", "UTC", 2, 0,
            {{"2024-03-01T10:00:00", -1, 0}, {"2024-03-01T11:00:00", -1, 0}},
            {"20240301 2 -2 0.000000 0.0000 0.0000"});
    }
    void summary()
    {
        QFETCH(QByteArray, zone);
        QFETCH(int, frequency);
        QFETCH(int, interval);
        QFETCH(Samples, samples);
        setZone(zone);
        QTEST(lines(samples, frequency, interval), "rows");
    }

    void summaryRefusesHugeValues()
    {
        setZone("UTC");
        for (const double value : {1e15, -1e15, qInf(), qQNaN()}) {
            const Samples samples{{"2024-03-01T10:00:00", 1, value}};
            QCOMPARE(errorOf([&] { lines(samples, 1, 0); }).number, int(Overflow));
        }
    }

    void axis_data()
    {
        const Rows<QByteArray, int, int, QByteArray, QByteArray, QByteArray, Samples, QString> row(
            "zone", "frequency", "interval", "start", "end", "latest", "samples", "expected");
        const char *never = "2999-01-01T00:00:00";
        row("both ends count", "UTC", 1, 0, "2024-03-01T10:30:00", "2024-03-01T13:00:00", never, {},
            "10:00,11:00,12:00,13:00");
        row("not beyond now", "UTC", 1, 0, "2024-03-01T10:00:00", "2024-03-01T23:59:59",
            "2024-03-01T12:10:00", {}, "10:00,11:00,12:00");
        row("a period to come has no axis", "UTC", 1, 0, "2024-03-01T10:00:00",
            "2024-03-01T12:00:00", "2024-02-01T00:00:00", {}, "");
        row("a sample after now is shown", "UTC", 1, 0, "2024-03-01T10:00:00",
            "2024-03-01T13:00:00", "2024-03-01T11:00:00", {{"2024-03-01T12:00:00", 1, 1}},
            "10:00,11:00,12:00");
        row("from December to January", "Europe/Berlin", 3, 0, "2024-10-31T23:00:00",
            "2025-01-31T22:59:59", never, {}, "Nov '24,Dec '24,Jan '25");
        row("hours around the skipped one", "Europe/Berlin", 1, 0, "2024-03-31T00:00:00",
            "2024-03-31T02:00:00", never, {}, "01:00,03:00,04:00");
        row("half hours around a repeated one", "Europe/Berlin", 0, 30, "2024-10-26T23:30:00",
            "2024-10-27T02:00:00", never, {}, "01:30,02:00,02:30,02:00,02:30,03:00");
    }
    void axis()
    {
        QFETCH(QByteArray, zone);
        QFETCH(int, frequency);
        QFETCH(int, interval);
        QFETCH(QByteArray, start);
        QFETCH(QByteArray, end);
        QFETCH(QByteArray, latest);
        QFETCH(Samples, samples);
        setZone(zone);
        const DataSeries series =
            seriesOf(samples, stateScale, frequency, interval, start, end, latest);
        QStringList labels;
        qint64 count = 0;
        for (size_t i = 0; i < series.buckets.size(); ++i) {
            labels.append(series.place(i).label);
            count += series.buckets[i].count;
            QVERIFY(i == 0 || series.place(i).start == series.place(i - 1).end);
        }
        QTEST(labels.join(u','), "expected");
        QCOMPARE(count, samples.size());
    }

    void labels_data()
    {
        const Rows<QLocale, int, QString, QString> row("locale", "frequency", "shortForm",
                                                       "longForm");
        const QLocale english(QLocale::English, QLocale::UnitedStates);
        row("minute", english, 0, "07:05", "Mar 01 - 07:05");
        row("hour", english, 1, "07:00", "Mar 01 - 07:00");
        row("day", english, 2, "Fri Mar 01", "2024-Mar-01");
        row("month", english, 3, "Mar '24", "2024-Mar");
        row("year", english, 4, "2024", "2024");
        row("French", QLocale(QLocale::French, QLocale::France), 2, "ven mars 01", "2024-mars-01");
    }
    void labels()
    {
        QFETCH(QLocale, locale);
        QFETCH(int, frequency);
        setZone("UTC");
        QLocale::setDefault(locale);
        const char *time = "2024-03-01T07:05:09";
        const DataSeries series = seriesOf({}, 0, frequency, 0, time, time, time);
        QCOMPARE(series.buckets.size(), size_t(1));
        QTEST(series.place(0).label, "shortForm");
        QTEST(series.place(0).longLabel, "longForm");
    }

    void stateItem()
    {
        setZone("UTC");
        const Sample success{"2024-03-01T10:00:00", 1, {}};
        const Sample failure{"2024-03-01T10:01:00", 0, {}};
        const DataSeries series =
            seriesOf({success, success, success, failure, failure}, stateScale, 1, 0,
                     "2024-03-01T09:00:00", "2024-03-01T10:59:59", "2024-03-01T10:59:59");
        QCOMPARE(series.buckets.size(), size_t(2));
        QVERIFY(series.buckets[0].isEmpty());
        QVERIFY(!series.buckets[1].isEmpty());
        QCOMPARE(series.buckets[1].successes, qint64(3));
        QCOMPARE(series.buckets[1].failures(), qint64(2));
    }

    void counterItem()
    {
        setZone("UTC");
        const Samples samples{{"2024-03-01T09:00:00", 1, QVariant()},
                              {"2024-03-01T10:00:00", 1, 2},
                              {"2024-03-01T10:30:00", 1, 5}};
        const DataSeries series = seriesOf(samples, 3, 1, 0, "2024-03-01T09:00:00",
                                           "2024-03-01T10:59:59", "2024-03-01T10:59:59");
        QCOMPARE(series.buckets.size(), size_t(2));
        QVERIFY2(series.buckets[0].isEmpty(), "samples without a value are no zero");
        QCOMPARE(series.buckets[1].mean, 3.5);
        QCOMPARE(series.buckets[1].least, 2.0);
        QCOMPARE(series.buckets[1].greatest, 5.0);
        QCOMPARE(series.place(1).wallStart, at("2024-03-01T10:00:00"));
    }

    void tooManyIntervals()
    {
        setZone("UTC");
        const qint64 start = utc("2024-03-01T09:00:00");
        const auto hours = [&](qint64 count) {
            return BucketAxis(start, start + (count - 1) * 3'600'000, ByHour, 0).size();
        };
        QCOMPARE(hours(maxChartIntervals), size_t(maxChartIntervals));
        const Error error = errorOf([&] { hours(maxChartIntervals + 1); });
        QCOMPARE(error.number, int(Overflow));
        QVERIFY(error.description.contains(" more than the 110,000 intervals"));
    }
};

QTEST_GUILESS_MAIN(tst_Series)
#include "tst_Series.moc"
