#pragma once

#include <QString>

/// Fixes the data folders and the run mode. Reads `gCommandLine` in the system's own syntax,
/// `[/AUTO] [/DBPATH=<folder>]`: keywords and values without regard to case, double quotes
/// ignored, "=" separating name and value with blanks allowed around it. Sets gAutoMode, gDataPath
/// and gGraphDataPath; with /AUTO writes the event that an unattended run has started.
void InitGrapher();

/// How many other processes of this program run.
int VTRGraphPrevInstance();

/// Writes the event that an unattended run has finished; once per process, later calls do nothing.
void logRunFinished();
