#include "data/MonitoredDevices.h"

#include "core/NaturalOrder.h"
#include "data/Connection.h"
#include "data/Queries.h"

#include <QSet>

#include <algorithm>
#include <limits>
#include <numeric>
#include <tuple>

namespace {

/// Each text once, with its place.
class TextTable
{
public:
    int place(const QString &text)
    {
        const auto found = m_places.constFind(text);
        if (found != m_places.cend())
            return *found;
        const int added = static_cast<int>(m_texts.size());
        m_places.insert(text, added);
        m_texts.append(text);
        return added;
    }
    const QStringList &texts() const { return m_texts; }

    /// Puts the texts into natural order; the new place of each old one.
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
        std::vector<int> places(keys.size());
        for (const int old : order) {
            places[static_cast<size_t>(old)] = static_cast<int>(sorted.size());
            sorted.append(m_texts[old]);
        }
        m_texts = sorted;
        return places;
    }

private:
    QStringList m_texts;
    QHash<QString, int> m_places;
};

/// A scale has a unit; one without an abbreviation has at least a name.
QString unitText(const Recordset &rows, int abbreviation, int name)
{
    const QString unit = rows.text(abbreviation).trimmed();
    return unit.isEmpty() ? rows.text(name).trimmed() : unit;
}

/// Takes the rows of the selection query: one for each data item, in no order at all.
class Reader
{
public:
    explicit Reader(Recordset &rows)
        : m_rows(rows)
        , m_muid(rows.column(QStringLiteral("MUID")))
        , m_ident(rows.column(QStringLiteral("IDent")))
        , m_machName(rows.column(QStringLiteral("MachName")))
        , m_machDesc(rows.column(QStringLiteral("MachDesc")))
        , m_excluded(rows.column(QStringLiteral("MachExclude")))
        , m_dataIdent(rows.column(QStringLiteral("DataIDent")))
        , m_dataName(rows.column(QStringLiteral("DataName")))
        , m_dataDesc(rows.column(QStringLiteral("DataDesc")))
        , m_scale(rows.column(QStringLiteral("iScale")))
        , m_scaleName(rows.column(QStringLiteral("ScaleName")))
        , m_scaleAbbr(rows.column(QStringLiteral("ScaleAbbr")))
        , m_global(rows.column(QStringLiteral("IsGlobal")))
    {}

    MonitoredDevices read()
    {
        while (m_rows.next()) {
            const int device = deviceOfRow();
            if (device >= 0)
                addItem(device);
        }
        return sorted();
    }

private:
    struct Found
    {
        MonitoredDevice device;
        std::vector<MonitoredItem> items;
    };

    /// Its place in m_found; -1 when another device has the same MUID.
    int deviceOfRow()
    {
        const qint64 ident = m_rows.integer(m_ident);
        const auto known = m_places.constFind(ident);
        if (known != m_places.cend())
            return *known;
        MonitoredDevice device;
        device.muid = m_rows.text(m_muid);
        int place = -1;
        if (const QString key = device.muid.toCaseFolded(); !m_muids.contains(key)) {
            m_muids.insert(key);
            device.name = m_rows.text(m_machName);
            device.description = m_rows.text(m_machDesc);
            device.isExcluded = m_rows.integer(m_excluded) != 0;
            place = static_cast<int>(m_found.size());
            m_found.push_back({std::move(device), {}});
        }
        m_places.insert(ident, place);
        return place;
    }

    void addItem(int device)
    {
        MonitoredItem item;
        item.dataIdent = m_rows.text(m_dataIdent);
        item.name = m_names.place(m_rows.text(m_dataName));
        item.description = m_descriptions.place(m_rows.text(m_dataDesc));
        const qint64 scale = m_rows.integer(m_scale);
        item.scale = static_cast<qint32>(std::clamp<qint64>(
            scale, std::numeric_limits<qint32>::min(), std::numeric_limits<qint32>::max()));
        item.isGlobal = m_rows.integer(m_global) != 0;
        if (!m_result.units.contains(item.scale))
            m_result.units.insert(item.scale, unitText(m_rows, m_scaleAbbr, m_scaleName));
        m_found[static_cast<size_t>(device)].items.push_back(std::move(item));
        ++m_itemCount;
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
        for (const auto &[key, place] : order) {
            Found &found = m_found[place];
            for (MonitoredItem &item : found.items)
                item.name = names[static_cast<size_t>(item.name)];
            appendItems(found);
            m_result.devices.push_back(std::move(found.device));
        }
        m_result.itemNames = m_names.texts();
        m_result.itemDescriptions = m_descriptions.texts();
        return std::move(m_result);
    }

    /// Two scales of one number give an item twice.
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

    Recordset &m_rows;
    const int m_muid, m_ident, m_machName, m_machDesc, m_excluded;
    const int m_dataIdent, m_dataName, m_dataDesc, m_scale, m_scaleName, m_scaleAbbr, m_global;
    std::vector<Found> m_found;
    size_t m_itemCount = 0;
    QHash<qint64, int> m_places; ///< IDent -> place in m_found
    QSet<QString> m_muids;
    TextTable m_names;
    TextTable m_descriptions;
    MonitoredDevices m_result;
};

} // namespace

MonitoredDevices readMonitoredDevices(Connection &connection)
{
    const std::unique_ptr<Recordset> rows = connection.open(GetDataSelectionSQL());
    return Reader(*rows).read();
}
