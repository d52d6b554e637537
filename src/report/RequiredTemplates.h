#pragma once

#include "report/ReportPlan.h"
#include "report/Templates.h"

/// Makes sure that every page of a report has its template, those of its charts too. To be called
/// before the first page is written, so that old pages stand. Throws Error that names the template.
void requireTemplates(const PlannedReport &report, const Inventory &inventory,
                      const clsChartOutputBuilder &builder);
