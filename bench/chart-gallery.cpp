/// chart-gallery FOLDER: writes charts of many kinds and sizes as PNG files, to be looked at.

#include "SampleCharts.h"
#include "base/Error.h"
#include "base/Files.h"
#include "base/ProgramState.h"
#include "charts/ChartPainter.h"
#include "charts/ChartStyle.h"
#include "charts/ImageFile.h"

#include <QDir>
#include <QGuiApplication>

#include <cstdio>

namespace {

QString folder;

void write(const char *name, const Chart &chart)
{
    const QByteArray bytes = encodePng(drawChart(chart));
    saveFile(folder + u'/' + QString::fromLatin1(name) + QStringLiteral(".png"), bytes);
    std::printf("%-24s %7lld bytes\n", name, static_cast<long long>(bytes.size()));
}

template <typename Kind>
Kind sized(Kind chart, int width, int height, int quality = 2)
{
    chart.frame.size = {width, height};
    chart.frame.quality = quality;
    return chart;
}

StateChart constantState(int count, int minutes, qint64 successes)
{
    StateChart chart = sample::stateChart(count, minutes, 1);
    for (BucketValue &bucket : chart.series.buckets) {
        bucket.count = 60;
        bucket.successes = successes;
    }
    chart.statistics = stateStatistics(chart.series);
    return chart;
}

/// A counter whose values are `values` times `factor`, with a band around them.
CounterChart counter(const QString &unit, double offset, double factor)
{
    CounterChart chart = sample::counterChart(168, 60, 5);
    chart.unit = unit;
    for (BucketValue &bucket : chart.series.buckets) {
        bucket.mean = bucket.mean * factor + offset;
        bucket.min = bucket.min * factor + offset;
        bucket.max = bucket.max * factor + offset;
    }
    chart.statistics = counterStatistics(chart.series);
    return chart;
}

template <typename Kind>
Kind emptied(Kind chart)
{
    for (BucketValue &bucket : chart.series.buckets)
        bucket.count = bucket.successes = 0;
    chart.statistics = {};
    return chart;
}

void writeStates()
{
    const StateChart week = sample::stateChart(168, 60, 7);
    write("state-week", week);
    write("state-week-2016", sample::stateChart(2016, 5, 7));
    write("state-day", sample::stateChart(96, 15, 3));
    write("state-month", sample::stateChart(31, 1440, 5));
    write("state-7-days", sample::stateChart(7, 1440, 5));
    write("state-perfect", constantState(168, 60, 60));
    write("state-down", constantState(168, 60, 0));
    write("state-empty", emptied(week));
    write("state-320", sized(week, 320, 200));
    write("state-1280", sized(week, 1280, 720));
    write("state-3840", sized(week, 3840, 2160));
    for (int quality = 0; quality <= 3; ++quality)
        write(qPrintable(QStringLiteral("state-quality-%1").arg(quality)),
              sized(week, 640, 390, quality));
}

void writeCounters()
{
    const CounterChart week = sample::counterChart(168, 60, 7);
    write("counter-week", week);
    write("counter-week-2016", sample::counterChart(2016, 5, 7));
    write("counter-day", sample::counterChart(96, 15, 3));
    write("counter-month", sample::counterChart(31, 1440, 5));
    write("counter-empty", emptied(week));
    write("counter-negative", counter(QStringLiteral("\u00B0C"), -40, 1));
    write("counter-huge", counter(QString(), 1e15, 1e12));
    write("counter-tiny", counter(QString(), 0, 1e-9));
    write("counter-bytes", counter(QStringLiteral("B/s"), 0, 3e5));
    write("counter-bits", counter(QStringLiteral("bit/s"), 0, 3e7));
    write("counter-offset", counter(QStringLiteral("%"), 70, 0.05));
    CounterChart flat = counter(QStringLiteral("ms"), 5, 0);
    write("counter-flat", flat);
    CounterChart one = emptied(week);
    one.series.buckets[90].count = 3;
    one.statistics = counterStatistics(one.series);
    write("counter-one", one);
    CounterChart named = week;
    named.frame.title = QStringLiteral("A very long title that tells more than fits ").repeated(4);
    named.frame.subtitle =
        QStringLiteral("\u041C\u043E\u0441\u043A\u0432\u0430 \u6771\u4EAC ").repeated(20);
    write("counter-names", named);
    write("counter-names-320", sized(named, 320, 200));
    write("counter-320", sized(week, 320, 200));
    write("counter-1280", sized(week, 1280, 720));
    write("counter-3840", sized(week, 3840, 2160));
    for (int quality = 0; quality <= 3; ++quality)
        write(qPrintable(QStringLiteral("counter-quality-%1").arg(quality)),
              sized(week, 640, 390, quality));
}

void writeDevices()
{
    for (const int count : {1, 3, 12, 40, 300})
        write(qPrintable(QStringLiteral("devices-%1").arg(count)), sample::deviceChart(count, 2));
    write("devices-320", sized(sample::deviceChart(5, 2), 320, 200));
    write("devices-1280", sized(sample::deviceChart(25, 2), 1280, 720));
    write("devices-none", sample::deviceChart(0, 2));
}

} // namespace

int main(int argc, char **argv)
{
    const ProgramState state;
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: chart-gallery FOLDER\n");
        return 2;
    }
    try {
        folder = QDir(QString::fromLocal8Bit(argv[1])).absolutePath();
        QDir().mkpath(folder);
        if (!fontsAvailable())
            throw Error(FileNotFound, QString::fromUtf16(noFontsMessage));
        warmUpFonts();
        writeStates();
        writeCounters();
        writeDevices();
    } catch (const Error &error) {
        std::fprintf(stderr, "chart-gallery: %s\n", qPrintable(errorTail(error)));
        return 1;
    }
    return 0;
}
