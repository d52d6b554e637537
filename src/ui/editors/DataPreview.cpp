#include "ui/editors/DataPreview.h"

#include "database/Connection.h"
#include "report/ItemPreview.h"
#include "ui/common/Widgets.h"
#include "ui/editors/ChartPreview.h"

#include <QComboBox>
#include <QLabel>
#include <QListView>
#include <QVBoxLayout>

namespace {

QComboBox *newChoice(const char *name, const QString &accessibleName)
{
    auto *choice = new QComboBox;
    auto *list = new QListView;
    list->setUniformItemSizes(true); // measures one of thousands of names
    choice->setView(list);
    choice->setObjectName(QLatin1String(name));
    choice->setAccessibleName(accessibleName);
    choice->setToolTip(accessibleName);
    choice->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    choice->setMinimumContentsLength(8);
    choice->setMaxVisibleItems(20);
    return choice;
}

} // namespace

DataPreview::DataPreview(QWidget *parent)
    : QWidget(parent)
    , cboPreviewDevice(
          newChoice("cboPreviewDevice", QStringLiteral("Device that the preview is drawn from")))
    , cboPreviewItem(
          newChoice("cboPreviewItem", QStringLiteral("Data item that the preview is drawn from")))
    , m_chart(new ChartPreview)
    , lblPreviewState(newTextLabel(QStringLiteral("lblPreviewState"), 1))
{
    m_chart->setObjectName(QStringLiteral("picDataPreview"));
    m_chart->setAccessibleName(QStringLiteral("Preview of the chart on data of the database"));
    auto *choices = new QHBoxLayout;
    choices->addWidget(cboPreviewDevice, 1);
    choices->addWidget(cboPreviewItem, 1);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(choices);
    layout->addWidget(m_chart, 1);
    layout->addWidget(lblPreviewState);
    connect(cboPreviewDevice, &QComboBox::currentIndexChanged, this, &DataPreview::fillItems);
    connect(cboPreviewItem, &QComboBox::currentIndexChanged, this, &DataPreview::draw);
    connect(&m_drawing, &Background::ended, this, [this] {
        if (m_drawsAgain)
            draw();
    });
}

void DataPreview::choose(const QString &muid, const QString &dataIdent)
{
    m_muid = muid;
    m_dataIdent = dataIdent;
    if (m_isRead)
        fillDevices();
}

void DataPreview::showChart(const clsGraphDef &chart, qint64 latest)
{
    m_definition = chart;
    m_latest = latest;
    if (m_isRead)
        draw();
    else if (!m_reading.isBusy())
        readDevices();
}

void DataPreview::readDevices()
{
    m_chart->showMessage(QStringLiteral("Reading the devices of the database…"));
    m_reading.start(
        [this, open = databaseSource().connect](const Background::Link &link) {
            const std::unique_ptr<MonitoringDatabase> database = open();
            const auto devices =
                std::make_shared<MonitoredDevices>(readMonitoredDevices(*database));
            link.deliver([this, devices] {
                m_devices = std::move(*devices);
                m_isRead = true;
                fillDevices();
            });
        },
        [this](const QString &error) {
            m_chart->showMessage(QStringLiteral("No preview: ") + error);
        });
}

void DataPreview::fillDevices()
{
    const QSignalBlocker quiet(cboPreviewDevice);
    cboPreviewDevice->clear();
    QStringList names;
    int chosen = 0;
    for (const MonitoredDevice &device : m_devices.devices) {
        if (device.muid.compare(m_muid, Qt::CaseInsensitive) == 0)
            chosen = static_cast<int>(names.size());
        names.append(device.name);
    }
    cboPreviewDevice->addItems(names);
    cboPreviewDevice->setCurrentIndex(names.isEmpty() ? -1 : chosen);
    fillItems();
}

void DataPreview::fillItems()
{
    const QSignalBlocker quiet(cboPreviewItem);
    cboPreviewItem->clear();
    const int place = cboPreviewDevice->currentIndex();
    if (place < 0) {
        m_chart->showMessage(QStringLiteral("No preview: the database has no device with data."));
        return;
    }
    const MonitoredDevice &device = m_devices.devices[static_cast<size_t>(place)];
    for (int i = device.firstItem; i < device.firstItem + device.itemCount; ++i) {
        const MonitoredItem &item = m_devices.items[static_cast<size_t>(i)];
        cboPreviewItem->addItem(m_devices.itemNames.value(item.name), item.dataIdent);
    }
    cboPreviewItem->setCurrentIndex(std::max(cboPreviewItem->findData(m_dataIdent), 0));
    draw();
}

void DataPreview::draw()
{
    const int place = cboPreviewDevice->currentIndex();
    if (place < 0 || m_latest == 0)
        return;
    m_drawsAgain = m_drawing.isBusy(); // one question at a time: a server may be slow
    if (m_drawsAgain)
        return;
    lblPreviewState->setText(QStringLiteral("Reading the samples…"));
    const QString muid = m_devices.devices[static_cast<size_t>(place)].muid;
    const qint64 ident = cboPreviewItem->currentData().toString().toLongLong();
    m_drawing.start(
        [this, open = databaseSource().connect, chart = m_definition, settings = gConfig(),
         latest = m_latest, muid, ident](const Background::Link &link) {
            const std::unique_ptr<MonitoringDatabase> database = open();
            const auto drawn =
                std::make_shared<Chart>(itemChart(*database, chart, muid, ident, settings, latest));
            link.deliver([this, drawn] {
                m_chart->showChart(*drawn);
                lblPreviewState->clear();
            });
        },
        [this](const QString &error) {
            m_chart->showMessage(QStringLiteral("No preview: ") + error);
            lblPreviewState->clear();
        });
}
