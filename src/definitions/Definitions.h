#pragma once

#include "definitions/Collection.h"
#include "definitions/ElementChange.h"
#include "definitions/FileVersions.h"
#include "definitions/clsGraphDef.h"
#include "definitions/clsReportDef.h"
#include "definitions/clsScheduleDef.h"

#include <QMutex>
#include <QSet>

/// A definition file, and what was read from it.
struct DefinitionFile
{
    const char *root;
    const char *child;
    const char *id;
    const char *title;
    const char *name;
    const char *factory; ///< null: there is none
    bool factoryTried = false;
    QSet<QString> known = {};  ///< ids, in lower case, that were loaded from it or saved to it
    QStringList givenIds = {}; ///< ids that the last load gave to elements without one, in order
    QString fileError = {};    ///< why the last load could not read the file
    QStringList errors = {};   ///< why it could not read single definitions
    QSet<QString> logged = {}; ///< errors that are in the event log already

    QString path() const;
};

/// All definitions of the user, each kind in one XML file in the configuration folder of
/// config/clsGrapherConfig.h. Main thread only, but for saveLastRunDates.
class Definitions
{
public:
    Collection<clsGraphDef> gChartDefs;       ///< by ChartID, in title order
    Collection<clsScheduleDef> gScheduleDefs; ///< by ScheduleID, in file order
    Collection<clsReportDef> gReportDefs;     ///< by ReportID, in title order

    /// Each replaces a collection by the content of "ChartDefs.XML", "ChartSchedules.XML" or
    /// "ChartSelection.XML". The first load copies a missing chart or schedule file from its
    /// factory copy (".FAC"). A file that is missing, unreadable, malformed or has another root
    /// element results in an empty collection and no message; a definition that cannot be read is
    /// skipped with the status line "Error loading ... [number] description" (schedules: without
    /// one). Nothing is thrown.
    void LoadChartDefs();
    void LoadScheduleDefs();
    void LoadReportDefs();

    /// The files that the last loads could not read ("<file>:line:column: what"), without missing
    /// ones. The event log has them too.
    QStringList fileErrors() const;
    /// The single definitions that the last loads skipped, each with its file and position.
    QStringList errors() const;

    /// Each writes a whole collection to its file, in the collection's order, and removes what was
    /// loaded and is no longer in the collection. Everything else in the file stays: comments,
    /// unknown attributes, charts with Include="0", definitions that cannot be read, and those that
    /// were added in the meantime. A failure becomes the status line "Error saving ... [number]
    /// description", leaves the file unchanged, and is thrown as Error. A file that cannot be read
    /// is never replaced: that is a failure.
    void SaveChartDefs();
    void SaveScheduleDefs();
    void SaveReportDefs();

    /// Writes the periods of charts into the file's current text, and changes nothing else. Charts
    /// that are no longer in the file are ignored. Failures as above.
    void saveChartPeriods(const std::vector<std::shared_ptr<clsGraphDef>> &charts);

    /// Writes the wall time at which a report ran under its schedules, in the same way. On any
    /// thread, also while another one saves. Throws Error, which no status line shows.
    void saveLastRunDates(const QString &reportId, const QStringList &scheduleIds,
                          const QDateTime &runDate);

    /// What an editor does on OK: writes a definition to its file, where everything else stays as
    /// above, and to its collection. On failure collection and file are unchanged; failures as
    /// above.
    void store(const std::shared_ptr<clsGraphDef> &chart);
    void store(const std::shared_ptr<clsScheduleDef> &schedule);
    void store(const std::shared_ptr<clsReportDef> &report);

    /// The same for several reports, in one step.
    void store(const std::vector<std::shared_ptr<clsReportDef>> &reports);

    /// Remove from file and collection, what else uses the definitions notwithstanding; failures as
    /// in store().
    void removeChartDef(const QString &chartId);
    void removeScheduleDef(const QString &scheduleId);
    void removeReportDefs(const QStringList &reportIds);

    /// How many changes store() and the removals have made so far, less those taken back.
    qsizetype changeCount() const { return static_cast<qsizetype>(m_changes.size()); }
    /// Takes back all changes after the first `count` ones, the last one first, in file and
    /// collections: definitions become what they were, unknown content included, but for the dates
    /// of runs. On failure, which is thrown as in store(), those not taken back yet stay.
    void takeBack(qsizetype count);

    /// The definition files, which each change keeps a version of (FileVersions.h). The dates of
    /// runs and the periods that they ask for are no change.
    QStringList files() const;
    /// What restoring a version of one of files() would do, a line for each definition: "removes
    /// “Servers”". Empty: nothing. Throws Error when it cannot be restored.
    QStringList whatRestoring(const QString &file, const QString &version) const;
    /// Replaces one of files() by an earlier version, but for the later dates of runs, and loads
    /// it. What it replaces becomes a version. Cannot be taken back otherwise: forgets the changes
    /// so far. Throws Error, and then changes nothing.
    void restoreVersion(const QString &file, const QString &version);

private:
    /// A change of one of the files.
    struct Change
    {
        DefinitionFile *file;
        ElementChange element;
    };

    void note(DefinitionFile &file, std::vector<ElementChange> changes);
    const DefinitionFile &fileOf(const QString &path) const;
    void loadAgain(const DefinitionFile &file);

    QMutex m_mutex; ///< held from reading a file until it is replaced
    std::vector<Change> m_changes;
    DefinitionFile m_charts{"CHARTDEFS", "CHART",         "ChartID",
                            "Title",     "ChartDefs.XML", "ChartDefs.FAC"};
    DefinitionFile m_schedules{"SCHEDULES",    "SCHEDULE",           "ScheduleID",
                               "ScheduleName", "ChartSchedules.XML", "ChartSchedules.FAC"};
    DefinitionFile m_reports{"REPORTDEFINITIONS", "CUSTOMREPORT",       "ReportID",
                             "ReportTitle",       "ChartSelection.XML", nullptr};
};

/// Those of the current state.
Definitions &definitions();
