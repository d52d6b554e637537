#include "ui/DeviceView.h"

#include "ui/DeviceTree.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QScopedValueRollback>

namespace {

constexpr qsizetype mostOpened = 400; ///< rows that a search opens by itself: some screens full

/// A name as part of a menu's text: its "&" is no mnemonic.
QString menuName(QString name)
{
    return name.replace(u'&', QLatin1String("&&"));
}

} // namespace

DeviceView::DeviceView(DeviceTree *tree, QWidget *parent)
    : QTreeView(parent)
    , m_tree(tree)
{
    setModel(tree);
    setUniformRowHeights(true); // of 100,000 rows none is measured but the first
    setSelectionMode(ExtendedSelection);
    setAllColumnsShowFocus(true);
    setAlternatingRowColors(true);
    setAccessibleName(QStringLiteral("Devices and data items"));
    connect(this, &QTreeView::expanded, this, [this](const QModelIndex &index) {
        if (!m_isOpening)
            m_opened.insert(DeviceTree::key(index));
    });
    connect(this, &QTreeView::collapsed, this,
            [this](const QModelIndex &index) { m_opened.remove(DeviceTree::key(index)); });
    connect(tree, &QAbstractItemModel::modelReset, this, [this] {
        if (!m_isOpening)
            forgetRows();
    });
    forgetRows();
}

/// For other devices than before.
void DeviceView::forgetRows()
{
    m_opened.clear();
    openFound({});
}

void DeviceView::setFilter(const QString &text, SelectedOnly selectedOnly)
{
    const QScopedValueRollback opening(m_isOpening, true);
    const QModelIndex current = currentIndex();
    const quintptr key = current.isValid() ? DeviceTree::key(current) : 0;
    m_tree->setFilter(text, selectedOnly);
    m_isFiltered = selectedOnly == SelectedOnly::Yes || !text.trimmed().isEmpty();
    openFound(text);
    if (!current.isValid())
        return;
    const QModelIndex again = m_tree->indexOfKey(key);
    setCurrentIndex(again.isValid() ? again : m_tree->index(0, 0));
}

void DeviceView::openFound(const QString &text)
{
    const QScopedValueRollback opening(m_isOpening, true);
    if (!text.trimmed().isEmpty() && m_tree->shownItems() <= mostOpened) {
        expandAll();
        return;
    }
    for (int row = 0; row < m_tree->rowCount(); ++row) {
        const QModelIndex top = m_tree->index(row, 0);
        if (m_tree->isDevice(top))
            break;
        expand(top); // the group of what the database lacks
    }
    for (const quintptr key : std::as_const(m_opened)) {
        if (const QModelIndex opened = m_tree->indexOfKey(key); opened.isValid())
            expand(opened);
    }
}

void DeviceView::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Space && event->modifiers() == Qt::NoModifier &&
        currentIndex().isValid())
        turnMarks();
    else
        QTreeView::keyPressEvent(event);
}

/// All selected rows get the mark that the current one is given.
void DeviceView::turnMarks()
{
    const QModelIndex current = currentIndex().siblingAtColumn(DeviceTree::Name);
    const auto mark = [this](const QModelIndex &index) {
        return m_tree->data(index, Qt::CheckStateRole).toInt();
    };
    const Qt::CheckState wanted = mark(current) == Qt::Checked ? Qt::Unchecked : Qt::Checked;
    m_tree->setData(current, wanted, Qt::CheckStateRole);
    for (const QModelIndex &index : selectionModel()->selectedRows(DeviceTree::Name)) {
        if (mark(index) != wanted)
            m_tree->setData(index, wanted, Qt::CheckStateRole);
    }
}

void DeviceView::contextMenuEvent(QContextMenuEvent *event)
{
    const bool isByKey = event->reason() == QContextMenuEvent::Keyboard;
    const QModelIndex at =
        (isByKey ? currentIndex() : indexAt(event->pos())).siblingAtColumn(DeviceTree::Name);
    QMenu menu(this);
    menu.setObjectName(QStringLiteral("mnuDevices"));
    if (m_tree->isDevice(at))
        addDeviceCommands(menu, at);
    else if (m_tree->itemName(at) >= 0)
        addKindCommands(menu, at);
    menu.addAction(QStringLiteral("Select &all shown"), m_tree, [this] { m_tree->setShown(true); });
    menu.addAction(QStringLiteral("C&lear all shown"), m_tree, [this] { m_tree->setShown(false); });
    menu.addSeparator();
    menu.addAction(QStringLiteral("&Expand all"), this, &QTreeView::expandAll);
    menu.addAction(QStringLiteral("C&ollapse all"), this, [this] {
        collapseAll();
        m_opened.clear();
    });
    const QRect row = visualRect(at);
    menu.exec(isByKey ? viewport()->mapToGlobal(QPoint(row.left(), row.bottom()))
                      : event->globalPos());
}

void DeviceView::addDeviceCommands(QMenu &menu, const QModelIndex &index)
{
    const QString name = menuName(index.data().toString());
    const auto setMark = [this, index](Qt::CheckState mark) {
        return [this, index, mark] { m_tree->setData(index, mark, Qt::CheckStateRole); };
    };
    menu.addAction(QStringLiteral("&Select the data items of \u201c%1\u201d").arg(name), m_tree,
                   setMark(Qt::Checked));
    menu.addAction(QStringLiteral("&Clear the data items of \u201c%1\u201d").arg(name), m_tree,
                   setMark(Qt::Unchecked));
    menu.addSeparator();
}

void DeviceView::addKindCommands(QMenu &menu, const QModelIndex &index)
{
    const QString name = menuName(index.data().toString());
    const auto setKind = [this, kind = m_tree->itemName(index)](DeviceTree::Devices which,
                                                                bool checked) {
        return [this, kind, which, checked] { m_tree->setKind(kind, which, checked); };
    };
    menu.addAction(QStringLiteral("&Select \u201c%1\u201d on all devices").arg(name), m_tree,
                   setKind(DeviceTree::Devices::All, true));
    menu.addAction(QStringLiteral("&Clear \u201c%1\u201d on all devices").arg(name), m_tree,
                   setKind(DeviceTree::Devices::All, false));
    if (m_isFiltered) {
        menu.addAction(QStringLiteral("Select \u201c%1\u201d on the &devices shown").arg(name),
                       m_tree, setKind(DeviceTree::Devices::Shown, true));
        menu.addAction(QStringLiteral("Clear \u201c%1\u201d on the devices s&hown").arg(name),
                       m_tree, setKind(DeviceTree::Devices::Shown, false));
    }
    menu.addSeparator();
}
