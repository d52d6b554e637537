#include "mail/ReportMail.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "base/TimeZone.h"
#include "mail/ReportMailTables.h"
#include "report/MachineFiles.h"
#include "report/Templates.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSysInfo>

namespace {

constexpr qint64 mostFileBytes = 128 * 1024 * 1024;

const QString csvName = QStringLiteral("repsum.csv");

struct ReportImage
{
    QLatin1String name;
    QLatin1String description;
};
constexpr ReportImage reportImages[] = {
    {QLatin1String("TIMELINE.PNG"), QLatin1String("Outages of the devices over time")},
    {QLatin1String("OVERALL.PNG"), QLatin1String("Success rate of all devices over time")},
    {QLatin1String("DEVSUM.PNG"), QLatin1String("Success rate by device")},
};

/// Whether the run that the record is of has written a file: an earlier one may have left it.
bool isOfRun(const QString &path, const ReportRecord &report)
{
    constexpr qint64 coarse = 2000; // milliseconds to which some file systems round
    const QFileInfo file(exactPath(path));
    return file.isFile() && file.lastModified().toMSecsSinceEpoch() + coarse >= report.start;
}

bool hasPages(const ReportRecord &report)
{
    return report.result == ReportResult::Ok || report.result == ReportResult::Partial ||
           report.result == ReportResult::NoData;
}

/// What mail programs show; empty for others, such as the transparent image of a missing chart.
QByteArray imageType(const QByteArray &bytes)
{
    if (bytes.startsWith("\x89PNG"))
        return "image/png";
    return bytes.startsWith("\xFF\xD8\xFF") ? "image/jpeg" : QByteArray();
}

void addImages(MailContent &content, const QString &folder, const ReportRecord &report)
{
    for (const ReportImage &image : reportImages) {
        if (!isOfRun(folder + image.name, report))
            continue;
        const QByteArray bytes = readFile(folder + image.name, mostFileBytes);
        if (const QByteArray type = imageType(bytes); !type.isEmpty())
            content.images.push_back({image.name, type, bytes, image.description});
    }
}

/// A name for a file of the report in a reader's folder of downloads.
QString attachmentName(const QString &title, const QString &ending)
{
    QString name;
    for (const QChar c : title) {
        if (c.isLetterOrNumber())
            name += c;
        else if (!name.endsWith(u'-') && !name.isEmpty())
            name += u'-';
    }
    while (name.endsWith(u'-'))
        name.chop(1);
    return (name.isEmpty() ? QStringLiteral("report") : name.left(60)) + ending;
}

void attach(MailContent &content, const QString &path, const QString &name, const QByteArray &type,
            const ReportRecord &report)
{
    const QString fileName = QFileInfo(path).fileName();
    if (!isOfRun(path, report)) {
        content.notes.append(QStringLiteral("This run has made no %1.").arg(fileName));
        return;
    }
    try {
        content.attachments.push_back({name, type, readFile(path, mostFileBytes)});
    } catch (const Error &error) {
        content.notes.append(
            QStringLiteral("%1 is not attached: %2").arg(fileName, error.description));
    }
}

/// Where readers find the report's page.
QString pagesOf(const MailSite &site, const MailServer &server, const ReportRecord &report)
{
    const QString page = exactPath(site.tree.reportPage(report.id));
    if (server.pagesUrl.isEmpty() || !page.startsWith(exactPath(site.tree.folder())))
        return page;
    QString address = server.pagesUrl;
    QStringList parts = page.mid(exactPath(site.tree.folder()).size()).split(pathSeparator);
    parts.removeAll(QString());
    for (const QString &part : parts)
        address += (address.endsWith(u'/') ? QString() : QStringLiteral("/")) + linkText(part);
    return address;
}

/// "2026-11-14" or "2026-11-14 to 2026-11-20" of a period that ends before its last instant.
QString daysText(const QJsonObject &period)
{
    const QDateTime from =
        QDateTime::fromString(period[QLatin1String("from")].toString(), Qt::ISODate);
    const QDateTime to = QDateTime::fromString(period[QLatin1String("to")].toString(), Qt::ISODate);
    if (!from.isValid() || !to.isValid())
        return QString();
    const QString first = from.date().toString(Qt::ISODate);
    const QString last = std::max(from, to.addSecs(-1)).date().toString(Qt::ISODate);
    return first == last ? first : first + QLatin1String(" to ") + last;
}

/// "2026-11-14 00:00 to 2026-11-21 00:00"
QString periodOf(const QJsonObject &period)
{
    const auto time = [&period](QLatin1String name) {
        return period[name].toString().left(16).replace(u'T', u' ');
    };
    return time(QLatin1String("from")) + QLatin1String(" to ") + time(QLatin1String("to"));
}

QString whenText(const MailSubscription &subscription)
{
    switch (subscription.when) {
    case MailWhen::Trouble:
        return QStringLiteral("when it failed or lacks charts");
    case MailWhen::TargetMissed:
        return QStringLiteral("when a target was missed");
    case MailWhen::Worse:
        return QStringLiteral("when its success rate fell by %1 points or more")
            .arg(trimmedNumber(subscription.points, 3));
    case MailWhen::Always:
        break;
    }
    return QStringLiteral("whenever it was made");
}

const QString &sender()
{
    static const QString text =
        QStringLiteral("Vantrel Graphing Tool on %1").arg(QSysInfo::machineHostName());
    return text;
}

/// What is said without figures.
void tellResult(MailContent &content, const ReportRecord &report)
{
    if (report.result == ReportResult::Failed) {
        content.verdict = QStringLiteral("The report failed");
        content.tone = MailTone::Bad;
        content.sentences = {
            report.error, QStringLiteral("It stays due, and is made as soon as that works. Pages "
                                         "that are there may be of an earlier run.")};
    } else if (report.result == ReportResult::NoData) {
        content.verdict = QStringLiteral("No data in this period");
        content.tone = MailTone::Bad;
    } else {
        content.verdict = QStringLiteral("The report is ready");
    }
}

void tellMissingCharts(MailContent &content, const ReportRecord &report)
{
    if (report.result != ReportResult::Partial)
        return;
    content.notes.append(
        QStringLiteral("%1 could not be drawn; the values are in the tables. The first: %2")
            .arg(report.chartsWithoutImage == 1
                     ? QStringLiteral("One chart")
                     : QStringLiteral("%1 charts").arg(report.chartsWithoutImage),
                 report.chartErrors.value(0)));
}

} // namespace

std::optional<QJsonObject> reportFigures(const MailSite &site, const ReportRecord &report)
{
    const QString path = site.tree.reportFolder(report.id) + reportJsonName;
    if (!hasPages(report) || !isOfRun(path, report))
        return std::nullopt;
    return QJsonDocument::fromJson(readFile(path)).object();
}

bool isOccasion(const MailSubscription &subscription, const ReportRecord &report,
                const std::optional<QJsonObject> &figures)
{
    if (report.result == ReportResult::Failed)
        return subscription.when == MailWhen::Always || subscription.when == MailWhen::Trouble;
    if (!hasPages(report))
        return false; // cancelled, or broken off: it is due again
    const QJsonObject comparison =
        figures ? figures->value(QLatin1String("comparison")).toObject() : QJsonObject();
    switch (subscription.when) {
    case MailWhen::Always:
        return true;
    case MailWhen::Trouble:
        return report.result == ReportResult::Partial;
    case MailWhen::TargetMissed:
        return figures && figures->value(QLatin1String("devicesMissedTarget")).toInt() > 0;
    case MailWhen::Worse:
        return comparison[QLatin1String("comparable")].toBool() &&
               -comparison[QLatin1String("ratePoints")].toDouble() >= subscription.points;
    }
    return false;
}

MailContent reportMail(const MailSite &site, const MailServer &server,
                       const MailSubscription &subscription, const ReportRecord &report,
                       const std::optional<QJsonObject> &figures)
{
    MailContent content;
    content.title = report.title;
    content.pages = pagesOf(site, server, report);
    content.reason =
        QStringLiteral("%1 sends you this report %2.").arg(sender(), whenText(subscription));
    tellResult(content, report);
    QString days;
    if (figures) {
        const QJsonObject period = figures->value(QLatin1String("period")).toObject();
        days = daysText(period);
        content.period = periodOf(period);
        tellFigures(content, *figures);
    }
    tellMissingCharts(content, report);
    content.subject = report.title + (days.isEmpty() ? days : QLatin1String(", ") + days) +
                      QLatin1String(": ") + content.verdict;
    if (hasPages(report)) {
        const QString folder = site.tree.reportFolder(report.id);
        addImages(content, folder, report);
        if (subscription.pdf)
            attach(content, folder + pdfName, attachmentName(report.title, QStringLiteral(".pdf")),
                   "application/pdf", report);
        if (subscription.csv)
            attach(content, folder + csvName, attachmentName(report.title, QStringLiteral(".csv")),
                   "text/csv; charset=utf-8", report);
        fitInto(content, qint64(server.sizeLimit) * 1'000'000, content.pages);
    }
    return content;
}

MailContent failureMail(const RunRecord &run, const QStringList &troubles)
{
    MailContent content;
    content.title = QStringLiteral("A run went wrong");
    content.period = wallTime(run.start).toString(QStringLiteral("yyyy-MM-dd HH:mm"));
    content.verdict = troubles.size() == 1 ? QStringLiteral("1 error")
                                           : QStringLiteral("%1 errors").arg(troubles.size());
    content.tone = MailTone::Bad;
    content.sentences = troubles;
    content.subject =
        QStringLiteral("Run of %1: %2").arg(content.period, troubles.value(0).left(200));
    content.notes = {
        QStringLiteral("VantrelGrapher --history lists the runs. An error that recurs is "
                       "mailed once a day.")};
    content.reason = QStringLiteral("%1 sends you a mail when a run failed.").arg(sender());
    return content;
}

MailContent testMail(const MailServer &server)
{
    MailContent content;
    content.subject = content.title = QStringLiteral("Test mail of the Vantrel Graphing Tool");
    content.verdict = QStringLiteral("Mails arrive");
    content.tone = MailTone::Good;
    content.sentences = {
        QStringLiteral("The mail server '%1' has accepted this message. Reports go the "
                       "same way.")
            .arg(server.host)};
    content.reason = sender() + QLatin1Char('.');
    return content;
}
