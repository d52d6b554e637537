#pragma once

#include <QString>

namespace platform {

/// A lock on a file that at most one process holds at a time. The system releases it when its
/// holder ends, however it ends; the file itself stays and means nothing. Processes that this one
/// starts do not inherit it. Only its owner may open the file, so that no other user can take the
/// lock; on Windows the folder's rights decide.
class InstanceLock
{
public:
    enum State {
        Held, ///< this process has it
        HeldByOther,
        Unavailable ///< the file cannot be made, trusted or locked; `reason` tells why
    };

    explicit InstanceLock(const QString &path);
    ~InstanceLock();
    InstanceLock(const InstanceLock &) = delete;
    InstanceLock &operator=(const InstanceLock &) = delete;

    /// Takes the lock without waiting. Once held it stays held until release() or destruction.
    State tryLock();
    void release();

    QString reason;

private:
    QString m_path;
    qintptr m_handle = -1;
};

} // namespace platform
