#pragma once

#include "config/clsGrapherConfig.h"
#include "database/Connection.h"
#include "definitions/Definitions.h"
#include "report/ReportPlan.h"
#include "scheduling/RunHistory.h"
#include "scheduling/Standings.h"

#include <QString>
#include <QStringList>

#include <vector>

/// What planning a run asks of the user.
class RunHost
{
public:
    virtual ~RunHost() = default;

    /// Whether to run without definition files of which nothing can be read, and which stay as they
    /// are; false cancels the whole run.
    virtual bool acceptErrors(const QStringList &errors) = 0;
    /// Lets the user set a custom range's StartTime and EndTime, once for all selected reports that
    /// use the chart; false cancels the whole run.
    virtual bool askCustomRange(clsGraphDef &chart, const QStringList &reportTitles) = 0;
};

/// Which of the selected reports a run takes.
enum class RunChoice {
    Due, ///< those with at least one schedule that has fallen due
    All  ///< all of them, whatever their schedules say
};

/// Who wants it.
enum class RunMode {
    Scheduled, ///< the schedules: nobody is there to see it
    OnRequest, ///< a user without a window
    Window
};

struct RunOrder
{
    QStringList reportIds;
    RunChoice choice = RunChoice::All;
    RunMode mode = RunMode::OnRequest;
    QString pdfPath = {}; ///< the first report becomes this PDF file, and nothing else is written
};

/// All that a run needs of definitions and settings, as they stood when it was planned: it reads
/// none of them itself. A value, to be handed to the thread that executes it.
struct RunPlan
{
    RunRecord record; ///< its start, its mode, and its reports before they are produced
    std::vector<PlannedReport> reports; ///< one for each of the record's
    std::vector<ListedReport> contents; ///< of the master table of contents
    clsGrapherConfig settings;
    DatabaseSource database;
    RunHistory history;
    QStringList errors;       ///< what went wrong so far; makes the run a failed one
    bool isProducing = false; ///< false: nothing is to be written but the record
    bool isPdfAlone = false;  ///< one report becomes a PDF; neither record nor dates are written

    Attendance attendance() const;
};

/// Plans a run: loads all definitions, chooses the reports, and asks `host` what has to be asked.
/// Where it refuses, `CancelRequested` is set. `host` is null where nobody is there: the plan is
/// then one of no report where nothing can be read of a definition file. A single definition that
/// cannot be read is among the plan's errors. Clears `CancelRequested` first. Main thread only.
RunPlan planRun(const RunOrder &order, RunHost *host);
