#pragma once

#include "data/MonitoredDevices.h"
#include "definitions/ReportDef.h"
#include "ui/DeviceFilter.h"

#include <QAbstractItemModel>
#include <QIcon>

#include <vector>

/// The devices of the monitoring database with their data items, each with a check mark: what a
/// report is made of. Built for 100,000 items: flat vectors, and a filter of its own.
///
/// What a report selects and the database does not have stands in a group of its own on top, and
/// stays there, checked or not. So does the whole selection while the database is not read.
///
/// A device's mark tells about those of its items that are shown, and changes those; so does the
/// group's.
class DeviceTree : public QAbstractItemModel
{
    Q_OBJECT

public:
    enum Column { Name, Selected, Description, Unit, Id, ColumnCount };

    explicit DeviceTree(QObject *parent = nullptr);

    /// Takes a report's selection in place of the present one.
    void setSelection(const Collection<clsReportDeviceDef> &devices);

    /// Takes what the database has. The selection stays.
    void setMonitored(MonitoredDevices devices);
    bool isRead() const { return m_isRead; }

    /// The selected devices: those of the last setSelection in their order, new ones behind them in
    /// the tree's order; the items of each likewise. A device without items that was set so is
    /// kept.
    Collection<clsReportDeviceDef> selection() const;

    /// The same in one text that does not depend on any order, nor on what the database has.
    QString selectionText() const;

    struct Counts
    {
        qsizetype devices = 0;
        qsizetype items = 0;
        qsizetype allDevices = 0; ///< in the database
        qsizetype allItems = 0;
        qsizetype missingDevices = 0; ///< of those selected
        qsizetype missingItems = 0;
    };
    Counts counts() const;

    /// Shows only what passes. Rows stay as they are when marks change, until the next call.
    void setFilter(const QString &text, SelectedOnly selectedOnly);
    qsizetype shownDevices() const;
    qsizetype shownItems() const { return static_cast<qsizetype>(m_shownItems.size()); }

    /// Marks everything that is shown.
    void setShown(bool checked);

    /// Marks these rows, as a click on each of them would.
    void setMarks(const QModelIndexList &rows, bool checked);

    /// Names of data items, each once.
    const QStringList &itemNames() const { return m_monitored.itemNames; }
    enum class Devices { All, Shown };
    /// Marks the item of that name on many devices, whether the filter shows the item or not.
    void setKind(int itemName, Devices which, bool checked);

    /// The item's name by its place in itemNames(); -1 for what has none.
    int itemName(const QModelIndex &index) const;
    bool isDevice(const QModelIndex &index) const;
    /// Invalid when the filter does not show it. Keys hold until the next setSelection or
    /// setMonitored, whatever is shown.
    QModelIndex indexOfKey(quintptr key) const;
    static quintptr key(const QModelIndex &index) { return index.internalId(); }

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    /// Shown beside what the database does not have.
    void setWarningIcon(const QIcon &icon) { m_warning = icon; }

Q_SIGNALS:
    void selectionChanged();

private:
    enum class Kind { Group, Device, Item };
    struct Node
    {
        Kind kind;
        int number; ///< of the device or item
    };
    /// What the model knows of a device beside MonitoredDevice; those beyond the database's are
    /// missing there.
    struct DeviceState
    {
        int selectedItems = 0;
        bool keptWithoutItems = false; ///< selected, though none of its items is
        int twin = -1;                 ///< of a missing one: the known device that lacks its items
        int row = -1;                  ///< below its parent; -1: not shown
        int firstShown = 0;            ///< place in m_shownItems
        int shownCount = 0;
    };

    /// A selected device with its selected items, in the tree's order.
    struct Chosen
    {
        QString muid;
        QStringList items;
    };

    static quintptr keyOf(Node node);
    static Node nodeOf(const QModelIndex &index);
    MonitoredDevice &device(int number) { return m_monitored.devices[size_t(number)]; }
    const MonitoredDevice &device(int number) const { return m_monitored.devices[size_t(number)]; }
    const MonitoredItem &item(int number) const { return m_monitored.items[size_t(number)]; }
    DeviceState &state(int number) { return m_states[size_t(number)]; }
    const DeviceState &state(int number) const { return m_states[size_t(number)]; }
    int deviceCount() const { return static_cast<int>(m_monitored.devices.size()); }
    bool isMissing(int number) const { return number >= m_knownDevices; }
    bool isSelected(int number) const;
    bool hasGroup() const { return !m_shownMissing.empty(); }

    void dropMissing();
    void take(const std::vector<Chosen> &devices);
    void takeDevice(const Chosen &selected, int known);
    std::vector<Chosen> chosen() const;
    static std::shared_ptr<clsReportDeviceDef> definition(const Chosen &chosen,
                                                          const clsReportDeviceDef *former);
    void filter();
    void filterDevice(int number);
    Qt::CheckState markOf(Node node) const;
    void mark(Node node, bool checked);
    void markItem(int number, bool checked);
    void tellMarks();
    QVariant text(Node node, int column) const;
    QVariant groupText(int column) const;
    QVariant deviceText(int number, int column) const;
    QVariant itemText(int number, int column) const;
    QString toolTip(Node node) const;
    QModelIndex deviceIndex(int number) const;

    /// What the database has, and behind it what it lacks of the selection.
    MonitoredDevices m_monitored;
    bool m_isRead = false;
    int m_knownDevices = 0;
    int m_knownItems = 0;
    std::vector<DeviceState> m_states;
    std::vector<int> m_deviceOfItem;
    std::vector<bool> m_checked; ///< by item
    Collection<clsReportDeviceDef> m_former;

    DeviceFilter m_filter;
    std::vector<int> m_shownMissing; ///< devices in the group
    std::vector<int> m_shownKnown;   ///< devices behind it
    std::vector<int> m_shownItems;   ///< those of one device stand together
    QIcon m_warning;
};
