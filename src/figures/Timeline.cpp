#include "figures/Timeline.h"

#include "figures/ReportFigures.h"

#include <algorithm>

namespace {

constexpr size_t rowsOfScreen = 24;

qint64 begin(const Period &period, size_t part)
{
    return period.from +
           period.seconds() * static_cast<qint64>(part) / static_cast<qint64>(timelinePartCount);
}

/// The last part ends with the period.
size_t partOf(const Period &period, qint64 second)
{
    if (period.seconds() <= 0)
        return 0;
    const auto part = static_cast<size_t>(
        (second - period.from) * static_cast<qint64>(timelinePartCount) / period.seconds());
    return std::min(part, timelinePartCount - 1);
}

/// Whether a device failed, or was silent for a part of the time that counts.
bool isWorthARow(const DeviceFigures &device, const std::vector<bool> &excluded)
{
    for (size_t i = 0; i < device.timeline.size(); ++i) {
        const TimelinePart &part = device.timeline[i];
        if (part.failures > 0 || (part.tests == 0 && (excluded.empty() || !excluded[i])))
            return true;
    }
    return false;
}

/// Less is worse: those that failed by their rate, then those without data, then the flawless ones.
std::pair<int, double> rank(const DeviceFigures &device)
{
    if (device.present.tests == 0)
        return {1, 0};
    return {device.present.failures > 0 ? 0 : 2, *device.present.rate()};
}

} // namespace

void addToTimeline(TimelineParts &parts, std::span<const Test> tests, const ServiceTime &service,
                   const TestRate &rate)
{
    parts.resize(timelinePartCount);
    const Period &period = service.period();
    const std::vector<bool> excluded = excludedParts(service);
    const auto add = [&](size_t part, const Test &test) {
        ++parts[part].tests;
        parts[part].failures += test.succeeded ? 0 : 1;
    };
    size_t next = 0; // the first part about which the item has said nothing
    const auto hold = [&](const Test &test, size_t end) {
        for (; next < end; ++next) {
            if (excluded.empty() || !excluded[next])
                add(next, test);
        }
    };
    const Test *last = nullptr;
    for (const Test &test : tests) {
        if (!period.contains(test.second))
            continue;
        const size_t part = partOf(period, test.second);
        if (!rate.isGap(test.second - (last ? last->second : period.from)))
            hold(last ? *last : test, part);
        if (service.contains(test.second))
            add(part, test);
        next = part + 1;
        last = &test;
    }
    if (last && !rate.isGap(period.to - last->second))
        hold(*last, timelinePartCount);
}

std::vector<bool> excludedParts(const ServiceTime &service)
{
    if (service.excludedSeconds() == 0)
        return {};
    std::vector<bool> excluded(timelinePartCount);
    for (size_t i = 0; i < timelinePartCount; ++i) {
        const Stretches part{{begin(service.period(), i), begin(service.period(), i + 1)}};
        excluded[i] = intersection(part, service.stretches()) != part;
    }
    return excluded;
}

TimelineDevices timelineDevices(const ReportFigures &figures, const std::vector<bool> &excluded,
                                size_t maxRows)
{
    TimelineDevices devices;
    for (size_t i = 0; i < figures.devices.size(); ++i) {
        if (!figures.devices[i].timeline.empty())
            devices.shown.push_back(i);
    }
    if (devices.shown.size() > rowsOfScreen)
        devices.quiet = std::erase_if(devices.shown, [&](size_t index) {
            return !isWorthARow(figures.devices[index], excluded);
        });
    std::stable_sort(devices.shown.begin(), devices.shown.end(), [&](size_t a, size_t b) {
        return rank(figures.devices[a]) < rank(figures.devices[b]);
    });
    if (devices.shown.size() > maxRows) {
        devices.more = devices.shown.size() - maxRows;
        devices.shown.resize(maxRows);
    }
    return devices;
}
