#pragma once

#include "definitions/Collection.h"
#include "definitions/GraphDef.h"
#include "definitions/ReportDef.h"
#include "definitions/ScheduleDef.h"

#include <optional>

/// All definitions of the user, each kind in one XML file in the configuration folder of
/// core/GrapherConfig.h. Main thread only.

extern Collection<clsGraphDef> gChartDefs;       ///< by ChartID, in title order
extern Collection<clsScheduleDef> gScheduleDefs; ///< by ScheduleID, in file order
extern Collection<clsReportDef> gReportDefs;     ///< by ReportID, in title order

/// Each replaces a collection by the content of "ChartDefs.XML", "ChartSchedules.XML" or
/// "ChartSelection.XML". The first load of a process copies a missing chart or schedule file from
/// its factory copy (".FAC"). A file that is missing, unreadable or malformed gives an empty
/// collection and no message; an error inside it ends the load with the status line
/// "Error loading ... [number] description" (schedules: without one), and the collection keeps what
/// was read before. Nothing is thrown.
void LoadChartDefs();
void LoadScheduleDefs();
void LoadReportDefs();

/// What was wrong with the files that the last load of each could not read ("<file>:line:column:
/// what"), a missing file not among them. The event log has it too.
QStringList definitionFileErrors();

/// Each writes a whole collection to its file. A failure becomes the status line
/// "Error saving ... [number] description", leaves the file as it was and is returned; nothing is
/// thrown.
///
/// Before the save replaces a file that this process could not read whole (a slip of the pen in a
/// file edited by hand), the file is kept beside it with ".bad" added to its name.
std::optional<Error> SaveChartDefs();
std::optional<Error> SaveScheduleDefs();
std::optional<Error> SaveReportDefs();

/// What an editor does on OK: puts a definition under its identity into its collection, in the
/// place of the one that was there, and saves the collection. When that fails, collection and file
/// are as before and the Error is thrown.
void storeDefinition(const std::shared_ptr<clsGraphDef> &chart);
void storeDefinition(const std::shared_ptr<clsScheduleDef> &schedule);
void storeDefinition(const std::shared_ptr<clsReportDef> &report);

/// Removes a report and saves the rest; fails as storeDefinition does.
void removeReportDef(const QString &reportId);

/// Empties the collections and forgets which files were loaded; at shutdown, and for tests.
void resetDefinitions();
