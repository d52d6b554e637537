#pragma once

#include "database/MonitoredDevices.h"
#include "definitions/clsReportDef.h"
#include "ui/editors/DeviceFilter.h"

#include <QAbstractItemModel>
#include <QIcon>

#include <vector>

/// The devices of the monitoring database with their data items, each with a check mark: the
/// selection of a report. Built for 100,000 items: flat vectors, and its own filter.
///
/// Selected devices and items that are not in the database are in a group at the top, and stay
/// there, checked or not. So does the whole selection until the database is read.
///
/// The last column has the own target of a selected device and the limit of a selected counter,
/// which can be edited.
///
/// A device's mark shows and changes those of its items that are shown; so does the group's. Where
/// only selected ones are shown it also tells that there are others.
class DeviceTree : public QAbstractItemModel
{
    Q_OBJECT

public:
    enum Column { Name, Selected, Description, Unit, Id, Own, ColumnCount };

    explicit DeviceTree(QObject *parent = nullptr);

    /// Replaces the selection by a report's.
    void setSelection(const Collection<clsReportDeviceDef> &devices);

    /// Sets the database's devices. The selection stays.
    void setMonitored(MonitoredDevices devices);
    bool isRead() const { return m_isRead; }

    /// The selected devices: those of the last setSelection in their order, then new ones in the
    /// tree's order; the items of each likewise. A device that was set without items is kept.
    Collection<clsReportDeviceDef> selection() const;

    /// The same as a text that does not depend on the order or on the database.
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

    /// Shows only what matches. Rows do not change with the marks until the next call.
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

    /// The index of the item's name in itemNames(); -1 for rows that are not items.
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
        int firstShown = 0;            ///< index in m_shownItems
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
    std::shared_ptr<clsReportDeviceDef> definition(const Chosen &chosen,
                                                   const clsReportDeviceDef *former) const;
    QString ownKey(Node node) const;
    bool canHaveOwn(Node node) const;
    bool setOwn(Node node, const QString &text);
    void filter();
    void filterDevice(int number);
    Qt::CheckState markOf(Node node) const;
    bool allShownChecked(int number) const;
    void mark(Node node, bool checked);
    void markItem(int number, bool checked);
    void tellMarks();
    QVariant text(Node node, int column) const;
    QVariant groupText(int column) const;
    QVariant deviceText(int number, int column) const;
    QVariant itemText(int number, int column) const;
    QString toolTip(Node node) const;
    QModelIndex deviceIndex(int number) const;

    /// The database's devices, then the selected ones that it lacks.
    MonitoredDevices m_monitored;
    bool m_isRead = false;
    int m_knownDevices = 0;
    int m_knownItems = 0;
    std::vector<DeviceState> m_states;
    std::vector<int> m_deviceOfItem;
    std::vector<bool> m_checked; ///< by item
    Collection<clsReportDeviceDef> m_former;
    QHash<QString, double> m_own; ///< targets and limits, by ownKey()

    DeviceFilter m_filter;
    std::vector<int> m_shownMissing; ///< devices in the group
    std::vector<int> m_shownKnown;   ///< devices after it
    std::vector<int> m_shownItems;   ///< grouped by device
    QIcon m_warning;
};
