#pragma once

#include "base/Error.h"
#include "report/SummaryFigures.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

/// What the runs of this site did: one small JSON file a run.

/// How a report's run ended.
enum class ReportResult {
    Unfinished, ///< running, or the program was interrupted
    Ok,
    Partial, ///< pages are there, but some charts have no image
    NoData,  ///< pages are there, but the period has no samples
    Failed,  ///< its old pages may still be there
    Cancelled
};

/// "ok", "partial", "no data", "failed", "cancelled", "unfinished"
QString resultText(ReportResult result);

struct ReportRecord
{
    QString id;
    QString title;
    QDateTime dueSince; ///< wall time of the slot; invalid when the report was not due
    qint64 start = 0;   ///< instants; 0 when it did not begin, or did not end
    qint64 end = 0;
    ReportResult result = ReportResult::Unfinished;
    int charts = 0;
    qint64 samples = 0;
    QString error;
    int chartsWithoutImage = 0;
    QStringList chartErrors; ///< the first of them
    bool mixedPages = false; ///< it ended early, and left new pages among older ones
    /// Of the finished pages that it left, made by this run or by an earlier one.
    std::optional<SummaryFigures> figures;

    double seconds() const { return end > start ? static_cast<double>(end - start) / 1000 : 0; }
};

inline const QString scheduledMode = QStringLiteral("scheduled");

struct RunRecord
{
    qint64 start = 0; ///< instants
    qint64 end = 0;   ///< 0: the run has not ended, or was interrupted
    QString mode;     ///< scheduledMode, "on request", "window"
    QString error;    ///< what went wrong outside the reports
    std::vector<ReportRecord> reports;
    QStringList mails = {}; ///< what became of mails after it, a line each
};

inline constexpr qsizetype runsKept = 400;

/// The folder of the records. A value, for any thread.
class RunHistory
{
public:
    /// `folder` ends in a separator.
    explicit RunHistory(QString folder);

    const QString &folder() const { return m_folder; }

    /// Writes a run's record; a later call with the same start replaces it. The record of a run
    /// that has not ended keeps room on the disk for the one of its end. Throws Error.
    void save(const RunRecord &run) const;

    /// Writes the record of a run that has ended, with what came after it. Throws Error, and the
    /// record stays as it was.
    void amend(const RunRecord &run) const;

    /// All records, newest first. Files that are damaged or of another kind are ignored.
    std::vector<RunRecord> runs() const;

    /// The instant at which the newest run on record ended; 0 when it has not, or there is none.
    qint64 lastEnd() const;

    /// Removes old records until `max` are left: the oldest first, but not those with a report's
    /// last run unless there are too many of them.
    void prune(qsizetype max = runsKept) const;

private:
    QStringList namesNewestFirst() const;
    std::optional<RunRecord> read(const QString &name) const; ///< null when it is damaged

    QString m_folder;
};

/// The one of this site: the folder "RunHistory" of the tool's data folder. Main thread only.
RunHistory runHistory();

/// What the event log says of a report's run; empty when nothing went wrong. Runs in which the same
/// went wrong give the same text.
QString troubleOf(const ReportRecord &report);

/// All that the scheduled runs of the present day among `runs` have told the event log.
QStringList troublesOfToday(const std::vector<RunRecord> &runs);

/// The last run of a report among `runs` (newest first) that came to it; null when there is none.
const ReportRecord *lastRecord(const std::vector<RunRecord> &runs, const QString &reportId);
