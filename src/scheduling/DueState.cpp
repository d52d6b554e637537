#include "scheduling/DueState.h"

#include "base/Clock.h"
#include "base/TimeZone.h"
#include "definitions/Definitions.h"

namespace {

QString slotText(const QDateTime &slot)
{
    return slot.toString(QStringLiteral("yyyy-MM-dd HH:mm"));
}

/// The next slot of one schedule, and in words why it is due or not.
DueState stateUnder(const ScheduledReport::Entry &entry)
{
    const clsReportSchedule &use = entry.use;
    if (!entry.schedule)
        return {false, QDateTime(),
                QStringLiteral("there is no schedule '%1'").arg(use.ScheduleID)};
    clsScheduleDef schedule = *entry.schedule;
    const QString name = QStringLiteral("schedule '%1'").arg(schedule.ScheduleName);
    DueState state;
    state.due = IsReportDue(use, schedule);
    if (schedule.SchedInterval == NotScheduled) {
        state.why = name + QLatin1String(" is switched off");
        return state;
    }
    if (!everRuns(schedule)) {
        state.why = name + QLatin1String(" never runs");
        return state;
    }
    state.next = schedule.NextRunTime;
    state.why = state.due
                    ? QStringLiteral("due since %1 by ").arg(slotText(state.next)) + name
                    : QStringLiteral("not due before %1 by ").arg(slotText(state.next)) + name;
    if (ranInFuture(use)) {
        state.why += QLatin1String("; ") + futureRunText(use);
        return state;
    }
    clsScheduleDef patient = schedule;
    patient.Reschedule = false;
    IsReportDue(use, patient);
    // Only a report that has run before can have missed a slot.
    if (patient.NextRunTime < state.next && use.LastRunDate != zeroDate())
        state.why += QStringLiteral("; the run of %1 was missed by more than %2 minutes and is "
                                    "skipped")
                         .arg(slotText(patient.NextRunTime))
                         .arg(schedule.RescheduleTime);
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
QDateTime lastRunDate(const ScheduledReport &report)
{
    QDateTime last = zeroDate();
    for (const auto &[use, schedule] : report.entries) {
        if (!ranInFuture(use))
            last = std::max(last, use.LastRunDate);
    }
    return last == zeroDate() ? QDateTime() : last;
}

} // namespace

QString futureRunText(const clsReportSchedule &entry)
{
    return QStringLiteral("its last run is dated %1, which is in the future, and counts as none")
        .arg(slotText(entry.LastRunDate));
}

ScheduledReport scheduledReport(const clsReportDef &report)
{
    ScheduledReport scheduled{report.ReportID, {}};
    for (const auto &use : report.ReportSchedules) {
        const auto schedule = definitions().gScheduleDefs.find(use->ScheduleID);
        scheduled.entries.push_back({*use, schedule ? std::optional(*schedule) : std::nullopt});
    }
    return scheduled;
}

DueState dueState(const ScheduledReport &report)
{
    DueState most{false, QDateTime(), QStringLiteral("it has no schedule")};
    bool first = true;
    for (const ScheduledReport::Entry &entry : report.entries) {
        const DueState state = stateUnder(entry);
        if (first || isMoreUrgent(state, most))
            most = state;
        first = false;
    }
    return most;
}

LatestRun latestRun(const ScheduledReport &report, const std::vector<RunRecord> &runs,
                    bool hasPages)
{
    if (const ReportRecord *record = lastRecord(runs, report.id))
        return {wallTime(record->start), record};
    // A newly chosen schedule has the time of that choice: without a page there was no run.
    return {hasPages ? lastRunDate(report) : QDateTime(), nullptr};
}
