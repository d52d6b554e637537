#include "ui/editors/DeviceView.h"

#include "ui/editors/DeviceTree.h"

#include <QContextMenuEvent>
#include <QDoubleValidator>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QScopedValueRollback>
#include <QStyledItemDelegate>

namespace {

constexpr qsizetype maxOpened = 400; ///< rows that a search opens by itself: a few screens

/// Takes numbers alone.
class NumberDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &,
                          const QModelIndex &index) const override
    {
        auto *editor = new QLineEdit(parent);
        const bool isDevice =
            index.siblingAtColumn(0).model()->hasChildren(index.siblingAtColumn(0));
        auto *validator = new QDoubleValidator(editor);
        validator->setLocale(QLocale::c());
        if (isDevice)
            validator->setRange(0, 100, 4);
        editor->setValidator(validator);
        editor->setAccessibleName(isDevice ? QStringLiteral("Target in percent")
                                           : QStringLiteral("Limit"));
        return editor;
    }
};

/// A name as part of a menu's text: its "&" is not a mnemonic.
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
    setUniformRowHeights(true); // measures only one of 100,000 rows
    setSelectionMode(ExtendedSelection);
    setAllColumnsShowFocus(true);
    setAlternatingRowColors(true);
    setAccessibleName(QStringLiteral("Devices and data items"));
    setEditTriggers(DoubleClicked | EditKeyPressed);
    setItemDelegateForColumn(DeviceTree::Own, new NumberDelegate(this));
    connect(this, &QTreeView::expanded, this, [this](const QModelIndex &index) {
        if (!m_isOpening)
            m_opened.insert(DeviceTree::key(index));
    });
    connect(this, &QTreeView::collapsed, this,
            [this](const QModelIndex &index) { m_opened.remove(DeviceTree::key(index)); });
    // QTreeView repaints the rows that were signalled, but not the open ones below the last.
    connect(tree, &DeviceTree::selectionChanged, viewport(), qOverload<>(&QWidget::update));
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
    m_current.reset();
    openFound({});
}

void DeviceView::setFilter(const QString &text, SelectedOnly selectedOnly)
{
    const QScopedValueRollback opening(m_isOpening, true);
    m_tree->setFilter(text, selectedOnly);
    m_isFiltered = selectedOnly == SelectedOnly::Yes || !text.trimmed().isEmpty();
    openFound(text);
    if (!m_current)
        return;
    if (const QModelIndex again = m_tree->indexOfKey(*m_current); again.isValid())
        setCurrentIndex(again);
}

void DeviceView::currentChanged(const QModelIndex &current, const QModelIndex &previous)
{
    QTreeView::currentChanged(current, previous);
    if (!m_isOpening && current.isValid())
        m_current = DeviceTree::key(current);
}

void DeviceView::openFound(const QString &text)
{
    const QScopedValueRollback opening(m_isOpening, true);
    for (int row = 0; row < m_tree->rowCount(); ++row) {
        const QModelIndex top = m_tree->index(row, 0);
        if (m_tree->isDevice(top))
            break;
        setFirstColumnSpanned(row, {}, true); // the group of missing devices
        expand(top);
    }
    if (!text.trimmed().isEmpty() && m_tree->shownItems() <= maxOpened) {
        expandAll();
        return;
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
    const bool checked = current.data(Qt::CheckStateRole).toInt() != Qt::Checked;
    m_tree->setMarks(selectionModel()->selectedRows(DeviceTree::Name) << current, checked);
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
