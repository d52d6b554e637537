#include "base/Error.h"
#include "platform/InstanceLock.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

QString textOf(int error)
{
    return error == ELOOP ? QStringLiteral("it is a symbolic link")
                          : QString::fromLocal8Bit(std::strerror(error));
}

/// Keeps other users from opening a lock file. Empty on success, else why it is not to be trusted.
QString closeToOthers(int file)
{
    struct stat status
    {};
    if (::fstat(file, &status) != 0)
        return textOf(errno);
    if (!S_ISREG(status.st_mode))
        return QStringLiteral("it is not a regular file");
    if (status.st_uid != ::geteuid())
        return QStringLiteral("it belongs to another user, who could stop all runs with it; "
                              "remove it");
    if ((status.st_mode & 077) != 0 && ::fchmod(file, 0600) != 0)
        return textOf(errno);
    return QString();
}

} // namespace

InstanceLock::InstanceLock(const QString &path)
    : m_path(path)
{}

InstanceLock::~InstanceLock()
{
    release();
}

bool InstanceLock::tryLock()
{
    if (m_handle >= 0)
        return true;
    // Nothing is ever written to the file; some network file systems ask for the right to.
    const int file =
        ::open(QFile::encodeName(m_path).constData(),
               O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0600);
    QString fault = file < 0 ? textOf(errno) : closeToOthers(file);
    if (fault.isEmpty() && ::flock(file, LOCK_EX | LOCK_NB) == 0) {
        m_handle = file;
        return true;
    }
    const int error = errno;
    if (file >= 0)
        ::close(file);
    if (fault.isEmpty() && error == EWOULDBLOCK)
        return false;
    if (fault.isEmpty())
        fault = textOf(error);
    throw Error(PermissionDenied, QStringLiteral("'%1': ").arg(m_path) + fault);
}

void InstanceLock::release()
{
    if (m_handle < 0)
        return;
    ::close(static_cast<int>(m_handle));
    m_handle = -1;
}

} // namespace platform
