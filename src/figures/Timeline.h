#pragma once

#include "figures/ServiceTime.h"

#include <span>
#include <vector>

/// When each device of a report was up: its tests in equal parts of the period. Pure functions,
/// safe on any thread.

struct ReportFigures;

/// The tests of all items that count for a device in one part of the period, as far as they lie in
/// service time. An item without a test in a part, whose last one still holds because there is no
/// gap, counts with that.
struct TimelinePart
{
    quint32 tests = 0;
    quint32 failures = 0;

    bool operator==(const TimelinePart &) const = default;
};
using TimelineParts = std::vector<TimelinePart>;

/// As many parts as every timeline has: an hour each of a week.
inline constexpr size_t timelinePartCount = 168;

/// Adds an item that counts; the parts are made with the first one. `tests`: its tests in order of
/// time, those outside the period included.
void addToTimeline(TimelineParts &parts, std::span<const Test> tests, const ServiceTime &service,
                   const TestRate &rate);

/// Which parts are not wholly service time: without tests there they are no gaps. Empty where all
/// are.
std::vector<bool> excludedParts(const ServiceTime &service);

/// The devices that a timeline shows.
struct TimelineDevices
{
    std::vector<size_t> shown; ///< indexes in the report, the lowest success rate first
    size_t quiet = 0;          ///< not shown, because there is nothing to tell of them
    size_t more = 0;           ///< not shown, because those shown are worse
};

/// Of the devices that have items that count: all of them where a screen holds them, else those
/// with failures or gaps, at most `maxRows`. `excluded` as above.
TimelineDevices timelineDevices(const ReportFigures &figures, const std::vector<bool> &excluded,
                                size_t maxRows);
