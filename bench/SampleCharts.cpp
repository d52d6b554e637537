#include "SampleCharts.h"

#include "tests/charts/ChartSamples.h"

#include <cmath>
#include <random>

namespace sample {
namespace {

ChartFrame frame(const QString &title, const QString &subtitle)
{
    ChartFrame frame = sampleFrame();
    frame.title = title;
    frame.subtitle = subtitle;
    return frame;
}

DataSeries emptySeries(int count, int minutes, int scale)
{
    DataSeries series = ::emptySeries(count, minutes);
    series.scale = scale;
    return series;
}

} // namespace

CounterChart counterChart(int count, int minutes, unsigned seed)
{
    std::mt19937 random(seed);
    std::normal_distribution<double> noise(0, 1);
    CounterChart chart;
    chart.frame = frame(QStringLiteral("Last week by hour"),
                        QStringLiteral("core-switch-%1 \u2013 Response time").arg(seed));
    chart.valueLabel = QStringLiteral("Response time");
    chart.unit = QStringLiteral("ms");
    chart.series = emptySeries(count, minutes, 3);
    for (size_t i = 0; i < chart.series.buckets.size(); ++i) {
        BucketValue &bucket = chart.series.buckets[i];
        const double hour =
            chart.series.interval(i).wallStart.time().msecsSinceStartOfDay() / 3.6e6;
        const double load = 30 + 18 * std::sin((hour - 9) / 24 * 2 * M_PI);
        const double peak = random() % 97 == 0 ? 60 : 0;
        bucket.count = 60;
        bucket.mean = std::max(1.0, load + 4 * noise(random) + peak);
        bucket.min = bucket.mean * (0.55 + 0.05 * noise(random));
        bucket.max = bucket.mean * (1.35 + 0.1 * std::abs(noise(random)));
    }
    for (int i = count / 2; i < count / 2 + count / 40; ++i)
        chart.series.buckets[static_cast<size_t>(i)].count = 0;
    chart.statistics = counterStatistics(chart.series);
    return chart;
}

StateChart stateChart(int count, int minutes, unsigned seed)
{
    std::mt19937 random(seed);
    StateChart chart;
    chart.frame = frame(QStringLiteral("Last week by hour"),
                        QStringLiteral("mail-server-%1 \u2013 Ping").arg(seed));
    chart.series = emptySeries(count, minutes, stateScale);
    const int outage = static_cast<int>(random() % static_cast<unsigned>(count));
    int number = 0;
    for (BucketValue &bucket : chart.series.buckets) {
        bucket.count = 60;
        bucket.successes = 60 - (random() % 31 == 0 ? random() % 5 : 0);
        const int away = std::abs(number++ - outage);
        if (away < count / 80)
            bucket.successes = 0;
        else if (away < count / 50)
            bucket.successes = 22;
    }
    for (int i = count / 4; i < count / 4 + count / 20; ++i)
        chart.series.buckets[static_cast<size_t>(i)].count =
            chart.series.buckets[static_cast<size_t>(i)].successes = 0;
    chart.statistics = stateStatistics(chart.series);
    return chart;
}

DeviceRateChart deviceChart(int count, unsigned seed)
{
    std::mt19937 random(seed);
    DeviceRateChart chart;
    chart.frame =
        frame(QStringLiteral("Success Rate by Device"), QStringLiteral("Basis: Last week by hour"));
    chart.valueAxisTitle = QStringLiteral("Total Tests Performed");
    chart.categoryAxisTitle = QStringLiteral("Device");
    const QStringList kinds = {QStringLiteral("Mailserver"), QStringLiteral("core-switch"),
                               QStringLiteral("Br\u00FCcke K\u00F6ln"),
                               QStringLiteral("printer 2nd floor, west wing"),
                               QStringLiteral("\u30EB\u30FC\u30BF\u30FC")};
    for (int i = 0; i < count; ++i) {
        DeviceRateChart::Device device;
        device.name = QStringLiteral("%1 %2").arg(kinds[i % kinds.size()]).arg(i + 1);
        device.hasData = i % 11 != 7;
        if (device.hasData) {
            device.failures =
                i % 3 == 0 ? 0 : static_cast<qint64>(random() % (i % 7 == 1 ? 900 : 12));
            device.successes = 10'080 - device.failures - static_cast<qint64>(random() % 2'000);
        }
        chart.devices.push_back(device);
    }
    return chart;
}

} // namespace sample
