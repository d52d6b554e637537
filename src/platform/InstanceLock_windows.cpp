#include "base/Error.h"
#include "base/WindowsApi_windows.h"
#include "platform/InstanceLock.h"

namespace platform {

InstanceLock::InstanceLock(const QString &path)
    : m_path(path)
{}

InstanceLock::~InstanceLock()
{
    release();
}

bool InstanceLock::tryLock()
{
    if (m_handle != -1)
        return true;
    // Shared with everybody: a scanner that looks at the file must not look like an instance. What
    // decides is the lock on its first byte. Started programs do not inherit the handle.
    const HANDLE file = ::CreateFileW(wide(longPath(m_path)), GENERIC_READ | GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD error = ::GetLastError();
    if (file != INVALID_HANDLE_VALUE) {
        OVERLAPPED firstByte{};
        if (::LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0,
                         &firstByte)) {
            m_handle = reinterpret_cast<qintptr>(file);
            return true;
        }
        error = ::GetLastError();
        ::CloseHandle(file);
        if (error == ERROR_LOCK_VIOLATION || error == ERROR_IO_PENDING)
            return false;
    }
    throw Error(PermissionDenied, QStringLiteral("'%1': ").arg(m_path) + systemText(error));
}

void InstanceLock::release()
{
    if (m_handle == -1)
        return;
    ::CloseHandle(reinterpret_cast<HANDLE>(m_handle));
    m_handle = -1;
}

} // namespace platform
