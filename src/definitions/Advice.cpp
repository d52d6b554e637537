#include "definitions/Advice.h"

QString samePeriodWarning(const clsGraphDef &chart, const clsScheduleDef &schedule)
{
    if (chart.ChartDuration != CustomRange || schedule.SchedInterval == NotScheduled)
        return QString();
    return QStringLiteral("the chart definition '%1' has a custom range, so every run of the "
                          "schedule '%2' shows the same period")
        .arg(chart.ChartTitle, schedule.ScheduleName);
}

QString titleKey(const QString &title)
{
    return title.simplified().toCaseFolded();
}

QString sameTitleWarning(const QString &title)
{
    return QStringLiteral("the title '%1' is given twice").arg(title.simplified());
}
