// bench-data FILE: the time that reading the samples of a monitoring file takes, step by step, and
// the memory.

#include "access/AccessFile.h"
#include "base/Error.h"
#include "base/ProgramState.h"
#include "base/TimeZone.h"
#include "database/AccessDatabase.h"
#include "definitions/clsGraphDef.h"
#include "series/CalculatedSummary.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>

#include <cstdio>
#include <sys/resource.h>

namespace {

double secondsOf(const timeval &time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

/// Processor time of this process and its ended children.
double processorSeconds()
{
    double all = 0;
    for (const auto who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage usage{};
        ::getrusage(who, &usage);
        all += secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime);
    }
    return all;
}

double peakMegabytes()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

/// Prints the time of `work`; returns its processor time.
template <typename Work>
double seconds(const char *name, Work work)
{
    QElapsedTimer timer;
    timer.start();
    const double before = processorSeconds();
    work();
    const double processor = processorSeconds() - before;
    std::printf("%-44s %7.3f s (processor %7.3f s)  peak %6.1f MB\n", name,
                static_cast<double>(timer.nsecsElapsed()) / 1e9, processor, peakMegabytes());
    return processor;
}

struct Extent
{
    qint64 from = 0; ///< instants of the first and the last sample
    qint64 to = 0;
    qint64 rows = 0;
};

/// The raw pass: every row's item, time, state and value, nothing kept.
Extent readAll(const QString &path)
{
    mdb::AccessFile file(path);
    const mdb::Table &table = file.table(QStringLiteral("DataValues"));
    const int ident = table.column(QStringLiteral("DataIDent"));
    const int date = table.column(QStringLiteral("iDate"));
    const int state = table.column(QStringLiteral("iState"));
    const int value = table.column(QStringLiteral("iValue"));
    Extent extent;
    double sum = 0;
    mdb::RowCursor row(file, table);
    qint64 from = std::numeric_limits<qint64>::max();
    qint64 to = std::numeric_limits<qint64>::min();
    while (row.next()) {
        const qint64 instant = row.instant(date);
        from = std::min(from, instant);
        to = std::max(to, instant);
        sum += row.number(value) + static_cast<double>(row.integer(state) + row.integer(ident));
        ++extent.rows;
    }
    extent.from = from;
    extent.to = to;
    std::printf("%lld rows, check sum %.17g\n", static_cast<long long>(extent.rows), sum);
    return extent;
}

/// Folds the samples of all items into hourly buckets, in one pass.
void foldAll(AccessDatabase &database, const Extent &extent)
{
    const auto axis = std::make_shared<const BucketAxis>(extent.from, extent.to, ByHour, 0);
    const QDateTime from = wallTime(extent.from);
    const QDateTime to = wallTime(extent.to + 1000);
    const std::vector<ItemRow> &items = database.inventory()->items();
    std::vector<CalculatedSummary> folds(items.size(), CalculatedSummary(axis, extent.to));
    std::vector<ItemQuestion> questions;
    for (size_t i = 0; i < items.size(); ++i)
        questions.push_back({items[i].dataIdent, from, to, &folds[i]});
    database.answer(questions, {});
    qint64 samples = 0;
    for (const CalculatedSummary &fold : folds)
        samples += fold.sampleCount();
    std::printf("%lld samples in %zu buckets of %zu items\n", static_cast<long long>(samples),
                axis->size(), items.size());
}

void summarizeAll(AccessDatabase &database, const Extent &extent)
{
    std::vector<SummaryQuestion> questions;
    for (const DeviceRow &device : database.inventory()->devices())
        questions.push_back({device.muid, wallTime(extent.from), wallTime(extent.to + 1000), {}});
    database.answer({}, questions);
    size_t rows = 0;
    for (const SummaryQuestion &question : questions)
        rows += question.answer.size();
    std::printf("%zu state items\n", rows);
}

void bench(const QString &path)
{
    Extent extent;
    const double pass = seconds("one raw pass over DataValues", [&] { extent = readAll(path); });

    AccessDatabase database(path);
    seconds("devices, data items and scales",
            [&] { std::printf("%zu data items\n", database.inventory()->items().size()); });
    const double fold =
        seconds("all samples folded into hours", [&] { foldAll(database, extent); });
    seconds("state summary of all devices", [&] { summarizeAll(database, extent); });

    const double exported = seconds("mdb-export of DataValues", [&] {
        QProcess process;
        process.setStandardOutputFile(QProcess::nullDevice());
        process.start(QStringLiteral("mdb-export"), {path, QStringLiteral("DataValues")});
        if (!process.waitForFinished(-1) || process.exitCode() != 0)
            throw Error(FileNotFound, QStringLiteral("mdb-export could not be run"));
    });
    std::printf("folding / raw pass = %.1f\n", fold / pass);
    std::printf("mdb-export / raw pass = %.1f\n", exported / pass);
}

} // namespace

int main(int argc, char **argv)
{
    const ProgramState state;
    const QCoreApplication application(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: bench-data FILE\n");
        return 2;
    }
    try {
        bench(QFileInfo(QString::fromLocal8Bit(argv[1])).absoluteFilePath());
    } catch (const Error &error) {
        std::fprintf(stderr, "bench-data: %s\n", qPrintable(errorTail(error)));
        return 1;
    }
    return 0;
}
