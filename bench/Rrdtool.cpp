#include "Rrdtool.h"

#include "base/Error.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>

#include <sys/resource.h>

namespace {

/// Processor time of ended child processes.
double childrenSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    const auto seconds = [](const timeval &time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Runs the commands in one rrdtool process; throws its error message.
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

/// The chart's samples as a round-robin file.
QByteArray rrdCreation(const QString &file, const CounterChart &chart, int minutes)
{
    const std::vector<BucketValue> &buckets = chart.series.buckets;
    const qint64 start = chart.series.interval(0).start / 1000;
    const int step = minutes * 60;
    QString text = QStringLiteral("create %1 --start %2 --step %3 DS:v:GAUGE:%4:U:U "
                                  "RRA:AVERAGE:0.5:1:%5 RRA:MIN:0.5:1:%5 RRA:MAX:0.5:1:%5\n")
                       .arg(file)
                       .arg(start)
                       .arg(step)
                       .arg(step * 2)
                       .arg(buckets.size() + 2);
    text += QStringLiteral("update %1").arg(file);
    for (size_t i = 0; i < buckets.size(); ++i)
        text +=
            QStringLiteral(" %1:%2")
                .arg(chart.series.interval(i).end / 1000)
                .arg(buckets[i].isEmpty() ? QStringLiteral("U") : QString::number(buckets[i].mean));
    return QString(text + u'\n').toUtf8();
}

/// A chart of the same parts as ours: area, band, line, percentile, moving average, mean, figures.
QByteArray rrdGraph(const QString &image, const QString &file, const CounterChart &chart,
                    int minutes)
{
    const std::vector<BucketValue> &buckets = chart.series.buckets;
    const auto trend = static_cast<qint64>(buckets.size()) / 10 * minutes * 60;
    return QStringLiteral(
               "graph %1 --imgformat PNG --full-size-mode --width 640 --height 390 --start %2 "
               "--end %3 --title \"%4\" --vertical-label \"%5\" DEF:a=%6:v:AVERAGE "
               "DEF:l=%6:v:MIN DEF:h=%6:v:MAX CDEF:low=l,0.6,* CDEF:high=h,1.4,* "
               "CDEF:band=high,low,- CDEF:m=a,%7,TREND VDEF:p=a,95,PERCENTNAN VDEF:v=a,AVERAGE "
               "VDEF:g=a,MAXIMUM VDEF:s=a,MINIMUM AREA:a#DFF0DF AREA:low#DFF0DF "
               "AREA:band#ABD6AB:\"Min to max\":STACK LINE1.5:a#008000:Mean "
               "LINE1.3:m#6A3FB5:Moving LINE1:p#D4500C:\"95th Percentile\":dashes=6,3 "
               "LINE1:v#1B2733:\"Sample Avg.\":dashes=1,2 COMMENT:\"\\n\" "
               "GPRINT:g:\"Max\\: %.1lf\" GPRINT:s:\"Min\\: %.1lf\" GPRINT:v:\"Avg\\: %.1lf\" "
               "GPRINT:p:\"95th\\: %.1lf\"\n")
        .arg(image)
        .arg(chart.series.interval(0).start / 1000)
        .arg(chart.series.interval(buckets.size() - 1).end / 1000)
        .arg(chart.frame.title, chart.valueLabel, file)
        .arg(trend)
        .toUtf8();
}

} // namespace

double meanSize(const QString &folder, const QString &pattern)
{
    const QFileInfoList files = QDir(folder).entryInfoList({pattern}, QDir::Files);
    double sum = 0;
    for (const QFileInfo &file : files)
        sum += static_cast<double>(file.size());
    return files.isEmpty() ? 0 : sum / static_cast<double>(files.size());
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
