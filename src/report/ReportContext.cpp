#include "report/ReportContext.h"

#include "base/TimeZone.h"
#include "definitions/Dates.h"
#include "report/OutputTree.h"

ReportContext::ReportContext(const PlannedReport &report, const clsChartOutputBuilder &templates,
                             const clsGrapherConfig &configuration)
    : plan(report)
    , builder(templates)
    , settings(configuration)
    , folder(OutputTree(configuration).reportFolder(report.id))
    , period(periodText(report.chart.StartTime, report.chart.EndTime))
    , range(dateRangeText(report.chart.StartTime, report.chart.EndTime))
    , zone(zoneText(report.start, report.end))
{}

Placeholders ReportContext::placeholders() const
{
    return {
        {QLatin1String("report.title"), plan.title},
        {QLatin1String("report.date"), reportDateText(plan.runDate)},
        {QLatin1String("report.time"), reportTimeText(plan.runDate)},
        {QLatin1String("report.id"), linkText(folderSafe(plan.id))},
        {QLatin1String("report.daterange"), range},
        {QLatin1String("report.zone"), zone},
        {QLatin1String("chart.title"), plan.chart.ChartTitle},
    };
}

ChartFrame ReportContext::chartFrame(const QString &title, const QString &subtitle) const
{
    ChartFrame frame;
    frame.title = title;
    frame.subtitle = subtitle;
    frame.period = period;
    frame.zone = zone;
    frame.credit = QStringLiteral("Vantrel Graphing Tool, %1").arg(plan.runDate.date().year());
    frame.size = imageSize();
    frame.quality = plan.chart.ChartQuality;
    frame.labelStep = plan.chart.LabelStep;
    return frame;
}
