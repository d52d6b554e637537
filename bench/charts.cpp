/// charts FOLDER [COUNT]: draws COUNT (200) weekly charts with `rrdtool graph`, one process reading
/// its standard input, and with our worker pool; same size, same points. Prints both rates, their
/// ratio, the mean file sizes, and where our own time goes.

#include "Rrdtool.h"
#include "SampleCharts.h"
#include "base/Error.h"
#include "base/Files.h"
#include "base/ProgramState.h"
#include "charts/ChartPainter.h"
#include "charts/ChartStyle.h"
#include "charts/ImageFile.h"
#include "charts/TextCache.h"
#include "charts/WorkerPool.h"

#include <QDir>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QThreadPool>

#include <cstdio>
#include <ctime>

namespace {

template <typename Kind>
Result benchPool(const QString &folder, const std::vector<Kind> &charts, const QString &prefix)
{
    WorkerPool pool;
    const std::clock_t begin = std::clock();
    QElapsedTimer timer;
    timer.start();
    std::vector<PendingOutcome> outcomes;
    for (const Kind &chart : charts)
        outcomes.push_back(pool.submit(
            chart, QStringLiteral("%1/%2-%3.PNG").arg(folder, prefix).arg(outcomes.size() + 1),
            QStringLiteral("PNG")));
    awaitAll(outcomes);
    Result result;
    result.seconds = static_cast<double>(timer.nsecsElapsed()) / 1e9;
    result.processorSeconds = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
    result.meanBytes = meanSize(folder, prefix + QStringLiteral("-*.PNG"));
    return result;
}

/// Processor time of each step for one chart; to be called on a thread like a worker's.
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
    QThreadPool::globalInstance()->start([&] {
        printSteps(folder, counters, "counter");
        printSteps(folder, states, "state");
    });
    QThreadPool::globalInstance()->waitForDone();
}

} // namespace

int main(int argc, char **argv)
{
    const ProgramState state;
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
