#pragma once

#include "report/Templates.h"

#include <QString>

#include <optional>
#include <vector>

/// The archive of a report: the folder "Archive" in the report's folder, which keeps what finished
/// runs found. Each has a folder named for its period ("2026-10" is October), with REPORT.PDF where
/// it could be made, repsum.csv and, written last, report.json: without that file a folder is
/// not a kept run. "runs.json" repeats the few figures that lists need, so that nobody has to read
/// all reports for them; a run that is missing from it is read from its report.json.

/// A run that is kept, or the one that is about to be.
struct ArchivedRun
{
    QString folder;  ///< its name in the archive
    qint64 from = 0; ///< of its period, both inclusive, in seconds since 1970
    qint64 to = 0;
    std::optional<double> rate; ///< success rate in percent; nothing without tests
    bool hasPdf = false;

    ArchivedRun() = default;
    ArchivedRun(qint64 first, qint64 last, std::optional<double> percent);

    /// Its period for readers: "October 2026", "2026", "2026-10-05", "2026-10-05 to 2026-10-11", or
    /// with times where it does not consist of whole days.
    QString label() const;
};

class ReportArchive
{
public:
    /// `reportFolder` ends in a separator.
    explicit ReportArchive(const QString &reportFolder);

    /// What it keeps, the newest period first. Folders that hold no kept run are ignored, and so is
    /// one that cannot be read.
    std::vector<ArchivedRun> runs() const;

    /// Keeps what a finished run left in the report's folder, in place of an earlier run over the
    /// same period, and then removes the oldest periods until `max` are left: neither the new one
    /// nor the newest one with a success rate. Throws Error that names the file.
    void keep(int max) const;

private:
    std::optional<ArchivedRun> read(const QString &folder) const;
    std::vector<ArchivedRun> prune(std::vector<ArchivedRun> runs, const QString &added,
                                   int max) const;
    void saveIndex(const std::vector<ArchivedRun> &runs) const;

    QString m_reportFolder;
    QString m_folder;
};

/// For a report's page: the earlier runs as links, with a small line chart of their success rates
/// and that of `present`, which may be kept already. Empty without an earlier run.
PageValue archiveSection(const std::vector<ArchivedRun> &runs, const ArchivedRun &present);

/// For the report's entry in the master table of contents: the newest runs as links below
/// `reportHref`, the report's folder in percent-encoding. Empty without any.
PageValue archiveLine(const std::vector<ArchivedRun> &runs, const QString &reportHref,
                      const QString &reportPage);
