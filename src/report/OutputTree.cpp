#include "report/OutputTree.h"

#include "core/Files.h"
#include "core/GrapherConfig.h"
#include "core/Paths.h"
#include "core/State.h"
#include "core/Status.h"
#include "core/TimeZone.h"
#include "core/platform/FileSystem.h"
#include "definitions/Dates.h"

#include <QDir>
#include <QFileInfo>
#include <QLocale>

#include <algorithm>

namespace {

bool failedWorkPath(const QString &path, const QString &fault, QString &errorText)
{
    errorText = QStringLiteral("Unable to create work path: '%1'").arg(path);
    if (!fault.isEmpty())
        errorText += QLatin1String(": ") + fault;
    ShowStatus(errorText);
    return false;
}

bool createPageFolder(const QString &path, const QString &id, QString &errorText)
{
    const QString name = folderSafe(id);
    if (name.isEmpty() || std::any_of(name.begin(), name.end(), isSeparator))
        return failedWorkPath(path, QStringLiteral("'%1' makes no folder's name").arg(id),
                              errorText);
    const QFileInfo folder(exactPath(path));
    if (folder.isSymbolicLink() || folder.isJunction())
        return failedWorkPath(path, QStringLiteral("it is a symbolic link"), errorText);
    return createWorkPath(path, errorText);
}

} // namespace

QString outputFolder()
{
    return NormalizeFolder(gConfig->PTH_Output());
}

QString reportFolder(const clsReportDef &report)
{
    return outputFolder() + folderSafe(report.ReportID) + pathSeparator;
}

QString reportPage(const clsReportDef &report)
{
    return reportFolder(report) + gConfig->TOU_REPORT;
}

QString deviceFolder(const clsReportDef &report, const QString &muid)
{
    return reportFolder(report) + folderSafe(muid) + pathSeparator;
}

bool createWorkPath(const QString &path, QString &errorText)
{
    // Mostly only the last folder is missing. EnsureFolder would look through all its neighbours
    // for one that differs in case.
    // The output folder itself is the user's, in whatever case.
    if (path != outputFolder() && platform::nameFault(path).isEmpty() &&
        QDir().mkdir(exactPath(path)))
        return true;
    QString message;
    if (EnsureFolder(path, message) == 0)
        return true;
    return failedWorkPath(path, platform::nameFault(path), errorText);
}

bool createReportFolder(const clsReportDef &report, QString &errorText)
{
    return createPageFolder(reportFolder(report), report.ReportID, errorText);
}

bool createDeviceFolder(const clsReportDef &report, const QString &muid, QString &errorText)
{
    return createPageFolder(deviceFolder(report, muid), muid, errorText);
}

QString localTimeText(const QDateTime &wall, const QString &form)
{
    return QLocale().toString(wall, form).remove(u'.');
}

QString isoTimeText(qint64 instant)
{
    constexpr qint64 minute = 60'000;
    const qint64 offset = offsetSpanAt(instant).offset / minute; // some old ones have seconds, too
    const QDateTime wall = QDateTime::fromMSecsSinceEpoch(instant + offset * minute, Qt::UTC);
    const qint64 size = qAbs(offset);
    return wall.toString(u"yyyy-MM-ddTHH:mm:ss") + QLatin1Char(offset < 0 ? '-' : '+') +
           QStringLiteral("%1:%2")
               .arg(size / 60, 2, 10, QLatin1Char('0'))
               .arg(size % 60, 2, 10, QLatin1Char('0'));
}

QString reportDateText(const QDateTime &runDate)
{
    return localTimeText(runDate, QStringLiteral("yyyy-MMM-dd"));
}

QString reportTimeText(const QDateTime &runDate)
{
    return localTimeText(runDate, QStringLiteral("HH:mm:ss"));
}

QString dateRangeText(const QDateTime &start, const QDateTime &end)
{
    const QString form = QStringLiteral("dd-MMM-yyyy HH:mm");
    return localTimeText(start, form) + QLatin1String(" to ") + localTimeText(end, form);
}

QString periodText(const QDateTime &start, const QDateTime &end)
{
    const QString form = QStringLiteral("yyyy-MM-dd HH:mm");
    return start.toString(form) + QLatin1String(" to ") + end.toString(form);
}

QString pageLanguage()
{
    const QLocale locale;
    return locale.language() == QLocale::C ? QStringLiteral("en") : locale.bcp47Name();
}
