#pragma once

#include "report/DeviceFacts.h"

#include <deque>

/// Reads the samples of all reports of a run, device by device in their order. An Access file is
/// read once for as many devices as fit into a bounded amount of memory, whichever reports they
/// belong to; a server is asked for one device at a time.
class SampleReader
{
public:
    /// A device of a report.
    struct Unit
    {
        const PlannedReport *plan;
        PlannedReport::Device device;
    };

    /// The units are the devices of all reports, which have to outlive the reader.
    explicit SampleReader(const std::vector<PlannedReport> &reports);

    /// The indexes of a report's units: from first to before last.
    struct Range
    {
        size_t first;
        size_t last;
    };
    Range unitsOf(const PlannedReport &plan) const;
    const PlannedReport::Device &device(size_t unit) const { return m_units[unit].device; }

    /// Reads the samples of a unit ahead, where many cost little more than one. Throws Error.
    void prepare(MonitoringDatabase &database, size_t unit);

    /// The answered questions of a unit whose device the database knows; each is taken once at
    /// most, in ascending order. Throws Error. Not complete when `CancelRequested` is set
    /// meanwhile.
    std::unique_ptr<DeviceQuestions> take(MonitoringDatabase &database, size_t unit);

private:
    bool isRead(size_t unit) const { return unit >= m_first && unit - m_first < m_answered.size(); }
    void readFrom(MonitoringDatabase &database, size_t unit);

    std::vector<Unit> m_units;
    std::deque<std::unique_ptr<DeviceQuestions>> m_answered; ///< null: an unknown device
    size_t m_first = 0; ///< index of the unit that m_answered begins with
};
