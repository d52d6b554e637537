#include "ui/editors/frmGraphDefEditor.h"

#include "base/Clock.h"
#include "base/Error.h"
#include "base/Files.h"
#include "base/Paths.h"
#include "config/clsGrapherConfig.h"
#include "definitions/Advice.h"
#include "definitions/Definitions.h"
#include "definitions/TemplateFile.h"
#include "definitions/Usage.h"
#include "ui/common/Widgets.h"
#include "ui/editors/ChartPreview.h"
#include "ui/editors/DataPreview.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QEvent>
#include <QFileDialog>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSpinBox>
#include <QSplitter>
#include <QStyle>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int previewDelay = 200;                       ///< milliseconds
constexpr int maxLastIntervals = maxChartIntervals - 1; ///< they begin within one more
constexpr SubFrequencyCode customRangeCode{1};          ///< of a custom range made here

/// Empty when it cannot be read: a run reports that.
QString templateText(const QString &name)
{
    try {
        return name.isEmpty() ? QString() : readTemplate(chartTemplatePath(name));
    } catch (const Error &) {
        return {};
    }
}

void storeTemplate(const QString &name, QString &file, QString &data)
{
    if (name == file)
        return;
    file = name;
    data = templateText(name);
}

QComboBox *newCodeField(const QString &name, const QStringList &codes)
{
    auto *field = new QComboBox;
    field->setObjectName(name);
    for (const QString &code : codes)
        field->addItem(code, field->count());
    return field;
}

/// Selects a code; an unknown one gets its own entry.
void showCode(QComboBox *field, int code)
{
    int index = field->findData(code);
    if (index < 0) {
        index = field->count();
        field->addItem(QStringLiteral("Code %1 (not known)").arg(code), code);
    }
    field->setCurrentIndex(index);
}

template <typename Code = int>
Code codeOf(const QComboBox *field)
{
    return static_cast<Code>(field->currentData().toInt());
}

QSpinBox *newNumberField(const QString &name)
{
    auto *field = new QSpinBox;
    field->setObjectName(name);
    field->setGroupSeparatorShown(true);
    return field;
}

/// Accepts any stored number, even if it makes no sense.
void showNumber(QSpinBox *field, int number, int usualMost)
{
    field->setRange(std::min(0, number), std::max(usualMost, number));
    field->setValue(number);
}

QComboBox *newTemplateField(const QString &name)
{
    auto *field = new QComboBox;
    field->setObjectName(name);
    field->setEditable(true);
    field->setInsertPolicy(QComboBox::NoInsert);
    field->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    field->setMinimumContentsLength(18);
    return field;
}

/// Lists the templates of the configuration folder.
void showTemplate(QComboBox *field, const QString &name)
{
    field->clear();
    field->addItems(QDir(nativePath(configurationFolder()))
                        .entryList({QStringLiteral("*.html"), QStringLiteral("*.htm")}, QDir::Files,
                                   QDir::Name | QDir::IgnoreCase));
    field->setEditText(name);
}

/// Whether a chart is new and has no period yet.
bool isNew(const clsGraphDef &chart)
{
    return chart.MinuteInterval == 0 && chart.IntervalCount == 0 &&
           chart.StateTemplateFile.isEmpty() && chart.CountTemplateFile.isEmpty();
}

} // namespace

frmGraphDefEditor::frmGraphDefEditor(QWidget *parent)
    : EditorDialog(QStringLiteral("frmGraphDefEditor"), QStringLiteral("chart-editor.html"), parent)
{
    setWindowTitle(QStringLiteral("Add/Edit Chart Definition " VANTREL_VERSION));
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    auto *fields = new QWidget;
    auto *fieldsLayout = new QVBoxLayout(fields);
    fieldsLayout->setContentsMargins(0, 0, 6, 0);
    for (QWidget *box : {chartBox(), intervalBox(), periodBox(), pagesBox()})
        fieldsLayout->addWidget(box);
    fieldsLayout->addStretch(1);
    auto *scroll = new QScrollArea; // for low screens
    scroll->setWidget(fields);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setMinimumWidth(fields->minimumSizeHint().width() +
                            scroll->verticalScrollBar()->sizeHint().width());
    auto *splitter = new QSplitter;
    splitter->setObjectName(QStringLiteral("sspChart"));
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(scroll);
    splitter->addWidget(previewBox());
    splitter->setStretchFactor(1, 1);

    lblPeriod = newTextLabel(QStringLiteral("lblPeriod"));
    auto *layout = new QVBoxLayout(content());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(splitter, 1);
    layout->addWidget(lblPeriod);
    resize(1060, fields->sizeHint().height() + 140);

    m_debounce.setSingleShot(true);
    m_debounce.setInterval(previewDelay);
    connectFields();
    load(clsGraphDef());
}

QWidget *frmGraphDefEditor::chartBox()
{
    txtTitle = new QLineEdit;
    txtTitle->setObjectName(QStringLiteral("txtTitle"));
    txtTitle->setToolTip(QStringLiteral("Stands on every chart"));
    txtSampleLabel = new QLineEdit;
    txtSampleLabel->setObjectName(QStringLiteral("txtSampleLabel"));
    txtSampleLabel->setToolTip(QStringLiteral("Names the values, such as Average of the hour"));
    cmbQuality = newCodeField(QStringLiteral("cmbQuality"), qualityNames());
    auto *box = new QGroupBox(QStringLiteral("Chart"));
    auto *form = new QFormLayout(box);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->addRow(QStringLiteral("Titl&e"), txtTitle);
    form->addRow(QStringLiteral("&Data label"), txtSampleLabel);
    form->addRow(QStringLiteral("&Quality"), cmbQuality);
    return box;
}

QWidget *frmGraphDefEditor::intervalBox()
{
    cmbFrequency = newCodeField(QStringLiteral("cmbFrequency"), frequencyNames());
    txtMinuteInterval = newNumberField(QStringLiteral("txtMinuteInterval"));
    lblMinuteInterval = new QLabel(QStringLiteral("&minutes"));
    lblMinuteInterval->setBuddy(txtMinuteInterval);
    auto *box = new QGroupBox(QStringLiteral("Interval"));
    box->setToolTip(QStringLiteral("All samples of an interval become one value of the chart"));
    auto *layout = new QHBoxLayout(box);
    auto *label = new QLabel(QStringLiteral("One value for each &interval"));
    label->setBuddy(cmbFrequency);
    layout->addWidget(label);
    layout->addWidget(cmbFrequency);
    layout->addWidget(txtMinuteInterval);
    layout->addWidget(lblMinuteInterval);
    layout->addStretch(1);
    return box;
}

QWidget *frmGraphDefEditor::periodBox()
{
    optLastIntervals = new QRadioButton(QStringLiteral("&Last"));
    optLastIntervals->setObjectName(QStringLiteral("optLastIntervals"));
    optLastIntervals->setAccessibleName(QStringLiteral("Last intervals up to the run"));
    txtIntervalCount = newNumberField(QStringLiteral("txtIntervalCount"));
    lblIntervalCount = new QLabel(QStringLiteral("inter&vals up to the run"));
    lblIntervalCount->setBuddy(txtIntervalCount);
    optFixedPeriod = new QRadioButton(QStringLiteral("C&alendar period"));
    optFixedPeriod->setObjectName(QStringLiteral("optFixedPeriod"));
    cmbDuration = newCodeField(QStringLiteral("cmbDuration"), {});
    for (int code = Today; code < AfterLastDuration; ++code) {
        if (const QString name = durationName(code); !name.isEmpty())
            cmbDuration->addItem(name, code);
    }
    cmbDuration->setAccessibleName(QStringLiteral("Calendar period"));
    cmbDuration->setToolTip(QStringLiteral("Weeks begin on Sunday where no other day is named"));
    optCustomRange = new QRadioButton(QStringLiteral("C&ustom range"));
    optCustomRange->setObjectName(QStringLiteral("optCustomRange"));
    optCustomRange->setToolTip(QStringLiteral("A run from the main window asks for the dates"));
    m_range = new RangeEdit;

    const auto row = [](std::initializer_list<QWidget *> widgets) {
        auto *layout = new QHBoxLayout;
        for (QWidget *widget : widgets)
            layout->addWidget(widget);
        layout->addStretch(1);
        return layout;
    };
    auto *box = new QGroupBox(QStringLiteral("Period"));
    auto *layout = new QVBoxLayout(box);
    layout->addLayout(row({optLastIntervals, txtIntervalCount, lblIntervalCount}));
    layout->addLayout(row({optFixedPeriod, cmbDuration}));
    layout->addWidget(optCustomRange);
    auto *range = row({m_range});
    range->insertSpacing(0, 22); // below the button's text
    layout->addLayout(range);
    return box;
}

QWidget *frmGraphDefEditor::pagesBox()
{
    cmbStateTemplate = newTemplateField(QStringLiteral("cmbStateTemplate"));
    cmbCountTemplate = newTemplateField(QStringLiteral("cmbCountTemplate"));
    chkDetails = new QCheckBox(QStringLiteral("Detail ta&ble"));
    chkDetails->setObjectName(QStringLiteral("chkDetails"));
    txtDetailCount = newNumberField(QStringLiteral("txtDetailCount"));
    txtDetailCount->setSpecialValueText(QStringLiteral("all"));
    lblDetailCount = new QLabel(QStringLiteral("of so many ro&ws"));
    lblDetailCount->setBuddy(txtDetailCount);
    for (QWidget *field : std::initializer_list<QWidget *>{chkDetails, txtDetailCount})
        field->setToolTip(QStringLiteral("Kept with the chart. Device pages list every interval."));

    auto *box = new QGroupBox(QStringLiteral("Pages"));
    auto *form = new QFormLayout(box);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    const auto addTemplate = [&](const QString &text, QComboBox *field, const QString &button,
                                 const QString &name) {
        auto *choose = newButton(name, button);
        connect(choose, &QPushButton::clicked, this, [this, field] { browse(field); });
        auto *row = new QHBoxLayout;
        row->addWidget(field, 1);
        row->addWidget(choose);
        auto *label = new QLabel(text);
        label->setBuddy(field);
        form->addRow(label, row);
    };
    addTemplate(QStringLiteral("&State chart"), cmbStateTemplate, QStringLiteral("Br&owse..."),
                QStringLiteral("cmdStateBrowse"));
    addTemplate(QStringLiteral("&Counter chart"), cmbCountTemplate, QStringLiteral("B&rowse..."),
                QStringLiteral("cmdCountBrowse"));
    auto *details = new QHBoxLayout;
    details->addWidget(chkDetails);
    details->addWidget(lblDetailCount);
    details->addWidget(txtDetailCount);
    details->addStretch(1);
    form->addRow(details);
    return box;
}

QWidget *frmGraphDefEditor::previewBox()
{
    optPreviewState = new QRadioButton(QStringLiteral("State c&hart"));
    optPreviewState->setObjectName(QStringLiteral("optPreviewState"));
    optPreviewState->setChecked(true);
    optPreviewCounter = new QRadioButton(QStringLiteral("Cou&nter chart"));
    optPreviewCounter->setObjectName(QStringLiteral("optPreviewCounter"));
    m_preview = new ChartPreview;
    m_preview->setObjectName(QStringLiteral("picPreview"));
    lblPreview = newTextLabel(QStringLiteral("lblPreview"), 1);
    optPreviewData = new QRadioButton(QStringLiteral("M&y data"));
    optPreviewData->setObjectName(QStringLiteral("optPreviewData"));
    optPreviewData->setToolTip(QStringLiteral("Draws a data item of the monitoring database"));
    m_dataPreview = new DataPreview;
    m_dataPreview->hide();

    auto *box = new QGroupBox(QStringLiteral("Preview on sample data"));
    connect(optPreviewData, &QRadioButton::toggled, this, [this, box](bool isData) {
        box->setTitle(isData ? QStringLiteral("Preview on my data")
                             : QStringLiteral("Preview on sample data"));
        m_preview->setHidden(isData);
        lblPreview->setHidden(isData);
        m_dataPreview->setVisible(isData);
        showPreview();
    });
    auto *kinds = new QHBoxLayout;
    kinds->addWidget(optPreviewState);
    kinds->addWidget(optPreviewCounter);
    kinds->addWidget(optPreviewData);
    kinds->addStretch(1);
    auto *layout = new QVBoxLayout(box);
    layout->addLayout(kinds);
    layout->addWidget(m_preview, 1);
    layout->addWidget(m_dataPreview, 1);
    layout->addWidget(lblPreview);
    return box;
}

void frmGraphDefEditor::connectFields()
{
    for (QLineEdit *field : {txtTitle, txtSampleLabel})
        connect(field, &QLineEdit::textChanged, this, &frmGraphDefEditor::refresh);
    for (QComboBox *field : {cmbQuality, cmbFrequency, cmbDuration})
        connect(field, &QComboBox::currentIndexChanged, this, &frmGraphDefEditor::refresh);
    for (QSpinBox *field : {txtMinuteInterval, txtIntervalCount, txtDetailCount})
        connect(field, &QSpinBox::valueChanged, this, &frmGraphDefEditor::refresh);
    for (QRadioButton *option : {optLastIntervals, optFixedPeriod, optCustomRange})
        connect(option, &QRadioButton::toggled, this, &frmGraphDefEditor::refresh);
    for (QComboBox *field : {cmbStateTemplate, cmbCountTemplate})
        connect(field, &QComboBox::editTextChanged, this, &frmGraphDefEditor::refresh);
    connect(m_range, &RangeEdit::edited, this, [this] {
        m_rangeEdited = true;
        refresh();
    });
    connect(chkDetails, &QCheckBox::toggled, this, &frmGraphDefEditor::refresh);
    connect(optPreviewState, &QRadioButton::toggled, this, &frmGraphDefEditor::showPreview);
    connect(&m_debounce, &QTimer::timeout, this, &frmGraphDefEditor::showPreview);
    // Scrolling the fields must not change the one below the mouse.
    for (QWidget *field : findChildren<QWidget *>()) {
        if (!qobject_cast<QComboBox *>(field) && !qobject_cast<QAbstractSpinBox *>(field))
            continue;
        field->setFocusPolicy(Qt::StrongFocus);
        field->installEventFilter(this);
    }
}

bool frmGraphDefEditor::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Wheel && !static_cast<QWidget *>(watched)->hasFocus()) {
        event->ignore();
        return true;
    }
    return EditorDialog::eventFilter(watched, event);
}

void frmGraphDefEditor::load(const clsGraphDef &chart)
{
    m_loaded = chart;
    m_latest = currentInstant();
    clsGraphDef shown = chart;
    if (isNew(chart)) {
        shown.ChartFrequency = ByHour;
        shown.MinuteInterval = 5;
        shown.IntervalCount = 24;
        shown.StateTemplateFile = QStringLiteral("StateChart.HTML");
        shown.CountTemplateFile = QStringLiteral("CountChart.HTML");
    }
    m_filling = true;
    m_rangeEdited = false;
    txtTitle->setText(shown.ChartTitle);
    txtSampleLabel->setText(shown.SampleLabel);
    showCode(cmbQuality, shown.ChartQuality);
    showCode(cmbFrequency, shown.ChartFrequency);
    showNumber(txtMinuteInterval, shown.MinuteInterval, 60);
    showNumber(txtIntervalCount, shown.IntervalCount, maxLastIntervals);
    const ChartSpan span = spanOf(shown);
    showCode(cmbDuration, span == ChartSpan::Calendar ? shown.ChartDuration : Today);
    m_range->setRange(shown.StartTime, shown.EndTime);
    optLastIntervals->setChecked(span == ChartSpan::LastIntervals);
    optFixedPeriod->setChecked(span == ChartSpan::Calendar);
    optCustomRange->setChecked(span == ChartSpan::Custom);
    showTemplate(cmbStateTemplate, shown.StateTemplateFile);
    showTemplate(cmbCountTemplate, shown.CountTemplateFile);
    chkDetails->setChecked(shown.Details);
    showNumber(txtDetailCount, shown.DetailCount, 999'999);
    m_filling = false;
    refresh();
    showPreview();
    markUnchanged();
}

ChartSpan frmGraphDefEditor::chosenSpan() const
{
    if (optLastIntervals->isChecked())
        return ChartSpan::LastIntervals;
    return optFixedPeriod->isChecked() ? ChartSpan::Calendar : ChartSpan::Custom;
}

/// The codes of the span stay as in the file until another one is chosen.
void frmGraphDefEditor::storeSpan(clsGraphDef &chart) const
{
    const ChartSpan span = chosenSpan();
    const bool isSame = span == spanOf(m_loaded);
    chart.SubFrequency = m_loaded.SubFrequency;
    chart.ChartDuration = m_loaded.ChartDuration;
    switch (span) {
    case ChartSpan::LastIntervals:
        if (!isSame) {
            chart.SubFrequency = LastIntervals;
            chart.ChartDuration = Today;
        }
        break;
    case ChartSpan::Calendar:
        chart.SubFrequency = FixedPeriod;
        chart.ChartDuration = codeOf<ChartDurationCode>(cmbDuration);
        break;
    case ChartSpan::Custom:
        if (!isSame)
            chart.SubFrequency = customRangeCode;
        if (!isSame || m_rangeEdited)
            chart.ChartDuration = CustomRange;
        chart.StartTime = m_range->start();
        chart.EndTime = m_range->end();
    }
}

void frmGraphDefEditor::storeFields(clsGraphDef &chart) const
{
    chart.ChartTitle = txtTitle->text().trimmed();
    chart.SampleLabel = txtSampleLabel->text().trimmed();
    chart.ChartQuality = codeOf(cmbQuality);
    chart.ChartFrequency = codeOf<ChartFrequencyCode>(cmbFrequency);
    chart.MinuteInterval = txtMinuteInterval->value();
    chart.IntervalCount = txtIntervalCount->value();
    storeSpan(chart);
    chart.Details = chkDetails->isChecked();
    chart.DetailCount = txtDetailCount->value();
}

void frmGraphDefEditor::store(clsGraphDef &chart) const
{
    storeFields(chart);
    storeTemplate(cmbStateTemplate->currentText().trimmed(), chart.StateTemplateFile,
                  chart.StateTemplateData);
    storeTemplate(cmbCountTemplate->currentText().trimmed(), chart.CountTemplateFile,
                  chart.CountTemplateData);
}

clsGraphDef frmGraphDefEditor::edited() const
{
    clsGraphDef chart = m_loaded;
    storeFields(chart);
    chart.StateTemplateFile = cmbStateTemplate->currentText().trimmed();
    chart.CountTemplateFile = cmbCountTemplate->currentText().trimmed();
    return chart;
}

QString frmGraphDefEditor::contentText() const
{
    return edited().XMLConfig();
}

QStringList frmGraphDefEditor::warnings() const
{
    return periodWarnings(edited()) + templateWarnings() +
           sentences({sameTitleWarning(definitions().gChartDefs, &clsGraphDef::ChartTitle,
                                       m_loaded.ChartID, txtTitle->text())});
}

/// Why the title cannot be had. A chart that shares one already keeps it.
QString frmGraphDefEditor::takenTitle() const
{
    const Collection<clsGraphDef> &all = definitions().gChartDefs;
    const QString title = txtTitle->text().trimmed();
    const bool isKept = all.contains(m_loaded.ChartID) && title == m_loaded.ChartTitle;
    return isKept ? QString() : titleFault(all, &clsGraphDef::ChartTitle, m_loaded.ChartID, title);
}

QString frmGraphDefEditor::inputError(QWidget *&field) const
{
    if (txtTitle->text().trimmed().isEmpty()) {
        field = txtTitle;
        return QStringLiteral("Please give the chart a title.");
    }
    if (const QString fault = takenTitle(); !fault.isEmpty()) {
        field = txtTitle;
        return fault;
    }
    if (chosenSpan() == ChartSpan::Custom && m_range->end() <= m_range->start()) {
        field = m_range;
        return QStringLiteral("The range ends before it starts. Please enter a later end.");
    }
    if (const QString fault = tooManyIntervals(edited()); !fault.isEmpty()) {
        field = cmbFrequency;
        return fault;
    }
    return {};
}

void frmGraphDefEditor::refresh()
{
    if (m_filling)
        return;
    const ChartSpan span = chosenSpan();
    const bool byMinute = codeOf(cmbFrequency) == ByMinute;
    txtMinuteInterval->setEnabled(byMinute);
    lblMinuteInterval->setEnabled(byMinute);
    txtIntervalCount->setEnabled(span == ChartSpan::LastIntervals);
    lblIntervalCount->setEnabled(span == ChartSpan::LastIntervals);
    cmbDuration->setEnabled(span == ChartSpan::Calendar);
    m_range->setEnabled(span == ChartSpan::Custom);
    txtDetailCount->setEnabled(chkDetails->isChecked());
    lblDetailCount->setEnabled(chkDetails->isChecked());

    const clsGraphDef chart = edited();
    if (span != ChartSpan::Custom && spanOf(m_loaded) != ChartSpan::Custom && !m_rangeEdited) {
        // A custom range starts as the period shown before.
        const clsGraphDef run = chartOfRun(chart, now());
        m_range->setRange(run.StartTime, run.EndTime);
    }
    lblPeriod->setText(periodInWords(chart));
    showWarnings();
    m_debounce.start();
}

void frmGraphDefEditor::showPreview()
{
    m_debounce.stop();
    if (optPreviewData->isChecked()) {
        m_dataPreview->showChart(edited(), m_latest);
        return;
    }
    QString note;
    try {
        m_preview->showChart(sampleChart(
            edited(), optPreviewState->isChecked() ? SampleItem::State : SampleItem::Counter,
            m_latest, note));
    } catch (const Error &error) {
        m_preview->showMessage(QStringLiteral("No preview: ") + error.description);
    }
    lblPreview->setText(note);
}

QStringList frmGraphDefEditor::templateWarnings() const
{
    QStringList warnings;
    const auto check = [&warnings](const QComboBox *field, const QString &kind) {
        const QString name = field->currentText().trimmed();
        if (name.isEmpty())
            warnings += QStringLiteral("No template for %1: the pages of these charts will be "
                                       "empty.")
                            .arg(kind);
        else if (!fileExists(chartTemplatePath(name)))
            warnings += QStringLiteral("The template for %1 does not exist: %2")
                            .arg(kind, QDir::toNativeSeparators(chartTemplatePath(name)));
        else if (const QString fault = templateFault(chartTemplatePath(name)); !fault.isEmpty())
            warnings += QStringLiteral("The template for %1: %2").arg(kind, fault);
    };
    check(cmbStateTemplate, QStringLiteral("state charts"));
    check(cmbCountTemplate, QStringLiteral("counter charts"));
    return warnings;
}

/// Files in the configuration folder are named without it, so that the folder can move.
void frmGraphDefEditor::browse(QComboBox *field)
{
    const QDir folder(nativePath(configurationFolder()));
    const QString chosen = QFileDialog::getOpenFileName(
        this, QStringLiteral("Chart Template"), folder.path(),
        QStringLiteral("HTML templates (*.html *.htm *.HTML *.HTM);;All files (*)"));
    if (chosen.isEmpty())
        return;
    const QFileInfo file(chosen);
    field->setEditText(file.absoluteDir() == folder ? file.fileName()
                                                    : QDir::toNativeSeparators(chosen));
}
