#include "report/SampleReader.h"

#include <algorithm>

namespace {

/// What the answers of one pass over a file may take. A pass costs little beside the charts of so
/// many buckets.
constexpr qint64 maxBytesAtOnce = 96 * 1024 * 1024;

} // namespace

SampleReader::SampleReader(const std::vector<PlannedReport> &reports)
{
    for (const PlannedReport &plan : reports) {
        if (plan.error)
            continue;
        for (const PlannedReport::Device &device : plan.devices)
            m_units.push_back({&plan, device});
    }
}

SampleReader::Range SampleReader::unitsOf(const PlannedReport &plan) const
{
    const auto isOfPlan = [&plan](const Unit &unit) { return unit.plan == &plan; };
    const auto first = std::find_if(m_units.begin(), m_units.end(), isOfPlan);
    const auto last = std::find_if_not(first, m_units.end(), isOfPlan);
    return {static_cast<size_t>(first - m_units.begin()),
            static_cast<size_t>(last - m_units.begin())};
}

void SampleReader::prepare(MonitoringDatabase &database, size_t unit)
{
    if (unit < m_units.size() && !isRead(unit) && database.answersManyAtOnce())
        readFrom(database, unit);
}

std::unique_ptr<DeviceQuestions> SampleReader::take(MonitoringDatabase &database, size_t unit)
{
    if (!isRead(unit))
        readFrom(database, unit);
    const auto before = static_cast<std::ptrdiff_t>(unit - m_first);
    std::unique_ptr<DeviceQuestions> taken = std::move(m_answered[unit - m_first]);
    m_answered.erase(m_answered.begin(), m_answered.begin() + before + 1);
    m_first = unit + 1;
    return taken;
}

void SampleReader::readFrom(MonitoringDatabase &database, size_t unit)
{
    m_answered.clear();
    m_first = unit;
    const std::shared_ptr<const Inventory> inventory = database.inventory();
    std::deque<std::unique_ptr<DeviceQuestions>> asked;
    std::vector<ItemQuestion> items;
    std::vector<SummaryQuestion> summaries;
    qint64 bytes = 0;
    for (size_t i = unit; i < m_units.size(); ++i) {
        if (i > unit && !database.answersManyAtOnce())
            break;
        const auto &[plan, device] = m_units[i];
        std::unique_ptr<DeviceQuestions> questions;
        if (inventory->device(device.muid)) {
            questions = std::make_unique<DeviceQuestions>(*plan, device, *inventory);
            bytes += questions->maxBytes();
            if (i > unit && bytes > maxBytesAtOnce)
                break;
            items.insert(items.end(), questions->items.begin(), questions->items.end());
            summaries.push_back(questions->summary);
        }
        asked.push_back(std::move(questions));
    }
    database.answer(items, summaries);
    auto answered = summaries.begin();
    for (const auto &questions : asked) {
        if (questions)
            questions->summary = std::move(*answered++);
    }
    m_answered = std::move(asked);
}
