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
    std::vector<AxisBucket> places;
    qint64 at = QDateTime(day, QTime(0, 0), rules).toMSecsSinceEpoch();
    const qint64 end = QDateTime(day.addDays(days), QTime(0, 0), rules).toMSecsSinceEpoch();
    constexpr qint64 quarter = 15 * 60'000;
    for (; at < end; at += quarter) {
        const QDateTime wall = QDateTime::fromMSecsSinceEpoch(at, rules);
        const QDateTime start(wall.date(), QTime(wall.time().hour(), 0), Qt::UTC);
        if (places.empty() || places.back().wallStart != start)
            places.push_back({at, at, start, {}, {}, {}, {}});
        places.back().end = at + quarter;
    }
    DataSeries series;
    series.axis = std::make_shared<const BucketAxis>(std::move(places), ByHour, 0);
    series.buckets.resize(series.axis->size());
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

    void ticksStandAtRoundTimes()
    {
        const auto at = [](int month, int day, int hour = 0, int minute = 0) {
            return QDateTime(QDate(2024, month, day), QTime(hour, minute), Qt::UTC);
        };
        const auto ticks = [](int count, int minutes, const QDateTime &from, double length,
                              int labelStep = 1) {
            const DataSeries series = emptySeries(count, minutes, from);
            return labels(timeAxis(series, labelStep, length, sixPixels));
        };
        QCOMPARE(ticks(168, 60, at(3, 4), 560),
                 "Mon 4|March 2024 Tue 5 Wed 6 Thu 7 Fri 8 Sat 9 Sun 10");
        QCOMPARE(ticks(24, 60, at(3, 4, 14), 360),
                 "15:00|Mon Mar 4 18:00 21:00 00:00|Tue Mar 5 03:00 06:00 09:00 12:00");
        QCOMPARE(ticks(24, 60, at(3, 4, 14), 344), // half of a label's width is free beside it
                 "16:00|Mon Mar 4 20:00 00:00|Tue Mar 5 04:00 08:00 12:00");
        QCOMPARE(ticks(24, 5, at(3, 4, 9, 35), 400),
                 "09:45|Mon Mar 4 10:00 10:15 10:30 10:45 11:00 11:15 11:30");
        QCOMPARE(ticks(40, 1440, at(3, 1), 500), "Mar 4|2024 Mar 11 Mar 18 Mar 25 Apr 1 Apr 8");
        QCOMPARE(ticks(300, 1440, at(1, 10), 400), "Feb|2024 Mar Apr May Jun Jul Aug Sep Oct Nov");
        QCOMPARE(ticks(2, 1440, at(3, 5), 10), "Tue 5|March 2024"); // no room for the second
        QCOMPARE(ticks(30, 1, at(3, 4), 4000, 5), "00:00|Mon Mar 4 00:05 00:10 00:15 00:20 00:25");
    }

    /// Places follow instants: on a day with a clock change noon is not in the middle.
    void clockChanges()
    {
        const auto noon = [](const QByteArray &zone, const QDate &day) {
            const TimeAxis axis = timeAxis(localHours(zone, day, 1), 1, 1000, sixPixels);
            const auto tick = std::find_if(axis.ticks.begin(), axis.ticks.end(),
                                           [](const auto &t) { return t.label == u"12:00"; });
            return tick == axis.ticks.end() ? -1.0 : tick->x / 1000;
        };
        QCOMPARE(noon("Europe/Berlin", QDate(2024, 3, 31)), 11 / 23.0);
        QCOMPARE(noon("Australia/Lord_Howe", QDate(2024, 4, 7)), 12.5 / 24.5);
    }

    /// Midnight of the change does not exist in Beirut; the day is named all the same.
    void aDayWithoutMidnightHasItsTick()
    {
        const DataSeries series = localHours("Asia/Beirut", QDate(2024, 3, 29), 5);
        const TimeAxis axis = timeAxis(series, 1, 300, sixPixels);
        QCOMPARE(labels(axis), "Fri 29|March 2024 Sat 30 Sun 31 Mon 1|April 2024 Tue 2");
        QCOMPARE(axis.ticks[2].x, axis.x(series.interval(48).start));
    }

    void valueLabels()
    {
        const auto shown = [](double min, double max, const char *unit) {
            const ValueAxis axis = valueAxis(min, max, unit, 6);
            const QStringList list(axis.labels.begin(), axis.labels.end());
            return QString(list.join(u' ') + " [" + axis.unit + u']');
        };
        QCOMPARE(shown(3, 87, "ms"), "0 20 40 60 80 100 [ms]");
        QCOMPARE(shown(0, 30e6, "B/s"), "0 5 10 15 20 25 30 [MiB/s]");
        QCOMPARE(shown(0, 2.4e9, "bit/s"), "0.0 0.5 1.0 1.5 2.0 2.5 [Gbit/s]");
        QCOMPARE(shown(0, 0.004, "V"), "0 1 2 3 4 [mV]");
        QCOMPARE(shown(1e15, 1e15, ""), "0.0 0.2P 0.4P 0.6P 0.8P 1.0P 1.2P []");
        QCOMPARE(shown(0, 9e-9, ""), "0 2e-9 4e-9 6e-9 8e-9 1e-8 []");
        QCOMPARE(shown(-50, -50, "dBm"), "-60 -50 -40 -30 -20 -10 0 [dBm]");
        QCOMPARE(shown(71.2, 73.9, "%"), "71.0 71.5 72.0 72.5 73.0 73.5 74.0 [%]");
        QCOMPARE(shown(0, 0, "ms"), "0.0 0.2 0.4 0.6 0.8 1.0 [ms]");
        QCOMPARE(shown(5, 5, "ms"), "0 1 2 3 4 5 6 [ms]"); // a level line keeps off the edge
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

    void readableValues()
    {
        QCOMPARE(readableValue(0, "ms"), "0 ms");
        QCOMPARE(readableValue(123.45, "ms"), "123.5 ms");
        QCOMPARE(readableValue(0.04567, ""), "0.0457");
        QCOMPARE(readableValue(98.5, "%"), "98.5%");
        QCOMPARE(readableValue(1536, "B"), "1.5 KiB");
        QCOMPARE(readableValue(-2.5e6, ""), "-2.5M");
        QCOMPARE(readableValue(3.2e-8, ""), "3.2e-8");
    }
};

QTEST_APPLESS_MAIN(ChartAxesTest)
#include "tst_ChartAxes.moc"
