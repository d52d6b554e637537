#pragma once

#include <QByteArray>
#include <QString>

/// Files, read whole and written whole. Safe on any thread, but for the folder texts of core/Paths.

inline constexpr qint64 mostDefinitionBytes = 64 * 1024 * 1024; ///< XML files and templates

/// The only way from a configured path to the file system; an absolute path, but for an empty text.
/// A relative one stands below the program's folder. Off Windows "\" becomes "/", and where the
/// exact name does not exist each part is looked for without regard to case; parts that are not
/// found at all stay as written, and so does a path of Windows' drives and network shares, which no
/// file can be read from or written to.
QString nativePath(const QString &configured);

/// The same with the last part as it is written, whatever else the folder has: for files and
/// folders that pages link to, which a web server finds by their exact names only.
QString exactPath(const QString &configured);

bool fileExists(const QString &configured);
bool folderExists(const QString &configured);

/// A regular file's bytes. Throws Error that names the file: not found, not readable, no regular
/// file, larger than `most`, or shorter than its size said.
QByteArray readFile(const QString &configured, qint64 most = mostDefinitionBytes);

/// A file's text: UTF-8 (a byte-order mark is dropped); bytes that are no valid UTF-8 are read as
/// Windows-1252.
QString readTextFile(const QString &configured, qint64 most = mostDefinitionBytes);
QString decodeText(QByteArrayView bytes);

/// The one way to write a file. The bytes go to a temporary file beside the target, are flushed and
/// synced, and replace the target in one step; until then an old file stays whole. Throws Error
/// that names the file; no temporary file is left behind. The new file has the old one's
/// permissions, but for those that let others than its owner write. The first write into a folder
/// removes what processes that were killed left there: temporary files that are older than an hour
/// and that nobody has open.
void saveFile(const QString &configured, QByteArrayView content);
/// The same under exactly this name (exactPath), which also spares a search through the folder.
void saveExactFile(const QString &configured, QByteArrayView content);
void saveTextFile(const QString &configured, const QString &text);
/// The same as saveFile for what holds passwords: nobody but its owner may read it. On Windows the
/// folder's rights decide.
void savePrivateFile(const QString &configured, QByteArrayView content);

/// Copies a file to exactly that name, replacing what has it. Throws Error that names the file at
/// fault.
void copyFile(const QString &source, const QString &destination);
/// The same with every error ignored; the caller finds out by reading the destination.
void CopyFileQuiet(const QString &source, const QString &destination);
