#include "figures/ServiceTime.h"

#include <algorithm>

namespace {

Stretches without(const Stretches &stretches, const Stretches &excluded)
{
    Stretches rest;
    auto next = excluded.begin();
    for (auto [from, to] : stretches) {
        while (next != excluded.end() && next->second <= from)
            ++next;
        for (auto hole = next; hole != excluded.end() && hole->first < to; ++hole) {
            if (from < hole->first)
                rest.emplace_back(from, hole->first);
            from = std::max(from, hole->second);
        }
        if (from < to)
            rest.emplace_back(from, to);
    }
    return rest;
}

std::span<const Test> testsBetween(std::span<const Test> tests, qint64 from, qint64 to)
{
    const auto first =
        std::lower_bound(tests.begin(), tests.end(), from,
                         [](const Test &test, qint64 second) { return test.second < second; });
    const auto last = std::upper_bound(first, tests.end(), to, [](qint64 second, const Test &test) {
        return second < test.second;
    });
    return std::span(first, last);
}

} // namespace

ServiceTime::ServiceTime(const Period &period, const std::optional<Stretches> &service,
                         const Stretches &maintenance)
    : m_period(period)
    , m_isWhole(!service && maintenance.empty())
{
    const Stretches whole{{period.from, period.to}};
    m_stretches =
        without(service ? intersection(united(*service), whole) : whole, united(maintenance));
}

bool ServiceTime::contains(qint64 second) const
{
    if (m_isWhole)
        return m_period.contains(second);
    const auto after = std::upper_bound(
        m_stretches.begin(), m_stretches.end(), second,
        [](qint64 time, const std::pair<qint64, qint64> &stretch) { return time < stretch.first; });
    if (after == m_stretches.begin())
        return false;
    const qint64 end = std::prev(after)->second;
    return second < end || (second == end && second == m_period.to);
}

std::optional<Outage> ServiceTime::cut(const Outage &outage, std::span<const Test> tests) const
{
    if (m_isWhole)
        return outage;
    const Stretches inside = intersection(m_stretches, {{outage.begin, outage.end}});
    if (inside.empty())
        return {};
    Outage part = outage;
    part.begin = inside.front().first;
    part.end = inside.back().second;
    part.seconds = totalSeconds(inside);
    part.beganBefore = outage.beganBefore && part.begin == outage.begin;
    const auto among = testsBetween(tests, outage.begin, outage.end);
    part.failedTests =
        static_cast<int>(std::count_if(among.begin(), among.end(), [this](const Test &test) {
            return !test.succeeded && contains(test.second);
        }));
    return part;
}
