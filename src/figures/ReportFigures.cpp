#include "figures/ReportFigures.h"

#include <algorithm>

namespace {

std::optional<double> percentOf(qint64 part, qint64 whole)
{
    if (whole == 0)
        return {};
    return 100.0 * static_cast<double>(part) / static_cast<double>(whole);
}

/// The tests from <= t <= to.
std::span<const Test> testsIn(std::span<const Test> tests, const Period &period)
{
    const auto first = std::partition_point(
        tests.begin(), tests.end(), [&](const Test &test) { return test.second < period.from; });
    const auto last = std::partition_point(
        first, tests.end(), [&](const Test &test) { return test.second <= period.to; });
    return std::span(first, last);
}

/// What the items that count come to; `figuresOf` picks the period's figures of an item, or null.
template <typename Pick>
Availability availabilityOf(const std::vector<ItemFigures> &items, const ServiceTime &service,
                            Pick figuresOf)
{
    Availability device;
    Stretches down;
    for (const ItemFigures &item : items) {
        const PeriodFigures *figures = item.counts ? figuresOf(item) : nullptr;
        if (!figures)
            continue;
        device.tests += figures->samples;
        device.failures += figures->failures;
        device.countedTests += figures->countedTests;
        device.countedFailures += figures->countedFailures;
        if (figures->rate.interval) {
            device.regularTests += figures->samples;
            device.expectedTests += static_cast<double>(service.period().seconds()) /
                                    static_cast<double>(*figures->rate.interval);
        }
        for (const Outage &outage : figures->outages) {
            ++device.downtime.outages;
            device.downtime.longestSeconds =
                std::max(device.downtime.longestSeconds, outage.seconds);
            down.emplace_back(outage.begin, outage.end);
        }
    }
    device.downtime.seconds =
        totalSeconds(intersection(united(std::move(down)), service.stretches()));
    return device;
}

void addOutages(std::vector<DeviceOutage> &outages, size_t device, const PeriodFigures &figures)
{
    for (const Outage &outage : figures.outages)
        outages.push_back({device, outage, figures.rate.interval.value_or(0)});
}

/// Drops the brief ones, and says how many there were.
int dropBrief(std::vector<Incident> &incidents)
{
    return static_cast<int>(
        std::erase_if(incidents, [](const Incident &incident) { return incident.isBrief; }));
}

} // namespace

PeriodFigures periodFigures(std::span<const Test> tests, const std::optional<Test> &before,
                            const ServiceTime &service, bool isState)
{
    const Period &period = service.period();
    const std::span<const Test> inside = testsIn(tests, period);
    PeriodFigures figures;
    figures.samples = static_cast<qint64>(inside.size());
    figures.rate = testRate(inside, period);
    figures.gaps = gapsOf(inside, period, figures.rate);
    if (!isState)
        return figures;
    for (const Test &test : inside) {
        const qint64 failure = test.succeeded ? 0 : 1;
        figures.failures += failure;
        if (service.contains(test.second)) {
            ++figures.countedTests;
            figures.countedFailures += failure;
        }
    }
    const bool isFirst = inside.data() == tests.data();
    const std::optional<Test> last = isFirst ? before : std::optional(*(inside.data() - 1));
    for (const Outage &outage : outagesOf(inside, last, period, figures.rate)) {
        if (const std::optional<Outage> counted = service.cut(outage, inside))
            figures.outages.push_back(*counted);
    }
    return figures;
}

std::optional<double> Availability::rate() const
{
    return percentOf(successes(), tests);
}

std::optional<double> Availability::countedRate() const
{
    return percentOf(countedTests - countedFailures, countedTests);
}

std::optional<double> Availability::coverage() const
{
    if (expectedTests <= 0)
        return {};
    return std::min(1.0, static_cast<double>(regularTests) / expectedTests);
}

void Availability::add(const Availability &other)
{
    tests += other.tests;
    failures += other.failures;
    countedTests += other.countedTests;
    countedFailures += other.countedFailures;
    expectedTests += other.expectedTests;
    regularTests += other.regularTests;
    downtime.outages += other.downtime.outages;
    downtime.seconds += other.downtime.seconds;
    downtime.longestSeconds = std::max(downtime.longestSeconds, other.downtime.longestSeconds);
}

void summarize(DeviceFigures &device, const ServiceTime &service,
               const std::optional<ServiceTime> &preceding, std::optional<double> target)
{
    device.present = availabilityOf(device.items, service,
                                    [](const ItemFigures &item) { return &item.present; });
    if (preceding)
        device.preceding = availabilityOf(device.items, *preceding, [](const ItemFigures &item) {
            return item.preceding ? &*item.preceding : nullptr;
        });
    const Availability &present = device.present;
    if (target && present.countedTests > 0)
        device.target = {*target, present.countedTests, present.countedFailures};
}

void summarize(ReportFigures &report, const ServiceTime &service,
               const std::optional<ServiceTime> &preceding)
{
    report.excludedSeconds = service.excludedSeconds();
    std::vector<DeviceOutage> outages;
    std::vector<DeviceOutage> before;
    for (size_t i = 0; i < report.devices.size(); ++i) {
        DeviceFigures &device = report.devices[i];
        report.present.add(device.present);
        if (device.preceding) {
            if (!report.preceding)
                report.preceding.emplace();
            report.preceding->add(*device.preceding);
        }
        if (device.target) {
            ++report.withTarget;
            report.missedTarget += device.target->isMet() ? 0 : 1;
        }
        for (ItemFigures &item : device.items) {
            if (item.counts)
                addOutages(outages, i, item.present);
            if (item.counts && item.preceding)
                addOutages(before, i, *item.preceding);
            if (item.preceding)
                item.preceding->outages = {};
        }
    }
    report.incidents = incidentsOf(std::move(outages), service.stretches());
    report.briefIncidents = dropBrief(report.incidents);
    if (preceding) {
        std::vector<Incident> incidents = incidentsOf(std::move(before), preceding->stretches());
        dropBrief(incidents);
        report.precedingIncidents = static_cast<int>(incidents.size());
    }
}

Comparability comparability(const std::optional<double> &presentCoverage,
                            const std::optional<double> &precedingCoverage)
{
    constexpr double enough = 0.5;
    if (!presentCoverage || !precedingCoverage)
        return {false, QStringLiteral("too few tests in one of the periods")};
    if (*presentCoverage < enough)
        return {false, QStringLiteral("less than half of the expected tests took place")};
    if (*precedingCoverage < enough)
        return {false, QStringLiteral("less than half of the expected tests took place in the "
                                      "preceding period")};
    return {true, QString()};
}
