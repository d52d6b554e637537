#pragma once

#include "report/ReportPlan.h"
#include "report/Templates.h"

#include <QHash>
#include <QString>

/// The navigation pages, and the folders of the output tree. Main thread only. Failures are shown
/// as status lines and returned in `errorText`; pages are written whole or not at all.

/// What the master table of contents tells about a report's runs: plain texts, empty when unknown.
struct ReportStanding
{
    QString lastRun;
    QString lastResult;
    QString lastNote; ///< a sentence where the last run left no whole set of new pages
    QString nextDue;
};
using ReportStandings = QHash<QString, ReportStanding>; ///< by ReportID in lower case

/// A wall time as the master table of contents shows it.
QString standingTimeText(const QDateTime &time);

/// Writes the master table of contents with an entry for each report definition, and creates the
/// folder of each report and of each of its devices that the database knows.
bool GenerateMasterTOC(QString &errorText, const ReportStandings &standings = {});

/// Writes the page alone once more, from the report definitions in memory and without the
/// database. Shows a status line only when it fails.
bool RefreshMasterTOC(QString &errorText, const ReportStandings &standings);

/// Writes a report's top page and its device list, after sorting the report's devices by name.
bool GenerateReportTOC(PlannedReport &report, QString &errorText);
