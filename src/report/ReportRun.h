#pragma once

#include "charts/WorkerPool.h"
#include "core/Status.h"
#include "report/SampleReader.h"

#include <QString>
#include <QStringList>

/// The production of reports on one thread, whichever that is; devices, charts and files are worked
/// on by the pool meanwhile. Progress is shown as status lines.

/// How one report ended.
struct ReportOutcome
{
    qint32 errorNumber = 0;  ///< 0 when nothing failed
    QString errorText;       ///< text of a database failure or of an unexpected error
    qint64 samples = 0;      ///< samples that went into its charts
    int charts = 0;          ///< charts drawn
    int devicePages = 0;     ///< written anew
    QStringList chartErrors; ///< one text for each chart without an image

    bool failed() const { return !errorText.isEmpty(); }
};

/// Produces one report: the page of each of its devices, and its summary. An error is shown as
/// "Error Generating Report [number] description - step"; files written so far stay. A cancel ends
/// it between devices.
/// `samples`, `progress` and `pool` are the whole run's: `done` grows with the data items of each
/// device that is finished, and the pool is left without jobs.
ReportOutcome GenerateReport(const PlannedReport &plan, SampleReader &samples, Progress &progress,
                             WorkerPool &pool);

/// Says so when charts cannot have the configured image format: they are written as PNG then.
void checkImageFormat();

/// Copies the configured companion files into the output folder. A file that is missing or cannot
/// be copied is named in a status line and does not stop the run.
void CopyTemplateFiles();
