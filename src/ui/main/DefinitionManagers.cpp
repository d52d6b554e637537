// The windows of all charts and of all schedules: what the two kinds do differently.

#include "base/Clock.h"
#include "definitions/Definitions.h"
#include "ui/editors/ChartPeriod.h"
#include "ui/editors/EditDefinition.h"
#include "ui/main/DefinitionManager.h"

namespace {

template <typename Definition>
std::shared_ptr<Definition> copyOf(const Collection<Definition> &all, const QString &id)
{
    const auto found = all.find(id);
    if (!found)
        throw Error(FileNotFound, QStringLiteral("It is not defined any more"));
    return std::make_shared<Definition>(*found);
}

QString runsText(const clsScheduleDef &schedule)
{
    const std::vector<QDateTime> runs = nextRuns(schedule, now(), 1);
    if (!runs.empty())
        return QStringLiteral("Next: %1").arg(momentInWords(runs.front()));
    return schedule.SchedInterval == NotScheduled ? QStringLiteral("Not scheduled")
                                                  : QStringLiteral("Never runs");
}

} // namespace

frmChartManager::frmChartManager(UndoSteps &undo, QWidget *parent)
    : DefinitionManager(QStringLiteral("frmChartManager"), QStringLiteral("definitions.html"),
                        QStringLiteral("chart"), undo, parent)
{
    setWindowTitle(QStringLiteral("Charts"));
    fill();
}

std::vector<DefinitionManager::Entry> frmChartManager::entries() const
{
    std::vector<Entry> entries;
    for (const auto &chart : definitions().gChartDefs)
        entries.push_back({chart->ChartID, chart->ChartTitle, shortPeriodInWords(*chart)});
    return entries;
}

Reports frmChartManager::users(const QString &id) const
{
    return reportsWithChart(definitions().gReportDefs, id);
}

QString frmChartManager::edit(const QString &id)
{
    const clsGraphDef chart = id.isEmpty() ? clsGraphDef() : *copyOf(definitions().gChartDefs, id);
    return editChart(chart, this) ? chart.ChartID : QString();
}

QString frmChartManager::duplicateOf(const QString &id)
{
    const auto copy = std::make_shared<clsGraphDef>(
        ::duplicate(*copyOf(definitions().gChartDefs, id), definitions().gChartDefs));
    definitions().store(copy);
    return copy->ChartID;
}

void frmChartManager::rename(const QString &id, const QString &title)
{
    const auto changed = copyOf(definitions().gChartDefs, id);
    changed->ChartTitle = title;
    definitions().store(changed);
}

void frmChartManager::remove(const QString &id)
{
    definitions().removeChartDef(id);
}

void frmChartManager::replace(const QString &id, const QString &replacement)
{
    definitions().store(withChart(users(id), replacement));
}

QString frmChartManager::faultOf(const QString &id, const QString &title) const
{
    return titleFault(definitions().gChartDefs, &clsGraphDef::ChartTitle, id, title);
}

frmScheduleManager::frmScheduleManager(UndoSteps &undo, QWidget *parent)
    : DefinitionManager(QStringLiteral("frmScheduleManager"), QStringLiteral("definitions.html"),
                        QStringLiteral("schedule"), undo, parent)
{
    setWindowTitle(QStringLiteral("Schedules"));
    fill();
}

std::vector<DefinitionManager::Entry> frmScheduleManager::entries() const
{
    std::vector<Entry> entries;
    for (const auto &schedule : definitions().gScheduleDefs)
        entries.push_back({schedule->ScheduleID, schedule->ScheduleName, runsText(*schedule)});
    return entries;
}

Reports frmScheduleManager::users(const QString &id) const
{
    return reportsWithSchedule(definitions().gReportDefs, id);
}

QString frmScheduleManager::edit(const QString &id)
{
    const clsScheduleDef schedule =
        id.isEmpty() ? clsScheduleDef() : *copyOf(definitions().gScheduleDefs, id);
    return editSchedule(schedule, this) ? schedule.ScheduleID : QString();
}

QString frmScheduleManager::duplicateOf(const QString &id)
{
    const auto copy = std::make_shared<clsScheduleDef>(
        ::duplicate(*copyOf(definitions().gScheduleDefs, id), definitions().gScheduleDefs));
    definitions().store(copy);
    return copy->ScheduleID;
}

void frmScheduleManager::rename(const QString &id, const QString &title)
{
    const auto changed = copyOf(definitions().gScheduleDefs, id);
    changed->ScheduleName = title;
    definitions().store(changed);
}

void frmScheduleManager::remove(const QString &id)
{
    definitions().removeScheduleDef(id);
}

void frmScheduleManager::replace(const QString &id, const QString &replacement)
{
    definitions().store(withSchedule(users(id), id, replacement));
}

QString frmScheduleManager::faultOf(const QString &id, const QString &title) const
{
    return titleFault(definitions().gScheduleDefs, &clsScheduleDef::ScheduleName, id, title);
}
