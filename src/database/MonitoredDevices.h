#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <vector>

class MonitoringDatabase;

/// A data item of a monitored device.
struct MonitoredItem
{
    QString dataIdent;
    int name = 0;        ///< index in MonitoredDevices::itemNames
    int description = 0; ///< index in MonitoredDevices::itemDescriptions
    qint32 scale = 0;    ///< stateScale of series/DataSeries.h marks a state item
    bool isGlobal = true;
};

/// A monitored device and the range of its data items.
struct MonitoredDevice
{
    QString muid;
    QString name;
    QString description;
    bool isExcluded = false;
    int firstItem = 0;
    int itemCount = 0;
};

/// All devices of the monitoring database that have data items. Devices and the items of each are
/// in the natural order of their names (base/NaturalOrder.h). MUIDs are unique, and so are the
/// DataIDents of a device: of equal ones the first counts, as in a run.
struct MonitoredDevices
{
    std::vector<MonitoredDevice> devices;
    std::vector<MonitoredItem> items;
    QStringList itemNames; ///< each name once, in natural order
    QStringList itemDescriptions;
    QHash<qint32, QString> units; ///< by scale
};

/// Reads them, on the thread that uses the database. Throws Error.
MonitoredDevices readMonitoredDevices(MonitoringDatabase &database);
