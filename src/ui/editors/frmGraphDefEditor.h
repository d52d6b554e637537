#pragma once

#include "definitions/clsGraphDef.h"
#include "ui/editors/ChartPeriod.h"
#include "ui/editors/EditorDialog.h"
#include "ui/editors/frmCustomRange.h"

#include <QTimer>

class ChartPreview;
class DataPreview;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QRadioButton;
class QSpinBox;

/// The editor of a chart definition, with a live preview drawn by the reports' own renderer.
class frmGraphDefEditor : public EditorDialog
{
    Q_OBJECT

public:
    explicit frmGraphDefEditor(QWidget *parent = nullptr);

    /// Fills the fields; from here on changes count. A new chart, which has neither intervals nor
    /// templates yet, gets the usual ones.
    void load(const clsGraphDef &chart);

    /// Copies the fields into a chart; properties that the editor does not show, and unchanged
    /// codes of a file, stay. Reads the templates that were changed.
    void store(clsGraphDef &chart) const;

protected:
    QString contentText() const override;
    QStringList warnings() const override;
    QString inputError(QWidget *&field) const override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QWidget *chartBox();
    QWidget *intervalBox();
    QWidget *periodBox();
    QWidget *pagesBox();
    QWidget *previewBox();
    void connectFields();

    ChartSpan chosenSpan() const;
    void storeFields(clsGraphDef &chart) const;
    void storeSpan(clsGraphDef &chart) const;
    clsGraphDef edited() const;
    void refresh();
    void showPreview();
    QStringList templateWarnings() const;
    QString takenTitle() const;
    void browse(QComboBox *field);

    clsGraphDef m_loaded;
    qint64 m_latest = 0; ///< instant up to which the preview reaches: it does not drift
    bool m_filling = false;
    bool m_rangeEdited = false;
    QTimer m_debounce; ///< the preview follows when typing pauses

    QLineEdit *txtTitle;
    QLineEdit *txtSampleLabel;
    QComboBox *cmbQuality;
    QComboBox *cmbFrequency;
    QSpinBox *txtMinuteInterval;
    QLabel *lblMinuteInterval;
    QRadioButton *optLastIntervals;
    QSpinBox *txtIntervalCount;
    QLabel *lblIntervalCount;
    QRadioButton *optFixedPeriod;
    QComboBox *cmbDuration;
    QRadioButton *optCustomRange;
    RangeEdit *m_range;
    QComboBox *cmbStateTemplate;
    QComboBox *cmbCountTemplate;
    QCheckBox *chkDetails;
    QSpinBox *txtDetailCount;
    QLabel *lblDetailCount;
    QRadioButton *optPreviewState;
    QRadioButton *optPreviewCounter;
    QRadioButton *optPreviewData;
    ChartPreview *m_preview;
    DataPreview *m_dataPreview;
    QLabel *lblPreview;
    QLabel *lblPeriod;
};
