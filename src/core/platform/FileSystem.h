#pragma once

#include <QFile>
#include <QString>

/// File-system services that differ between systems. Safe on any thread.
namespace platform {

qint64 processId();

/// Has the system write a file's data to the disk; false when it reports a failure.
bool syncToDisk(int fileHandle);

/// Renames `from` to `to` in one step, replacing `to`. Tries again for a short while where another
/// program holds the target open. On failure false, with the system's reason.
bool replaceFile(const QString &from, const QString &to, QString &reason);

/// Opens a regular file for unbuffered reading without standing in anybody's way: others may write,
/// rename and remove it meanwhile. Whatever else has the name (a pipe, a device, a folder) is never
/// waited for. On failure false, with the reason.
bool openToRead(QFile &file, QString &reason);

/// Makes a file that must not exist yet, for unbuffered writing, with these permissions less those
/// that the process takes from all its new files. On Windows the folder's rights decide. On failure
/// false; the file's errorString() tells why.
bool openToCreate(QFile &file, QFile::Permissions permissions);

/// Removes a file that the process `maker` made, unless somebody has it open; where the system
/// cannot tell that, unless `maker` runs still.
void removeUnlessOpen(const QString &path, qint64 maker);

/// The entry of a folder whose name differs from `name` in case alone, the least one of several;
/// null when there is none, and where the system itself ignores case. An empty folder is the
/// current one. Costs one reading of the folder's names.
QString entryIgnoringCase(const QString &folder, const QString &name);

/// Why the system can have no file or folder of a path's names, such as "CON" or "a?b" on Windows,
/// "C:\a" elsewhere; empty when it can. Looks at the text alone.
QString nameFault(const QString &path);

} // namespace platform
