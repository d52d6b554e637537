#include "database/MonitoredDevices.h"

#include "base/NaturalOrder.h"
#include "database/MonitoringDatabase.h"
#include "database/RuleMatches.h"

#include <QSet>

#include <algorithm>
#include <numeric>
#include <tuple>

namespace {

/// Each text once, with its index.
class TextTable
{
public:
    int indexOf(const QString &text)
    {
        const auto found = m_indexes.constFind(text);
        if (found != m_indexes.cend())
            return *found;
        const int added = static_cast<int>(m_texts.size());
        m_indexes.insert(text, added);
        m_texts.append(text);
        return added;
    }
    const QStringList &texts() const { return m_texts; }

    /// Sorts the texts in natural order; returns the new index of each old one.
    std::vector<int> sort()
    {
        std::vector<QString> keys;
        for (const QString &text : std::as_const(m_texts))
            keys.push_back(naturalKey(text));
        std::vector<int> order(keys.size());
        std::iota(order.begin(), order.end(), 0);
        std::stable_sort(order.begin(), order.end(), [&keys](int a, int b) {
            return keys[static_cast<size_t>(a)] < keys[static_cast<size_t>(b)];
        });
        QStringList sorted;
        std::vector<int> indexes(keys.size());
        for (const int old : order) {
            indexes[static_cast<size_t>(old)] = static_cast<int>(sorted.size());
            sorted.append(m_texts[old]);
        }
        m_texts = sorted;
        return indexes;
    }

private:
    QStringList m_texts;
    QHash<QString, int> m_indexes;
};

/// Collects the rows of the selection: one for each data item, in any order.
class Reader
{
public:
    void take(const SelectionRow &row)
    {
        const int device = indexOf(row.device);
        if (device >= 0)
            addItem(device, row);
    }

    MonitoredDevices sorted()
    {
        const std::vector<int> names = m_names.sort();
        std::vector<std::pair<QString, size_t>> order;
        for (size_t i = 0; i < m_found.size(); ++i)
            order.emplace_back(naturalKey(m_found[i].device.name), i);
        std::sort(order.begin(), order.end());
        m_result.devices.reserve(m_found.size());
        m_result.items.reserve(m_itemCount);
        for (const auto &[key, index] : order) {
            Found &found = m_found[index];
            for (MonitoredItem &item : found.items)
                item.name = names[static_cast<size_t>(item.name)];
            appendItems(found);
            m_result.devices.push_back(std::move(found.device));
        }
        m_result.itemNames = m_names.texts();
        m_result.itemDescriptions = m_descriptions.texts();
        return std::move(m_result);
    }

private:
    struct Found
    {
        MonitoredDevice device;
        std::vector<MonitoredItem> items;
    };

    /// Its index in m_found; -1 when another device has the same MUID.
    int indexOf(const DeviceRow &row)
    {
        const auto known = m_indexes.constFind(row.ident);
        if (known != m_indexes.cend())
            return *known;
        int index = -1;
        if (const QString key = row.muid.toCaseFolded(); !m_muids.contains(key)) {
            m_muids.insert(key);
            index = static_cast<int>(m_found.size());
            m_found.push_back({{row.muid, row.name, row.description, row.isExcluded, 0, 0}, {}});
        }
        m_indexes.insert(row.ident, index);
        return index;
    }

    void addItem(int device, const SelectionRow &row)
    {
        const ItemRow &item = row.item;
        if (!m_result.units.contains(item.scale))
            m_result.units.insert(item.scale, unitText(row.scale));
        m_found[static_cast<size_t>(device)].items.push_back(
            {QString::number(item.dataIdent), m_names.indexOf(item.name),
             m_descriptions.indexOf(item.description), item.scale, item.isGlobal});
        ++m_itemCount;
    }

    /// An item occurs twice if two scales have the same number.
    void appendItems(Found &found)
    {
        std::vector<MonitoredItem> &items = found.items;
        const auto order = [](const MonitoredItem &item) {
            return std::tuple(item.name, item.dataIdent.size(), QStringView(item.dataIdent));
        };
        std::stable_sort(items.begin(), items.end(),
                         [&order](const auto &a, const auto &b) { return order(a) < order(b); });
        const auto last =
            std::unique(items.begin(), items.end(),
                        [&order](const auto &a, const auto &b) { return order(a) == order(b); });
        found.device.firstItem = static_cast<int>(m_result.items.size());
        found.device.itemCount = static_cast<int>(last - items.begin());
        std::move(items.begin(), last, std::back_inserter(m_result.items));
    }

    std::vector<Found> m_found;
    size_t m_itemCount = 0;
    QHash<qint64, int> m_indexes; ///< in m_found, by IDent
    QSet<QString> m_muids;
    TextTable m_names;
    TextTable m_descriptions;
    MonitoredDevices m_result;
};

} // namespace

MonitoredDevices readMonitoredDevices(MonitoringDatabase &database)
{
    Reader reader;
    database.readSelection([&reader](const SelectionRow &row) { reader.take(row); });
    return reader.sorted();
}
