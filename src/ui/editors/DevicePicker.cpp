#include "ui/editors/DevicePicker.h"

#include "base/Error.h"
#include "base/Numbers.h"
#include "database/Connection.h"
#include "ui/common/Widgets.h"
#include "ui/editors/DeviceTree.h"
#include "ui/editors/DeviceView.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPromise>
#include <QPushButton>
#include <QSemaphore>
#include <QShortcut>
#include <QStyle>
#include <QThreadPool>
#include <QTimer>
#include <QVBoxLayout>

namespace {

/// How long the window waits for a database before it is shown without one.
constexpr int patience = 50; // milliseconds

QString counted(qsizetype number, const char *one, const char *many)
{
    return groupedNumber(static_cast<double>(number), 0) + u' ' +
           QLatin1String(number == 1 ? one : many);
}

QString devicesAndItems(qsizetype devices, qsizetype items)
{
    return counted(devices, "device", "devices") + QLatin1String(", ") +
           counted(items, "data item", "data items");
}

template <typename T>
T *named(T *widget, const char *name)
{
    widget->setObjectName(QLatin1String(name));
    return widget;
}

} // namespace

/// The state of one reading, shared with its thread, which may outlive the window.
struct DevicePicker::Reading
{
    QPromise<Found> promise;
    QSemaphore done;
};

DevicePicker::DevicePicker(QWidget *parent)
    : QWidget(parent)
    , m_tree(new DeviceTree(this))
    , tvDevices(named(new DeviceView(m_tree), "tvDevices"))
{
    m_tree->setWarningIcon(style()->standardIcon(QStyle::SP_MessageBoxWarning));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(makeSearchRow());
    layout->addWidget(makeKindRow());
    layout->addWidget(makeDatabaseBar());
    layout->addWidget(tvDevices, 1);
    layout->addWidget(makeShownRow());
    lblSelected = named(new QLabel, "lblSelected");
    lblSelected->setWordWrap(true);
    layout->addWidget(lblSelected);

    const int unit = fontMetrics().averageCharWidth();
    tvDevices->header()->resizeSection(DeviceTree::Name, 36 * unit);
    tvDevices->header()->resizeSection(DeviceTree::Selected, 11 * unit);
    tvDevices->header()->resizeSection(DeviceTree::Description, 32 * unit);
    tvDevices->header()->resizeSection(DeviceTree::Unit, 8 * unit);
    tvDevices->header()->resizeSection(DeviceTree::Own, 14 * unit);
    tvDevices->setMinimumHeight(8 * fontMetrics().height());
    tvDevices->setColumnHidden(DeviceTree::Id, true);

    connect(m_tree, &DeviceTree::selectionChanged, this, &DevicePicker::showCounts);
    connect(&m_reading, &QFutureWatcherBase::finished, this, &DevicePicker::takeResult);
    const auto *find = new QShortcut(QKeySequence::Find, this);
    connect(find, &QShortcut::activated, this, [this] {
        txtSearch->setFocus(Qt::ShortcutFocusReason);
        txtSearch->selectAll();
    });
    showDatabaseState({});
    fillKinds();
    search();
}

// The rows of the window

QWidget *DevicePicker::makeSearchRow()
{
    auto *row = new QWidget;
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    txtSearch = named(new QLineEdit, "txtSearch");
    txtSearch->setPlaceholderText(QStringLiteral("Name, description or identifier"));
    txtSearch->setToolTip(QStringLiteral(
        "Shows the devices and data items that hold each of these words, for instance\n"
        "\u201crouter cpu\u201d: the CPU items of all devices with \u201crouter\u201d in them "
        "(Ctrl+F)"));
    txtSearch->setClearButtonEnabled(true);
    txtSearch->installEventFilter(this);
    auto *label = new QLabel(QStringLiteral("&Search:"));
    label->setBuddy(txtSearch);
    chkSelectedOnly = named(new QCheckBox(QStringLiteral("Selected on&ly")), "chkSelectedOnly");
    chkSelectedOnly->setToolTip(QStringLiteral("Hides what is not selected"));
    layout->addWidget(label);
    layout->addWidget(txtSearch, 1);
    layout->addWidget(chkSelectedOnly);
    chkIdentifiers = named(new QCheckBox(QStringLiteral("Identifiers")), "chkIdentifiers");
    chkIdentifiers->setToolTip(
        QStringLiteral("Shows by which identifiers files and templates name devices and items"));
    connect(chkIdentifiers, &QCheckBox::toggled, this,
            [this](bool shown) { tvDevices->setColumnHidden(DeviceTree::Id, !shown); });
    layout->addWidget(chkIdentifiers);
    connect(txtSearch, &QLineEdit::textChanged, this, &DevicePicker::search);
    connect(chkSelectedOnly, &QCheckBox::toggled, this, &DevicePicker::search);
    return row;
}

QWidget *DevicePicker::makeKindRow()
{
    auto *row = new QWidget;
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    cboKind = named(new QComboBox, "cboKind");
    cboKind->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    cboKind->setMinimumContentsLength(16);
    cboKind->setMaxVisibleItems(20);
    auto *label = new QLabel(QStringLiteral("All of this &kind:"));
    label->setBuddy(cboKind);
    cmdKindCheck = named(new QPushButton, "cmdKindCheck");
    cmdKindClear = named(new QPushButton, "cmdKindClear");
    layout->addWidget(label);
    layout->addWidget(cboKind, 1);
    layout->addWidget(cmdKindCheck);
    layout->addWidget(cmdKindClear);
    connect(cmdKindCheck, &QPushButton::clicked, this, [this] { markKind(true); });
    connect(cmdKindClear, &QPushButton::clicked, this, [this] { markKind(false); });
    return row;
}

QWidget *DevicePicker::makeDatabaseBar()
{
    auto *bar = new QFrame;
    bar->setFrameShape(QFrame::StyledPanel);
    auto *layout = new QHBoxLayout(bar);
    m_databaseBar = bar;
    m_databaseIcon = newWarningIcon();
    lblDatabase = newTextLabel(QStringLiteral("lblDatabase"));
    cmdTryAgain = newButton(QStringLiteral("cmdTryAgain"), QStringLiteral("Tr&y again"));
    layout->addWidget(m_databaseIcon, 0, Qt::AlignTop);
    layout->addWidget(lblDatabase, 1);
    layout->addWidget(cmdTryAgain, 0, Qt::AlignTop);
    connect(cmdTryAgain, &QPushButton::clicked, this, &DevicePicker::read);
    return bar;
}

QWidget *DevicePicker::makeShownRow()
{
    auto *row = new QWidget;
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    lblShown = named(new QLabel, "lblShown");
    lblShown->setWordWrap(true);
    auto *select = newButton(QStringLiteral("cmdSelectShown"), QStringLiteral("S&elect all shown"));
    auto *clear = newButton(QStringLiteral("cmdClearShown"), QStringLiteral("Clea&r all shown"));
    layout->addWidget(lblShown, 1);
    layout->addWidget(select);
    layout->addWidget(clear);
    connect(select, &QPushButton::clicked, m_tree, [this] { m_tree->setShown(true); });
    connect(clear, &QPushButton::clicked, m_tree, [this] { m_tree->setShown(false); });
    return row;
}

// The selection

/// The window's saved layout may have shown or hidden them.
void DevicePicker::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    QTimer::singleShot(0, this, [this] {
        chkIdentifiers->setChecked(!tvDevices->isColumnHidden(DeviceTree::Id));
    });
}

void DevicePicker::setSelection(const Collection<clsReportDeviceDef> &devices)
{
    m_tree->setSelection(devices);
}

Collection<clsReportDeviceDef> DevicePicker::selection() const
{
    return m_tree->selection();
}

QString DevicePicker::selectionText() const
{
    return m_tree->selectionText();
}

bool DevicePicker::isEmpty() const
{
    const DeviceTree::Counts counts = m_tree->counts();
    return counts.devices == 0;
}

void DevicePicker::focusTree()
{
    tvDevices->setFocus(Qt::OtherFocusReason);
}

std::pair<QString, QString> DevicePicker::currentItem() const
{
    const QModelIndex index = tvDevices->currentIndex();
    const QString id = index.siblingAtColumn(DeviceTree::Id).data().toString();
    if (m_tree->isDevice(index))
        return {id, {}};
    const QModelIndex device = index.parent();
    return {device.siblingAtColumn(DeviceTree::Id).data().toString(), id};
}

// The database

void DevicePicker::read()
{
    if (isReading())
        return;
    const auto reading = std::make_shared<Reading>();
    reading->promise.start();
    const QFuture<Found> result = reading->promise.future();
    QThreadPool::globalInstance()->start([reading, open = databaseSource().connect] {
        try {
            const std::unique_ptr<MonitoringDatabase> database = open();
            Found found{readMonitoredDevices(*database), database->inventory()};
            reading->promise.addResult(std::move(found));
        } catch (...) {
            reading->promise.setException(std::current_exception());
        }
        reading->promise.finish();
        reading->done.release();
    });
    m_isReading = true;
    m_reading.setFuture(result);
    if (reading->done.tryAcquire(1, patience))
        takeResult();
    else
        showDatabaseState({});
}

void DevicePicker::takeResult()
{
    if (!m_isReading)
        return; // taken already
    m_isReading = false;
    QString failure;
    std::shared_ptr<const Inventory> inventory;
    try {
        Found found = m_reading.future().takeResult();
        inventory = std::move(found.inventory);
        m_tree->setMonitored(std::move(found.devices));
        fillKinds();
        search();
    } catch (const Error &error) {
        failure = errorTail(error);
    } catch (const std::exception &error) {
        failure = QString::fromLocal8Bit(error.what());
    }
    showDatabaseState(failure);
    Q_EMIT inventoryRead(inventory, failure);
}

/// `error`: why the database could not be read.
void DevicePicker::showDatabaseState(const QString &error)
{
    const bool reading = isReading();
    if (reading)
        tvDevices->viewport()->setCursor(Qt::BusyCursor);
    else
        tvDevices->viewport()->unsetCursor();
    m_databaseBar->setVisible(reading || !error.isEmpty());
    m_databaseIcon->setVisible(!reading);
    cmdTryAgain->setVisible(!reading);
    lblDatabase->setText(reading ? QStringLiteral("Reading devices...")
                                 : QStringLiteral("The monitoring database cannot be read, so "
                                                  "devices can only be taken out of the report "
                                                  "for now (F1 tells what to do). ") +
                                       error);
    showCounts();
}

// Searching and counting

bool DevicePicker::isFiltered() const
{
    return chkSelectedOnly->isChecked() || !txtSearch->text().trimmed().isEmpty();
}

void DevicePicker::search()
{
    tvDevices->setFilter(txtSearch->text(),
                         chkSelectedOnly->isChecked() ? SelectedOnly::Yes : SelectedOnly::No);
    cmdKindCheck->setText(isFiltered() ? QStringLiteral("C&heck on shown")
                                       : QStringLiteral("C&heck on all"));
    cmdKindClear->setText(isFiltered() ? QStringLiteral("&Uncheck on shown")
                                       : QStringLiteral("&Uncheck on all"));
    const QString where = isFiltered() ? QStringLiteral("on the devices that are shown below")
                                       : QStringLiteral("on every device that has it");
    cmdKindCheck->setToolTip(QStringLiteral("Selects this data item %1").arg(where));
    cmdKindClear->setToolTip(QStringLiteral("Clears this data item %1").arg(where));
    showCounts();
}

void DevicePicker::fillKinds()
{
    const QString before = cboKind->currentText();
    cboKind->clear();
    cboKind->addItems(m_tree->itemNames());
    cboKind->setCurrentIndex(std::max(0, cboKind->findText(before)));
    for (QWidget *widget : {static_cast<QWidget *>(cboKind), static_cast<QWidget *>(cmdKindCheck),
                            static_cast<QWidget *>(cmdKindClear)})
        widget->setEnabled(cboKind->count() > 0);
}

void DevicePicker::markKind(bool checked)
{
    m_tree->setKind(cboKind->currentIndex(),
                    isFiltered() ? DeviceTree::Devices::Shown : DeviceTree::Devices::All, checked);
}

void DevicePicker::showCounts()
{
    const DeviceTree::Counts counts = m_tree->counts();
    QString text = devicesAndItems(counts.devices, counts.items) + QLatin1String(" selected");
    if (m_tree->isRead())
        text += QStringLiteral(" of %1 and %2")
                    .arg(groupedNumber(static_cast<double>(counts.allDevices), 0),
                         groupedNumber(static_cast<double>(counts.allItems), 0));
    if (counts.missingDevices > 0 || counts.missingItems > 0)
        text += QLatin1String("; of these not in the database: ") +
                devicesAndItems(counts.missingDevices, counts.missingItems);
    lblSelected->setText(text);

    const qsizetype devices = m_tree->shownDevices();
    if (m_tree->isRead() && counts.allDevices == 0)
        lblShown->setText(QStringLiteral("The database has no devices with data items yet."));
    else if (!isFiltered())
        lblShown->setText({});
    else if (devices == 0)
        lblShown->setText(QStringLiteral("Nothing is found."));
    else
        lblShown->setText(QLatin1String("Shown: ") +
                          devicesAndItems(devices, m_tree->shownItems()));
}

/// Return in the search box goes to what was found: it would save and close the editor.
bool DevicePicker::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != txtSearch || event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    const int key = static_cast<QKeyEvent *>(event)->key();
    if (key != Qt::Key_Return && key != Qt::Key_Enter && key != Qt::Key_Down)
        return QWidget::eventFilter(watched, event);
    if (!tvDevices->currentIndex().isValid())
        tvDevices->setCurrentIndex(m_tree->index(0, 0));
    focusTree();
    return true;
}
