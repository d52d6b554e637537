#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <vector>

/// Earlier versions of a file: the last five, in the folder "Backup" beside it. Safe on any thread
/// as long as one at a time keeps versions of the same file.

struct FileVersion
{
    QString path;       ///< of the version
    QDateTime replaced; ///< wall time at which the next version took its place
    qint64 bytes = 0;
};

inline constexpr qsizetype versionsKept = 5;

/// Keeps the content that a file is about to lose, and removes what is older than the last five.
/// Content that is the newest version already is not kept twice. Throws Error that names the
/// version's file.
void keepVersion(const QString &path, QByteArrayView content);

/// Newest first.
std::vector<FileVersion> versionsOf(const QString &path);
