#pragma once

#include "figures/Outages.h"

/// The part of a period that counts for a target: inside of the service hours, outside of
/// maintenance. All of it where neither is given. A value that never changes; read on any thread.
class ServiceTime
{
public:
    ServiceTime() = default; ///< of no time at all
    /// `service`: nothing where all hours count. Both may reach beyond the period.
    ServiceTime(const Period &period, const std::optional<Stretches> &service,
                const Stretches &maintenance);

    /// Whether a test at a time counts. A stretch ends before its last second, the period after it.
    bool contains(qint64 second) const;

    /// Seconds of the period that do not count.
    qint64 excludedSeconds() const { return m_period.seconds() - totalSeconds(m_stretches); }

    const Period &period() const { return m_period; }
    const Stretches &stretches() const { return m_stretches; }

    /// The part of an outage that counts: from the first of its seconds inside to the last, as one
    /// outage; nothing where none is. `tests`: those of its item.
    std::optional<Outage> cut(const Outage &outage, std::span<const Test> tests) const;

private:
    Period m_period;
    Stretches m_stretches;
    bool m_isWhole = false;
};
