#pragma once

#include <QString>
#include <QStringList>

/// Folder texts. A configured folder may be written with "\" or "/"; folder texts that the program
/// makes end in the platform's separator.

#ifdef Q_OS_WIN
inline constexpr QChar pathSeparator = u'\\';
#else
inline constexpr QChar pathSeparator = u'/';
#endif

/// True for "\" and "/": both are understood on input everywhere.
bool isSeparator(QChar character);

/// The program's own folder, without a trailing separator: the folder that holds
/// "VTRGConfigV6.FAC", the definition files and the templates.
QString programFolder();

/// Names the program's folder for this process (the option --home, and tests).
void setProgramFolder(const QString &folder);

/// Where the installed program keeps what it only reads: beside the program, or in the share folder
/// of its installation. Throws Error when neither holds the factory files.
QString shareFolder();

/// A path with the system's own separators, as messages show it. One that cannot be on this system,
/// such as "C:\a" off Windows, stays as it is.
QString withOwnSeparators(const QString &path);

/// Trims; an empty text becomes the program's folder; the result ends in a separator and has the
/// system's own.
QString NormalizeFolder(const QString &text);

/// Trims; a non-empty result ends in a separator and has the system's own, an empty text stays
/// empty.
QString WithBackslash(const QString &text);

/// Makes sure that a folder exists, creating it with all missing parents. A relative path stands
/// below the program's folder. Returns 0 when it exists or was created, else the error's number;
/// `message` then holds its description, and "Created '<folder>'" after a creation. The same path
/// right after a success is not looked at again.
int EnsureFolder(const QString &path, QString &message);

/// The root that EnsureFolder never creates and the parts below it, in order.
struct FolderParts
{
    QString root;
    QStringList parts;
};
/// Splits a path as EnsureFolder walks it: "\\server\share\..." and "C:\first\..." by Windows'
/// rules, "/..." from the root, anything else below the program's folder.
FolderParts folderParts(const QString &path);

/// Forgets the last folder that EnsureFolder saw, and the folder set by setProgramFolder.
void resetPaths();

/// The environment variable that names the program's folder where no option does.
inline constexpr char homeVariable[] = "VANTREL_GRAPHER_HOME";

/// Where the program's folder is, and fills it where it has to be filled:
/// `home` or `homeVariable` when given; the folder of the executable when it
/// holds the factory file; else the user's data folder. The first and the last are filled once
/// from the installed share folder. Throws Error when no factory files can be found.
void locateProgramFolder(const QString &home);
