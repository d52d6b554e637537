#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/// Sets the data folders and the run mode. Reads `gCommandLine` in the product's syntax,
/// `[/AUTO] [/DBPATH=<folder>]`: keywords and values without regard to case, double quotes
/// ignored, "=" separating name and value with blanks allowed around it. Sets gAutoMode, gDataPath
/// and gGraphDataPath; with /AUTO writes the event that an unattended run has started.
void InitGrapher();

/// The folder that "/DBPATH=" names in a command line, with a separator at its end; the last one
/// counts, and no value means the program's folder.
std::optional<QString> dataPathIn(const QString &commandLine);

/// Whether a process of this program with these arguments opens a window or runs reports, and does
/// not just look something up or change the registration.
bool makesReports(const QStringList &arguments);

/// How many other processes of this program, of this user or root, make reports.
int VTRGraphPrevInstance();

/// Writes the event that an unattended run has finished; once, later calls do nothing.
void logRunFinished();
