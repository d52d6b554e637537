#pragma once

#include "charts/ChartJob.h"
#include "config/clsGrapherConfig.h"
#include "report/ReportPlan.h"
#include "report/Templates.h"

/// Cited in place of an image that could not be made; one of the companion files.
inline const QString transparentImage = QStringLiteral("transdot.gif");

/// What all writers of one report's files share. Does not change while it is produced; read on any
/// thread.
struct ReportContext
{
    const PlannedReport &plan;
    const clsChartOutputBuilder &builder;
    const clsGrapherConfig &settings;
    QString folder; ///< of the report, ends in a separator
    QString period; ///< of the charts' headers
    QString range;  ///< of the pages
    QString zone;

    /// The arguments have to outlive it.
    ReportContext(const PlannedReport &report, const clsChartOutputBuilder &templates,
                  const clsGrapherConfig &configuration);

    QSize imageSize() const { return {settings.IMG_Width, settings.IMG_Height}; }

    /// The values that pages of the report have in common.
    Placeholders placeholders() const;

    /// What stands around a chart of the report.
    ChartFrame chartFrame(const QString &title, const QString &subtitle) const;
};
