#include "report/Archive.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "base/TimeZone.h"
#include "report/MachineFiles.h"
#include "report/OutputTree.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>

#include <algorithm>

namespace {

const QString archiveName = QStringLiteral("Archive");
const QString indexName = QStringLiteral("runs.json");
const QString summaryName = QStringLiteral("repsum.csv");
constexpr qint64 maxReportBytes = qint64(1) << 30;

QDateTime wallOf(qint64 second)
{
    return wallTime(second * 1000);
}

/// The whole days that a period consists of; nothing if it begins or ends within a day.
struct WholeDays
{
    QDate first;
    QDate last;

    bool isYear() const { return first.dayOfYear() == 1 && last == QDate(first.year(), 12, 31); }
    bool isMonth() const
    {
        return first.day() == 1 && last == first.addDays(first.daysInMonth() - 1);
    }
};

std::optional<WholeDays> wholeDaysOf(const QDateTime &from, const QDateTime &to)
{
    if (from.time() != QTime(0, 0) || to.time() != QTime(23, 59, 59))
        return {};
    return WholeDays{from.date(), to.date()};
}

QString folderOf(qint64 from, qint64 to)
{
    const QDateTime first = wallOf(from);
    const QDateTime last = wallOf(to);
    const std::optional<WholeDays> days = wholeDaysOf(first, last);
    if (!days) {
        const QString form = QStringLiteral("yyyy-MM-ddTHHmm");
        return first.toString(form) + u'_' + last.toString(form);
    }
    if (days->isYear())
        return days->first.toString(QStringLiteral("yyyy"));
    if (days->isMonth())
        return days->first.toString(QStringLiteral("yyyy-MM"));
    const QString day = days->first.toString(Qt::ISODate);
    return days->first == days->last ? day : day + u'_' + days->last.toString(Qt::ISODate);
}

QString rateText(const ArchivedRun &run)
{
    return run.rate ? fixedNumber(*run.rate, 2) + QStringLiteral(" %") : QStringLiteral("no tests");
}

QJsonObject objectIn(const QString &path, qint64 maxBytes)
{
    QJsonParseError fault{};
    const QJsonDocument document = QJsonDocument::fromJson(readFile(path, maxBytes), &fault);
    if (!document.isObject())
        throw Error(InvalidFileFormat,
                    QStringLiteral("'%1' is not valid: %2").arg(path, fault.errorString()));
    return document.object();
}

/// What the files of the archive say of a period and its rate; throws Error that names `path`.
ArchivedRun runOf(const QJsonObject &period, const QJsonValue &rate, const QString &path)
{
    const auto second = [&](QLatin1String name) {
        const QDateTime time = QDateTime::fromString(period[name].toString(), Qt::ISODate);
        if (!time.isValid())
            throw Error(InvalidFileFormat, QStringLiteral("'%1' has no valid period").arg(path));
        return time.toSecsSinceEpoch();
    };
    return {second(QLatin1String("from")), second(QLatin1String("to")),
            rate.isDouble() ? std::optional(rate.toDouble()) : std::nullopt};
}

void makeFolder(const QString &path)
{
    QString message;
    if (EnsureFolder(path, message) != 0)
        throw Error(PathNotFound, message);
    if (const QFileInfo folder(QDir(exactPath(path)).absolutePath());
        folder.isSymbolicLink() || folder.isJunction())
        throw Error(PermissionDenied, QStringLiteral("'%1' is a symbolic link").arg(path));
}

bool isLater(const ArchivedRun &a, const ArchivedRun &b)
{
    return std::pair(a.to, a.from) > std::pair(b.to, b.from);
}

QString linkOf(const ArchivedRun &run, const QString &archiveHref)
{
    return QStringLiteral("<a href=\"%1%2/%3\">%4: %5</a>")
        .arg(archiveHref, linkText(run.folder), run.hasPdf ? pdfName : summaryName,
             run.label().toHtmlEscaped(), rateText(run));
}

/// The success rates from the oldest to the newest as a line; empty for fewer than two. `runs` are
/// the newest first.
QString lineChart(const std::vector<ArchivedRun> &runs)
{
    std::vector<double> rates;
    for (auto run = runs.rbegin(); run != runs.rend(); ++run) {
        if (run->rate)
            rates.push_back(*run->rate);
    }
    if (rates.size() < 2)
        return {};
    constexpr double width = 360, height = 64, margin = 6;
    const auto [min, max] = std::minmax_element(rates.begin(), rates.end());
    const double span = std::max(*max - *min, 0.01);
    QString points;
    QString dots;
    for (size_t i = 0; i < rates.size(); ++i) {
        const double x = margin + (width - 2 * margin) * static_cast<double>(i) /
                                      static_cast<double>(rates.size() - 1);
        const double y = margin + (height - 2 * margin) * (*max - rates[i]) / span;
        points += QStringLiteral("%1,%2 ").arg(x, 0, 'f', 1).arg(y, 0, 'f', 1);
        dots += QStringLiteral("<circle cx=\"%1\" cy=\"%2\" r=\"2.5\" fill=\"currentColor\"/>")
                    .arg(x, 0, 'f', 1)
                    .arg(y, 0, 'f', 1);
    }
    return QStringLiteral("<svg viewBox=\"0 0 %1 %2\" width=\"%1\" height=\"%2\" role=\"img\" "
                          "aria-label=\"Success rate of %3 runs, lowest %4 %, highest %5 %\">"
                          "<polyline points=\"%6\" fill=\"none\" stroke=\"currentColor\" "
                          "stroke-width=\"1.5\"/>%7</svg>")
        .arg(width)
        .arg(height)
        .arg(rates.size())
        .arg(fixedNumber(*min, 2), fixedNumber(*max, 2), points.trimmed(), dots);
}

} // namespace

ArchivedRun::ArchivedRun(qint64 first, qint64 last, std::optional<double> percent)
    : folder(folderOf(first, last))
    , from(first)
    , to(last)
    , rate(percent)
{}

QString ArchivedRun::label() const
{
    const QDateTime first = wallOf(from);
    const QDateTime last = wallOf(to);
    const std::optional<WholeDays> days = wholeDaysOf(first, last);
    if (!days)
        return periodText(first, last);
    if (days->isMonth())
        return QLocale().standaloneMonthName(days->first.month()) + u' ' +
               QString::number(days->first.year());
    return QString(folder).replace(u'_', QLatin1String(" to "));
}

ReportArchive::ReportArchive(const QString &reportFolder)
    : m_reportFolder(reportFolder)
    , m_folder(reportFolder + archiveName + pathSeparator)
{}

std::optional<ArchivedRun> ReportArchive::read(const QString &folder) const
{
    const QString path = m_folder + folder + pathSeparator + reportJsonName;
    try {
        const QJsonObject report = objectIn(path, maxReportBytes);
        return runOf(report[QLatin1String("period")].toObject(), report[QLatin1String("rate")],
                     path);
    } catch (const Error &) {
        return {};
    }
}

std::vector<ArchivedRun> ReportArchive::runs() const
{
    if (!folderExists(m_folder))
        return {};
    QHash<QString, ArchivedRun> known;
    try {
        const QJsonObject index = objectIn(m_folder + indexName, maxDefinitionBytes);
        const QJsonArray entries = index[QLatin1String("runs")].toArray();
        for (const QJsonValue entry : entries)
            known.insert(entry[QLatin1String("folder")].toString(),
                         runOf(entry.toObject(), entry[QLatin1String("rate")], m_folder));
    } catch (const Error &) { // the runs' own files say the same
    }
    std::vector<ArchivedRun> runs;
    const QStringList folders =
        QDir(exactPath(m_folder)).entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks);
    for (const QString &folder : folders) {
        const QString path = m_folder + folder + pathSeparator;
        if (!fileExists(path + reportJsonName))
            continue;
        std::optional<ArchivedRun> run;
        if (const auto entry = known.constFind(folder); entry != known.constEnd())
            run = *entry;
        else
            run = read(folder);
        if (!run)
            continue;
        run->folder = folder; // as it was named in the zone of its time
        run->hasPdf = fileExists(path + pdfName);
        runs.push_back(*run);
    }
    std::stable_sort(runs.begin(), runs.end(), isLater);
    return runs;
}

void ReportArchive::keep(int max) const
{
    const QString report = m_reportFolder + reportJsonName;
    const QJsonObject object = objectIn(report, maxReportBytes);
    ArchivedRun run =
        runOf(object[QLatin1String("period")].toObject(), object[QLatin1String("rate")], report);
    const QString target = m_folder + run.folder + pathSeparator;
    makeFolder(m_folder);
    makeFolder(target);
    if (fileExists(m_reportFolder + pdfName))
        copyFile(m_reportFolder + pdfName, target + pdfName);
    else
        QFile::remove(exactPath(target + pdfName));
    copyFile(m_reportFolder + summaryName, target + summaryName);
    copyFile(report, target + reportJsonName);

    std::vector<ArchivedRun> kept = runs();
    // What the index says of this period may be of an earlier run over it.
    for (ArchivedRun &entry : kept) {
        if (entry.folder == run.folder)
            entry.rate = run.rate;
    }
    saveIndex(prune(std::move(kept), run.folder, max));
}

std::vector<ArchivedRun> ReportArchive::prune(std::vector<ArchivedRun> runs, const QString &added,
                                              int max) const
{
    const auto good =
        std::find_if(runs.begin(), runs.end(), [](const ArchivedRun &run) { return run.rate; });
    const QString newestGood = good == runs.end() ? QString() : good->folder;
    for (size_t i = runs.size(); i-- > 0 && runs.size() > static_cast<size_t>(max);) {
        if (runs[i].folder == added || runs[i].folder == newestGood)
            continue;
        const QString folder = exactPath(m_folder + runs[i].folder) + QLatin1Char('/');
        // Without report.json it is no longer a kept run, whatever becomes of the rest.
        QFile json(folder + reportJsonName);
        if (!json.remove())
            throw Error(PermissionDenied, QStringLiteral("'%1' cannot be removed: %2")
                                              .arg(json.fileName(), json.errorString()));
        QFile::remove(folder + pdfName);
        QFile::remove(folder + summaryName);
        QDir().rmdir(folder);
        runs.erase(runs.begin() + static_cast<std::ptrdiff_t>(i));
    }
    return runs;
}

void ReportArchive::saveIndex(const std::vector<ArchivedRun> &runs) const
{
    QJsonArray entries;
    for (const ArchivedRun &run : runs)
        entries.append(
            QJsonObject{{QStringLiteral("folder"), run.folder},
                        {QStringLiteral("from"), isoTimeText(run.from * 1000)},
                        {QStringLiteral("to"), isoTimeText(run.to * 1000)},
                        {QStringLiteral("rate"), run.rate ? QJsonValue(*run.rate) : QJsonValue()}});
    saveExactFile(m_folder + indexName,
                  QJsonDocument(QJsonObject{{QStringLiteral("runs"), entries}}).toJson());
}

PageValue archiveSection(const std::vector<ArchivedRun> &runs, const ArchivedRun &present)
{
    std::vector<ArchivedRun> earlier;
    std::copy_if(runs.begin(), runs.end(), std::back_inserter(earlier),
                 [&](const ArchivedRun &run) { return run.folder != present.folder; });
    if (earlier.empty())
        return QString();
    std::vector<ArchivedRun> all = earlier;
    all.insert(std::upper_bound(all.begin(), all.end(), present, isLater), present);
    QString text = QStringLiteral("\n<section class=\"archive\" id=\"archive\">\n<h2>Earlier "
                                  "runs</h2>\n%1\n<ul>\n")
                       .arg(lineChart(all));
    for (const ArchivedRun &run : earlier)
        text += QStringLiteral("<li>%1</li>\n").arg(linkOf(run, archiveName + u'/'));
    return PageValue::html(text + QStringLiteral("</ul>\n</section>"));
}

PageValue archiveLine(const std::vector<ArchivedRun> &runs, const QString &reportHref,
                      const QString &reportPage)
{
    constexpr size_t atAGlance = 3;
    if (runs.empty())
        return QString();
    QStringList links;
    for (size_t i = 0; i < std::min(atAGlance, runs.size()); ++i)
        links.append(linkOf(runs[i], reportHref + u'/' + archiveName + u'/'));
    if (runs.size() > atAGlance)
        links.append(QStringLiteral("<a href=\"%1/%2#archive\">%3 more</a>")
                         .arg(reportHref, linkText(reportPage))
                         .arg(runs.size() - atAGlance));
    return PageValue::html(
        QStringLiteral("\n<span class=\"note archive\">Archive: %1</span>").arg(links.join(u' ')));
}
