#pragma once

#include "charts/ChartPool.h"
#include "core/Status.h"
#include "definitions/ReportDef.h"

#include <QString>
#include <QStringList>

/// The production of reports. Main thread only; images are drawn and files written on the worker
/// pool meanwhile. Progress is shown as status lines.

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

/// Produces one report: its period, the page of each of its devices, and its summary. An error is
/// shown as "Error Generating Report [number] description - step"; files written so far stay.
/// A cancel ends it between devices.
/// `progress` and `pool` are the whole run's: `done` grows by one with each data item charted, and
/// the pool is left without jobs.
ReportOutcome GenerateReport(clsReportDef &report, Progress &progress, ChartPool &pool);

/// Tells the open connection which samples the queries of these reports can ask for, so that an
/// Access file is read only once for all of them. Failures are left to the reports.
void announceSamples(const std::vector<std::shared_ptr<clsReportDef>> &reports);

/// Says so when charts cannot have the configured image format: they are written as PNG then.
void checkImageFormat();

/// Copies the configured companion files into the output folder. A file that is missing or cannot
/// be copied is named in a status line and does not stop the run.
void CopyTemplateFiles();
