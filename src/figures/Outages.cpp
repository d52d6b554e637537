#include "figures/Outages.h"

#include <algorithm>

namespace {

constexpr size_t minTests = 10; // fewer say nothing about an interval

/// The lower of the two middles of some numbers, which are reordered; there is at least one.
qint64 lowerMedian(std::vector<qint64> &numbers)
{
    const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>((numbers.size() - 1) / 2);
    std::nth_element(numbers.begin(), middle, numbers.end());
    return *middle;
}

} // namespace

TestRate testRate(std::span<const Test> tests, const Period &period)
{
    TestRate rate;
    if (tests.size() < minTests)
        return rate;
    std::vector<qint64> steps;
    steps.reserve(tests.size());
    for (size_t i = 1; i < tests.size(); ++i) {
        if (const qint64 step = tests[i].second - tests[i - 1].second; step > 0)
            steps.push_back(step);
    }
    if (steps.empty())
        return rate;
    rate.interval = lowerMedian(steps);
    const double expected =
        static_cast<double>(period.seconds()) / static_cast<double>(*rate.interval);
    rate.coverage =
        expected > 0 ? std::min(1.0, static_cast<double>(tests.size()) / expected) : 1.0;
    return rate;
}

std::vector<Gap> gapsOf(std::span<const Test> tests, const Period &period, const TestRate &rate)
{
    std::vector<Gap> gaps;
    qint64 last = period.from;
    const auto upTo = [&](qint64 second) {
        if (rate.isGap(second - last))
            gaps.push_back({last, second});
        last = second;
    };
    for (const Test &test : tests)
        upTo(test.second);
    upTo(period.to);
    return gaps;
}

std::vector<Outage> outagesOf(std::span<const Test> tests, const std::optional<Test> &before,
                              const Period &period, const TestRate &rate)
{
    std::vector<Outage> outages;
    const Test *last = nullptr; // the failed test before, where an outage is open
    const auto end = [&](qint64 second, OutageEnd ending) {
        Outage &open = outages.back();
        open.end = second;
        open.seconds = open.end - open.begin;
        open.ending = ending;
        last = nullptr;
    };
    for (const Test &test : tests) {
        if (last && rate.isGap(test.second - last->second))
            end(last->second + *rate.interval, OutageEnd::NoData);
        if (test.succeeded) {
            if (last)
                end(test.second, OutageEnd::Recovered);
            continue;
        }
        if (!last) {
            const bool goesOn = &test == tests.data() && before && !before->succeeded &&
                                !rate.isGap(test.second - before->second);
            outages.push_back({.begin = goesOn ? period.from : test.second, .beganBefore = goesOn});
        }
        ++outages.back().failedTests;
        last = &test;
    }
    if (last && rate.isGap(period.to - last->second))
        end(last->second + *rate.interval, OutageEnd::NoData);
    else if (last)
        end(period.to, OutageEnd::StillFailing);
    return outages;
}

Stretches united(Stretches stretches)
{
    std::sort(stretches.begin(), stretches.end());
    Stretches whole;
    for (const auto &[from, to] : stretches) {
        if (!whole.empty() && from <= whole.back().second)
            whole.back().second = std::max(whole.back().second, to);
        else
            whole.emplace_back(from, to);
    }
    return whole;
}

Stretches intersection(const Stretches &a, const Stretches &b)
{
    Stretches common;
    for (auto left = a.begin(), right = b.begin(); left != a.end() && right != b.end();) {
        const qint64 from = std::max(left->first, right->first);
        const qint64 to = std::min(left->second, right->second);
        if (from < to)
            common.emplace_back(from, to);
        left->second < right->second ? ++left : ++right;
    }
    return common;
}

qint64 totalSeconds(const Stretches &stretches)
{
    qint64 seconds = 0;
    for (const auto &[from, to] : stretches)
        seconds += to - from;
    return seconds;
}

std::optional<double> Downtime::meanTimeToRepair() const
{
    if (outages == 0)
        return {};
    return static_cast<double>(seconds) / outages;
}

std::optional<double> Downtime::meanTimeBetweenFailures(qint64 periodSeconds) const
{
    if (outages == 0)
        return {};
    return static_cast<double>(periodSeconds - seconds) / outages;
}
