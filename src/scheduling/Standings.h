#pragma once

#include "report/TablesOfContents.h"

#include <QString>

/// The master table of contents beside the definitions and the run history. Main thread only.

/// What it tells about each report in gReportDefs.
ReportStandings reportStandings();

/// Brings it in step with gReportDefs, when there is one already; for changes outside of a run.
/// False when it cannot be written, which a status line tells.
bool refreshReportList();
