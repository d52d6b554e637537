#include "report/ReportTimeline.h"

#include "base/Numbers.h"
#include "report/ReportStory.h"

namespace {

constexpr double widthOfCharts = 1.5; ///< of the charts' width: names and rates need their space

TimelineChart::Row rowOf(const DeviceFigures &device)
{
    using Trend = TimelineChart::Trend;
    TimelineChart::Row row;
    row.name = shownName(device.name);
    row.parts = device.timeline;
    row.rate = rateText(device.present);
    row.change = pointsText(device.present, device.preceding);
    if (row.change.startsWith(u'+'))
        row.trend = Trend::Better;
    else if (row.change.startsWith(QChar(0x2212)))
        row.trend = Trend::Worse;
    row.isBad = device.target && !device.target->isMet();
    return row;
}

QString noteOf(const TimelineDevices &devices)
{
    const auto count = [](size_t number) {
        return groupedNumber(static_cast<double>(number), 0) +
               (number == 1 ? QLatin1String(" device") : QLatin1String(" devices"));
    };
    QStringList hidden;
    if (devices.more > 0)
        hidden.append(count(devices.more) + QLatin1String(" with fewer failures"));
    if (devices.quiet > 0)
        hidden.append(count(devices.quiet) + QLatin1String(" without failures or gaps"));
    return hidden.isEmpty() ? QString()
                            : QLatin1String("Not shown: ") + hidden.join(QLatin1String(", "));
}

} // namespace

TimelineChart timelineChart(const ReportContext &context, const ReportFigures &figures,
                            size_t maxRows)
{
    TimelineChart chart;
    chart.frame = context.chartFrame(QStringLiteral("When was it down?"), context.plan.title);
    chart.frame.size.rwidth() = static_cast<int>(chart.frame.size.width() * widthOfCharts);
    chart.frame.labelStep = 1;
    chart.period = figures.period;
    chart.excluded = excludedParts(context.plan.service);
    const TimelineDevices devices = timelineDevices(figures, chart.excluded, maxRows);
    for (const size_t index : devices.shown)
        chart.rows.push_back(rowOf(figures.devices[index]));
    chart.note = noteOf(devices);
    return chart;
}
