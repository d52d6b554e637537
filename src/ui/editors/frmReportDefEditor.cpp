#include "ui/editors/frmReportDefEditor.h"

#include "base/Files.h"
#include "config/clsGrapherConfig.h"
#include "definitions/Advice.h"
#include "definitions/Definitions.h"
#include "report/OutputTree.h"
#include "ui/common/Messages.h"
#include "ui/common/NaturalSort.h"
#include "ui/common/Widgets.h"
#include "ui/editors/DevicePicker.h"
#include "ui/editors/EditDefinition.h"
#include "ui/editors/RuleEditor.h"
#include "ui/editors/SchedulePicker.h"
#include "ui/editors/TargetEditor.h"
#include "ui/editors/frmPreview.h"

#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSplitter>
#include <QStyle>
#include <QTabWidget>
#include <QVBoxLayout>

namespace {

/// The first one takes the remaining space.
QHBoxLayout *rowOf(std::initializer_list<QWidget *> widgets)
{
    auto *row = new QHBoxLayout;
    for (QWidget *widget : widgets)
        row->addWidget(widget, row->count() == 0 ? 1 : 0);
    return row;
}

} // namespace

frmReportDefEditor::frmReportDefEditor(QWidget *parent)
    : EditorDialog(QStringLiteral("frmReportDefEditor"), QStringLiteral("report-editor.html"),
                   parent)
{
    setWindowTitle(QStringLiteral("Add/Edit Report Definition " VANTREL_VERSION));
    auto *right = new QWidget;
    auto *rightLayout = new QVBoxLayout(right);
    rightLayout->setContentsMargins(0, 0, 0, 0);
    rightLayout->addWidget(makeSchedules(), 1);
    rightLayout->addWidget(makeOutput());

    auto *splitter = new QSplitter(Qt::Horizontal);
    splitter->setObjectName(QStringLiteral("sspReport"));
    splitter->setChildrenCollapsible(false);

    auto *layout = new QVBoxLayout(content());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(makeHead());
    splitter->addWidget(makeDevices());
    splitter->addWidget(right);
    splitter->setStretchFactor(0, 1);
    splitter->setSizes({600, 300});
    layout->addWidget(splitter, 1);
    resize(QSize(900, 640).expandedTo(minimumSizeHint()));
    connect(txtTitle, &QLineEdit::textChanged, this, &frmReportDefEditor::showWarnings);
    connect(cboChart, &QComboBox::currentIndexChanged, this, &frmReportDefEditor::showWarnings);
    connect(m_schedules, &SchedulePicker::changed, this, &frmReportDefEditor::showWarnings);
}

QWidget *frmReportDefEditor::makeHead()
{
    auto *head = new QWidget;
    auto *form = new QFormLayout(head);
    form->setContentsMargins(0, 0, 0, 0);
    txtTitle = new QLineEdit;
    txtTitle->setObjectName(QStringLiteral("txtTitle"));
    txtTitle->setToolTip(QStringLiteral("Heads the report's pages and its line in the contents"));
    form->addRow(QStringLiteral("&Title:"), txtTitle);

    cboChart = new QComboBox;
    cboChart->setObjectName(QStringLiteral("cboChart"));
    cboChart->setToolTip(
        QStringLiteral("The period and the intervals of all charts of this report"));
    cboChart->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    cboChart->setMinimumContentsLength(20);
    QPushButton *add = newButton(QStringLiteral("cmdChartAdd"), QStringLiteral("&Add..."),
                                 QStringLiteral("Defines a new chart and chooses it"));
    cmdChartModify = newButton(QStringLiteral("cmdChartModify"), QStringLiteral("Chan&ge..."),
                               QStringLiteral("Changes the chart for all reports that use it"));
    cmdPreview = newButton(QStringLiteral("cmdPreview"), QStringLiteral("Preview..."),
                           QStringLiteral("Draws the data item that is selected in the tree"));
    auto *label = new QLabel(QStringLiteral("&Chart:"));
    label->setBuddy(cboChart);
    form->addRow(label, rowOf({cboChart, add, cmdChartModify, cmdPreview}));
    connect(cmdPreview, &QPushButton::clicked, this, &frmReportDefEditor::preview);
    connect(add, &QPushButton::clicked, this, &frmReportDefEditor::addChart);
    connect(cmdChartModify, &QPushButton::clicked, this, &frmReportDefEditor::changeChart);
    connect(cboChart, &QComboBox::currentIndexChanged, this, [this] {
        cmdChartModify->setEnabled(
            definitions().gChartDefs.contains(cboChart->currentData().toString()));
        cmdPreview->setEnabled(cmdChartModify->isEnabled());
    });
    return head;
}

QWidget *frmReportDefEditor::makeDevices()
{
    auto *ticked = new QWidget;
    auto *layout = new QVBoxLayout(ticked);
    m_devices = new DevicePicker;
    layout->addWidget(m_devices);
    m_rules = new RuleEditor;
    connect(m_devices, &DevicePicker::inventoryRead, m_rules, &RuleEditor::setInventory);
    m_tabs = new QTabWidget;
    m_tabs->setObjectName(QStringLiteral("tabReport"));
    m_tabs->setAccessibleName(QStringLiteral("What the report shows"));
    m_tabs->addTab(ticked, QStringLiteral("Devices and data items"));
    m_tabs->addTab(m_rules, QString());
    m_targets = new TargetEditor;
    m_targets->setReportSource([this] {
        clsReportDef report;
        store(report);
        return report;
    });
    m_tabs->addTab(m_targets, QStringLiteral("Targets and results"));
    const auto showCount = [this] {
        const size_t count = m_rules->rules().size();
        m_tabs->setTabText(1, count == 0 ? QStringLiteral("Rules")
                                         : QStringLiteral("Rules (%1)").arg(count));
    };
    connect(m_rules, &RuleEditor::changed, this, showCount);
    showCount();
    return m_tabs;
}

QWidget *frmReportDefEditor::makeSchedules()
{
    auto *box = new QGroupBox(QStringLiteral("Schedules"));
    auto *layout = new QVBoxLayout(box);
    m_schedules = new SchedulePicker;
    layout->addWidget(m_schedules);
    return box;
}

QWidget *frmReportDefEditor::makeOutput()
{
    auto *box = new QGroupBox(QStringLiteral("Output"));
    auto *form = new QFormLayout(box);
    const QString usually = QStringLiteral("usually empty");
    txtOutputFile = new QLineEdit;
    txtOutputFile->setObjectName(QStringLiteral("txtOutputFile"));
    txtOutputFile->setPlaceholderText(usually);
    txtOutputFile->setToolTip(QStringLiteral(
        "Kept with the report for installations that use it. The report's own pages have fixed\n"
        "names and do not depend on it: they are written to the folder below."));
    txtOutputTemplate = new QLineEdit;
    txtOutputTemplate->setObjectName(QStringLiteral("txtOutputTemplate"));
    txtOutputTemplate->setPlaceholderText(usually);
    txtOutputTemplate->setMinimumWidth(12 * fontMetrics().averageCharWidth());
    txtOutputTemplate->setToolTip(QStringLiteral(
        "Kept with the report for installations that use it. The report's own pages are made\n"
        "from the templates of the configuration folder."));
    QPushButton *browse =
        newButton(QStringLiteral("cmdBrowseTemplate"), QStringLiteral("&Browse..."),
                  QStringLiteral("Chooses a template of the configuration folder"));
    connect(browse, &QPushButton::clicked, this, &frmReportDefEditor::browseTemplate);
    txtOutputFolder = new QLineEdit;
    txtOutputFolder->setObjectName(QStringLiteral("txtOutputFolder"));
    txtOutputFolder->setReadOnly(true);

    form->addRow(QStringLiteral("Output &file:"), txtOutputFile);
    auto *label = new QLabel(QStringLiteral("Te&mplate:"));
    label->setBuddy(txtOutputTemplate);
    form->addRow(label, rowOf({txtOutputTemplate, browse}));
    form->addRow(QStringLiteral("&Pages in:"), txtOutputFolder);
    return box;
}

// Content

void frmReportDefEditor::load(const clsReportDef &report)
{
    definitions().LoadChartDefs();
    definitions().LoadScheduleDefs();
    m_reportId = report.ReportID;
    m_changesBefore = definitions().changeCount();
    txtTitle->setText(report.ReportTitle);
    txtTitle->selectAll();
    fillCharts(report.ChartID);
    txtOutputFile->setText(report.OutputFile);
    txtOutputTemplate->setText(report.OutputTemplate);
    const QString folder = nativePath(OutputTree(gConfig()).reportFolder(report.ReportID));
    txtOutputFolder->setText(folder);
    txtOutputFolder->setCursorPosition(0);
    txtOutputFolder->setToolTip(wrappingToolTip(folder));
    m_schedules->setSelection(report.ReportSchedules, report.ReportID);
    m_devices->setSelection(report.ReportDevices);
    m_rules->setRules(report.Rules);
    m_targets->load(report);
    markUnchanged();
    m_devices->read();
}

void frmReportDefEditor::store(clsReportDef &report) const
{
    report.ReportTitle = txtTitle->text().trimmed();
    report.ChartID = cboChart->currentData().toString();
    report.OutputFile = txtOutputFile->text();
    report.OutputTemplate = txtOutputTemplate->text();
    report.ReportDevices = m_devices->selection();
    report.Rules = m_rules->rules();
    m_targets->store(report);
    report.ReportSchedules = m_schedules->selection();
}

QString frmReportDefEditor::contentText() const
{
    return QStringList{txtTitle->text(),
                       cboChart->currentData().toString(),
                       txtOutputFile->text(),
                       txtOutputTemplate->text(),
                       m_schedules->selectionText(),
                       m_devices->selectionText(),
                       m_rules->rulesText(),
                       m_targets->contentText()}
        .join(QLatin1String("\n\n"));
}

QStringList frmReportDefEditor::warnings() const
{
    QStringList advice{sameTitleWarning(definitions().gReportDefs, &clsReportDef::ReportTitle,
                                        m_reportId, txtTitle->text())};
    const auto chart = definitions().gChartDefs.find(cboChart->currentData().toString());
    for (const auto &chosen : m_schedules->selection()) {
        const auto schedule = definitions().gScheduleDefs.find(chosen->ScheduleID);
        if (chart && schedule)
            advice += samePeriodWarning(*chart, *schedule);
    }
    return sentences(advice);
}

QString frmReportDefEditor::inputError(QWidget *&field) const
{
    if (txtTitle->text().trimmed().isEmpty()) {
        field = txtTitle;
        return QStringLiteral("The report needs a title. Please enter one.");
    }
    if (!definitions().gChartDefs.contains(cboChart->currentData().toString())) {
        field = cboChart;
        return QStringLiteral("The report needs a chart definition. Please choose one, or add a "
                              "new one.");
    }
    const QString error = m_targets->inputError(field);
    if (!error.isEmpty())
        m_tabs->setCurrentWidget(m_targets);
    return error;
}

void frmReportDefEditor::accept()
{
    QWidget *field = nullptr;
    if (inputError(field).isEmpty() && m_devices->isEmpty() && m_rules->rules().empty() &&
        !askYesNo(
            this, QStringLiteral("Nothing Selected"),
            QStringLiteral(
                "No device is selected, and there is no rule. A run of this report would fail.\n"
                "Save it all the same?"))) {
        m_tabs->setCurrentIndex(0);
        m_devices->focusTree();
        return;
    }
    EditorDialog::accept();
}

// Charts and templates

/// Lists all charts by title, and the chosen one even if it is no longer defined.
void frmReportDefEditor::fillCharts(const QString &chartId)
{
    cboChart->clear();
    for (const auto &chart : sortedNaturally(definitions().gChartDefs, &clsGraphDef::ChartTitle))
        cboChart->addItem(chart->ChartTitle, chart->ChartID);
    int row = cboChart->findData(chartId, Qt::UserRole, Qt::MatchFixedString);
    if (row < 0) {
        row = 0;
        const QString text = chartId.isEmpty()
                                 ? QStringLiteral("(choose a chart)")
                                 : QStringLiteral("(not defined any more: %1)").arg(chartId);
        cboChart->insertItem(0, text, chartId);
        if (!chartId.isEmpty())
            cboChart->setItemIcon(0, style()->standardIcon(QStyle::SP_MessageBoxWarning));
    }
    cboChart->setCurrentIndex(row);
    cmdChartModify->setEnabled(definitions().gChartDefs.contains(chartId));
    cmdPreview->setEnabled(cmdChartModify->isEnabled());
}

void frmReportDefEditor::addChart()
{
    editChart(clsGraphDef());
}

void frmReportDefEditor::changeChart()
{
    if (const auto chart = definitions().gChartDefs.find(cboChart->currentData().toString()))
        editChart(*chart);
}

/// Opens the editor on a chart, which is chosen when it is saved.
void frmReportDefEditor::editChart(const clsGraphDef &chart)
{
    if (::editChart(chart, this, m_reportId))
        fillCharts(chart.ChartID);
}

bool frmReportDefEditor::hasChanges() const
{
    return EditorDialog::hasChanges() || definitions().changeCount() > m_changesBefore;
}

void frmReportDefEditor::discard()
{
    definitions().takeBack(m_changesBefore);
}

void frmReportDefEditor::preview()
{
    if (const auto chart = definitions().gChartDefs.find(cboChart->currentData().toString())) {
        const auto [muid, dataIdent] = m_devices->currentItem();
        frmPreview(*chart, muid, dataIdent, this).exec();
    }
}

void frmReportDefEditor::browseTemplate()
{
    const QString folder = nativePath(configurationFolder());
    const QString chosen = QFileDialog::getOpenFileName(
        this, QStringLiteral("Output Template"), folder,
        QStringLiteral("HTML templates (*.html *.htm *.HTML *.HTM);;All files (*)"));
    if (chosen.isEmpty())
        return;
    // A name relative to the configuration folder moves with it.
    const QString inside = QDir(folder).relativeFilePath(chosen);
    const bool isInside = !inside.startsWith(QLatin1String("..")) && QDir::isRelativePath(inside);
    txtOutputTemplate->setText(isInside ? inside : QDir::toNativeSeparators(chosen));
}
