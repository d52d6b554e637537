#include "ChartSamples.h"
#include "charts/TimeAxis.h"
#include "charts/ValueAxis.h"

#include <QLocale>
#include <QTest>

#include <algorithm>
#include <cmath>

namespace {

double sixPixels(const QString &text)
{
    return 6.0 * static_cast<double>(text.size());
}

/// Hours of local days as they are bucketed: a bucket for each hour that the wall clock shows, two
/// hours long where it shows the hour twice.
DataSeries localHours(const QByteArray &zone, const QDate &day, int days)
{
    const QTimeZone rules(zone);
    DataSeries series;
    series.frequency = 1;
    qint64 at = QDateTime(day, QTime(0, 0), rules).toMSecsSinceEpoch();
    const qint64 end = QDateTime(day.addDays(days), QTime(0, 0), rules).toMSecsSinceEpoch();
    constexpr qint64 quarter = 15 * 60'000;
    for (; at < end; at += quarter) {
        const QDateTime wall = QDateTime::fromMSecsSinceEpoch(at, rules);
        const QDateTime start(wall.date(), QTime(wall.time().hour(), 0), Qt::UTC);
        if (series.buckets.empty() || series.buckets.back().wallStart != start) {
            SeriesBucket bucket;
            bucket.wallStart = start;
            bucket.start = at;
            series.buckets.push_back(bucket);
        }
        series.buckets.back().end = at + quarter;
    }
    return series;
}

QString labels(const TimeAxis &axis)
{
    QStringList list;
    for (const TimeTick &tick : axis.ticks)
        list.append(tick.context.isEmpty() ? tick.label
                                           : QString(tick.label + u'|' + tick.context));
    return list.join(u' ');
}

} // namespace

class ChartAxesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QLocale::setDefault(QLocale::c()); }

    void ticksStandAtRoundTimes_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("minutes");
        QTest::addColumn<QDateTime>("from");
        QTest::addColumn<int>("labelStep");
        QTest::addColumn<double>("length");
        QTest::addColumn<QString>("expected");
        const auto at = [](int month, int day, int hour = 0, int minute = 0) {
            return QDateTime(QDate(2024, month, day), QTime(hour, minute), Qt::UTC);
        };
        const auto row = [](const char *name, int count, int minutes, const QDateTime &from,
                            int labelStep, double length, const char *expected) {
            QTest::newRow(name) << count << minutes << from << labelStep << length
                                << QString::fromLatin1(expected);
        };
        row("a week of hours", 168, 60, at(3, 4), 1, 560,
            "Mon 4|March 2024 Tue 5 Wed 6 Thu 7 Fri 8 Sat 9 Sun 10");
        row("a narrow week", 168, 60, at(3, 4), 1, 190, "4|March 2024 5 6 7 8 9 10");
        row("a day from the afternoon on", 24, 60, at(3, 4, 14), 1, 360,
            "15:00|Mon Mar 4 18:00 21:00 00:00|Tue Mar 5 03:00 06:00 09:00 12:00");
        row("two hours by 5 minutes", 24, 5, at(3, 4, 9, 35), 1, 400,
            "09:45|Mon Mar 4 10:00 10:15 10:30 10:45 11:00 11:15 11:30");
        row("weeks begin on Mondays", 40, 1440, at(3, 1), 1, 500,
            "Mar 4|2024 Mar 11 Mar 18 Mar 25 Apr 1 Apr 8");
        row("months", 300, 1440, at(1, 10), 1, 400, "Feb|2024 Mar Apr May Jun Jul Aug Sep Oct Nov");
        row("one bucket", 1, 60, at(3, 4, 13), 1, 300, "13:00|Mon Mar 4");
        row("too narrow for all but the first", 2, 1440, at(3, 5), 1, 10, "Tue 5|March 2024");
        row("label step", 30, 1, at(3, 4), 5, 4000,
            "00:00|Mon Mar 4 00:05 00:10 00:15 00:20 00:25");
    }
    void ticksStandAtRoundTimes()
    {
        QFETCH(int, count);
        QFETCH(int, minutes);
        QFETCH(QDateTime, from);
        QFETCH(int, labelStep);
        QFETCH(double, length);
        const TimeAxis axis =
            timeAxis(emptySeries(count, minutes, from), labelStep, length, sixPixels);
        QTEST(labels(axis), "expected");
    }

    /// Places follow instants: on a day with a clock change noon is not in the middle.
    void clockChanges_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<QDate>("day");
        QTest::addColumn<double>("hoursToNoon");
        QTest::addColumn<double>("hours");
        QTest::newRow("Berlin, 23 hours")
            << QByteArray("Europe/Berlin") << QDate(2024, 3, 31) << 11.0 << 23.0;
        QTest::newRow("Berlin, 25 hours")
            << QByteArray("Europe/Berlin") << QDate(2024, 10, 27) << 13.0 << 25.0;
        QTest::newRow("New York, 23 hours")
            << QByteArray("America/New_York") << QDate(2024, 3, 10) << 11.0 << 23.0;
        QTest::newRow("Lord Howe, 24 and a half hours")
            << QByteArray("Australia/Lord_Howe") << QDate(2024, 4, 7) << 12.5 << 24.5;
    }
    void clockChanges()
    {
        QFETCH(QByteArray, zone);
        QFETCH(QDate, day);
        QFETCH(double, hoursToNoon);
        QFETCH(double, hours);
        const TimeAxis axis = timeAxis(localHours(zone, day, 1), 1, 1000, sixPixels);
        const auto noon = std::find_if(axis.ticks.begin(), axis.ticks.end(),
                                       [](const auto &tick) { return tick.label == u"12:00"; });
        QVERIFY(noon != axis.ticks.end());
        QCOMPARE(noon->x, hoursToNoon / hours * 1000);
        QCOMPARE(axis.ticks.front().x, 0.0);
    }

    /// Midnight of the change does not exist in Beirut; the day is named all the same.
    void aDayWithoutMidnightHasItsTick()
    {
        const DataSeries series = localHours("Asia/Beirut", QDate(2024, 3, 29), 5);
        const TimeAxis axis = timeAxis(series, 1, 300, sixPixels);
        QCOMPARE(labels(axis), QStringLiteral("Fri 29|March 2024 Sat 30 Sun 31 Mon 1|April 2024 "
                                              "Tue 2"));
        QCOMPARE(axis.ticks[2].x, axis.x(series.buckets[48].start));
    }

    void valueLabels_data()
    {
        QTest::addColumn<double>("least");
        QTest::addColumn<double>("greatest");
        QTest::addColumn<QString>("unit");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, double least, double greatest, const char *unit,
                            const char *expected) {
            QTest::newRow(name) << least << greatest << QString::fromUtf8(unit)
                                << QString::fromUtf8(expected);
        };
        row("milliseconds", 3, 87, "ms", "0 20 40 60 80 100 [ms]");
        row("thousands are grouped", 0, 9'000, "ms", "0 2,000 4,000 6,000 8,000 10,000 [ms]");
        row("bytes", 0, 30e6, "B/s", "0 5 10 15 20 25 30 [MiB/s]");
        row("bytes below a kibibyte", 0, 900, "B", "0 200 400 600 800 1,000 [B]");
        row("bits", 0, 2.4e9, "bit/s", "0.0 0.5 1.0 1.5 2.0 2.5 [Gbit/s]");
        row("millivolts", 0, 0.004, "V", "0 1 2 3 4 [mV]");
        row("large plain", 0, 4e6, "", "0 1M 2M 3M 4M []");
        row("huge", 1e15, 1e15, "", "0.0 0.2P 0.4P 0.6P 0.8P 1.0P 1.2P []");
        row("tiny", 0, 9e-9, "", "0 2e-9 4e-9 6e-9 8e-9 1e-8 []");
        row("negative", -37, 62, "\u00B0C", "-40 -20 0 20 40 60 80 [\u00B0C]");
        row("only negative", -50, -50, "dBm", "-60 -50 -40 -30 -20 -10 0 [dBm]");
        row("close together", 71.2, 73.9, "%", "71.0 71.5 72.0 72.5 73.0 73.5 74.0 [%]");
        row("all zero", 0, 0, "ms", "0.0 0.2 0.4 0.6 0.8 1.0 [ms]");
        row("level line keeps off the edge", 5, 5, "ms", "0 1 2 3 4 5 6 [ms]");
    }
    void valueLabels()
    {
        QFETCH(double, least);
        QFETCH(double, greatest);
        QFETCH(QString, unit);
        const ValueAxis axis = valueAxis(least, greatest, unit, 6);
        QTEST(QString(QStringList(axis.labels.begin(), axis.labels.end()).join(u' ') +
                      QStringLiteral(" [") + axis.unit + u']'),
              "expected");
    }

    void anyRangeFits()
    {
        for (int power = -12; power <= 15; ++power) {
            for (const double digit : {1.0, 1.7, 2.5, 3.3, 9.99}) {
                for (const double share : {-1.0, -0.3, 0.0, 0.5, 0.97, 1.0}) {
                    for (int steps = 1; steps <= 8; ++steps) {
                        const double high = digit * std::pow(10, power);
                        const double low = high * share;
                        const ValueAxis axis = valueAxis(low, high, QString(), steps);
                        QVERIFY(axis.position(low) >= -1e-6 && axis.position(high) <= 1 + 1e-6);
                        QVERIFY(axis.ticks.size() >= 2);
                        // Zero inside the range needs a step on each of its sides.
                        QVERIFY(static_cast<int>(axis.ticks.size()) - 1 <= std::max(2, steps));
                        QStringList labels(axis.labels.begin(), axis.labels.end());
                        QCOMPARE(labels.removeDuplicates(), 0);
                    }
                }
            }
        }
    }

    void readableValues_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<QString>("unit");
        QTest::addColumn<QString>("text");
        const auto row = [](double value, const char *unit, const char *text) {
            QTest::newRow(text) << value << QString::fromLatin1(unit) << QString::fromLatin1(text);
        };
        row(0, "ms", "0 ms");
        row(12.349, "ms", "12.35 ms");
        row(123.45, "ms", "123.5 ms");
        row(1234.5, "ms", "1,235 ms");
        row(0.04567, "", "0.0457");
        row(98.5, "%", "98.5%");
        row(1536, "B", "1.5 KiB");
        row(892.4e6, "bit/s", "892.4 Mbit/s");
        row(-2.5e6, "", "-2.5M");
        row(3.2e-8, "", "3.2e-8");
    }
    void readableValues()
    {
        QFETCH(double, value);
        QFETCH(QString, unit);
        QTEST(readableValue(value, unit), "text");
    }
};

QTEST_APPLESS_MAIN(ChartAxesTest)
#include "tst_chart_axes.moc"
