#pragma once

#include "definitions/ReportDef.h"
#include "scheduling/RunHistory.h"

#include <QDateTime>
#include <QString>

/// Where a report stands with its schedules, by gScheduleDefs and the present time.
struct DueState
{
    bool due = false;
    QDateTime next; ///< the earliest slot still to be served (a past one when due); invalid: none
    QString why;    ///< in words, with the schedule's name
};

/// A report is due when at least one of its schedules is.
DueState dueState(const clsReportDef &report);

/// What to say of a schedule entry that `ranInFuture`.
QString futureRunText(const clsReportSchedule &entry);

/// A report's latest run, by the run history as far as that goes back.
struct LatestRun
{
    QDateTime time;                       ///< wall time; invalid when it never ran
    const ReportRecord *record = nullptr; ///< one of `runs`
};

/// `runs`: newest first. Where they do not hold the report, its schedules' dates tell, provided
/// that it left a page.
LatestRun latestRun(const clsReportDef &report, const std::vector<RunRecord> &runs);
