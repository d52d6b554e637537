#pragma once

#include <QComboBox>
#include <QStringList>

class QStandardItem;
class QStandardItemModel;

/// A combo box whose list is ticked: each entry has a check box, the list stays open while entries
/// are clicked, and the box itself shows a summary of what is checked.
///
/// The first two entries are special: after each click, a checked "None" unchecks all regular
/// entries, else a checked "ALL" checks them all. Neither is changed by that.
///
/// Space, Down and Alt+Down open the list, the space bar ticks in it, Return and Esc close it.
class CheckListCombo : public QComboBox
{
    Q_OBJECT

public:
    explicit CheckListCombo(const QString &name, QWidget *parent = nullptr);

    /// Keys of the special entries.
    static const QString allKey;  ///< "kAll"
    static const QString noneKey; ///< "kNone"

    /// Adds an entry, unchecked.
    void addEntry(const QString &key, const QString &text, const QString &toolTip = QString());

    bool isChecked(const QString &key) const;

    /// Checks these entries and no others, special ones included; unknown keys are ignored.
    void setCheckedKeys(const QStringList &keys);

    /// Keys of the regular entries, and of the checked ones, in list order.
    QStringList regularKeys() const;
    QStringList checkedKeys() const;

    /// What a click on the entry does, the rule of the special entries included.
    void click(const QString &key);

    /// What the box shows: "All", "None", "00:00, 06:00 and 3 more".
    QString summary() const;

    void showPopup() override;

Q_SIGNALS:
    /// Once for each click and each setCheckedKeys.
    void checksChanged();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QStandardItem *itemOf(const QString &key) const;
    void setAllRegular(Qt::CheckState state);
    bool listKey(int key);
    void announce();

    QStandardItemModel *m_model;
    bool m_pressed = false; ///< the mouse went down inside the open list
};
