#pragma once

#include <QString>

namespace platform {

/// A lock on a file that at most one process holds at a time. The system releases it when its
/// holder ends, however it ends; the file itself stays. Processes that this one starts do not
/// inherit the lock. Only the owner can open the file, so that no other user can take it; on
/// Windows the folder's rights apply.
class InstanceLock
{
public:
    explicit InstanceLock(const QString &path);
    ~InstanceLock();
    InstanceLock(const InstanceLock &) = delete;
    InstanceLock &operator=(const InstanceLock &) = delete;

    /// Takes the lock without waiting; false when another process holds it. Once taken it stays
    /// held until release() or destruction. Throws Error that names the file when it cannot be
    /// made, trusted or locked.
    bool tryLock();
    void release();

private:
    QString m_path;
    qintptr m_handle = -1;
};

} // namespace platform
