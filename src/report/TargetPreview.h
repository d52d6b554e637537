#pragma once

#include "database/MonitoringDatabase.h"
#include "definitions/clsReportDef.h"
#include "report/ReportPlan.h"

#include <functional>

/// What a report's target, service hours, maintenance and limits would have made of the last seven
/// full days: computed as a run does.
struct TargetPreview
{
    Period period;              ///< instants in seconds
    int devices = 0;            ///< of the report, in the database
    int done = 0;               ///< of them, so far
    int withTarget = 0;         ///< those done that have a target and tests for it
    QStringList missed;         ///< "name 98.2 % of 99.5 %", of those that missed it
    qint64 excludedSeconds = 0; ///< of the period, outside of service time
    int withLimit = 0;          ///< items that have a limit and values
    QStringList exceeded;       ///< "device, item", of those whose 95th percentile reaches it
};

/// The plan for it, of a report as it stands. Main thread only.
PlannedReport targetPreviewPlan(const clsReportDef &report);

/// Computes it, on any thread; `tell` takes what is known after each device and says whether to go
/// on. Throws Error.
void previewTargets(PlannedReport plan, MonitoringDatabase &database,
                    const std::function<bool(const TargetPreview &)> &tell);
