#include "scheduling/RunHistory.h"

#include "core/Clock.h"
#include "core/Files.h"
#include "core/Paths.h"
#include "core/State.h"
#include "core/Status.h"
#include "core/TimeZone.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>

#include <array>

namespace {

constexpr qint64 mostRecordBytes = 16 * 1024 * 1024;
constexpr qsizetype mostChartErrors = 20;

constexpr std::array<std::pair<ReportResult, QLatin1String>, 6> resultTexts = {{
    {ReportResult::Unfinished, QLatin1String("unfinished")},
    {ReportResult::Ok, QLatin1String("ok")},
    {ReportResult::Partial, QLatin1String("partial")},
    {ReportResult::NoData, QLatin1String("no data")},
    {ReportResult::Failed, QLatin1String("failed")},
    {ReportResult::Cancelled, QLatin1String("cancelled")},
}};

/// Throws Error(InvalidFileFormat) on another text.
ReportResult resultOf(const QString &text)
{
    for (const auto &[result, name] : resultTexts) {
        if (text == name)
            return result;
    }
    throw Error(InvalidFileFormat, QStringLiteral("'%1' is no result").arg(text));
}

QString timeText(qint64 instant)
{
    return instant == 0 ? QString()
                        : QDateTime::fromMSecsSinceEpoch(instant, Qt::UTC)
                              .toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss.zzzZ"));
}

/// 0 for an empty text. Throws Error(InvalidFileFormat) on what is no time.
qint64 timeOf(const QJsonValue &value)
{
    const QString text = value.toString();
    if (text.isEmpty())
        return 0;
    const QDateTime time = QDateTime::fromString(text, Qt::ISODateWithMs);
    if (!time.isValid())
        throw Error(InvalidFileFormat, QStringLiteral("'%1' is no time").arg(text));
    return time.toMSecsSinceEpoch();
}

QJsonObject jsonOf(const ReportRecord &report)
{
    QJsonObject object = {
        {QStringLiteral("id"), report.id},
        {QStringLiteral("title"), report.title},
        {QStringLiteral("dueSince"),
         report.dueSince.isValid() ? timeText(instantOf(report.dueSince)) : QString()},
        {QStringLiteral("start"), timeText(report.start)},
        {QStringLiteral("end"), timeText(report.end)},
        {QStringLiteral("result"), resultText(report.result)},
        {QStringLiteral("charts"), report.charts},
        {QStringLiteral("samples"), report.samples},
        {QStringLiteral("seconds"), report.seconds()},
        {QStringLiteral("error"), report.error},
        {QStringLiteral("chartsWithoutImage"), report.chartsWithoutImage},
        {QStringLiteral("chartErrors"),
         QJsonArray::fromStringList(report.chartErrors.mid(0, mostChartErrors))},
    };
    if (report.mixedPages)
        object.insert(QStringLiteral("mixedPages"), true);
    return object;
}

ReportRecord reportOf(const QJsonObject &object)
{
    ReportRecord report;
    report.id = object[QLatin1String("id")].toString();
    report.title = object[QLatin1String("title")].toString();
    if (const qint64 due = timeOf(object[QLatin1String("dueSince")]))
        report.dueSince = wallTime(due);
    report.start = timeOf(object[QLatin1String("start")]);
    report.end = timeOf(object[QLatin1String("end")]);
    report.result = resultOf(object[QLatin1String("result")].toString());
    report.charts = object[QLatin1String("charts")].toInt();
    report.samples = object[QLatin1String("samples")].toInteger();
    report.error = object[QLatin1String("error")].toString();
    report.chartsWithoutImage = object[QLatin1String("chartsWithoutImage")].toInt();
    const QJsonArray errors = object[QLatin1String("chartErrors")].toArray();
    for (const QJsonValue error : errors)
        report.chartErrors.append(error.toString());
    report.mixedPages = object[QLatin1String("mixedPages")].toBool();
    return report;
}

/// Room for what the record of a run's end says more than the one of its begin.
QByteArray spareRoom(const RunRecord &run)
{
    constexpr qsizetype ofTheRun = 4096;
    constexpr qsizetype ofAReport = 512;
    return QByteArray(ofTheRun + ofAReport * static_cast<qsizetype>(run.reports.size()), '\n');
}

/// Records are named after the run's start, so that names in order are runs in order.
QString fileName(const RunRecord &run)
{
    return QDateTime::fromMSecsSinceEpoch(run.start, Qt::UTC)
               .toString(QStringLiteral("yyyyMMdd-HHmmss-zzz")) +
           QLatin1String(".json");
}

QStringList namesNewestFirst()
{
    return QDir(nativePath(runHistoryFolder()))
        .entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name | QDir::Reversed);
}

/// Nothing when the file is damaged.
std::optional<RunRecord> readRun(const QString &name)
{
    try {
        const QJsonObject object =
            QJsonDocument::fromJson(readFile(runHistoryFolder() + name, mostRecordBytes)).object();
        RunRecord run;
        run.start = timeOf(object[QLatin1String("start")]);
        run.end = timeOf(object[QLatin1String("end")]);
        run.mode = object[QLatin1String("mode")].toString();
        run.error = object[QLatin1String("error")].toString();
        const QJsonArray reports = object[QLatin1String("reports")].toArray();
        for (const QJsonValue report : reports)
            run.reports.push_back(reportOf(report.toObject()));
        if (run.start == 0)
            return std::nullopt;
        return run;
    } catch (const Error &) {
        return std::nullopt;
    }
}

/// On a full disk the record of the run's begin makes room for that of its end: it would say for
/// ever that the run has not finished.
void saveLastRecord(const QString &path, const QByteArray &text)
{
    try {
        saveFile(path, text);
    } catch (const Error &) {
        if (!QFile::remove(nativePath(path)))
            throw;
        saveFile(path, text);
    }
}

} // namespace

QString resultText(ReportResult result)
{
    for (const auto &[value, name] : resultTexts) {
        if (value == result)
            return name;
    }
    return QString();
}

QString runHistoryFolder()
{
    return gGraphDataPath + QLatin1String("RunHistory") + pathSeparator;
}

std::optional<Error> saveRun(const RunRecord &run)
{
    QJsonArray reports;
    for (const ReportRecord &report : run.reports)
        reports.append(jsonOf(report));
    const QJsonObject object = {
        {QStringLiteral("start"), timeText(run.start)},
        {QStringLiteral("end"), timeText(run.end)},
        {QStringLiteral("mode"), run.mode},
        {QStringLiteral("error"), run.error},
        {QStringLiteral("reports"), reports},
    };
    const QByteArray text = QJsonDocument(object).toJson();
    const QString path = runHistoryFolder() + fileName(run);
    try {
        QString message; // a folder that cannot be made shows in the save
        EnsureFolder(runHistoryFolder(), message);
        if (run.end == 0)
            saveFile(path, text + spareRoom(run));
        else
            saveLastRecord(path, text);
        return std::nullopt;
    } catch (const Error &error) {
        ShowStatus(QLatin1String("Error saving run history ") + errorTail(error));
        return error;
    }
}

QString troubleOf(const ReportRecord &report)
{
    if (report.result == ReportResult::Failed)
        return QStringLiteral("Report '%1' failed: %2").arg(report.title, report.error);
    if (report.result != ReportResult::Partial)
        return QString();
    // Images have other numbers in each run.
    static const QRegularExpression image(QStringLiteral("\\bG[0-9A-Z]+\\.PNG\\b"));
    return QStringLiteral("Report '%1' has %2 without image: %3")
        .arg(report.title,
             report.chartsWithoutImage == 1
                 ? QStringLiteral("a chart")
                 : QStringLiteral("%1 charts").arg(report.chartsWithoutImage),
             report.chartErrors.value(0).replace(image, QStringLiteral("G*.PNG")));
}

QStringList troublesOfToday(const std::vector<RunRecord> &runs)
{
    const QDate today = now().date();
    QStringList troubles;
    for (const RunRecord &run : runs) {
        if (run.mode != scheduledMode || wallTime(run.start).date() != today)
            continue;
        troubles.append(run.error);
        for (const ReportRecord &report : run.reports)
            troubles.append(troubleOf(report));
    }
    troubles.removeAll(QString());
    return troubles;
}

std::vector<RunRecord> readRuns()
{
    std::vector<RunRecord> runs;
    const QStringList names = namesNewestFirst();
    for (const QString &name : names) {
        if (std::optional<RunRecord> run = readRun(name))
            runs.push_back(std::move(*run));
    }
    return runs;
}

qint64 lastRunEnd()
{
    const QStringList names = namesNewestFirst();
    const std::optional<RunRecord> run =
        names.isEmpty() ? std::nullopt : readRun(names.constFirst());
    return run ? run->end : 0;
}

void pruneRuns(qsizetype most)
{
    const QStringList names = namesNewestFirst();
    if (names.size() <= most)
        return;
    QSet<QString> seen;
    QStringList spare; // newest first, as all lists here
    QStringList lastWords;
    for (const QString &name : names) {
        const std::optional<RunRecord> run = readRun(name);
        const qsizetype before = seen.size();
        if (run) {
            for (const ReportRecord &report : run->reports) {
                if (report.start != 0)
                    seen.insert(report.id.toLower());
            }
        }
        (seen.size() > before ? lastWords : spare).append(name);
    }
    for (qsizetype left = names.size(); left > most; --left) {
        QStringList &from = spare.isEmpty() ? lastWords : spare;
        QFile::remove(nativePath(runHistoryFolder() + from.takeLast()));
    }
}

const ReportRecord *lastRecord(const std::vector<RunRecord> &runs, const QString &reportId)
{
    for (const RunRecord &run : runs) {
        for (const ReportRecord &report : run.reports) {
            if (report.start != 0 && report.id.compare(reportId, Qt::CaseInsensitive) == 0)
                return &report;
        }
    }
    return nullptr;
}
