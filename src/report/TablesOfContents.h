#pragma once

#include "report/Archive.h"
#include "report/ReportPlan.h"
#include "report/RunSession.h"
#include "report/SummaryFigures.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

/// The navigation pages, and the folders of the output tree, on the thread of the run. Failures are
/// shown as status lines and thrown as ShownError; pages are written whole or not at all.

/// What the master table of contents tells about a report's runs: texts are plain, empty when
/// unknown.
struct ReportStanding
{
    QString lastRun;
    QString lastResult;
    QString lastNote; ///< a sentence where the last run left no whole set of new pages
    QString nextDue;
    bool hasPages = false;
    std::optional<SummaryFigures> figures; ///< of those pages
    std::vector<ArchivedRun> archive;      ///< what it keeps of finished runs
};

/// A report definition as the master table of contents lists it.
struct ContentsEntry
{
    QString id;
    QString title;
    QString chartTitle; ///< empty when there is no such chart
    QStringList muids;  ///< of the report's devices
    ReportStanding standing;
};

/// A wall time as the master table of contents shows it.
QString standingTimeText(const QDateTime &time);

/// Writes the master table of contents, and creates the folder of each report and of each of its
/// devices that the database knows.
void GenerateMasterTOC(const std::vector<ContentsEntry> &entries, RunSession &session);

/// Writes the page alone once more, without the database. Shows a status line only when it fails.
void RefreshMasterTOC(const std::vector<ContentsEntry> &entries, const clsGrapherConfig &settings,
                      const RunLog &log);

/// Writes a report's top page and its device list.
void GenerateReportTOC(const PlannedReport &report, RunSession &session);
