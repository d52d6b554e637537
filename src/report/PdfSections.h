#pragma once

#include "figures/ReportFigures.h"
#include "report/PdfPages.h"

#include <QHash>

/// A part of a report on paper between its title sheet and its devices.
struct PdfSection
{
    QString heading;
    std::vector<PdfTable> tables; ///< at least one, each with rows
};

/// The first page of each device, by its folder.
using DevicePages = QHash<QString, int>;

/// Incidents, missed targets, rankings and forecasts, as far as there are any; at most 200 rows of
/// each, the worst. Devices lead to their pages.
std::vector<PdfSection> pdfSections(const ReportFigures &figures, const DevicePages &pages);
