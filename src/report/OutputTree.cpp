#include "report/OutputTree.h"

#include "base/Clock.h"
#include "base/Error.h"
#include "base/FileSystem.h"
#include "base/Files.h"
#include "base/Paths.h"
#include "base/TimeZone.h"
#include "config/RunLog.h"
#include "config/clsGrapherConfig.h"
#include "definitions/Dates.h"

#include <QDir>
#include <QFileInfo>
#include <QLocale>

#include <algorithm>

namespace {

[[noreturn]] void failWorkPath(const QString &path, const QString &fault, const RunLog &log)
{
    throw ShownError(log, PathNotFound,
                     QStringLiteral("Unable to create work path: '%1'").arg(path) +
                         (fault.isEmpty() ? fault : QLatin1String(": ") + fault));
}

/// Creates a folder with all its parents.
void createWorkPath(const QString &path, const RunLog &log)
{
    QString message; // says less than the path's own fault
    if (EnsureFolder(path, message) != 0)
        failWorkPath(path, platform::nameFault(path), log);
}

bool isFolderName(const QString &name)
{
    return !name.isEmpty() && std::none_of(name.begin(), name.end(), isSeparator);
}

/// Creates the folder that is named after an identifier.
void createPageFolder(const QString &path, const QString &id, const RunLog &log)
{
    const QString name = folderSafe(id);
    if (!isFolderName(name))
        failWorkPath(path, QStringLiteral("'%1' is not a valid folder name").arg(id), log);
    const QFileInfo folder(exactPath(path));
    if (folder.isSymbolicLink() || folder.isJunction())
        failWorkPath(path, QStringLiteral("it is a symbolic link"), log);
    // Mostly only the last folder is missing. EnsureFolder would look through all its neighbours
    // for one that differs in case.
    if (platform::nameFault(path).isEmpty() && QDir().mkdir(exactPath(path)))
        return;
    createWorkPath(path, log);
}

} // namespace

OutputTree::OutputTree(const clsGrapherConfig &settings)
    : m_folder(NormalizeFolder(settings.PTH_Output()))
    , m_contentsName(settings.TOU_TOC)
    , m_reportName(settings.TOU_REPORT)
{}

QString OutputTree::reportFolder(const QString &reportId) const
{
    return m_folder + folderSafe(reportId) + pathSeparator;
}

QString OutputTree::reportPage(const QString &reportId) const
{
    return reportFolder(reportId) + m_reportName;
}

QString OutputTree::deviceFolder(const QString &reportId, const QString &muid) const
{
    return reportFolder(reportId) + folderSafe(muid) + pathSeparator;
}

QString OutputTree::setAside(const QString &reportId) const
{
    const QString path = QDir::cleanPath(exactPath(reportFolder(reportId)));
    const QFileInfo folder(path);
    if (!isFolderName(folderSafe(reportId)) || !folder.exists())
        return {};
    if (folder.isSymbolicLink() || folder.isJunction() || !folder.isDir())
        throw Error(PathNotFound, QStringLiteral("'%1' is no folder of pages").arg(path));
    const QString aside = path + QStringLiteral(".removed-%1").arg(currentInstant());
    if (!QDir().rename(path, aside))
        throw Error(PermissionDenied,
                    QStringLiteral("The folder '%1' cannot be removed").arg(path));
    return aside;
}

void OutputTree::create(const RunLog &log) const
{
    createWorkPath(m_folder, log); // the user's, in whatever case
}

void OutputTree::createReportFolder(const QString &reportId, const RunLog &log) const
{
    createPageFolder(reportFolder(reportId), reportId, log);
}

void OutputTree::createDeviceFolder(const QString &reportId, const QString &muid,
                                    const RunLog &log) const
{
    createPageFolder(deviceFolder(reportId, muid), muid, log);
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
