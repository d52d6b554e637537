#pragma once

#include "definitions/ReportDef.h"
#include "report/Templates.h"

/// Makes sure that every page of a report has its template, those of its charts too. To be called
/// with an open database and before the first page is written, so that old pages stand. Throws
/// Error that names the template.
void requireTemplates(const clsReportDef &report, const clsChartOutputBuilder &builder);
