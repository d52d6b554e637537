#include "mail/MailsDue.h"

#include "base/Clock.h"
#include "base/TimeZone.h"
#include "mail/Outbox.h"

#include <algorithm>

namespace {

QStringList troublesOf(const RunRecord &run, bool isNewest)
{
    QStringList troubles;
    if (run.end == 0 && !isNewest) // the newest may be running
        troubles.append(QStringLiteral("A run was broken off."));
    troubles.append(run.error);
    for (const ReportRecord &report : run.reports)
        troubles.append(troubleOf(report));
    troubles.removeAll(QString());
    return troubles;
}

/// What went wrong on the same day in the runs by schedule before this one.
QStringList earlierTroubles(const std::vector<RunRecord> &runs, size_t index)
{
    const QDate day = wallTime(runs[index].start).date();
    QStringList troubles;
    for (size_t i = index + 1; i < runs.size() && wallTime(runs[i].start).date() == day; ++i) {
        if (runs[i].mode == scheduledMode)
            troubles.append(troublesOf(runs[i], false));
    }
    return troubles;
}

} // namespace

MailsDue mailsDue(const std::vector<RunRecord> &runs, std::optional<qint64> toldUntil)
{
    MailsDue due;
    due.until = toldUntil.value_or(0);
    const qint64 oldest = currentInstant() - outboxPatience;
    for (size_t i = 0; i < runs.size(); ++i) {
        const RunRecord &run = runs[i];
        if (run.start <= toldUntil.value_or(0) || run.start < oldest)
            break;
        const bool isRunning = run.end == 0 && i == 0;
        if (run.mode != scheduledMode || isRunning)
            continue;
        due.until = std::max(due.until, run.start);
        const QStringList told = earlierTroubles(runs, i);
        for (const ReportRecord &report : run.reports) {
            const bool isKnown =
                std::any_of(due.reports.begin(), due.reports.end(), [&](const ReportRecord *other) {
                    return other->id.compare(report.id, Qt::CaseInsensitive) == 0;
                });
            // A report that fails is made again every hour.
            const bool isOld =
                report.result == ReportResult::Failed && told.contains(troubleOf(report));
            if (report.end != 0 && !isKnown && !isOld)
                due.reports.push_back(&report);
        }
        const QStringList troubles = troublesOf(run, i == 0);
        for (const QString &trouble : troubles) {
            if (told.contains(trouble) || due.troubles.contains(trouble))
                continue;
            if (!due.failedRun)
                due.failedRun = &run;
            due.troubles.append(trouble);
        }
        if (!toldUntil)
            break;
    }
    return due;
}
