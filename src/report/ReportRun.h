#pragma once

#include "report/RunSession.h"
#include "report/SampleReader.h"
#include "report/SummaryFigures.h"

#include <QString>
#include <QStringList>

#include <optional>

/// The production of reports, on the thread of their run; devices, charts and files are worked on
/// by the pool meanwhile.

/// How one report ended.
struct ReportOutcome
{
    QString errorText;                     ///< text of a database failure or of an unexpected error
    qint64 samples = 0;                    ///< samples that went into its charts
    int charts = 0;                        ///< charts drawn
    int devicePages = 0;                   ///< written anew
    QStringList chartErrors;               ///< one text for each chart without an image
    std::optional<SummaryFigures> figures; ///< once all its pages are written

    bool failed() const { return !errorText.isEmpty(); }
};

/// Produces one report: the page of each of its devices, and its summary. An error is shown as
/// "Error Generating Report [number] description - step"; files written so far stay. A cancel ends
/// it between devices.
/// `samples` are the whole run's, as the session is: `progress.done` grows with the data items of
/// each device that is finished, and the pool is left without jobs.
ReportOutcome GenerateReport(const PlannedReport &plan, SampleReader &samples, RunSession &session);

/// Says so when charts cannot have the configured image format: they are written as PNG then.
void checkImageFormat(const RunSession &session);

/// Copies the configured companion files into the output folder. A file that is missing or cannot
/// be copied is named in a status line, which is returned, and does not stop the run.
QStringList CopyTemplateFiles(const RunSession &session);
