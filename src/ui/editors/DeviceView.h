#pragma once

#include "ui/editors/DeviceFilter.h"

#include <QSet>
#include <QTreeView>

#include <optional>

class DeviceTree;
class QMenu;

/// Shows a DeviceTree. The space bar toggles all selected rows, and the context menu has commands
/// for the row and for all rows. Rows that the user has opened, and the current row, stay so when
/// the filter changes.
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
