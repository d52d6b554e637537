#pragma once

#include <QFile>
#include <QString>

/// File-system services that differ between systems. Safe on any thread.
namespace platform {

qint64 processId();

/// Writes a file's data to the disk; false when the system reports a failure.
bool syncToDisk(int fileHandle);

/// Renames `from` to `to` in one step, replacing `to`. Retries for a short while if another program
/// has the target open. On failure false, with the system's reason.
bool replaceFile(const QString &from, const QString &to, QString &reason);

/// Opens a regular file for unbuffered reading; others may still write, rename and remove it. A
/// pipe, device or folder is refused without waiting. On failure false, with the reason.
bool openToRead(QFile &file, QString &reason);

/// Creates a file that must not exist yet, for unbuffered writing, with these permissions less the
/// process's umask. On Windows the folder's rights apply. On failure false; see errorString().
bool openToCreate(QFile &file, QFile::Permissions permissions);

/// Removes a file that the process `maker` created, unless it is open; where the system cannot say
/// whether it is, unless `maker` is still running.
void removeUnlessOpen(const QString &path, qint64 maker);

/// The entry of a folder whose name differs from `name` in case only, the first one of several in
/// alphabetical order; null when there is none, and where the system itself ignores case. An empty
/// folder is the current one. Reads all names of the folder.
QString entryIgnoringCase(const QString &folder, const QString &name);

/// Why the system does not allow a path, such as "CON" or "a?b" on Windows, "C:\a" elsewhere; empty
/// when it does. Checks only the text.
QString nameFault(const QString &path);

} // namespace platform
