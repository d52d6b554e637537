#pragma once

#include <QHash>
#include <QString>

#include <vector>

/// Rows of the monitoring database's small tables. Texts that are NULL are empty.

struct DeviceRow
{
    qint64 ident = 0;
    QString muid;
    QString name;
    QString description;
    bool isExcluded = false;
    QString group = {}; ///< empty where the database has no groups
};

struct ItemRow
{
    qint64 dataIdent = 0;
    qint64 deviceIdent = 0; ///< DeviceRow::ident of the device that it belongs to
    QString name;
    QString description;
    qint32 scale = 0; ///< stateScale of series/DataSeries.h marks a state item
    bool isGlobal = false;
};

struct ScaleRow
{
    qint32 scale = 0;
    QString name;
    QString abbreviation; ///< of the unit
};

/// A scale's number, limited to 32 bits.
qint32 scaleNumber(qint64 stored);

/// The devices, data items and scales of the database, by their keys. Of rows with the same key the
/// first one counts. Immutable; read on any thread.
class Inventory
{
public:
    Inventory(std::vector<DeviceRow> devices, std::vector<ItemRow> items,
              std::vector<ScaleRow> scales);

    // In the order of the database.
    const std::vector<DeviceRow> &devices() const { return m_devices; }
    const std::vector<ItemRow> &items() const { return m_items; }
    const std::vector<ScaleRow> &scales() const { return m_scales; }

    // Null where there is no such row.
    const DeviceRow *device(const QString &muid) const; ///< without regard to case
    const ItemRow *item(qint64 dataIdent) const;
    const ScaleRow *scale(qint32 scale) const;

    /// The items that count for a device's success rate: state items with IsGlobal set.
    std::vector<const ItemRow *> countedItems(qint64 deviceIdent) const;

private:
    std::vector<DeviceRow> m_devices;
    std::vector<ItemRow> m_items;
    std::vector<ScaleRow> m_scales;
    QHash<QString, size_t> m_deviceOf; ///< by case-folded MUID
    QHash<qint64, size_t> m_itemOf;
    QHash<qint32, size_t> m_scaleOf;
    QMultiHash<qint64, size_t> m_countedOf; ///< by device
};
