#pragma once

#include "config/clsGrapherConfig.h"
#include "database/MonitoredDevices.h"
#include "definitions/clsGraphDef.h"
#include "ui/common/Background.h"

#include <QWidget>

class ChartPreview;
class QComboBox;
class QLabel;

/// A chart definition drawn from a data item of the monitoring database, which the user chooses.
/// The database is read on other threads, and nothing is written; meanwhile the former chart stays.
class DataPreview : public QWidget
{
    Q_OBJECT

public:
    explicit DataPreview(QWidget *parent = nullptr);

    /// Draws that chart up to the instant `latest`, from the item chosen last.
    void showChart(const clsGraphDef &chart, qint64 latest);

    /// Chooses an item, as soon as the devices are known; a device's first one where `dataIdent` is
    /// empty.
    void choose(const QString &muid, const QString &dataIdent);

    bool isBusy() const { return m_reading.isBusy() || m_drawing.isBusy(); }

private:
    void readDevices();
    void fillDevices();
    void fillItems();
    void draw();

    clsGraphDef m_definition;
    qint64 m_latest = 0;
    MonitoredDevices m_devices;
    bool m_isRead = false;
    bool m_drawsAgain = false; ///< something changed while it was drawn
    QString m_muid;            ///< chosen before the devices were known
    QString m_dataIdent;
    QComboBox *cboPreviewDevice;
    QComboBox *cboPreviewItem;
    ChartPreview *m_chart;
    QLabel *lblPreviewState;
    Background m_reading; ///< last: abandoned first
    Background m_drawing;
};
