#pragma once

#include "definitions/ReportDef.h"
#include "report/Templates.h"

#include <QString>

/// The navigation pages, and the folders of the output tree. Main thread only. Failures are shown
/// as status lines and returned in `errorText`; pages are written whole or not at all.

/// Writes the master table of contents with an entry for each report definition, and creates the
/// folder of each report and of each of its devices that the database knows. Reloads the report
/// definitions from their file first: pointers into gReportDefs taken before stay valid, but are
/// no longer what the store holds.
bool GenerateMasterTOC(QString &errorText);

/// Writes a report's top page and its device list, after sorting the report's devices by name.
bool GenerateReportTOC(clsReportDef &report, QString &errorText, clsChartOutputBuilder &builder);
