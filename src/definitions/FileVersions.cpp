#include "definitions/FileVersions.h"

#include "base/Clock.h"
#include "base/Error.h"
#include "base/Files.h"
#include "base/Paths.h"
#include "base/TimeZone.h"

#include <QDir>
#include <QFile>

namespace {

/// Versions are named after the instant of their end, so that sorted names are sorted versions.
const QString timeForm = QStringLiteral("yyyyMMdd-HHmmss-zzz");

QString backupFolder(const QString &path)
{
    return QFileInfo(nativePath(path)).path() + QLatin1String("/Backup/");
}

QString nameFor(const QString &path, qint64 instant)
{
    const QFileInfo file(path);
    return file.completeBaseName() + u'-' +
           QDateTime::fromMSecsSinceEpoch(instant, Qt::UTC).toString(timeForm) + u'.' +
           file.suffix();
}

/// Invalid when the name is not one of a version of that file.
QDateTime timeOf(const QString &path, const QString &name)
{
    const QFileInfo file(path);
    const QString before = file.completeBaseName() + u'-';
    const QString after = u'.' + file.suffix();
    if (!name.startsWith(before, Qt::CaseInsensitive) || !name.endsWith(after, Qt::CaseInsensitive))
        return {};
    QDateTime time = QDateTime::fromString(
        name.mid(before.size(), name.size() - before.size() - after.size()), timeForm);
    time.setTimeSpec(Qt::UTC);
    return time;
}

} // namespace

std::vector<FileVersion> versionsOf(const QString &path)
{
    std::vector<FileVersion> versions;
    const QFileInfoList files =
        QDir(backupFolder(path)).entryInfoList(QDir::Files, QDir::Name | QDir::Reversed);
    for (const QFileInfo &file : files) {
        const QDateTime time = timeOf(path, file.fileName());
        if (time.isValid())
            versions.push_back({file.filePath(), wallTime(time.toMSecsSinceEpoch()), file.size()});
    }
    return versions;
}

void keepVersion(const QString &path, QByteArrayView content)
{
    std::vector<FileVersion> versions = versionsOf(path);
    if (!versions.empty() && versions.front().bytes == content.size()) {
        try {
            if (readFile(versions.front().path) == content)
                return;
        } catch (const Error &) { // one that cannot be read is no version of anything
        }
    }
    const QString folder = backupFolder(path);
    QString message;
    if (const int number = EnsureFolder(folder, message); number != 0)
        throw Error(number, message);
    qint64 instant = currentInstant();
    while (fileExists(folder + nameFor(QFileInfo(path).fileName(), instant)))
        ++instant;
    saveFile(folder + nameFor(QFileInfo(path).fileName(), instant), content);
    versions = versionsOf(path);
    while (static_cast<qsizetype>(versions.size()) > versionsKept) {
        QFile::remove(versions.back().path);
        versions.pop_back();
    }
}
