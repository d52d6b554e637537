#pragma once

#include "definitions/Advice.h"
#include "definitions/Collection.h"
#include "definitions/clsGraphDef.h"
#include "definitions/clsReportDef.h"
#include "definitions/clsScheduleDef.h"

/// Which reports use a chart or a schedule, and copies of definitions. Pure functions.

using Reports = std::vector<std::shared_ptr<clsReportDef>>;

/// In the order of the collection.
Reports reportsWithChart(const Collection<clsReportDef> &reports, const QString &chartId);
Reports reportsWithSchedule(const Collection<clsReportDef> &reports, const QString &scheduleId);

/// "used by 3 reports: Links, Servers, Switches", at most `named` of them by name; "used by no
/// report".
QString usageText(const Reports &reports, qsizetype named = 10);

/// Copies of reports that use another chart, or another schedule, in place of the one they have.
/// The schedule keeps the last run of the one that it replaces, unless the report has it already.
Reports withChart(const Reports &reports, const QString &chartId);
Reports withSchedule(const Reports &reports, const QString &scheduleId,
                     const QString &replacementId);

/// A copy under a new id and a title of its own, "Servers (copy)". A report's counts as having run
/// now, as one whose schedules are newly chosen.
clsGraphDef duplicate(const clsGraphDef &chart, const Collection<clsGraphDef> &all);
clsScheduleDef duplicate(const clsScheduleDef &schedule, const Collection<clsScheduleDef> &all);
clsReportDef duplicate(const clsReportDef &report, const Collection<clsReportDef> &all);

/// Why a definition cannot have a title: it is blank, or another one has it. Empty when it can.
template <typename Definition>
QString titleFault(const Collection<Definition> &all, QString Definition::*titleOf,
                   const QString &id, const QString &title)
{
    if (titleKey(title).isEmpty())
        return QStringLiteral("Please enter a title.");
    return sameTitleWarning(all, titleOf, id, title).isEmpty()
               ? QString()
               : QStringLiteral("Another definition has the title \u201c%1\u201d already. Please "
                                "enter a different one.")
                     .arg(title.trimmed());
}
