#pragma once

#include "database/Inventory.h"
#include "definitions/clsReportDef.h"

#include <vector>

/// Reports for somebody who has none yet, made from what the database holds.

struct ReadyReport
{
    QString title;
    std::vector<SelectionRule> rules; ///< each of them finds something
    QString found;                    ///< "24 devices, 61 data items"
};

/// Those that would show something. Pure; safe on any thread.
std::vector<ReadyReport> readyReports(const Inventory &inventory);

/// Its definition, not saved yet: over the last seven days and run every week, as far as there is
/// such a chart and such a schedule. Main thread only.
clsReportDef reportFrom(const ReadyReport &ready);
