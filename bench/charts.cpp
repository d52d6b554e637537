/// charts FOLDER [COUNT]: draws COUNT (200) weekly charts with `rrdtool graph`, one process fed on
/// its standard input, and with our worker pool; same size, same points. Prints both rates, their
/// ratio, the mean file sizes, and where our own time goes.

#include "SampleCharts.h"
#include "charts/ChartPainter.h"
#include "charts/ChartPool.h"
#include "charts/ChartStyle.h"
#include "charts/ImageFile.h"
#include "charts/TextCache.h"
#include "core/Error.h"
#include "core/Files.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QGuiApplication>
#include <QProcess>

#include <cstdio>
#include <ctime>
#include <sys/resource.h>

namespace {

struct Result
{
    double seconds = 0;
    double processorSeconds = 0; ///< of all threads; tells more on a busy machine
    double meanBytes = 0;
};

double meanSize(const QString &folder, const QString &pattern)
{
    const QFileInfoList files = QDir(folder).entryInfoList({pattern}, QDir::Files);
    double sum = 0;
    for (const QFileInfo &file : files)
        sum += static_cast<double>(file.size());
    return files.isEmpty() ? 0 : sum / static_cast<double>(files.size());
}

/// Processor time of the processes that this one started and that have ended.
double childrenSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    const auto seconds = [](const timeval &time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Runs one rrdtool process over the commands; throws what it complains about.
double runRrdtool(const QByteArray &commands)
{
    QElapsedTimer timer;
    timer.start();
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setProcessChannelMode(QProcess::SeparateChannels);
    process.start(QStringLiteral("rrdtool"), {QStringLiteral("-")});
    process.write(commands);
    process.closeWriteChannel();
    if (!process.waitForFinished(600'000) || process.exitCode() != 0)
        throw Error(DeviceIO, QStringLiteral("rrdtool: %1 %2")
                                  .arg(process.errorString(),
                                       QString::fromUtf8(process.readAllStandardError())));
    return static_cast<double>(timer.nsecsElapsed()) / 1e9;
}

/// The chart's samples as a round-robin file of its own.
QByteArray rrdCreation(const QString &file, const CounterChart &chart, int minutes)
{
    const std::vector<SeriesBucket> &buckets = chart.series.buckets;
    const qint64 start = buckets.front().start / 1000;
    const int step = minutes * 60;
    QString text = QStringLiteral("create %1 --start %2 --step %3 DS:v:GAUGE:%4:U:U "
                                  "RRA:AVERAGE:0.5:1:%5 RRA:MIN:0.5:1:%5 RRA:MAX:0.5:1:%5\n")
                       .arg(file)
                       .arg(start)
                       .arg(step)
                       .arg(step * 2)
                       .arg(buckets.size() + 2);
    text += QStringLiteral("update %1").arg(file);
    for (const SeriesBucket &bucket : buckets)
        text += QStringLiteral(" %1:%2")
                    .arg(bucket.end / 1000)
                    .arg(bucket.isEmpty() ? QStringLiteral("U") : QString::number(bucket.mean));
    return QString(text + u'\n').toUtf8();
}

/// A chart of the same parts as ours: area, band, line, percentile, moving average, mean, figures.
QByteArray rrdGraph(const QString &image, const QString &file, const CounterChart &chart,
                    int minutes)
{
    const std::vector<SeriesBucket> &buckets = chart.series.buckets;
    const auto trend = static_cast<qint64>(buckets.size()) / 10 * minutes * 60;
    return QStringLiteral(
               "graph %1 --imgformat PNG --full-size-mode --width 640 --height 390 --start %2 "
               "--end %3 --title \"%4\" --vertical-label \"%5\" DEF:a=%6:v:AVERAGE "
               "DEF:l=%6:v:MIN DEF:h=%6:v:MAX CDEF:low=l,0.6,* CDEF:high=h,1.4,* "
               "CDEF:band=high,low,- CDEF:m=a,%7,TREND VDEF:p=a,95,PERCENTNAN VDEF:v=a,AVERAGE "
               "VDEF:g=a,MAXIMUM VDEF:s=a,MINIMUM AREA:a#DFF0DF AREA:low#DFF0DF "
               "AREA:band#ABD6AB:\"Least to greatest\":STACK LINE1.5:a#008000:Mean "
               "LINE1.3:m#6A3FB5:Moving LINE1:p#D4500C:\"95th Percentile\":dashes=6,3 "
               "LINE1:v#1B2733:\"Sample Avg.\":dashes=1,2 COMMENT:\"\\n\" "
               "GPRINT:g:\"Max\\: %.1lf\" GPRINT:s:\"Min\\: %.1lf\" GPRINT:v:\"Avg\\: %.1lf\" "
               "GPRINT:p:\"95th\\: %.1lf\"\n")
        .arg(image)
        .arg(buckets.front().start / 1000)
        .arg(buckets.back().end / 1000)
        .arg(chart.frame.title, chart.valueLabel, file)
        .arg(trend)
        .toUtf8();
}

Result benchRrdtool(const QString &folder, const std::vector<CounterChart> &charts, int minutes)
{
    QByteArray creation;
    QByteArray graphs;
    int number = 0;
    for (const CounterChart &chart : charts) {
        const QString base = QStringLiteral("%1/rrd-%2").arg(folder).arg(++number);
        creation += rrdCreation(base + QStringLiteral(".rrd"), chart, minutes);
        graphs +=
            rrdGraph(base + QStringLiteral(".png"), base + QStringLiteral(".rrd"), chart, minutes);
    }
    runRrdtool(creation);
    Result result;
    const double before = childrenSeconds();
    result.seconds = runRrdtool(graphs);
    result.processorSeconds = childrenSeconds() - before;
    result.meanBytes = meanSize(folder, QStringLiteral("rrd-*.png"));
    return result;
}

template <typename Kind>
Result benchPool(const QString &folder, const std::vector<Kind> &charts, const QString &prefix)
{
    ChartPool pool;
    const std::clock_t begin = std::clock();
    QElapsedTimer timer;
    timer.start();
    int number = 0;
    for (const Kind &chart : charts)
        pool.submit(chart, QStringLiteral("%1/%2-%3.PNG").arg(folder, prefix).arg(++number),
                    QStringLiteral("PNG"));
    pool.waitForDone();
    Result result;
    result.seconds = static_cast<double>(timer.nsecsElapsed()) / 1e9;
    result.processorSeconds = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
    for (const ChartPool::Failure &failure : pool.takeFailures())
        throw failure.error;
    result.meanBytes = meanSize(folder, prefix + QStringLiteral("-*.PNG"));
    return result;
}

/// Processor time of each step for one chart.
template <typename Kind>
void printSteps(const QString &folder, const std::vector<Kind> &charts, const char *kind)
{
    double milliseconds[3] = {0, 0, 0};
    TextCache texts; // as a worker has
    std::clock_t begin = 0;
    const auto lap = [&](double &sum) {
        sum += static_cast<double>(std::clock() - begin) / (CLOCKS_PER_SEC / 1e3);
        begin = std::clock();
    };
    for (const Kind &chart : charts) {
        begin = std::clock();
        const QImage image = drawChart(chart);
        lap(milliseconds[0]);
        const QByteArray bytes = encodePng(image);
        lap(milliseconds[1]);
        saveFile(folder + QStringLiteral("/step.png"), bytes);
        lap(milliseconds[2]);
    }
    const auto count = static_cast<double>(charts.size());
    std::printf("  processor time of one %s chart: draw %.2f ms, encode %.2f ms, save %.2f ms\n",
                kind, milliseconds[0] / count, milliseconds[1] / count, milliseconds[2] / count);
}

void bench(const QString &root, int count, int points, int minutes)
{
    const QString folder = QStringLiteral("%1/%2").arg(root).arg(points);
    QDir(folder).removeRecursively();
    QDir().mkpath(folder);
    std::vector<CounterChart> counters;
    std::vector<StateChart> states;
    for (unsigned seed = 1; seed <= static_cast<unsigned>(count); ++seed) {
        counters.push_back(sample::counterChart(points, minutes, seed));
        states.push_back(sample::stateChart(points, minutes, seed));
    }
    benchPool(folder, counters, QStringLiteral("warm"));
    const Result theirs = benchRrdtool(folder, counters, minutes);
    const Result ours = benchPool(folder, counters, QStringLiteral("ours"));
    const Result oursState = benchPool(folder, states, QStringLiteral("state"));
    const auto print = [&](const char *name, const Result &result) {
        std::printf("  %-14s %7.1f charts/s, ratio %4.1f; processor time %5.2f ms a chart, "
                    "ratio %4.1f; %6.0f bytes a file\n",
                    name, count / result.seconds, theirs.seconds / result.seconds,
                    result.processorSeconds * 1e3 / count,
                    theirs.processorSeconds / result.processorSeconds, result.meanBytes);
    };
    std::printf("%d charts of %d points, 640 x 390\n", count, points);
    print("rrdtool graph", theirs);
    print("counter charts", ours);
    print("state charts", oursState);
    printSteps(folder, counters, "counter");
    printSteps(folder, states, "state");
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    const int count = argc > 2 ? QByteArray(argv[2]).toInt() : 200;
    if (argc < 2 || count < 1) {
        std::fprintf(stderr, "usage: charts FOLDER [COUNT]\n");
        return 2;
    }
    try {
        if (!fontsAvailable())
            throw Error(FileNotFound, QString::fromUtf16(noFontsMessage));
        warmUpFonts();
        const QString folder = QDir(QString::fromLocal8Bit(argv[1])).absolutePath();
        bench(folder, count, 168, 60);
        bench(folder, count, 2016, 5);
    } catch (const Error &error) {
        std::fprintf(stderr, "charts: %s\n", qPrintable(errorTail(error)));
        return 1;
    }
    return 0;
}
