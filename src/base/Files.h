#pragma once

#include <QByteArray>
#include <QString>

/// Files, read and written as a whole. Safe on any thread.

inline constexpr qint64 maxDefinitionBytes = 64 * 1024 * 1024; ///< XML files and templates

/// The only way from a configured path to the file system; an absolute path, except for an empty
/// text. A relative path is below the program's folder. Off Windows "\" becomes "/", and if the
/// exact name does not exist each part is searched without regard to case. Parts that are not found
/// stay as written, and so do paths with Windows drives and network shares, which cannot be used.
QString nativePath(const QString &configured);

/// The same, but with the last part exactly as written: for files and folders that pages link to,
/// as a web server finds only exact names.
QString exactPath(const QString &configured);

bool fileExists(const QString &configured);
bool folderExists(const QString &configured);

/// A regular file's bytes. Throws Error that names the file: not found, not readable, not a regular
/// file, larger than `maxBytes`, or shorter than its stated size.
QByteArray readFile(const QString &configured, qint64 maxBytes = maxDefinitionBytes);

/// A file's text: UTF-8 (a byte-order mark is dropped), or Windows-1252 if it is not valid UTF-8.
QString readTextFile(const QString &configured, qint64 maxBytes = maxDefinitionBytes);
QString decodeText(QByteArrayView bytes);

/// The one way to write a file. The bytes go to a temporary file beside the target, are flushed and
/// synced, and replace the target in one step; until then an old file stays intact. Throws Error
/// that names the file; the temporary file is removed. The new file has the old one's permissions,
/// except that only its owner may write. The first write into a folder removes the temporary files
/// that killed processes left there: those older than an hour that are not open.
void saveFile(const QString &configured, QByteArrayView content);
/// The same under exactly this name (exactPath), which also saves a search through the folder.
void saveExactFile(const QString &configured, QByteArrayView content);
void saveTextFile(const QString &configured, const QString &text);
/// As saveFile, for files with passwords: only the owner may read it. On Windows the folder's
/// rights apply.
void savePrivateFile(const QString &configured, QByteArrayView content);

/// Copies a file to exactly that name, replacing an existing one. Throws Error that names the file.
void copyFile(const QString &source, const QString &destination);
/// The same, ignoring all errors; the caller notices when it reads the destination.
void CopyFileQuiet(const QString &source, const QString &destination);
