#pragma once

#include <QString>
#include <QStringList>

/// Folder texts. A configured folder may be written with "\" or "/"; folder texts of the program
/// itself end in the platform's separator.

#ifdef Q_OS_WIN
inline constexpr QChar pathSeparator = u'\\';
#else
inline constexpr QChar pathSeparator = u'/';
#endif

/// True for "\" and "/": both are accepted on input everywhere.
bool isSeparator(QChar character);

/// The program's own folder, without a trailing separator: the folder that holds
/// "VTRGConfigV6.FAC", the definition files and the templates.
QString programFolder();

/// Sets the program's folder (the option --home, and tests), before other threads read it.
void setProgramFolder(const QString &folder);

/// The folder of the installed program's read-only files: beside the program, or the share folder
/// of its installation. Throws Error when neither has the factory files.
QString shareFolder();

/// A path with the system's own separators, for messages. One that is not possible on this system,
/// such as "C:\a" off Windows, is not changed.
QString withOwnSeparators(const QString &path);

/// Trims; an empty text becomes the program's folder; the result ends in a separator and has the
/// system's own.
QString NormalizeFolder(const QString &text);

/// Trims; a non-empty result ends in a separator and has the system's own, an empty text stays
/// empty.
QString WithBackslash(const QString &text);

/// Makes sure that a folder exists, creating it with all missing parents. A relative path is below
/// the program's folder. Returns 0 when it exists or was created, else the error's number;
/// `message` is then its description, or "Created '<folder>'" after a creation. The path of the
/// last success is not checked again. On any thread.
int EnsureFolder(const QString &path, QString &message);

/// The root that EnsureFolder never creates and the parts below it, in order.
struct FolderParts
{
    QString root;
    QStringList parts;
};
/// Splits a path for EnsureFolder: "\\server\share\..." and "C:\first\..." by Windows' rules,
/// "/..." from the root, anything else below the program's folder.
FolderParts folderParts(const QString &path);

/// The environment variable for the program's folder, used without the option --home.
inline constexpr char homeVariable[] = "VANTREL_GRAPHER_HOME";

/// Finds the program's folder: `home` or `homeVariable` if given; the folder of the executable if
/// it has the factory file; else the user's data folder. The first and the last are filled once
/// from the installed share folder. Throws Error when no factory files are found.
void locateProgramFolder(const QString &home);
