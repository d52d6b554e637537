#include "core/platform/FileSystem.h"

#include <QFile>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <memory>
#include <unistd.h>

namespace platform {

qint64 processId()
{
    return ::getpid();
}

bool syncToDisk(int fileHandle)
{
    // Pipes and some network file systems cannot sync; that is no loss of data.
    return ::fsync(fileHandle) == 0 || errno == EINVAL || errno == EROFS;
}

bool replaceFile(const QString &from, const QString &to, QString &reason)
{
    if (std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0)
        return true;
    reason = QString::fromLocal8Bit(std::strerror(errno));
    return false;
}

bool openToRead(QFile &file)
{
    return file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

QString entryIgnoringCase(const QString &folder, const QString &name)
{
    const QByteArray path = folder.isEmpty() ? QByteArray(".") : QFile::encodeName(folder);
    const std::unique_ptr<DIR, int (*)(DIR *)> entries(::opendir(path.constData()), ::closedir);
    QString found;
    while (const dirent *entry = entries ? ::readdir(entries.get()) : nullptr) {
        const QString candidate = QFile::decodeName(entry->d_name);
        if (candidate.compare(name, Qt::CaseInsensitive) == 0 &&
            (found.isNull() || candidate < found))
            found = candidate;
    }
    return found;
}

QString nameFault(const QString &)
{
    return QString();
}

} // namespace platform
