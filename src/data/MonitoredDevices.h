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
    int name = 0;        ///< place in MonitoredDevices::itemNames
    int description = 0; ///< place in MonitoredDevices::itemDescriptions
    qint32 scale = 0;    ///< stateScale of data/DataSeries.h marks a state item
    bool isGlobal = true;
};

/// A monitored device; its data items stand together.
struct MonitoredDevice
{
    QString muid;
    QString name;
    QString description;
    bool isExcluded = false;
    int firstItem = 0;
    int itemCount = 0;
};

/// All devices of the monitoring database that have data items. Devices and the items of each stand
/// in the natural order of their names (core/NaturalOrder.h). No two devices have the same MUID, no
/// two items of a device the same DataIDent: the first one counts, as it does in a run.
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
