/// bench-run FOLDER: a whole run of 1,000 charts over the database FOLDER/VTRGData.MDB, compared
/// with its lower bound (one pass over the file; drawing, compressing and writing as many charts of
/// as many points; writing its other files again) and with `rrdtool graph` on as many images.

#include "Rrdtool.h"
#include "SampleCharts.h"
#include "access/AccessFile.h"
#include "base/Clock.h"
#include "base/Error.h"
#include "base/Files.h"
#include "base/Paths.h"
#include "base/ProgramState.h"
#include "charts/ChartStyle.h"
#include "charts/WorkerPool.h"
#include "config/Program.h"
#include "config/clsGrapherConfig.h"
#include "database/Connection.h"
#include "definitions/Definitions.h"
#include "scheduling/ReportRunner.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QGuiApplication>

#include <cstdio>
#include <ctime>
#include <sys/resource.h>

namespace {

constexpr int hours = 336; // two weeks

struct Took
{
    double seconds = 0;
    double processorSeconds = 0;
};

template <typename Work>
Took timed(Work work)
{
    QElapsedTimer timer;
    timer.start();
    const std::clock_t begin = std::clock();
    work();
    return {static_cast<double>(timer.nsecsElapsed()) / 1e9,
            static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC};
}

/// Processor time of the calling thread.
double threadSeconds()
{
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

void print(const char *what, const Took &took)
{
    std::printf("  %-44s %6.2f s, processor time %6.2f s\n", what, took.seconds,
                took.processorSeconds);
    std::fflush(stdout);
}

/// A report of every data item of every device, by hour over two weeks.
QString addReport()
{
    auto chart = std::make_shared<clsGraphDef>();
    chart->ChartTitle = QStringLiteral("Two weeks");
    chart->ChartFrequency = ByHour;
    chart->IntervalCount = hours;
    chart->StateTemplateFile = QStringLiteral("StateChart.HTML");
    chart->CountTemplateFile = QStringLiteral("CountChart.HTML");
    definitions().gChartDefs.add(chart->ChartID, chart);
    definitions().SaveChartDefs();

    auto report = std::make_shared<clsReportDef>();
    report->ReportTitle = QStringLiteral("Everything");
    report->ChartID = chart->ChartID;
    const std::shared_ptr<const Inventory> inventory = databaseSource().connect()->inventory();
    for (const DeviceRow &row : inventory->devices()) {
        auto device = std::make_shared<clsReportDeviceDef>();
        device->MUID = row.muid;
        for (const ItemRow &field : inventory->items()) {
            if (field.deviceIdent != row.ident)
                continue;
            auto item = std::make_shared<clsReportDataIdentDef>();
            item->DataIDent = QString::number(field.dataIdent);
            device->DataItems.add(QLatin1Char('k') + item->DataIDent, item);
        }
        report->ReportDevices.add(device->MUID, device);
    }
    definitions().gReportDefs.add(report->ReportID, report);
    definitions().SaveReportDefs();
    return report->ReportID;
}

/// One pass over the samples that decodes the four columns.
void passOverSamples()
{
    mdb::AccessFile file(nativePath(program().gDataPath + QStringLiteral("VTRGData.MDB")));
    const mdb::Table &table = file.table(QStringLiteral("DataValues"));
    const int ident = table.column(QStringLiteral("DataIDent"));
    const int date = table.column(QStringLiteral("iDate"));
    const int state = table.column(QStringLiteral("iState"));
    const int value = table.column(QStringLiteral("iValue"));
    double sum = 0;
    for (mdb::RowCursor row(file, table); row.next();)
        sum += static_cast<double>(row.integer(ident) + row.integer(state)) + row.number(date) +
               row.number(value);
    std::printf("  (sum of all values: %g)\n", sum);
}

/// Draws and writes as many charts as the tree has, and writes its other files once more.
void drawAndWrite(const QString &tree, const QString &target)
{
    QDir().mkpath(target);
    WorkerPool pool;
    std::vector<PendingOutcome> outcomes;
    unsigned number = 0;
    for (QDirIterator at(tree, QDir::Files, QDirIterator::Subdirectories); at.hasNext();) {
        const QString path = at.next();
        const QString name = QStringLiteral("%1/%2").arg(target).arg(++number);
        if (!path.endsWith(QLatin1String(".PNG"))) {
            outcomes.push_back(pool.submitWork(
                name, [name, bytes = readFile(path)] { saveExactFile(name, bytes); }));
        } else if (number % 3 == 0) {
            outcomes.push_back(
                pool.submit(sample::stateChart(hours, 60, number % 50), name, QString()));
        } else {
            outcomes.push_back(
                pool.submit(sample::counterChart(hours, 60, number % 50), name, QString()));
        }
    }
    awaitAll(outcomes);
}

void bench(const QString &folder)
{
    const QString home = folder + QStringLiteral("/home");
    QDir(home).removeRecursively();
    locateProgramFolder(home);
    loadGrapherConfig();
    program().gDataPath = folder + QLatin1Char('/');
    const QString report = addReport();

    RunResult result;
    const double threadBefore = threadSeconds();
    const Took run = timed([&] { result = runReports({{report}}); });
    const double alone = threadSeconds() - threadBefore;
    if (result.failed())
        throw Error(DeviceIO, QStringLiteral("the run failed"));
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    const QString tree = gConfig().PTH_Output();
    print("the whole run", run);
    std::printf("  the thread that reads the file: %.2f s, %.0f %% of the processor time\n", alone,
                alone / run.processorSeconds * 100);
    std::printf("  peak memory of the run: %.0f MB\n", static_cast<double>(usage.ru_maxrss) / 1024);

    const Took pass = timed(passOverSamples);
    print("floor: one pass over the samples", pass);
    const Took draw =
        timed([&] { drawAndWrite(nativePath(tree), folder + QStringLiteral("/again")); });
    print("floor: draw, compress, write", draw);
    const double floor = pass.seconds + draw.seconds;
    const double processorFloor = pass.processorSeconds + draw.processorSeconds;
    std::printf("  the run takes %.2f times its floor; %.2f times in processor time\n",
                run.seconds / floor, run.processorSeconds / processorFloor);

    std::vector<CounterChart> charts;
    for (unsigned seed = 1; seed <= 1000; ++seed)
        charts.push_back(sample::counterChart(hours, 60, seed));
    QDir().mkpath(folder + QStringLiteral("/rrdtool"));
    const Result theirs = benchRrdtool(folder + QStringLiteral("/rrdtool"), charts, 60);
    print("rrdtool graph, 1,000 images", {theirs.seconds, theirs.processorSeconds});
    std::printf("  rrdtool takes %.1f times as long as the whole run\n",
                theirs.seconds / run.seconds);
}

} // namespace

int main(int argc, char **argv)
{
    const ProgramState state;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: bench-run FOLDER\n");
        return 2;
    }
    try {
        warmUpFonts();
        bench(QDir(QString::fromLocal8Bit(argv[1])).absolutePath());
    } catch (const Error &error) {
        std::fprintf(stderr, "bench-run: %s\n", qPrintable(errorTail(error)));
        return 1;
    }
    return 0;
}
