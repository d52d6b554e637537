#include "core/platform/InstanceLock.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace platform {

InstanceLock::InstanceLock(const QString &path)
    : m_path(path)
{}

InstanceLock::~InstanceLock()
{
    release();
}

InstanceLock::State InstanceLock::tryLock()
{
    if (m_handle >= 0)
        return Held;
    // Nothing is ever written to the file.
    const int file =
        ::open(QFile::encodeName(m_path).constData(), O_RDONLY | O_CREAT | O_CLOEXEC, 0666);
    if (file >= 0 && ::flock(file, LOCK_EX | LOCK_NB) == 0) {
        m_handle = file;
        return Held;
    }
    const int error = errno;
    if (file >= 0)
        ::close(file);
    if (error == EWOULDBLOCK)
        return HeldByOther;
    reason = QStringLiteral("'%1': ").arg(m_path) + QString::fromLocal8Bit(std::strerror(error));
    return Unavailable;
}

void InstanceLock::release()
{
    if (m_handle < 0)
        return;
    ::close(static_cast<int>(m_handle));
    m_handle = -1;
}

} // namespace platform
