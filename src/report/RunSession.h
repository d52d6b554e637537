#pragma once

#include "charts/WorkerPool.h"
#include "config/RunLog.h"
#include "config/clsGrapherConfig.h"
#include "database/Connection.h"
#include "report/OutputTree.h"

/// What all reports of one run share, on the thread of that run.
class RunSession
{
public:
    RunSession(const clsGrapherConfig &configuration, DatabaseSource source, RunLog &runLog);

    const clsGrapherConfig settings; ///< as they stood when the run was planned; any thread
    const OutputTree tree;
    RunLog &log;
    DatabaseConnection database;
    WorkerPool pool; ///< its threads know their fonts once they have drawn a chart
    Progress progress;

    /// Puts the progress on show.
    void showProgress() const { log.progress(progress); }

    /// Shows the status line and opens the database. Throws ShownError.
    MonitoringDatabase &openDatabase() { return database.open(log); }

    /// Numbers the images in base 36, so that names are unique across all reports of the run.
    QString nextImageNumber() { return QString::number(++m_images, 36).toUpper(); }

private:
    int m_images = 0;
};
