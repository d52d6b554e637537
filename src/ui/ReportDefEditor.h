#pragma once

#include "definitions/ReportDef.h"
#include "ui/EditorDialog.h"

/// The editor of a report definition: its title, chart, devices and data items, and schedules.
/// Charts and schedules added or changed from it go to gChartDefs and gScheduleDefs and are saved
/// at once.
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

protected:
    QString contentText() const override;
    QString inputError(QWidget *&field) const override;
};
