#include "ui/editors/ReadyReports.h"

#include "base/Clock.h"
#include "base/Numbers.h"
#include "database/RuleMatches.h"
#include "definitions/Definitions.h"

#include <algorithm>
#include <cmath>

namespace {

std::vector<ReadyReport> wishes()
{
    using enum SelectionRule::Items;
    const auto counters = [](const char *item, const char *unit) {
        return SelectionRule{
            false, {}, {}, {}, QString::fromLatin1(item), QString::fromLatin1(unit), Counters};
    };
    return {
        {QStringLiteral("Availability, last 7 days"), {{false, {}, {}, {}, {}, {}, States}}, {}},
        {QStringLiteral("Busiest links"),
         {counters("", "*bit*|*bps*|*byte*/s|*B/s|*octet*"),
          counters("*traffic*|*bandwidth*|*throughput*|*utilization*", "")},
         {}},
        {QStringLiteral("Disks and memory"),
         {counters("*disk*|*memory*|*swap*|*volume*|*storage*|RAM|RAM *|* RAM", "")},
         {}}};
}

QString counted(size_t number, const char *one, const char *many)
{
    return groupedNumber(static_cast<double>(number), 0) + u' ' +
           QLatin1String(number == 1 ? one : many);
}

/// How far the period of a chart, run now, is from the last seven days; the fewer intervals are
/// better among equal ones, if there are some for each day.
double distanceFromWeek(const clsGraphDef &chart)
{
    constexpr double week = 7 * 86'400;
    const clsGraphDef run = chartOfRun(chart, now());
    const double length = static_cast<double>(run.StartTime.secsTo(run.EndTime));
    const double age = static_cast<double>(std::abs(run.EndTime.secsTo(now())));
    const bool isFine = run.ChartFrequency == ByHour;
    return std::abs(length - week) + age / 100 + (isFine ? 0 : 3600);
}

} // namespace

std::vector<ReadyReport> readyReports(const Inventory &inventory)
{
    std::vector<ReadyReport> ready = wishes();
    for (ReadyReport &report : ready) {
        std::erase_if(report.rules, [&inventory](const SelectionRule &rule) {
            return ruleMatches({rule}, inventory).empty();
        });
        const std::vector<RuleMatch> matches = ruleMatches(report.rules, inventory);
        size_t items = 0;
        for (const RuleMatch &match : matches)
            items += match.items.size();
        report.found = counted(matches.size(), "device", "devices") + QLatin1String(", ") +
                       counted(items, "data item", "data items");
    }
    std::erase_if(ready, [](const ReadyReport &report) { return report.rules.empty(); });
    return ready;
}

clsReportDef reportFrom(const ReadyReport &ready)
{
    clsReportDef report;
    report.ReportTitle = ready.title;
    report.Rules = ready.rules;
    double least = 2 * 86'400; // any farther one is no week
    for (const auto &chart : definitions().gChartDefs) {
        if (chart->ChartDuration == CustomRange || distanceFromWeek(*chart) >= least)
            continue;
        least = distanceFromWeek(*chart);
        report.ChartID = chart->ChartID;
    }
    for (const auto &schedule : definitions().gScheduleDefs) {
        if (schedule->SchedInterval != Weekly)
            continue;
        const auto use = std::make_shared<clsReportSchedule>();
        use->ScheduleID = schedule->ScheduleID;
        use->LastRunDate = now(); // it counts from now on
        report.ReportSchedules.add(use->ScheduleID, use);
        break;
    }
    return report;
}
