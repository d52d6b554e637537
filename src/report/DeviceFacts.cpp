#include "report/DeviceFacts.h"

#include "definitions/Dates.h"

#include <algorithm>

DeviceQuestions::DeviceQuestions(const PlannedReport &plan, const PlannedReport::Device &device,
                                 const Inventory &inventory)
{
    const DeviceRow &row = *inventory.device(device.muid);
    m_facts.counts.name = row.name;
    m_facts.counts.folder = folderSafe(device.muid);
    m_facts.description = row.description;
    m_facts.tests.scale = stateScale;
    m_facts.tests.axis = plan.axis;
    m_facts.testsError = plan.axisError;
    for (const ItemRow *item : inventory.countedItems(row.ident))
        m_facts.counted.push_back({item->dataIdent, item->name, 0, 0, 0});

    std::vector<qint64> asked;
    int number = 0;
    for (const qint64 dataIdent : device.dataIdents) {
        ++number;
        const ItemRow *item = inventory.item(dataIdent);
        if (!item || item->deviceIdent != row.ident)
            continue; // the device does not record it
        ItemFacts &facts = m_facts.items.emplace_back();
        facts.number = number;
        facts.dataIdent = dataIdent;
        facts.name = item->name;
        facts.description = item->description;
        if (const ScaleRow *scale = inventory.scale(item->scale)) {
            facts.scaleName = scale->name;
            facts.unit = scale->abbreviation;
        }
        facts.series.scale = item->scale;
        facts.error = plan.axisError;
        const auto counted =
            std::find_if(m_facts.counted.begin(), m_facts.counted.end(),
                         [&](const CountedItem &entry) { return entry.dataIdent == dataIdent; });
        if (counted != m_facts.counted.end()) {
            facts.counts = true;
            counted->number = number;
        }
        asked.push_back(dataIdent);
    }
    for (const CountedItem &counted : m_facts.counted) {
        if (counted.number == 0)
            asked.push_back(counted.dataIdent);
    }

    m_folds.assign(asked.size(), CalculatedSummary(plan.axis, plan.latest));
    m_maxBytes =
        static_cast<qint64>(asked.size() * plan.axis->size()) * CalculatedSummary::bytesPerBucket;
    for (size_t i = 0; i < asked.size(); ++i)
        items.push_back({asked[i], plan.chart.StartTime, plan.chart.EndTime, &m_folds[i]});
    summary = {device.muid, plan.chart.StartTime, plan.chart.EndTime, {}};
}

std::vector<int> DeviceQuestions::itemNumbers() const
{
    std::vector<int> numbers;
    for (const ItemFacts &item : m_facts.items)
        numbers.push_back(item.number);
    return numbers;
}

QStringList DeviceQuestions::itemNames() const
{
    QStringList names;
    for (const ItemFacts &item : m_facts.items)
        names.append(item.name);
    return names;
}

DeviceFacts DeviceQuestions::takeFacts()
{
    DeviceCounts &counts = m_facts.counts;
    for (const StateCount &count : summary.answer) {
        counts.hasData = true;
        counts.successes += count.successes;
        counts.failures += count.tests - count.successes;
        for (CountedItem &item : m_facts.counted) {
            if (item.dataIdent == count.dataIdent) {
                item.successes = count.successes;
                item.failures = count.tests - count.successes;
            }
        }
    }
    const auto takeTests = [this](const CalculatedSummary &fold) {
        if (fold.error)
            m_facts.testsError = fold.error;
        else
            addTests(m_facts.tests, fold.series(stateScale));
    };
    for (size_t i = 0; i < m_folds.size(); ++i) {
        const CalculatedSummary &fold = m_folds[i];
        if (i >= m_facts.items.size()) { // counted, but not charted
            takeTests(fold);
            continue;
        }
        ItemFacts &item = m_facts.items[i];
        item.samples = fold.sampleCount();
        if (fold.error)
            item.error = fold.error;
        if (!item.error)
            item.series = fold.series(item.series.scale);
        if (item.counts)
            takeTests(fold);
    }
    m_folds = {};
    return std::move(m_facts);
}

void addTests(DataSeries &sum, const DataSeries &tests)
{
    sum.buckets.resize(std::max(sum.buckets.size(), tests.buckets.size()));
    for (size_t i = 0; i < tests.buckets.size(); ++i) {
        sum.buckets[i].count += tests.buckets[i].count;
        sum.buckets[i].successes += tests.buckets[i].successes;
    }
}
