#include "definitions/Usage.h"

namespace {

template <typename Uses>
Reports reportsThat(const Collection<clsReportDef> &reports, Uses uses)
{
    Reports found;
    for (const auto &report : reports) {
        if (uses(*report))
            found.push_back(report);
    }
    return found;
}

template <typename Definition>
QString freeTitle(const Collection<Definition> &all, QString Definition::*titleOf,
                  const QString &title)
{
    QSet<QString> taken;
    for (const auto &definition : all)
        taken.insert(titleKey((*definition).*titleOf));
    QString free = title + QLatin1String(" (copy)");
    for (int number = 2; taken.contains(titleKey(free)); ++number)
        free = title + QStringLiteral(" (copy %1)").arg(number);
    return free;
}

} // namespace

Reports reportsWithChart(const Collection<clsReportDef> &reports, const QString &chartId)
{
    return reportsThat(reports, [&chartId](const clsReportDef &report) {
        return report.ChartID.compare(chartId, Qt::CaseInsensitive) == 0;
    });
}

Reports reportsWithSchedule(const Collection<clsReportDef> &reports, const QString &scheduleId)
{
    return reportsThat(reports, [&scheduleId](const clsReportDef &report) {
        return report.ReportSchedules.contains(scheduleId);
    });
}

QString usageText(const Reports &reports, qsizetype named)
{
    if (reports.empty())
        return QStringLiteral("used by no report");
    QStringList titles;
    for (const auto &report : reports) {
        if (titles.size() < named)
            titles.append(report->ReportTitle);
    }
    const auto number = static_cast<qsizetype>(reports.size());
    const QString more =
        number > named ? QStringLiteral(" and %1 more").arg(number - named) : QString();
    return QStringLiteral("used by %1 %2: %3%4")
        .arg(QString::number(number),
             number == 1 ? QLatin1String("report") : QLatin1String("reports"),
             titles.join(QLatin1String(", ")), more);
}

Reports withChart(const Reports &reports, const QString &chartId)
{
    Reports changed;
    for (const auto &report : reports) {
        changed.push_back(std::make_shared<clsReportDef>(*report));
        changed.back()->ChartID = chartId;
    }
    return changed;
}

Reports withSchedule(const Reports &reports, const QString &scheduleId,
                     const QString &replacementId)
{
    Reports changed;
    for (const auto &report : reports) {
        changed.push_back(std::make_shared<clsReportDef>(*report));
        Collection<clsReportSchedule> schedules;
        const bool hasBoth = report->ReportSchedules.contains(replacementId);
        for (const auto &schedule : report->ReportSchedules) {
            if (schedule->ScheduleID.compare(scheduleId, Qt::CaseInsensitive) != 0) {
                schedules.add(schedule->ScheduleID, schedule);
            } else if (!hasBoth) {
                const auto replacement = std::make_shared<clsReportSchedule>(*schedule);
                replacement->ScheduleID = replacementId;
                schedules.add(replacementId, replacement);
            }
        }
        changed.back()->ReportSchedules = schedules;
    }
    return changed;
}

clsGraphDef duplicate(const clsGraphDef &chart, const Collection<clsGraphDef> &all)
{
    clsGraphDef copy = chart;
    copy.ChartID = NewID();
    copy.ChartTitle = freeTitle(all, &clsGraphDef::ChartTitle, chart.ChartTitle);
    return copy;
}

clsScheduleDef duplicate(const clsScheduleDef &schedule, const Collection<clsScheduleDef> &all)
{
    clsScheduleDef copy = schedule;
    copy.ScheduleID = NewID();
    copy.ScheduleName = freeTitle(all, &clsScheduleDef::ScheduleName, schedule.ScheduleName);
    return copy;
}

clsReportDef duplicate(const clsReportDef &report, const Collection<clsReportDef> &all)
{
    clsReportDef copy = report;
    copy.ReportID = NewID();
    copy.ReportTitle = freeTitle(all, &clsReportDef::ReportTitle, report.ReportTitle);
    copy.ReportSchedules.clear();
    for (const auto &schedule : report.ReportSchedules) {
        const auto fresh = std::make_shared<clsReportSchedule>(*schedule);
        fresh->LastRunDate = now();
        copy.ReportSchedules.add(fresh->ScheduleID, fresh);
    }
    return copy;
}
