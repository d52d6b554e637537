#pragma once

#include "config/Status.h"
#include "scheduling/RunPlan.h"

/// The run of selected reports in three steps: planRun, executeRun, finishRun. The first and the
/// last one belong to the main thread, which has the definitions.

struct RunResult
{
    int reports = 0;       ///< reports taken into the run
    int failedReports = 0; ///< those of them that could not be produced
    QString error; ///< what else failed: a table of contents, a save of definitions or history
    int chartsWithoutImage = 0;
    bool cancelled = false;

    /// When reports were produced, as wall times: their LastRunDate by now.
    std::vector<std::pair<QString, QDateTime>> runDates;
    /// What the run's reports show; null when the database could not be read.
    std::shared_ptr<const Inventory> inventory;

    /// Whether there is less than there should be, be it pages, an image or a record.
    bool failed() const { return failedReports > 0 || chartsWithoutImage > 0 || !error.isEmpty(); }

    /// What a program ends with that did nothing else: an ExitStatus.
    int exitStatus() const;
};

/// Executes a plan, on any thread, over a connection of its own: writes the master table of
/// contents, copies the companion files and produces each report. A report that was produced gets
/// the present time as LastRunDate of all its schedules, in the file; one that failed keeps its
/// dates, so that it stays due by its schedules' rules.
///
/// What goes wrong with one report, be it that memory runs out, does not keep the others from being
/// produced. The history has it, the observer's `trouble` and, in a run by schedule, the event log,
/// there once a day. Throws nothing.
///
/// Ends early when `CancelRequested` is set, by whichever thread.
///
/// `onReport` is called with a report's record when the report begins, without an end, and when it
/// has ended: on the thread that executes.
RunResult executeRun(RunPlan plan, const Observer &watcher,
                     std::function<void(const ReportRecord &)> onReport = {});

/// Gives the definitions in memory what the run found out. Main thread only.
void finishRun(const RunResult &result);

/// The three steps in turn on the main thread, watched by observer().
RunResult runReports(const RunOrder &order, RunHost *host = nullptr);
