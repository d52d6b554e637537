#include "report/ReportPlan.h"

#include "base/TimeZone.h"
#include "database/RuleMatches.h"

#include <QSet>

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

PlannedReport::Device plannedDevice(const clsReportDef &report, const clsReportDeviceDef &device)
{
    PlannedReport::Device planned;
    planned.muid = device.MUID;
    planned.target = device.Target ? device.Target : report.Target;
    for (const auto &item : device.DataItems) {
        planned.dataIdents.push_back(item->DataIDent.toLongLong());
        if (item->Limit)
            planned.limits.insert(planned.dataIdents.back(), *item->Limit);
    }
    return planned;
}

ServiceTime serviceTime(const clsReportDef &report, const Period &period)
{
    std::optional<Stretches> hours;
    if (!report.Hours.isEmpty())
        hours = report.Hours.stretches(period.from, period.to);
    Stretches maintenance;
    for (const ReportMaintenance &entry : report.Maintenance)
        maintenance.emplace_back(floorSeconds(instantOf(entry.From)),
                                 floorSeconds(instantOf(entry.To)));
    return ServiceTime(period, hours, maintenance);
}

/// Nothing where the period has more intervals than a chart can have.
std::optional<PlannedReport::FurtherPeriod>
furtherPeriod(const ItemFold::Span &span, ChartFrequencyCode frequency, int minuteInterval)
{
    try {
        return PlannedReport::FurtherPeriod{
            span, std::make_shared<const BucketAxis>(span.from, span.to, frequency, minuteInterval,
                                                     BucketAxis::Labels::None)};
    } catch (const Error &) {
        return {};
    }
}

/// What the report's figures need beside its charts.
void planFigures(PlannedReport &plan, const clsReportDef &report)
{
    const auto periodOf = [](const ItemFold::Span &span) {
        return Period{floorSeconds(span.from), floorSeconds(span.to)};
    };
    plan.service = serviceTime(report, periodOf({plan.start, std::min(plan.end, plan.latest)}));
    constexpr int forecastDays = 90;
    const QDateTime firstDay = wallDateTime(plan.runDate.date().addDays(1 - forecastDays));
    plan.recentDays = furtherPeriod({instantOf(firstDay), plan.latest}, ByDay, 0);
    if (!report.Compare)
        return;
    const DateRange preceding = plan.chart.precedingPeriod(plan.runDate);
    plan.preceding = furtherPeriod({instantOf(preceding.start), instantOf(preceding.end)},
                                   plan.chart.ChartFrequency, plan.chart.MinuteInterval);
    if (plan.preceding)
        plan.precedingService = serviceTime(report, periodOf(plan.preceding->span));
}

} // namespace

int PlannedReport::itemCount() const
{
    size_t count = 0;
    for (const Device &device : devices)
        count += device.dataIdents.size();
    return static_cast<int>(count);
}

void PlannedReport::applyRules(const Inventory &inventory)
{
    if (knowsAllDevices)
        return;
    knowsAllDevices = true;
    QHash<QString, size_t> known; // by case-folded MUID
    for (size_t i = 0; i < devices.size(); ++i)
        known.insert(devices[i].muid.toCaseFolded(), i);
    for (const RuleMatch &match : ruleMatches(rules, inventory)) {
        const QString key = match.device->muid.toCaseFolded();
        if (!known.contains(key)) {
            known.insert(key, devices.size());
            devices.push_back({match.device->muid, {}, target, {}});
        }
        std::vector<qint64> &items = devices[known[key]].dataIdents;
        const QSet<qint64> before(items.begin(), items.end());
        for (const ItemRow *item : match.items) {
            if (!before.contains(item->dataIdent))
                items.push_back(item->dataIdent);
        }
    }
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

PlannedReport plannedReport(const clsReportDef &report, const clsGraphDef *chart, qint64 runInstant)
{
    PlannedReport plan;
    plan.id = report.ReportID;
    plan.title = report.ReportTitle;
    plan.keep = report.Keep;
    plan.pdf =
        report.Pdf || report.Keep > 0 ? PlannedReport::Pdf::Beside : PlannedReport::Pdf::None;
    plan.latest = runInstant;
    plan.runDate = wallTime(runInstant);
    plan.rules = report.Rules;
    plan.knowsAllDevices = plan.rules.empty();
    plan.target = report.Target;
    for (const auto &device : report.ReportDevices)
        plan.devices.push_back(plannedDevice(report, *device));
    if (!chart) {
        plan.error = Error(ItemNotFound,
                           QStringLiteral("There is no chart definition '%1'").arg(report.ChartID));
        return plan;
    }
    plan.chart = chartOfRun(*chart, plan.runDate);
    plan.start = instantOf(plan.chart.StartTime);
    plan.end = instantOf(plan.chart.EndTime);
    plan.axis = std::make_shared<const BucketAxis>();
    try {
        plan.axis = axisOf(plan);
    } catch (const Error &error) {
        plan.axisError = error;
    }
    planFigures(plan, report);
    return plan;
}
