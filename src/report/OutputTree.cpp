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

QString reportFolder(const QString &reportId)
{
    return outputFolder() + folderSafe(reportId) + pathSeparator;
}

QString reportPage(const QString &reportId)
{
    return reportFolder(reportId) + gConfig->TOU_REPORT;
}

QString deviceFolder(const QString &reportId, const QString &muid)
{
    return reportFolder(reportId) + folderSafe(muid) + pathSeparator;
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

bool createReportFolder(const QString &reportId, QString &errorText)
{
    return createPageFolder(reportFolder(reportId), reportId, errorText);
}

bool createDeviceFolder(const QString &reportId, const QString &muid, QString &errorText)
{
    return createPageFolder(deviceFolder(reportId, muid), muid, errorText);
}

QString localTimeText(const QDateTime &wall, const QString &form)
{
    return QLocale().toString(wall, form).remove(u'.');
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
