#pragma once

#include "definitions/ReportDef.h"

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

/// When the report last ran by its schedules' dates; invalid when it never did, or left no page.
QDateTime lastRunDate(const clsReportDef &report);
