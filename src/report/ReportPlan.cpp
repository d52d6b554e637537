#include "report/ReportPlan.h"

#include "core/Status.h"
#include "core/TimeZone.h"

#include <algorithm>

namespace {

/// The period up to its end, since the clock of what records samples may be ahead of ours; where
/// that is too long, up to the run.
SharedAxis axisOf(const PlannedReport &plan)
{
    const auto axisTo = [&plan](qint64 last) {
        return std::make_shared<const BucketAxis>(plan.start, last, plan.chart.ChartFrequency,
                                                  plan.chart.MinuteInterval);
    };
    try {
        return axisTo(plan.end);
    } catch (const Error &) {
        return axisTo(std::min(plan.end, plan.latest));
    }
}

PlannedReport::Device plannedDevice(const clsReportDeviceDef &device)
{
    PlannedReport::Device planned;
    planned.muid = device.MUID;
    for (const auto &item : device.DataItems)
        planned.dataIdents.push_back(item->DataIDent.toLongLong());
    return planned;
}

} // namespace

int PlannedReport::itemCount() const
{
    size_t count = 0;
    for (const Device &device : devices)
        count += device.dataIdents.size();
    return static_cast<int>(count);
}

void PlannedReport::sortDevices(const Inventory &inventory)
{
    const auto nameOf = [&inventory](const Device &device) {
        const DeviceRow *row = inventory.device(device.muid);
        return row ? row->name : QString();
    };
    std::stable_sort(devices.begin(), devices.end(), [&](const Device &a, const Device &b) {
        return nameOf(a).compare(nameOf(b), Qt::CaseInsensitive) < 0;
    });
}

void SortDeviceSelection(PlannedReport &plan, const Inventory &inventory)
{
    ShowStatus(QStringLiteral("Sorting device selection."));
    plan.sortDevices(inventory);
}

PlannedReport plannedReport(const clsReportDef &report, const clsGraphDef *chart, qint64 runInstant)
{
    PlannedReport plan;
    plan.id = report.ReportID;
    plan.title = report.ReportTitle;
    plan.latest = runInstant;
    plan.runDate = wallTime(runInstant);
    for (const auto &device : report.ReportDevices)
        plan.devices.push_back(plannedDevice(*device));
    if (!chart) {
        plan.error = Error(ItemNotFound,
                           QStringLiteral("There is no chart definition '%1'").arg(report.ChartID));
        return plan;
    }
    plan.chart = *chart;
    if (chart->ChartDuration != CustomRange)
        plan.chart.EndTime = plan.runDate;
    plan.chart.SetStart();
    plan.start = instantOf(plan.chart.StartTime);
    plan.end = instantOf(plan.chart.EndTime);
    plan.axis = std::make_shared<const BucketAxis>();
    try {
        plan.axis = axisOf(plan);
    } catch (const Error &error) {
        plan.axisError = error;
    }
    return plan;
}
