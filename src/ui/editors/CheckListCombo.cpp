#include "ui/editors/CheckListCombo.h"

#include "ui/common/Widgets.h"

#include <QAbstractItemView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QStandardItemModel>
#include <QStylePainter>
#include <QStyledItemDelegate>

namespace {

constexpr int keyRole = Qt::UserRole;
constexpr int firstRegular = 2;
constexpr int maxNamed = 3; ///< entries that a summary names when there are more of them

} // namespace

const QString CheckListCombo::allKey = QStringLiteral("kAll");
const QString CheckListCombo::noneKey = QStringLiteral("kNone");

CheckListCombo::CheckListCombo(const QString &name, QWidget *parent)
    : QComboBox(parent)
    , m_model(new QStandardItemModel(this))
{
    setObjectName(name);
    setModel(m_model);
    setMaxVisibleItems(16);
    setSizeAdjustPolicy(AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(26);
    addEntry(allKey, QStringLiteral("ALL"),
             QStringLiteral("While this is checked, every click checks all entries."));
    addEntry(noneKey, QStringLiteral("None"),
             QStringLiteral("While this is checked, every click unchecks all entries."));
    setItemDelegate(new QStyledItemDelegate(this)); // check boxes, not the menu of some styles
    // Before the list's own filters, which would close it on the first click.
    view()->installEventFilter(this);
    view()->viewport()->installEventFilter(this);
}

void CheckListCombo::addEntry(const QString &key, const QString &text, const QString &toolTip)
{
    auto *item = new QStandardItem(text);
    item->setData(key, keyRole);
    item->setToolTip(wrappingToolTip(toolTip));
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
    item->setCheckState(Qt::Unchecked);
    item->setSizeHint({0, fontMetrics().height() + 6}); // easier to hit
    m_model->appendRow(item);
    setCurrentIndex(-1); // the first entry added becomes the current one
    setToolTip(summary());
}

QStandardItem *CheckListCombo::itemOf(const QString &key) const
{
    for (int row = 0; row < m_model->rowCount(); ++row) {
        if (m_model->item(row)->data(keyRole).toString() == key)
            return m_model->item(row);
    }
    return nullptr;
}

bool CheckListCombo::isChecked(const QString &key) const
{
    const QStandardItem *item = itemOf(key);
    return item && item->checkState() == Qt::Checked;
}

void CheckListCombo::setCheckedKeys(const QStringList &keys)
{
    for (int row = 0; row < m_model->rowCount(); ++row) {
        QStandardItem *item = m_model->item(row);
        item->setCheckState(keys.contains(item->data(keyRole).toString()) ? Qt::Checked
                                                                          : Qt::Unchecked);
    }
    announce();
}

void CheckListCombo::setAllRegular(Qt::CheckState state)
{
    for (int row = firstRegular; row < m_model->rowCount(); ++row)
        m_model->item(row)->setCheckState(state);
}

QStringList CheckListCombo::regularKeys() const
{
    QStringList keys;
    for (int row = firstRegular; row < m_model->rowCount(); ++row)
        keys.append(m_model->item(row)->data(keyRole).toString());
    return keys;
}

QStringList CheckListCombo::checkedKeys() const
{
    QStringList keys = regularKeys();
    keys.removeIf([this](const QString &key) { return !isChecked(key); });
    return keys;
}

void CheckListCombo::click(const QString &key)
{
    QStandardItem *item = itemOf(key);
    if (!item)
        return;
    item->setCheckState(item->checkState() == Qt::Checked ? Qt::Unchecked : Qt::Checked);
    if (isChecked(noneKey))
        setAllRegular(Qt::Unchecked);
    else if (isChecked(allKey))
        setAllRegular(Qt::Checked);
    announce();
}

QString CheckListCombo::summary() const
{
    QStringList texts;
    for (int row = firstRegular; row < m_model->rowCount(); ++row) {
        if (m_model->item(row)->checkState() == Qt::Checked)
            texts.append(m_model->item(row)->text());
    }
    if (texts.isEmpty())
        return QStringLiteral("None");
    if (texts.size() == m_model->rowCount() - firstRegular)
        return QStringLiteral("All");
    if (texts.size() <= maxNamed)
        return texts.join(QLatin1String(", "));
    return QStringLiteral("%1, %2 and %3 more").arg(texts[0], texts[1]).arg(texts.size() - 2);
}

void CheckListCombo::announce()
{
    setToolTip(summary());
    setAccessibleDescription(summary());
    update();
    Q_EMIT checksChanged();
}

void CheckListCombo::showPopup()
{
    m_pressed = false;
    QComboBox::showPopup();
    if (!view()->currentIndex().isValid())
        view()->setCurrentIndex(m_model->index(0, modelColumn()));
}

bool CheckListCombo::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == view() && event->type() == QEvent::KeyPress)
        return listKey(static_cast<QKeyEvent *>(event)->key());
    if (watched != view()->viewport())
        return QComboBox::eventFilter(watched, event);
    if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick)
        m_pressed = true;
    if (event->type() != QEvent::MouseButtonRelease)
        return QComboBox::eventFilter(watched, event);
    // The release of the click that opened the list does not count.
    const QModelIndex index = view()->indexAt(static_cast<QMouseEvent *>(event)->pos());
    if (m_pressed && index.isValid())
        click(index.data(keyRole).toString());
    m_pressed = false;
    return true;
}

/// Handles a key in the open list; false when it is not for the list.
bool CheckListCombo::listKey(int key)
{
    switch (key) {
    case Qt::Key_Space:
        if (view()->currentIndex().isValid())
            click(view()->currentIndex().data(keyRole).toString());
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        hidePopup();
        return true;
    default:
        return false;
    }
}

void CheckListCombo::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Space:
    case Qt::Key_Down:
    case Qt::Key_F4:
        showPopup();
        break;
    default:
        event->ignore(); // no current entry that other keys could change
    }
}

void CheckListCombo::wheelEvent(QWheelEvent *event)
{
    event->ignore();
}

void CheckListCombo::paintEvent(QPaintEvent *)
{
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    const QRect room =
        style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    option.currentText = option.fontMetrics.elidedText(summary(), Qt::ElideRight, room.width() - 4);
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}
