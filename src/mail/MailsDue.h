#pragma once

#include "mail/MailSettings.h"
#include "scheduling/RunHistory.h"

#include <optional>

/// Which results the subscribers have not been told yet, by the records of the runs. Pure functions
/// but for the present time. On any thread.

struct MailsDue
{
    std::vector<const ReportRecord *> reports; ///< the last result of each, to be held against the
                                               ///< subscriptions
    const RunRecord *failedRun = nullptr;      ///< the newest run that went wrong; null: none did
    QStringList troubles; ///< what went wrong, as those who hear of it are told
    qint64 until = 0;     ///< the start of the newest run that counts as told now
};

/// `runs` are the newest first, and have to outlive the result. `toldUntil`: the start of the
/// newest run that has been told; without one the newest run alone counts. Runs that are not by
/// schedule, older than two days or not finished do not count; one that was broken off is a failed
/// one. What went wrong earlier on the same day is not told again.
MailsDue mailsDue(const std::vector<RunRecord> &runs, std::optional<qint64> toldUntil);
