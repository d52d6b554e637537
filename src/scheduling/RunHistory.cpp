#include "scheduling/RunHistory.h"

#include "base/Clock.h"
#include "base/Files.h"
#include "base/Paths.h"
#include "base/TimeZone.h"
#include "config/Program.h"

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
    throw Error(InvalidFileFormat, QStringLiteral("'%1' is not a valid result").arg(text));
}

QString timeText(qint64 instant)
{
    return instant == 0 ? QString()
                        : QDateTime::fromMSecsSinceEpoch(instant, Qt::UTC)
                              .toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss.zzzZ"));
}

/// 0 for an empty text. Throws Error(InvalidFileFormat) for an invalid time.
qint64 timeOf(const QJsonValue &value)
{
    const QString text = value.toString();
    if (text.isEmpty())
        return 0;
    const QDateTime time = QDateTime::fromString(text, Qt::ISODateWithMs);
    if (!time.isValid())
        throw Error(InvalidFileFormat, QStringLiteral("'%1' is not a valid time").arg(text));
    return time.toMSecsSinceEpoch();
}

QJsonObject jsonOf(const SummaryFigures &figures)
{
    return {{QStringLiteral("devices"), figures.devices},
            {QStringLiteral("troubled"), figures.troubled},
            {QStringLiteral("silent"), figures.silent},
            {QStringLiteral("successes"), figures.successes},
            {QStringLiteral("failures"), figures.failures}};
}

SummaryFigures figuresOf(const QJsonObject &object)
{
    return {object[QLatin1String("devices")].toInt(), object[QLatin1String("troubled")].toInt(),
            object[QLatin1String("silent")].toInt(), object[QLatin1String("successes")].toInteger(),
            object[QLatin1String("failures")].toInteger()};
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
    if (report.figures)
        object.insert(QStringLiteral("figures"), jsonOf(*report.figures));
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
    if (const QJsonValue figures = object[QLatin1String("figures")]; figures.isObject())
        report.figures = figuresOf(figures.toObject());
    return report;
}

QByteArray recordText(const RunRecord &run)
{
    QJsonArray reports;
    for (const ReportRecord &report : run.reports)
        reports.append(jsonOf(report));
    QJsonObject object = {
        {QStringLiteral("start"), timeText(run.start)},
        {QStringLiteral("end"), timeText(run.end)},
        {QStringLiteral("mode"), run.mode},
        {QStringLiteral("error"), run.error},
        {QStringLiteral("reports"), reports},
    };
    if (!run.mails.isEmpty())
        object.insert(QStringLiteral("mails"), QJsonArray::fromStringList(run.mails));
    return QJsonDocument(object).toJson();
}

/// Space for what the record of a run's end has in addition to that of its start.
QByteArray spareRoom(const RunRecord &run)
{
    constexpr qsizetype ofTheRun = 4096;
    constexpr qsizetype ofAReport = 512;
    return QByteArray(ofTheRun + ofAReport * static_cast<qsizetype>(run.reports.size()), '\n');
}

/// Records are named after the run's start, so that sorted names are sorted runs.
QString fileName(const RunRecord &run)
{
    return QDateTime::fromMSecsSinceEpoch(run.start, Qt::UTC)
               .toString(QStringLiteral("yyyyMMdd-HHmmss-zzz")) +
           QLatin1String(".json");
}

/// On a full disk the record of the run's start makes room for that of its end, or it would say
/// forever that the run has not finished.
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

RunHistory::RunHistory(QString folder)
    : m_folder(std::move(folder))
{}

RunHistory runHistory()
{
    return RunHistory(program().gGraphDataPath + QLatin1String("RunHistory") + pathSeparator);
}

void RunHistory::save(const RunRecord &run) const
{
    const QByteArray text = recordText(run);
    const QString path = m_folder + fileName(run);
    QString message; // if the folder cannot be created, the save fails
    EnsureFolder(m_folder, message);
    if (run.end == 0)
        saveFile(path, text + spareRoom(run));
    else
        saveLastRecord(path, text);
}

void RunHistory::amend(const RunRecord &run) const
{
    saveFile(m_folder + fileName(run), recordText(run));
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
        troubles.append(run.mails);
        for (const ReportRecord &report : run.reports)
            troubles.append(troubleOf(report));
    }
    troubles.removeAll(QString());
    return troubles;
}

QStringList RunHistory::namesNewestFirst() const
{
    return QDir(nativePath(m_folder))
        .entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name | QDir::Reversed);
}

std::optional<RunRecord> RunHistory::read(const QString &name) const
{
    try {
        const QJsonObject object =
            QJsonDocument::fromJson(readFile(m_folder + name, mostRecordBytes)).object();
        RunRecord run;
        run.start = timeOf(object[QLatin1String("start")]);
        run.end = timeOf(object[QLatin1String("end")]);
        run.mode = object[QLatin1String("mode")].toString();
        run.error = object[QLatin1String("error")].toString();
        const QJsonArray reports = object[QLatin1String("reports")].toArray();
        for (const QJsonValue report : reports)
            run.reports.push_back(reportOf(report.toObject()));
        const QJsonArray mails = object[QLatin1String("mails")].toArray();
        for (const QJsonValue mail : mails)
            run.mails.append(mail.toString());
        if (run.start == 0)
            return std::nullopt;
        return run;
    } catch (const Error &) {
        return std::nullopt;
    }
}

std::vector<RunRecord> RunHistory::runs() const
{
    std::vector<RunRecord> records;
    const QStringList names = namesNewestFirst();
    for (const QString &name : names) {
        if (std::optional<RunRecord> run = read(name))
            records.push_back(std::move(*run));
    }
    return records;
}

qint64 RunHistory::lastEnd() const
{
    const QStringList names = namesNewestFirst();
    const std::optional<RunRecord> run = names.isEmpty() ? std::nullopt : read(names.constFirst());
    return run ? run->end : 0;
}

void RunHistory::prune(qsizetype most) const
{
    const QStringList names = namesNewestFirst();
    if (names.size() <= most)
        return;
    QSet<QString> seen;
    QStringList spare; // newest first, as all lists here
    QStringList lastWords;
    for (const QString &name : names) {
        const std::optional<RunRecord> run = read(name);
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
        QFile::remove(nativePath(m_folder + from.takeLast()));
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
