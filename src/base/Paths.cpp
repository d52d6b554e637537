#include "base/Paths.h"

#include "base/Error.h"
#include "base/FileSystem.h"
#include "base/Files.h"
#include "base/ProgramState.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QMutex>
#include <QStandardPaths>
#include <QStringList>

namespace {

const QString factoryConfiguration = QStringLiteral("VTRGConfigV6.FAC");

struct Folders
{
    QString ownFolder; ///< empty: that of the executable
    QMutex mutex;
    QString LastFolder; ///< the last path that EnsureFolder found or created, on whatever thread
};

const StatePart<Folders> folders;

bool isLastFolder(const QString &path)
{
    const QMutexLocker locker(&folders->mutex);
    return !path.isEmpty() && path == folders->LastFolder;
}

void setLastFolder(const QString &path)
{
    const QMutexLocker locker(&folders->mutex);
    folders->LastFolder = path;
}

QString withSeparator(const QString &folder)
{
    if (folder.isEmpty() || isSeparator(folder.back()))
        return withOwnSeparators(folder);
    return withOwnSeparators(folder + u'\\');
}

/// Copies the factory files into a folder without them; existing files are never replaced.
void fillFromShare(const QString &folder)
{
    if (QFileInfo::exists(folder + u'/' + factoryConfiguration))
        return;
    const QString share = shareFolder();
    // There are other files beside a built program; the list of factory files says which to copy.
    const QStringList names = decodeText(readFile(share + QLatin1String("/factory-files.txt")))
                                  .split(u'\n', Qt::SkipEmptyParts);
    for (const QString &name : names) {
        const QString target = folder + u'/' + name;
        if (!QDir().mkpath(QFileInfo(target).path()))
            throw Error(PathNotFound, QStringLiteral("Cannot create folder '%1'")
                                          .arg(withOwnSeparators(QFileInfo(target).path())));
        if (!fileExists(target))
            copyFile(share + u'/' + name, target);
    }
}

} // namespace

QString shareFolder()
{
    const QString beside = QCoreApplication::applicationDirPath();
    const QStringList candidates = {beside, beside + QLatin1String("/../share/vantrel-grapher")};
    for (const QString &candidate : candidates) {
        if (QFileInfo::exists(candidate + u'/' + factoryConfiguration))
            return QDir::cleanPath(candidate);
    }
    throw Error(FileNotFound, QStringLiteral("The factory file %1 is neither in '%2' nor in '%3'")
                                  .arg(factoryConfiguration, withOwnSeparators(candidates[0]),
                                       withOwnSeparators(QDir::cleanPath(candidates[1]))));
}

bool isSeparator(QChar character)
{
    return character == u'\\' || character == u'/';
}

QString withOwnSeparators(const QString &path)
{
    if (!platform::nameFault(path).isEmpty())
        return path;
    QString shown = path;
    return shown.replace(pathSeparator == u'/' ? u'\\' : u'/', pathSeparator);
}

QString programFolder()
{
    if (!folders->ownFolder.isEmpty())
        return folders->ownFolder;
    return QDir::toNativeSeparators(QCoreApplication::applicationDirPath());
}

void setProgramFolder(const QString &folder)
{
    QString &ownFolder = folders->ownFolder;
    ownFolder = QDir::toNativeSeparators(folder);
    while (ownFolder.size() > 1 && isSeparator(ownFolder.back()))
        ownFolder.chop(1);
}

QString NormalizeFolder(const QString &text)
{
    const QString folder = text.trimmed();
    return withSeparator(folder.isEmpty() ? programFolder() : folder);
}

QString WithBackslash(const QString &text)
{
    return withSeparator(text.trimmed());
}

FolderParts folderParts(const QString &path)
{
    QStringList parts;
    qsizetype start = 0;
    for (qsizetype i = 0; i <= path.size(); ++i) {
        if (i == path.size() || isSeparator(path[i])) {
            parts.append(path.mid(start, i - start));
            start = i + 1;
        }
    }
    const bool network = path.size() > 4 && isSeparator(path[0]) && isSeparator(path[1]) &&
                         !isSeparator(path[2]) && parts.size() > 3;
    const bool drive =
        path.size() > 3 && path[0].isLetter() && path[1] == u':' && isSeparator(path[2]);
#ifdef Q_OS_WIN
    if (network)
        return {QStringLiteral("\\\\%1\\%2").arg(parts[2], parts[3]), parts.mid(4)};
    if (drive)
        return {parts[0], parts.mid(1)};
#else
    static_cast<void>(network);
    static_cast<void>(drive);
    if (path.startsWith(u'/') || path.startsWith(u'\\'))
        return {QString(), parts.mid(1)};
#endif
    return {programFolder(), parts};
}

int EnsureFolder(const QString &path, QString &message)
{
    if (isLastFolder(path))
        return 0;
    setLastFolder(QString());
    message.clear();
    if (folderExists(path)) {
        message = QStringLiteral("Path exists.");
        setLastFolder(path);
        return 0;
    }
    if (const QString fault = platform::nameFault(path); !fault.isEmpty()) {
        message = QStringLiteral("Cannot create folder '%1': %2").arg(path, fault);
        return BadFileName;
    }
    const FolderParts split = folderParts(path);
    QString current = split.root;
    const auto createMissing = [&] {
        const QString native = nativePath(current);
        if (native.isEmpty() || QFileInfo(native).isDir())
            return true;
        if (QDir().mkdir(native) || QFileInfo(native).isDir())
            return true;
        message = QStringLiteral("Cannot create folder '%1'").arg(current);
        return false;
    };
    for (const QString &part : split.parts) {
        if (!part.isEmpty())
            current += pathSeparator + part;
        if (!createMissing())
            return QFileInfo::exists(nativePath(current)) ? PermissionDenied : PathNotFound;
    }
    if (!createMissing())
        return PathNotFound;
    message = QStringLiteral("Created '%1'").arg(current);
    setLastFolder(path);
    return 0;
}

void locateProgramFolder(const QString &home)
{
    QString folder = home.isEmpty() ? qEnvironmentVariable(homeVariable) : home;
    const QString beside = QCoreApplication::applicationDirPath();
    if (folder.isEmpty()) {
        if (QFileInfo::exists(beside + u'/' + factoryConfiguration)) {
            setProgramFolder(QDir::toNativeSeparators(beside));
            return;
        }
        folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    }
    if (const QString fault = platform::nameFault(folder); !fault.isEmpty())
        throw Error(BadFileName,
                    QStringLiteral("The program's folder '%1': %2").arg(folder, fault));
    // A folder from the command line or the environment is relative to the current one.
    folder = nativePath(QDir::cleanPath(QDir().absoluteFilePath(withOwnSeparators(folder))));
    if (!QDir().mkpath(folder))
        throw Error(PathNotFound, QStringLiteral("Cannot create folder '%1'").arg(folder));
    fillFromShare(folder);
    setProgramFolder(folder);
}
