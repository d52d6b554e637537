#pragma once

#include "definitions/GraphDef.h"
#include "ui/EditorDialog.h"

/// The editor of a chart definition, with a live preview drawn by the reports' own renderer.
class frmGraphDefEditor : public EditorDialog
{
    Q_OBJECT

public:
    explicit frmGraphDefEditor(QWidget *parent = nullptr);

    /// Fills the fields; from here on changes count.
    void load(const clsGraphDef &chart);

    /// Copies the fields into a chart; what the editor does not show (ChartID, codes of a file that
    /// nobody changed) stays.
    void store(clsGraphDef &chart) const;

protected:
    QString contentText() const override;
    QString inputError(QWidget *&field) const override;
};

/// The custom-range dialog of a run: shows the chart's StartTime and EndTime and sets them; false
/// when it was closed with anything but OK.
bool editCustomRange(clsGraphDef &chart, QWidget *parent);
