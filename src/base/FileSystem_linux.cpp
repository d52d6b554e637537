#include "base/FileSystem.h"

#include <QFile>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

QString lastReason()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

bool isRegular(int handle)
{
    struct stat status
    {};
    return ::fstat(handle, &status) == 0 && S_ISREG(status.st_mode);
}

/// Whether no process has another handle of the file: the system grants a write lease only then.
bool isOnlyHandle(int handle, qint64 maker)
{
    ::fcntl(handle, F_SETSIG, SIGURG); // sent when the lease is broken; ignored by default
    if (::fcntl(handle, F_SETLEASE, F_WRLCK) == 0)
        return true;
    if (errno == EAGAIN)
        return false;
    return ::kill(static_cast<pid_t>(maker), 0) != 0 && errno == ESRCH;
}

} // namespace

qint64 processId()
{
    return ::getpid();
}

bool syncToDisk(int fileHandle)
{
    // Pipes and some network file systems cannot sync; no data is lost by that.
    return ::fsync(fileHandle) == 0 || errno == EINVAL || errno == EROFS;
}

bool replaceFile(const QString &from, const QString &to, QString &reason)
{
    if (std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0)
        return true;
    reason = lastReason();
    return false;
}

bool openToRead(QFile &file, QString &reason)
{
    const int handle = ::open(QFile::encodeName(file.fileName()).constData(),
                              O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (handle < 0) {
        reason = lastReason();
        return false;
    }
    if (!isRegular(handle)) {
        ::close(handle);
        reason = QStringLiteral("it is not a regular file");
        return false;
    }
    return file.open(handle, QIODevice::ReadOnly | QIODevice::Unbuffered, QFile::AutoCloseHandle);
}

bool openToCreate(QFile &file, QFile::Permissions permissions)
{
    return file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered,
                     permissions);
}

void removeUnlessOpen(const QString &path, qint64 maker)
{
    const QByteArray name = QFile::encodeName(path);
    const int handle =
        ::open(name.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW | O_CLOEXEC);
    if (handle < 0)
        return;
    if (isRegular(handle) && isOnlyHandle(handle, maker))
        ::unlink(name.constData());
    ::close(handle);
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

QString nameFault(const QString &path)
{
    const bool onDrive = path.size() >= 2 && path[0].unicode() < 0x80 && path[0].isLetter() &&
                         path[1] == u':' &&
                         (path.size() == 2 || path[2] == u'\\' || path[2] == u'/');
    if (!onDrive && !path.startsWith(QLatin1String("\\\\")))
        return QString();
    return QStringLiteral("it names a drive or a network share of Windows; change it to a folder "
                          "of this system, such as '/srv/graphs', or to a path relative to the "
                          "program's folder");
}

} // namespace platform
