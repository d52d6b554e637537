#include "ui/editors/DeviceTree.h"

#include "base/Numbers.h"
#include "series/DataSeries.h"
#include "ui/common/Widgets.h"

#include <QLocale>
#include <QSet>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kindBits = 2; ///< of a key; the rest is the number

QString foldedKey(const QString &muid)
{
    return muid.toCaseFolded();
}

QString limitKey(const QString &muid, const QString &dataIdent)
{
    return foldedKey(muid) + u'\n' + dataIdent;
}

QString counted(qsizetype number)
{
    return groupedNumber(static_cast<double>(number), 0);
}

Qt::CheckState markFor(qsizetype checked, qsizetype all)
{
    if (checked == 0)
        return Qt::Unchecked;
    return checked == all ? Qt::Checked : Qt::PartiallyChecked;
}

} // namespace

DeviceTree::DeviceTree(QObject *parent)
    : QAbstractItemModel(parent)
{}

// What it holds

void DeviceTree::setSelection(const Collection<clsReportDeviceDef> &devices)
{
    beginResetModel();
    m_former = devices;
    m_own.clear();
    std::vector<Chosen> selected;
    for (const auto &device : devices) {
        if (device->Target)
            m_own.insert(foldedKey(device->MUID), *device->Target);
        for (const auto &dataItem : device->DataItems) {
            if (dataItem->Limit)
                m_own.insert(limitKey(device->MUID, dataItem->DataIDent), *dataItem->Limit);
        }
        Chosen &entry = selected.emplace_back();
        entry.muid = device->MUID;
        for (const auto &dataItem : device->DataItems)
            entry.items.append(dataItem->DataIDent);
    }
    dropMissing();
    take(selected);
    filter();
    endResetModel();
    Q_EMIT selectionChanged();
}

void DeviceTree::setMonitored(MonitoredDevices devices)
{
    const std::vector<Chosen> selected = chosen();
    beginResetModel();
    m_monitored = std::move(devices);
    m_knownDevices = deviceCount();
    m_knownItems = static_cast<int>(m_monitored.items.size());
    m_isRead = true;
    dropMissing();
    take(selected);
    filter();
    endResetModel();
    Q_EMIT selectionChanged();
}

/// Keeps only the database's devices, unmarked.
void DeviceTree::dropMissing()
{
    m_monitored.devices.resize(static_cast<size_t>(m_knownDevices));
    m_monitored.items.resize(static_cast<size_t>(m_knownItems));
    m_checked.assign(m_monitored.items.size(), false);
    m_states.assign(m_monitored.devices.size(), DeviceState());
    m_deviceOfItem.resize(m_monitored.items.size());
    for (int number = 0; number < deviceCount(); ++number) {
        const MonitoredDevice &known = device(number);
        std::fill_n(m_deviceOfItem.begin() + known.firstItem, known.itemCount, number);
    }
}

void DeviceTree::take(const std::vector<Chosen> &devices)
{
    QHash<QString, int> known;
    known.reserve(m_knownDevices);
    for (int number = 0; number < m_knownDevices; ++number)
        known.insert(foldedKey(device(number).muid), number);
    for (const Chosen &selected : devices)
        takeDevice(selected, known.value(foldedKey(selected.muid), -1));
    m_filter.setDevices(m_monitored);
}

/// `known`: the device in the database; -1 when there is none.
void DeviceTree::takeDevice(const Chosen &selected, int known)
{
    QHash<QString, int> knownItems;
    if (known >= 0) {
        const int first = device(known).firstItem;
        for (int number = first; number < first + device(known).itemCount; ++number)
            knownItems.insert(item(number).dataIdent, number);
        state(known).keptWithoutItems = selected.items.isEmpty();
    }
    MonitoredDevice missing;
    missing.firstItem = static_cast<int>(m_monitored.items.size());
    for (const QString &ident : selected.items) {
        if (const auto found = knownItems.constFind(ident); found != knownItems.cend()) {
            markItem(*found, true);
            continue;
        }
        MonitoredItem lost;
        lost.dataIdent = ident;
        lost.name = lost.description = -1;
        m_monitored.items.push_back(lost);
        m_deviceOfItem.push_back(deviceCount());
        m_checked.push_back(true);
        ++missing.itemCount;
    }
    if (missing.itemCount == 0 && known >= 0)
        return;
    if (known >= 0) {
        missing.muid = device(known).muid;
        missing.name = device(known).name;
    } else {
        missing.muid = selected.muid;
        if (const auto former = m_former.find(selected.muid))
            missing.name = former->DisplayName;
    }
    DeviceState lostState;
    lostState.twin = known;
    lostState.selectedItems = missing.itemCount;
    lostState.keptWithoutItems = missing.itemCount == 0;
    m_monitored.devices.push_back(std::move(missing));
    m_states.push_back(lostState);
}

bool DeviceTree::isSelected(int number) const
{
    return state(number).selectedItems > 0 || state(number).keptWithoutItems;
}

std::vector<DeviceTree::Chosen> DeviceTree::chosen() const
{
    std::vector<Chosen> devices;
    std::vector<int> indexes(m_states.size(), -1);
    for (int number = 0; number < deviceCount(); ++number) {
        if (!isSelected(number))
            continue;
        const MonitoredDevice &selected = device(number);
        const int twin = state(number).twin; // of the same device
        int &index = indexes[static_cast<size_t>(number)];
        index = twin >= 0 ? indexes[static_cast<size_t>(twin)] : -1;
        if (index < 0) {
            index = static_cast<int>(devices.size());
            devices.push_back({selected.muid, {}});
        }
        QStringList &items = devices[static_cast<size_t>(index)].items;
        for (int i = selected.firstItem; i < selected.firstItem + selected.itemCount; ++i) {
            if (m_checked[static_cast<size_t>(i)])
                items.append(item(i).dataIdent);
        }
    }
    return devices;
}

/// `former`: what it was before; null for a new one.
std::shared_ptr<clsReportDeviceDef> DeviceTree::definition(const Chosen &chosen,
                                                           const clsReportDeviceDef *former) const
{
    auto device = std::make_shared<clsReportDeviceDef>();
    device->MUID = chosen.muid;
    const auto add = [&device](const std::shared_ptr<clsReportDataIdentDef> &item) {
        const QString key = u'k' + item->DataIDent;
        if (!device->DataItems.contains(key))
            device->DataItems.add(key, item);
    };
    if (former) {
        device->DisplayName = former->DisplayName;
        const QSet<QString> kept(chosen.items.begin(), chosen.items.end());
        for (const auto &item : former->DataItems) {
            if (kept.contains(item->DataIDent))
                add(std::make_shared<clsReportDataIdentDef>(*item));
        }
    }
    for (const QString &ident : chosen.items) {
        auto item = std::make_shared<clsReportDataIdentDef>();
        item->DataIDent = ident;
        add(item);
    }
    const auto own = [this](const QString &key) {
        const auto found = m_own.constFind(key);
        return found == m_own.cend() ? std::nullopt : std::optional(*found);
    };
    device->Target = own(foldedKey(chosen.muid));
    for (const auto &item : device->DataItems)
        item->Limit = own(limitKey(chosen.muid, item->DataIDent));
    return device;
}

/// The key of a device's target or of an item's limit.
QString DeviceTree::ownKey(Node node) const
{
    if (node.kind == Kind::Device)
        return foldedKey(device(node.number).muid);
    const int owner = m_deviceOfItem[static_cast<size_t>(node.number)];
    return limitKey(device(owner).muid, item(node.number).dataIdent);
}

/// Selected devices, and selected items that are no states.
bool DeviceTree::canHaveOwn(Node node) const
{
    if (node.kind == Kind::Device)
        return isSelected(node.number);
    return node.kind == Kind::Item && m_checked[static_cast<size_t>(node.number)] &&
           (node.number >= m_knownItems || item(node.number).scale != stateScale);
}

/// False where the text is no such number.
bool DeviceTree::setOwn(Node node, const QString &text)
{
    if (!canHaveOwn(node))
        return false;
    const QString given = text.trimmed();
    bool isNumber = false;
    const double number = given.toDouble(&isNumber);
    const bool isPercent = number >= 0 && number <= 100;
    if (given.isEmpty())
        m_own.remove(ownKey(node));
    else if (!isNumber || !std::isfinite(number) || (node.kind == Kind::Device && !isPercent))
        return false;
    else
        m_own.insert(ownKey(node), number);
    return true;
}

Collection<clsReportDeviceDef> DeviceTree::selection() const
{
    const std::vector<Chosen> selected = chosen();
    QHash<QString, const Chosen *> byKey;
    for (const Chosen &entry : selected)
        byKey.insert(foldedKey(entry.muid), &entry);
    Collection<clsReportDeviceDef> devices;
    for (const auto &former : m_former) {
        if (const Chosen *entry = byKey.value(foldedKey(former->MUID)))
            devices.add(former->MUID, definition(*entry, former.get()));
    }
    for (const Chosen &entry : selected) {
        if (!devices.contains(entry.muid))
            devices.add(entry.muid, definition(entry, nullptr));
    }
    return devices;
}

QString DeviceTree::selectionText() const
{
    QStringList lines;
    for (Chosen &entry : chosen()) {
        entry.items.sort();
        lines.append(foldedKey(entry.muid) + u':' + entry.items.join(u','));
    }
    for (auto own = m_own.begin(); own != m_own.end(); ++own)
        lines.append(own.key() + u'=' + QString::number(*own, 'g', QLocale::FloatingPointShortest));
    lines.sort();
    return lines.join(u'\n');
}

DeviceTree::Counts DeviceTree::counts() const
{
    Counts counts;
    counts.allDevices = m_knownDevices;
    counts.allItems = m_knownItems;
    for (int number = 0; number < deviceCount(); ++number) {
        if (!isSelected(number))
            continue;
        const DeviceState &selected = state(number);
        const bool isCounted = selected.twin >= 0 && isSelected(selected.twin);
        counts.devices += isCounted ? 0 : 1;
        counts.items += selected.selectedItems;
        if (m_isRead && isMissing(number)) {
            counts.missingDevices += selected.twin < 0 ? 1 : 0;
            counts.missingItems += selected.selectedItems;
        }
    }
    return counts;
}

// What it shows

void DeviceTree::setFilter(const QString &text, SelectedOnly selectedOnly)
{
    beginResetModel();
    m_filter.setSearch(text, selectedOnly);
    filter();
    endResetModel();
}

void DeviceTree::filter()
{
    m_shownMissing.clear();
    m_shownKnown.clear();
    m_shownItems.clear();
    for (int number = 0; number < deviceCount(); ++number)
        filterDevice(number);
}

void DeviceTree::filterDevice(int number)
{
    const MonitoredDevice &tested = device(number);
    DeviceState &result = state(number);
    const DeviceFilter::Words words = m_filter.wordsLeft(number);
    const bool selectedOnly = m_filter.selectedOnly() == SelectedOnly::Yes;
    result.row = -1;
    result.firstShown = static_cast<int>(m_shownItems.size());
    for (int i = tested.firstItem; i < tested.firstItem + tested.itemCount; ++i) {
        if ((!selectedOnly || m_checked[static_cast<size_t>(i)]) && m_filter.finds(item(i), words))
            m_shownItems.push_back(i);
    }
    result.shownCount = static_cast<int>(m_shownItems.size()) - result.firstShown;
    const bool isFound = words == 0 && (!selectedOnly || isSelected(number));
    if (result.shownCount == 0 && !isFound)
        return;
    std::vector<int> &shown = isMissing(number) ? m_shownMissing : m_shownKnown;
    result.row = static_cast<int>(shown.size());
    shown.push_back(number);
}

qsizetype DeviceTree::shownDevices() const
{
    return static_cast<qsizetype>(m_shownKnown.size() + m_shownMissing.size());
}

// Marks

bool DeviceTree::allShownChecked(int number) const
{
    const auto first = m_shownItems.begin() + state(number).firstShown;
    return std::all_of(first, first + state(number).shownCount,
                       [this](int item) { return m_checked[static_cast<size_t>(item)]; });
}

Qt::CheckState DeviceTree::markOf(Node node) const
{
    if (node.kind == Kind::Item)
        return m_checked[static_cast<size_t>(node.number)] ? Qt::Checked : Qt::Unchecked;
    if (node.kind == Kind::Group) {
        const auto checked =
            std::count_if(m_shownMissing.begin(), m_shownMissing.end(), [this](int number) {
                return markOf({Kind::Device, number}) == Qt::Checked;
            });
        const bool isPartial =
            std::any_of(m_shownMissing.begin(), m_shownMissing.end(), [this](int number) {
                return markOf({Kind::Device, number}) == Qt::PartiallyChecked;
            });
        return isPartial ? Qt::PartiallyChecked
                         : markFor(checked, static_cast<qsizetype>(m_shownMissing.size()));
    }
    const DeviceState &shown = state(node.number);
    if (m_filter.selectedOnly() == SelectedOnly::Yes && shown.selectedItems > 0 &&
        shown.selectedItems < device(node.number).itemCount)
        return Qt::PartiallyChecked; // those that are not selected are hidden
    if (shown.shownCount == 0)
        return shown.keptWithoutItems ? Qt::Checked : Qt::Unchecked;
    if (shown.keptWithoutItems)
        return Qt::PartiallyChecked;
    const auto first = m_shownItems.begin() + shown.firstShown;
    const auto checked = std::count_if(first, first + shown.shownCount, [this](int number) {
        return m_checked[static_cast<size_t>(number)];
    });
    return markFor(checked, shown.shownCount);
}

void DeviceTree::markItem(int number, bool checked)
{
    const auto index = static_cast<size_t>(number);
    if (m_checked[index] == checked)
        return;
    m_checked[index] = checked;
    DeviceState &owner = state(m_deviceOfItem[index]);
    owner.selectedItems += checked ? 1 : -1;
    if (checked)
        owner.keptWithoutItems = false;
}

void DeviceTree::mark(Node node, bool checked)
{
    switch (node.kind) {
    case Kind::Item:
        markItem(node.number, checked);
        break;
    case Kind::Group:
        for (const int number : m_shownMissing)
            mark({Kind::Device, number}, checked);
        break;
    case Kind::Device:
        DeviceState &marked = state(node.number);
        for (int i = marked.firstShown; i < marked.firstShown + marked.shownCount; ++i)
            markItem(m_shownItems[static_cast<size_t>(i)], checked);
        marked.keptWithoutItems = checked && device(node.number).itemCount == 0;
        break;
    }
}

void DeviceTree::setShown(bool checked)
{
    for (const int number : m_shownMissing)
        mark({Kind::Device, number}, checked);
    for (const int number : m_shownKnown)
        mark({Kind::Device, number}, checked);
    tellMarks();
}

void DeviceTree::setKind(int itemName, Devices which, bool checked)
{
    for (int number = 0; number < m_knownItems; ++number) {
        const int owner = m_deviceOfItem[static_cast<size_t>(number)];
        if (item(number).name == itemName && (which == Devices::All || state(owner).row >= 0))
            markItem(number, checked);
    }
    tellMarks();
}

void DeviceTree::setMarks(const QModelIndexList &rows, bool checked)
{
    for (const QModelIndex &row : rows)
        mark(nodeOf(row), checked);
    tellMarks();
}

/// Signals that any mark may have changed, but only for the rows at the top: to be told about each
/// of 5,000 devices costs a view half a second. It paints everything anew on selectionChanged.
void DeviceTree::tellMarks()
{
    if (const int rows = rowCount(); rows > 0)
        Q_EMIT dataChanged(index(0, Name), index(rows - 1, Selected),
                           {Qt::CheckStateRole, Qt::DisplayRole});
    Q_EMIT selectionChanged();
}

// The model

quintptr DeviceTree::keyOf(Node node)
{
    return (static_cast<quintptr>(node.number) << kindBits) | static_cast<quintptr>(node.kind);
}

DeviceTree::Node DeviceTree::nodeOf(const QModelIndex &index)
{
    const quintptr key = index.internalId();
    return {static_cast<Kind>(key & ((1U << kindBits) - 1)), static_cast<int>(key >> kindBits)};
}

QModelIndex DeviceTree::deviceIndex(int number) const
{
    const int row = state(number).row;
    if (row < 0)
        return {};
    const int behindGroup = !isMissing(number) && hasGroup() ? 1 : 0;
    return createIndex(row + behindGroup, 0, keyOf({Kind::Device, number}));
}

QModelIndex DeviceTree::indexOfKey(quintptr key) const
{
    const Node node = nodeOf(createIndex(0, 0, key));
    switch (node.kind) {
    case Kind::Group:
        return hasGroup() ? index(0, 0) : QModelIndex();
    case Kind::Device:
        return node.number < deviceCount() ? deviceIndex(node.number) : QModelIndex();
    case Kind::Item:
        break;
    }
    if (node.number >= static_cast<int>(m_deviceOfItem.size()))
        return {};
    const DeviceState &owner = state(m_deviceOfItem[static_cast<size_t>(node.number)]);
    const auto first = m_shownItems.begin() + owner.firstShown;
    const auto last = first + owner.shownCount;
    const auto found = std::lower_bound(first, last, node.number); // in ascending order
    if (owner.row < 0 || found == last || *found != node.number)
        return {};
    return createIndex(static_cast<int>(found - first), 0, key);
}

QModelIndex DeviceTree::index(int row, int column, const QModelIndex &parent) const
{
    if (row < 0 || column < 0 || column >= ColumnCount || row >= rowCount(parent))
        return {};
    Node node{Kind::Group, 0};
    if (!parent.isValid()) {
        const int known = row - (hasGroup() ? 1 : 0);
        if (known >= 0)
            node = {Kind::Device, m_shownKnown[static_cast<size_t>(known)]};
    } else if (nodeOf(parent).kind == Kind::Group) {
        node = {Kind::Device, m_shownMissing[static_cast<size_t>(row)]};
    } else {
        const int first = state(nodeOf(parent).number).firstShown;
        node = {Kind::Item, m_shownItems[static_cast<size_t>(first + row)]};
    }
    return createIndex(row, column, keyOf(node));
}

QModelIndex DeviceTree::parent(const QModelIndex &child) const
{
    if (!child.isValid())
        return {};
    const Node node = nodeOf(child);
    if (node.kind == Kind::Item)
        return deviceIndex(m_deviceOfItem[static_cast<size_t>(node.number)]);
    return node.kind == Kind::Device && isMissing(node.number) ? index(0, 0) : QModelIndex();
}

int DeviceTree::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return static_cast<int>(m_shownKnown.size()) + (hasGroup() ? 1 : 0);
    if (parent.column() != 0)
        return 0;
    switch (const Node node = nodeOf(parent); node.kind) {
    case Kind::Group:
        return static_cast<int>(m_shownMissing.size());
    case Kind::Device:
        return state(node.number).shownCount;
    case Kind::Item:
        break;
    }
    return 0;
}

int DeviceTree::columnCount(const QModelIndex &) const
{
    return ColumnCount;
}

Qt::ItemFlags DeviceTree::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (index.column() == Name)
        flags |= Qt::ItemIsUserCheckable;
    if (nodeOf(index).kind == Kind::Item)
        flags |= Qt::ItemNeverHasChildren;
    if (index.column() == Own && canHaveOwn(nodeOf(index)))
        flags |= Qt::ItemIsEditable;
    return flags;
}

bool DeviceTree::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (index.isValid() && role == Qt::EditRole && index.column() == Own) {
        if (!setOwn(nodeOf(index), value.toString()))
            return false;
        Q_EMIT dataChanged(index, index);
        return true;
    }
    if (!index.isValid() || role != Qt::CheckStateRole || index.column() != Name)
        return false;
    const Node node = nodeOf(index);
    // A device with items that are hidden is never marked whole: a second click clears it.
    const bool isDone = node.kind == Kind::Device && markOf(node) == Qt::PartiallyChecked &&
                        m_filter.selectedOnly() == SelectedOnly::Yes &&
                        allShownChecked(node.number);
    mark(node, value.toInt() == Qt::Checked && !isDone);
    if (node.kind == Kind::Group) {
        tellMarks();
        return true;
    }
    const QList<int> roles = {Qt::CheckStateRole, Qt::DisplayRole};
    const QModelIndex top = node.kind == Kind::Item ? index.parent() : index.siblingAtColumn(Name);
    if (const int rows = rowCount(top); rows > 0)
        Q_EMIT dataChanged(this->index(0, Name, top), this->index(rows - 1, Selected, top), roles);
    for (QModelIndex above = top; above.isValid(); above = above.parent())
        Q_EMIT dataChanged(above, above.siblingAtColumn(Selected), roles);
    Q_EMIT selectionChanged();
    return true;
}

// Texts

int DeviceTree::itemName(const QModelIndex &index) const
{
    if (!index.isValid() || nodeOf(index).kind != Kind::Item)
        return -1;
    return item(nodeOf(index).number).name;
}

bool DeviceTree::isDevice(const QModelIndex &index) const
{
    return index.isValid() && nodeOf(index).kind == Kind::Device;
}

QVariant DeviceTree::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const Node node = nodeOf(index);
    if (index.column() == Own && (role == Qt::DisplayRole || role == Qt::EditRole)) {
        const auto own = node.kind == Kind::Group ? m_own.cend() : m_own.constFind(ownKey(node));
        return own == m_own.cend() || !canHaveOwn(node)
                   ? QVariant()
                   : QVariant(QString::number(*own, 'g', QLocale::FloatingPointShortest));
    }
    switch (role) {
    case Qt::DisplayRole:
        return text(node, index.column());
    case Qt::CheckStateRole:
        return index.column() == Name ? QVariant(markOf(node)) : QVariant();
    case Qt::DecorationRole: {
        const bool isLost = node.kind == Kind::Group ||
                            (node.kind == Kind::Device && isMissing(node.number)) ||
                            (node.kind == Kind::Item && node.number >= m_knownItems);
        return m_isRead && isLost && index.column() == Name ? QVariant(m_warning) : QVariant();
    }
    case Qt::ToolTipRole:
        return wrappingToolTip(toolTip(node));
    default:
        return {};
    }
}

QVariant DeviceTree::text(Node node, int column) const
{
    switch (node.kind) {
    case Kind::Group:
        return groupText(column);
    case Kind::Device:
        return deviceText(node.number, column);
    case Kind::Item:
        return itemText(node.number, column);
    }
    return {};
}

QVariant DeviceTree::groupText(int column) const
{
    if (column != Name)
        return {};
    return m_isRead ? QStringLiteral("Not in the database: selected before, left out of every run")
                    : QStringLiteral("Selected in this report; the database has not been read");
}

QVariant DeviceTree::deviceText(int number, int column) const
{
    const MonitoredDevice &shown = device(number);
    switch (column) {
    case Name:
        return shown.name.isEmpty() ? shown.muid : shown.name;
    case Selected:
        if (!isSelected(number) || shown.itemCount == 0)
            return {};
        return QStringLiteral("%1 of %2")
            .arg(counted(state(number).selectedItems), counted(shown.itemCount));
    case Description:
        if (m_isRead && isMissing(number))
            return state(number).twin < 0
                       ? QStringLiteral("device not in the database")
                       : QStringLiteral("the device is there, these data items are not");
        if (shown.isExcluded)
            return QString(shown.description + QLatin1String(" (excluded from monitoring)"))
                .trimmed();
        return shown.description;
    case Id:
        return shown.muid;
    default:
        return {};
    }
}

QVariant DeviceTree::itemText(int number, int column) const
{
    const MonitoredItem &shown = item(number);
    const bool isKnown = number < m_knownItems;
    switch (column) {
    case Name:
        return isKnown ? m_monitored.itemNames.at(shown.name)
                       : QStringLiteral("Data item %1").arg(shown.dataIdent);
    case Description:
        if (isKnown)
            return m_monitored.itemDescriptions.at(shown.description);
        return m_isRead ? QStringLiteral("not in the database") : QString();
    case Unit:
        if (!isKnown)
            return {};
        return shown.scale == stateScale ? QStringLiteral("state")
                                         : m_monitored.units.value(shown.scale);
    case Id:
        return shown.dataIdent;
    default:
        return {};
    }
}

QString DeviceTree::toolTip(Node node) const
{
    QStringList lines;
    for (const int column : {Name, Description, Id}) {
        if (const QString line = text(node, column).toString(); !line.isEmpty())
            lines.append(line);
    }
    if (node.kind == Kind::Item && node.number < m_knownItems) {
        const MonitoredItem &shown = item(node.number);
        if (shown.scale != stateScale)
            lines.append(QStringLiteral("Measured values: minimum, maximum and mean"));
        else if (shown.isGlobal)
            lines.append(QStringLiteral("Successes and failures: success rate"));
        else
            lines.append(QStringLiteral("Successes and failures; left out of the summary's rates"));
    }
    return lines.join(u'\n');
}

QVariant DeviceTree::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case Name:
        return QStringLiteral("Device / data item");
    case Selected:
        return QStringLiteral("Selected");
    case Description:
        return QStringLiteral("Description");
    case Unit:
        return QStringLiteral("Unit");
    case Id:
        return QStringLiteral("Identifier");
    case Own:
        return QStringLiteral("Target % / limit");
    default:
        return {};
    }
}
