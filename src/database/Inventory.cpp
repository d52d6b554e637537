#include "database/Inventory.h"

#include "series/DataSeries.h"

#include <algorithm>
#include <limits>

namespace {

/// The index of each key's row; of several rows the first one's.
template <typename Key, typename RowType, typename KeyOf>
QHash<Key, size_t> keyed(const std::vector<RowType> &rows, KeyOf keyOf)
{
    QHash<Key, size_t> positions;
    positions.reserve(static_cast<qsizetype>(rows.size()));
    for (size_t i = rows.size(); i-- > 0;)
        positions.insert(keyOf(rows[i]), i);
    return positions;
}

template <typename RowType, typename Key>
const RowType *found(const std::vector<RowType> &rows, const QHash<Key, size_t> &positions,
                     const Key &key)
{
    const auto position = positions.constFind(key);
    return position == positions.cend() ? nullptr : &rows[*position];
}

} // namespace

qint32 scaleNumber(qint64 stored)
{
    return static_cast<qint32>(std::clamp<qint64>(stored, std::numeric_limits<qint32>::min(),
                                                  std::numeric_limits<qint32>::max()));
}

Inventory::Inventory(std::vector<DeviceRow> devices, std::vector<ItemRow> items,
                     std::vector<ScaleRow> scales)
    : m_devices(std::move(devices))
    , m_items(std::move(items))
    , m_scales(std::move(scales))
    , m_deviceOf(keyed<QString>(m_devices, [](const auto &row) { return row.muid.toCaseFolded(); }))
    , m_itemOf(keyed<qint64>(m_items, [](const auto &row) { return row.dataIdent; }))
    , m_scaleOf(keyed<qint32>(m_scales, [](const auto &row) { return row.scale; }))
{
    for (size_t i = 0; i < m_items.size(); ++i) {
        if (m_items[i].scale == stateScale && m_items[i].isGlobal)
            m_countedOf.insert(m_items[i].deviceIdent, i);
    }
}

const DeviceRow *Inventory::device(const QString &muid) const
{
    return found(m_devices, m_deviceOf, muid.toCaseFolded());
}

const ItemRow *Inventory::item(qint64 dataIdent) const
{
    return found(m_items, m_itemOf, dataIdent);
}

const ScaleRow *Inventory::scale(qint32 scale) const
{
    return found(m_scales, m_scaleOf, scale);
}

std::vector<const ItemRow *> Inventory::countedItems(qint64 deviceIdent) const
{
    const auto [from, to] = m_countedOf.equal_range(deviceIdent);
    std::vector<size_t> positions(from, to);
    std::sort(positions.begin(), positions.end());
    std::vector<const ItemRow *> items;
    for (const size_t position : positions)
        items.push_back(&m_items[position]);
    return items;
}
