#pragma once

#include <QString>

/// File-system services that differ between systems. Safe on any thread.
namespace platform {

qint64 processId();

/// Has the system write a file's data to the disk; false when it reports a failure.
bool syncToDisk(int fileHandle);

/// Renames `from` to `to` in one step, replacing `to`. Tries again for a short while where another
/// program holds the target open. On failure false, with the system's reason.
bool replaceFile(const QString &from, const QString &to, QString &reason);

} // namespace platform
