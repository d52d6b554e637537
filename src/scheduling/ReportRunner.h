#pragma once

#include "definitions/GraphDef.h"

#include <QString>
#include <QStringList>

/// The run of selected reports, unattended or from the window. Main thread only.

/// What an interactive run asks of the window around it.
class RunHost
{
public:
    virtual ~RunHost() = default;

    /// Whether to run without definition files of which nothing can be read, and which stay as they
    /// are; false cancels the whole run.
    virtual bool acceptErrors(const QStringList &errors) = 0;
    /// Lets the user set a custom range's StartTime and EndTime, once for all selected reports that
    /// use the chart; false cancels the whole run.
    virtual bool askCustomRange(clsGraphDef &chart, const QStringList &reportTitles) = 0;
    virtual void showMessage(const QString &title, const QString &text) = 0;
    virtual void openInBrowser(const QString &url) = 0;
};

/// Which of the selected reports a run takes.
enum class RunChoice {
    Due, ///< those with at least one schedule that has fallen due
    All  ///< all of them, whatever their schedules say
};

struct RunResult
{
    int reports = 0;       ///< reports taken into the run
    int failedReports = 0; ///< those of them that could not be produced
    QString error; ///< what else failed: a table of contents, a save of definitions or history
    int chartsWithoutImage = 0;
    bool cancelled = false;

    /// Whether there is less than there should be, be it pages, an image or a record.
    bool failed() const { return failedReports > 0 || chartsWithoutImage > 0 || !error.isEmpty(); }
};

/// Runs reports given by their ReportID: loads all definitions, writes the master table of
/// contents, copies the companion files and produces each report. A report that was produced gets
/// the present time as LastRunDate of all its schedules; one that failed keeps its dates, so that
/// it stays due by its schedules' rules. A single definition that cannot be read is named in
/// RunResult::error. `host` is null in an unattended run, which does not begin where nothing can be
/// read of a definition file.
///
/// What goes wrong with one report, be it that memory runs out, does not keep the others from being
/// produced. The history has it, core/Trouble and, in an unattended run by schedule, the event log,
/// there once a day.
///
/// While a run is in progress a further call does nothing: set CancelRequested to cancel it.
RunResult runReports(const QStringList &reportIds, RunChoice choice, RunHost *host = nullptr);

bool runInProgress();
