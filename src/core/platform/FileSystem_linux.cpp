#include "core/platform/FileSystem.h"

#include <QFile>

#include <cerrno>
#include <cstdio>
#include <cstring>
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

} // namespace platform
