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
/// its factory copy (".FAC"). A file that is missing, unreadable, malformed or of another root
/// element gives an empty collection and no message; a definition that cannot be read is passed
/// over with the status line "Error loading ... [number] description" (schedules: without one).
/// Nothing is thrown.
void LoadChartDefs();
void LoadScheduleDefs();
void LoadReportDefs();

/// The files of which the last loads could read nothing ("<file>:line:column: what"), a missing one
/// not among them. The event log has them too.
QStringList definitionFileErrors();
/// The single definitions that the last loads passed over, each named with its file and place.
QStringList definitionErrors();

/// Each puts a whole collection into its file, in the collection's order, and takes out what was
/// loaded and is no longer in the collection. All else that the file holds by now stays: comments,
/// unknown attributes, charts with Include="0", definitions that cannot be read, and those that
/// somebody added meanwhile. A failure becomes the status line "Error saving ... [number]
/// description", leaves the file as it was and is returned; nothing is thrown. A file that cannot
/// be read is never replaced: that is a failure.
std::optional<Error> SaveChartDefs();
std::optional<Error> SaveScheduleDefs();
std::optional<Error> SaveReportDefs();

/// What a run has to tell: each writes dates into the file as it stands by then, and not a byte
/// else. What the file holds no longer is left out. Failures as above.
std::optional<Error> saveLastRunDates(const clsReportDef &report);
std::optional<Error> saveChartPeriods(const std::vector<std::shared_ptr<clsGraphDef>> &charts);

/// What an editor does on OK: puts a definition under its identity into its file, which keeps all
/// else as above, and into its collection. When that fails, collection and file are as before and
/// the Error is thrown.
void storeDefinition(const std::shared_ptr<clsGraphDef> &chart);
void storeDefinition(const std::shared_ptr<clsScheduleDef> &schedule);
void storeDefinition(const std::shared_ptr<clsReportDef> &report);

/// Removes a report from file and collection; fails as storeDefinition does.
void removeReportDef(const QString &reportId);

/// Empties the collections and forgets which files were loaded; at shutdown, and for tests.
void resetDefinitions();
