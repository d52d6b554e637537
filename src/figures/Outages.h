#pragma once

#include "series/TestTrack.h"

#include <optional>
#include <span>
#include <utility>
#include <vector>

/// When a state item was tested, and when it was down. Pure functions, safe on any thread; all
/// times are instants in whole seconds since 1970-01-01 UTC.

/// The time that figures are counted over, `from` <= t <= `to`. It ends no later than the run.
struct Period
{
    qint64 from = 0;
    qint64 to = 0;

    qint64 seconds() const { return to - from; }
    bool contains(qint64 second) const { return second >= from && second <= to; }
};

/// How regularly an item was tested.
struct TestRate
{
    /// Expected seconds from one test to the next: the median of the differences between successive
    /// tests, equal times left out, the lower of two middles. Unknown below ten tests.
    std::optional<qint64> interval;
    /// The share of the expected tests that took place, 0 to 1; unknown where the interval is.
    std::optional<double> coverage;

    /// Whether a difference between two successive times is a gap: longer than three intervals.
    bool isGap(qint64 seconds) const { return interval && seconds > 3 * *interval; }
};

/// `tests`: those of the period, in order of time.
TestRate testRate(std::span<const Test> tests, const Period &period);

/// A stretch without tests. The period's bounds count as tests.
struct Gap
{
    qint64 from = 0;
    qint64 to = 0;

    bool operator==(const Gap &) const = default;
};
std::vector<Gap> gapsOf(std::span<const Test> tests, const Period &period, const TestRate &rate);

/// How an outage ends.
enum class OutageEnd {
    Recovered,   ///< with the next test, which succeeded
    NoData,      ///< an interval after the last failed test, because no data followed
    StillFailing ///< with the period: its last test failed
};

/// Failed tests in a row without a gap among them.
struct Outage
{
    qint64 begin = 0; ///< of the first failed test; of the period where it began before
    qint64 end = 0;
    qint64 seconds = 0; ///< how much of it counts: all, unless it was cut (see ServiceTime.h)
    int failedTests = 0;
    bool beganBefore = false; ///< the last test before the period failed, too
    OutageEnd ending = OutageEnd::Recovered;

    bool operator==(const Outage &) const = default;
};

/// The outages of an item in a period. `before`: the last test before the period, if there is one.
std::vector<Outage> outagesOf(std::span<const Test> tests, const std::optional<Test> &before,
                              const Period &period, const TestRate &rate);

/// Stretches of time, begin and end, in order and apart from each other.
using Stretches = std::vector<std::pair<qint64, qint64>>;

/// What some stretches cover together; they come in any order and may overlap.
Stretches united(Stretches stretches);

/// What two sets of stretches have in common.
Stretches intersection(const Stretches &a, const Stretches &b);

qint64 totalSeconds(const Stretches &stretches);

/// What the outages of a device come to.
struct Downtime
{
    int outages = 0;
    qint64 seconds = 0;        ///< in which at least one of its items was out
    qint64 longestSeconds = 0; ///< of one outage

    /// Mean seconds to repair and between failures; nothing without outages.
    std::optional<double> meanTimeToRepair() const;
    std::optional<double> meanTimeBetweenFailures(qint64 periodSeconds) const;
};
