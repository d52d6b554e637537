#pragma once

#include "definitions/clsReportDef.h"
#include "definitions/clsScheduleDef.h"
#include "scheduling/RunHistory.h"

#include <QDateTime>
#include <QString>

#include <optional>
#include <vector>

/// A report's schedules when it was taken from the definitions. A value.
struct ScheduledReport
{
    struct Entry
    {
        clsReportSchedule use;
        std::optional<clsScheduleDef> schedule; ///< null: there is none with that id
    };
    QString id;
    std::vector<Entry> entries;
};

/// With the schedules of gScheduleDefs. Main thread only.
ScheduledReport scheduledReport(const clsReportDef &report);

/// Whether and when a report is due, at the current time.
struct DueState
{
    bool due = false;
    QDateTime next; ///< the earliest slot to run (a past one when due); invalid: none
    QString why;    ///< in words, with the schedule's name
};

/// A report is due when at least one of its schedules is.
DueState dueState(const ScheduledReport &report);

/// The warning about a schedule entry that `ranInFuture`.
QString futureRunText(const clsReportSchedule &entry);

/// A report's latest run, by the run history if that goes back far enough.
struct LatestRun
{
    QDateTime time;                       ///< wall time; invalid when it never ran
    const ReportRecord *record = nullptr; ///< one of `runs`
};

/// `runs`: newest first. If the report is not in them, its schedules' dates are used, provided that
/// it has pages.
LatestRun latestRun(const ScheduledReport &report, const std::vector<RunRecord> &runs,
                    bool hasPages);
