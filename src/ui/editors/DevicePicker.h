#pragma once

#include "database/Inventory.h"
#include "database/MonitoredDevices.h"
#include "definitions/clsReportDef.h"

#include <QFutureWatcher>
#include <QWidget>

class DeviceTree;
class DeviceView;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

/// Chooses the devices and data items of a report from those of the monitoring database.
///
/// The database is read on a thread of its own; until then, and if that fails, the selection is
/// shown by its identifiers and does not change.
class DevicePicker : public QWidget
{
    Q_OBJECT

public:
    explicit DevicePicker(QWidget *parent = nullptr);

    void setSelection(const Collection<clsReportDeviceDef> &devices);
    Collection<clsReportDeviceDef> selection() const;
    QString selectionText() const;
    bool isEmpty() const;

    /// Starts to read the database. One that answers at once is read when this returns.
    void read();
    bool isReading() const { return m_isReading; }

    void focusTree();

    /// The MUID and the DataIDent of the current row, empty where it has none.
    std::pair<QString, QString> currentItem() const;

Q_SIGNALS:
    /// After each reading; null where it failed, for the reason given.
    void inventoryRead(std::shared_ptr<const Inventory> inventory, const QString &why);

protected:
    void showEvent(QShowEvent *event) override;

private:
    QWidget *makeSearchRow();
    QWidget *makeKindRow();
    QWidget *makeDatabaseBar();
    QWidget *makeShownRow();
    void takeResult();
    void showDatabaseState(const QString &error);
    void fillKinds();
    void search();
    void showCounts();
    void markKind(bool checked);
    bool isFiltered() const;
    bool eventFilter(QObject *watched, QEvent *event) override;

    DeviceTree *m_tree;
    DeviceView *tvDevices;
    QLineEdit *txtSearch;
    QCheckBox *chkSelectedOnly;
    QCheckBox *chkIdentifiers;
    QComboBox *cboKind;
    QPushButton *cmdKindCheck;
    QPushButton *cmdKindClear;
    QWidget *m_databaseBar;
    QLabel *m_databaseIcon;
    QLabel *lblDatabase;
    QPushButton *cmdTryAgain;
    QLabel *lblShown;
    QLabel *lblSelected;
    struct Found
    {
        MonitoredDevices devices;
        std::shared_ptr<const Inventory> inventory;
    };
    struct Reading;
    QFutureWatcher<Found> m_reading;
    bool m_isReading = false;
};
