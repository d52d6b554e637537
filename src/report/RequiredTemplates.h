#pragma once

#include "report/ReportPlan.h"
#include "report/Templates.h"

/// Makes sure that every page of a report has its template, its chart pages included. Called before
/// the first page is written, so that old pages stay. Throws Error that names the template.
void requireTemplates(const PlannedReport &report, const Inventory &inventory,
                      const clsChartOutputBuilder &builder, const clsGrapherConfig &settings);
