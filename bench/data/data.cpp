// bench-data FILE: how long reading the samples of a monitoring file takes, step by step, and what
// it takes in memory.

#include "core/Error.h"
#include "core/TimeZone.h"
#include "data/CalculatedSummary.h"
#include "data/DataSeries.h"
#include "data/Queries.h"
#include "data/access/AccessFile.h"
#include "data/sqlite/AccessConnection.h"
#include "data/sqlite/SampleIndex.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>

#include <cstdio>
#include <sys/resource.h>

namespace {

double secondsOf(const timeval &time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

/// Processor time of this process and of those that it waited for.
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

/// Prints what `work` took; returns its processor time.
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
    SampleScope scope;
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
    qint64 least = std::numeric_limits<qint64>::max();
    qint64 greatest = std::numeric_limits<qint64>::min();
    while (row.next()) {
        const qint64 instant = row.instant(date);
        least = std::min(least, instant);
        greatest = std::max(greatest, instant);
        sum += row.number(value) + static_cast<double>(row.integer(state) + row.integer(ident));
        ++extent.rows;
    }
    extent.scope.from = least;
    extent.scope.to = greatest;
    std::printf("%lld rows, check sum %.17g\n", static_cast<long long>(extent.rows), sum);
    return extent;
}

/// A query for each item, read to its end; `columns` stands for "*" in the text.
void queryAll(AccessConnection &connection, const Extent &extent, const QString &columns)
{
    const QDateTime from = wallTime(extent.scope.from);
    const QDateTime to = wallTime(extent.scope.to);
    qint64 rows = 0;
    double sum = 0;
    for (const qint64 item : extent.scope.dataIdents) {
        QString sql = GetDataValuesSQL(QString::number(item), from, to);
        sql.replace(u'*', columns);
        const auto samples =
            connection.open(sql, {QStringLiteral("DataIDent"), QStringLiteral("iDate"),
                                  QStringLiteral("iState"), QStringLiteral("iValue")});
        const int date = samples->column(QStringLiteral("iDate"));
        const int state = samples->column(QStringLiteral("iState"));
        const int value = samples->column(QStringLiteral("iValue"));
        while (samples->next()) {
            sum += samples->number(value) +
                   static_cast<double>(samples->instant(date) + samples->integer(state));
            ++rows;
        }
    }
    std::printf("%lld rows, check sum %.17g\n", static_cast<long long>(rows), sum);
}

void summarizeAll(AccessConnection &connection, const Extent &extent)
{
    const QDateTime from = wallTime(extent.scope.from);
    const QDateTime to = wallTime(extent.scope.to);
    size_t buckets = 0;
    for (const qint64 item : extent.scope.dataIdents) {
        const auto samples = connection.open(GetDataValuesSQL(QString::number(item), from, to),
                                             {QStringLiteral("DataIDent"), QStringLiteral("iDate"),
                                              QStringLiteral("iState"), QStringLiteral("iValue")});
        DataSeries series;
        series.frequency = 1;
        GenerateDataSeries(BuildCalculatedSummary(*samples, 1, 0), extent.scope.from,
                           extent.scope.to, extent.scope.to, series);
        buckets += series.buckets.size();
    }
    std::printf("%zu buckets\n", buckets);
}

void bench(const QString &path)
{
    Extent extent;
    const double pass = seconds("one raw pass over DataValues", [&] { extent = readAll(path); });

    AccessConnection connection(path);
    seconds("data items, through SQLite", [&] {
        const auto items = connection.open(QStringLiteral("Select DataIDent from DataFields"));
        while (items->next())
            extent.scope.dataIdents.insert(items->integer(0));
    });
    extent.scope.to += 1000;
    connection.expectSamples(extent.scope);
    seconds("COUNT(1), makes the index", [&] {
        const auto count =
            connection.open(QStringLiteral("Select Count(1) as TCOUNT from DataValues"));
        count->next();
        std::printf("%lld rows\n", static_cast<long long>(count->integer(0)));
    });
    seconds("COUNT(1) again", [&] {
        connection.open(QStringLiteral("Select Count(1) as TCOUNT from DataValues"))->next();
    });
    const SampleIndex *index = connection.sampleIndex();
    std::printf("%lld samples of %lld items kept, %.2f bytes a sample\n",
                static_cast<long long>(index->sampleCount()),
                static_cast<long long>(extent.scope.dataIdents.size()),
                static_cast<double>(index->bytes()) / static_cast<double>(index->sampleCount()));
    seconds("a query for each item, from the index",
            [&] { queryAll(connection, extent, QStringLiteral("*")); });
    seconds("the same through SQLite",
            [&] { queryAll(connection, extent, QStringLiteral("DataIDent,iDate,iState,iValue")); });
    seconds("query, summary by hour and series of each", [&] { summarizeAll(connection, extent); });
    seconds("state summary of all devices", [&] {
        const auto summary = connection.open(
            GetStateSummarySQL(wallTime(extent.scope.from), wallTime(extent.scope.to), QString()));
        qint64 rows = 0;
        while (summary->next())
            ++rows;
        std::printf("%lld state items\n", static_cast<long long>(rows));
    });

    const double exported = seconds("mdb-export of DataValues", [&] {
        QProcess process;
        process.setStandardOutputFile(QProcess::nullDevice());
        process.start(QStringLiteral("mdb-export"), {path, QStringLiteral("DataValues")});
        if (!process.waitForFinished(-1) || process.exitCode() != 0)
            throw Error(FileNotFound, QStringLiteral("mdb-export could not be run"));
    });
    std::printf("mdb-export / raw pass = %.1f\n", exported / pass);
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: bench-data FILE\n");
        return 2;
    }
    try {
        bench(QString::fromLocal8Bit(argv[1]));
    } catch (const Error &error) {
        std::fprintf(stderr, "bench-data: %s\n", qPrintable(errorTail(error)));
        return 1;
    }
    return 0;
}
