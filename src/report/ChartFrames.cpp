#include "report/ChartFrames.h"

#include "core/GrapherConfig.h"
#include "core/State.h"

ChartFrame chartFrame(const ReportContext &context, const QString &title, const QString &subtitle)
{
    ChartFrame frame;
    frame.title = title;
    frame.subtitle = subtitle;
    frame.period = context.period;
    frame.zone = context.zone;
    frame.credit =
        QStringLiteral("Vantrel Graphing Tool, %1").arg(context.report.RunDate.date().year());
    frame.size = QSize(gConfig->IMG_Width, gConfig->IMG_Height);
    frame.quality = context.chart.ChartQuality;
    frame.labelStep = context.chart.LabelStep;
    return frame;
}
