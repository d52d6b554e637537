#include "report/TargetPreview.h"

#include "base/Clock.h"
#include "base/Numbers.h"
#include "report/SampleReader.h"

namespace {

QString percent(double rate)
{
    return trimmedNumber(rate, 3) + QLatin1String(" %");
}

void add(TargetPreview &preview, const DeviceFigures &device)
{
    if (device.target) {
        ++preview.withTarget;
        if (!device.target->isMet())
            preview.missed.append(QStringLiteral("%1 %2 of %3")
                                      .arg(device.name,
                                           percent(device.target->target + device.target->margin()),
                                           percent(device.target->target)));
    }
    for (const ItemFigures &item : device.items) {
        if (!item.limit || !item.present.percentile95)
            continue;
        ++preview.withLimit;
        if (*item.present.percentile95 >= *item.limit)
            preview.exceeded.append(device.name + QLatin1String(", ") + item.name);
    }
}

} // namespace

PlannedReport targetPreviewPlan(const clsReportDef &report)
{
    clsReportDef tried = report;
    tried.Compare = false;
    clsGraphDef week;
    week.ChartFrequency = ByDay;
    week.SubFrequency = FixedPeriod;
    week.ChartDuration = Last7Days;
    PlannedReport plan = plannedReport(tried, &week, currentInstant());
    plan.recentDays.reset(); // no forecasts
    return plan;
}

void previewTargets(PlannedReport plan, MonitoringDatabase &database,
                    const std::function<bool(const TargetPreview &)> &tell)
{
    const std::shared_ptr<const Inventory> inventory = database.inventory();
    plan.applyRules(*inventory);
    std::erase_if(plan.devices, [&inventory](const PlannedReport::Device &device) {
        return !inventory->device(device.muid);
    });
    // The items that count are asked for anyway; of the others only those with limits matter.
    for (PlannedReport::Device &device : plan.devices)
        std::erase_if(device.dataIdents,
                      [&device](qint64 item) { return !device.limits.contains(item); });
    TargetPreview preview;
    preview.period = plan.service.period();
    preview.excludedSeconds = plan.service.excludedSeconds();
    preview.devices = static_cast<int>(plan.devices.size());
    const std::vector<PlannedReport> plans = {std::move(plan)};
    SampleReader samples(plans);
    const SampleReader::Range units = samples.unitsOf(plans.front());
    for (size_t unit = units.first; unit < units.last; ++unit) {
        if (const auto questions = samples.take(database, unit))
            add(preview, questions->takeFacts().figures);
        ++preview.done;
        if (!tell(preview))
            return;
    }
    if (preview.devices == 0)
        tell(preview);
}
