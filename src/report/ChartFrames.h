#pragma once

#include "charts/ChartJob.h"
#include "report/DeviceReport.h"

/// Cited in place of an image that could not be made; one of the companion files.
inline const QString transparentImage = QStringLiteral("transdot.gif");

/// What stands around a chart of a report.
ChartFrame chartFrame(const ReportContext &context, const QString &title, const QString &subtitle);
