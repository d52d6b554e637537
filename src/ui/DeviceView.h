#pragma once

#include "ui/DeviceFilter.h"

#include <QSet>
#include <QTreeView>

#include <optional>

class DeviceTree;
class QMenu;

/// Shows a DeviceTree. The space bar turns the marks of all selected rows, and the context menu
/// offers what can be done with the row and with all rows. What the user has opened, and the
/// current row, come through a change of the filter.
class DeviceView : public QTreeView
{
    Q_OBJECT

public:
    explicit DeviceView(DeviceTree *tree, QWidget *parent = nullptr);

    void setFilter(const QString &text, SelectedOnly selectedOnly);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void currentChanged(const QModelIndex &current, const QModelIndex &previous) override;

private:
    void turnMarks();
    void forgetRows();
    void openFound(const QString &text);
    void addDeviceCommands(QMenu &menu, const QModelIndex &index);
    void addKindCommands(QMenu &menu, const QModelIndex &index);

    DeviceTree *m_tree;
    QSet<quintptr> m_opened;           ///< keys of the rows that the user has opened
    std::optional<quintptr> m_current; ///< key of the row that the user went to last
    bool m_isOpening = false;
    bool m_isFiltered = false;
};
