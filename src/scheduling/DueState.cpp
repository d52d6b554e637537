#include "scheduling/DueState.h"

#include "core/Clock.h"
#include "core/Files.h"
#include "core/TimeZone.h"
#include "definitions/DefinitionStores.h"
#include "report/OutputTree.h"

namespace {

QString slotText(const QDateTime &slot)
{
    return slot.toString(QStringLiteral("yyyy-MM-dd HH:mm"));
}

/// The slot that one schedule serves next, and in words why it is due or not.
DueState stateUnder(const clsReportSchedule &entry)
{
    const auto found = gScheduleDefs.find(entry.ScheduleID);
    if (!found)
        return {false, QDateTime(),
                QStringLiteral("there is no schedule '%1'").arg(entry.ScheduleID)};
    const QString name = QStringLiteral("schedule '%1'").arg(found->ScheduleName);
    DueState state;
    state.due = IsReportDue(entry, *found);
    if (found->SchedInterval == NotScheduled) {
        state.why = name + QLatin1String(" is switched off");
        return state;
    }
    if (!everRuns(*found)) {
        state.why = name + QLatin1String(" never runs");
        return state;
    }
    state.next = found->NextRunTime;
    state.why = state.due
                    ? QStringLiteral("due since %1 by ").arg(slotText(state.next)) + name
                    : QStringLiteral("not due before %1 by ").arg(slotText(state.next)) + name;
    if (ranInFuture(entry)) {
        state.why += QLatin1String("; ") + futureRunText(entry);
        return state;
    }
    clsScheduleDef patient = *found;
    patient.Reschedule = false;
    IsReportDue(entry, patient);
    // Only a report that has run before can have missed a slot that anybody waited for.
    if (patient.NextRunTime < state.next && entry.LastRunDate != zeroDate())
        state.why += QStringLiteral("; the run of %1 was missed by more than %2 minutes and is "
                                    "skipped")
                         .arg(slotText(patient.NextRunTime))
                         .arg(found->RescheduleTime);
    return state;
}

/// Due ones first, then the earliest; those without a slot last.
bool isMoreUrgent(const DueState &a, const DueState &b)
{
    if (a.due != b.due)
        return a.due;
    if (a.next.isValid() != b.next.isValid())
        return a.next.isValid();
    return a.next.isValid() && a.next < b.next;
}

/// When the report last ran by its schedules' dates; invalid when it never did.
QDateTime lastRunDate(const clsReportDef &report)
{
    QDateTime last = zeroDate();
    for (const auto &entry : report.ReportSchedules) {
        if (!ranInFuture(*entry))
            last = std::max(last, entry->LastRunDate);
    }
    // A schedule that was chosen anew has the time of its choosing: without a page there was no
    // run.
    return last == zeroDate() || !fileExists(reportPage(report.ReportID)) ? QDateTime() : last;
}

} // namespace

QString futureRunText(const clsReportSchedule &entry)
{
    return QStringLiteral("its last run is dated %1, which is in the future, and counts as none")
        .arg(slotText(entry.LastRunDate));
}

DueState dueState(const clsReportDef &report)
{
    DueState most{false, QDateTime(), QStringLiteral("it has no schedule")};
    bool first = true;
    for (const auto &entry : report.ReportSchedules) {
        const DueState state = stateUnder(*entry);
        if (first || isMoreUrgent(state, most))
            most = state;
        first = false;
    }
    return most;
}

LatestRun latestRun(const clsReportDef &report, const std::vector<RunRecord> &runs)
{
    if (const ReportRecord *record = lastRecord(runs, report.ReportID))
        return {wallTime(record->start), record};
    return {lastRunDate(report), nullptr};
}
