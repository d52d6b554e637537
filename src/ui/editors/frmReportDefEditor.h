#pragma once

#include "definitions/clsGraphDef.h"
#include "definitions/clsReportDef.h"
#include "ui/editors/EditorDialog.h"

class DevicePicker;
class QComboBox;
class QLineEdit;
class QPushButton;
class QTabWidget;
class RuleEditor;
class SchedulePicker;
class TargetEditor;

/// The editor of a report definition: its title, chart, devices and data items, and schedules.
/// Charts and schedules added or changed from it go to gChartDefs and gScheduleDefs and are saved
/// at once; closing it without OK takes that back.
class frmReportDefEditor : public EditorDialog
{
    Q_OBJECT

public:
    explicit frmReportDefEditor(QWidget *parent = nullptr);

    /// Fills the fields; from here on changes count. Reads devices and data items from the
    /// monitoring database; where that fails the editor says so and keeps the report's selection.
    void load(const clsReportDef &report);

    /// Copies the fields into a report; ReportID and the last runs of schedules that stay are kept.
    void store(clsReportDef &report) const;

    /// Charts and schedules that were changed from here count, too.
    bool hasChanges() const override;

    /// Saves an empty report only after a question: its runs fail.
    void accept() override;

protected:
    QString contentText() const override;
    QStringList warnings() const override;
    QString inputError(QWidget *&field) const override;
    void discard() override;

private:
    QWidget *makeHead();
    QWidget *makeDevices();
    QWidget *makeSchedules();
    QWidget *makeOutput();
    void fillCharts(const QString &chartId);
    void addChart();
    void changeChart();
    void editChart(const clsGraphDef &chart);
    void preview();
    void browseTemplate();

    QString m_reportId;
    qsizetype m_changesBefore = 0; ///< Definitions::changeCount when it was loaded
    QLineEdit *txtTitle;
    QComboBox *cboChart;
    QPushButton *cmdChartModify;
    QPushButton *cmdPreview;
    DevicePicker *m_devices;
    RuleEditor *m_rules;
    TargetEditor *m_targets;
    QTabWidget *m_tabs;
    SchedulePicker *m_schedules;
    QLineEdit *txtOutputFile;
    QLineEdit *txtOutputTemplate;
    QLineEdit *txtOutputFolder;
};
