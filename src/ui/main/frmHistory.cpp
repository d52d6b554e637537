#include "ui/main/frmHistory.h"

#include "base/Durations.h"
#include "base/Files.h"
#include "base/TimeZone.h"
#include "config/clsGrapherConfig.h"
#include "report/OutputTree.h"
#include "ui/common/Messages.h"
#include "ui/common/ScrollPane.h"
#include "ui/common/UiState.h"
#include "ui/common/Widgets.h"
#include "ui/help/HelpViewer.h"
#include "ui/main/ReportList.h"

#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QSplitter>
#include <QStyle>
#include <QTreeWidget>
#include <QUrl>
#include <QVBoxLayout>

#include <map>

namespace {

const QString helpPage = QStringLiteral("history.html");

QTreeWidget *newTable(const char *name, const QString &accessibleName, const QStringList &columns)
{
    auto *table = new QTreeWidget;
    table->setObjectName(QLatin1String(name));
    table->setAccessibleName(accessibleName);
    table->setHeaderLabels(columns);
    table->setRootIsDecorated(false);
    table->setUniformRowHeights(true);
    table->setAllColumnsShowFocus(true);
    table->setAlternatingRowColors(true);
    return table;
}

QString durationOf(qint64 start, qint64 end)
{
    if (start == 0 || end < start)
        return {};
    const qint64 seconds = (end - start) / 1000;
    return seconds == 0 ? QStringLiteral("Under 1 s") : durationText(seconds);
}

/// "Scheduled", "On request", "Window"
QString modeCaption(QString mode)
{
    if (!mode.isEmpty())
        mode[0] = mode[0].toUpper();
    return mode;
}

/// "2 OK, 1 failed"
QString resultsOf(const RunRecord &run)
{
    std::map<ReportResult, int> counts;
    for (const ReportRecord &report : run.reports)
        ++counts[report.result];
    QStringList parts;
    for (const auto &[result, count] : counts)
        parts.append(QStringLiteral("%1 %2").arg(QString::number(count), result == ReportResult::Ok
                                                                             ? QStringLiteral("OK")
                                                                             : resultText(result)));
    return parts.isEmpty() ? QStringLiteral("No report") : parts.join(QLatin1String(", "));
}

bool isTroubled(const RunRecord &run)
{
    return run.end == 0 || !run.error.isEmpty() ||
           std::any_of(run.reports.begin(), run.reports.end(),
                       [](const ReportRecord &report) { return needsAttention(report.result); });
}

QString detailsOf(const ReportRecord &report)
{
    QStringList lines;
    if (report.dueSince.isValid())
        lines.append(QStringLiteral("Due since %1.").arg(timeText(report.dueSince)));
    if (!report.error.isEmpty())
        lines.append(report.error);
    if (report.chartsWithoutImage > 0)
        lines.append(QStringLiteral("%1 of %2 charts have no image:")
                         .arg(report.chartsWithoutImage)
                         .arg(report.charts));
    lines += report.chartErrors;
    if (report.mixedPages)
        lines.append(QStringLiteral("It ended early: new and old pages are mixed."));
    return lines.join(u'\n');
}

} // namespace

frmHistory::frmHistory(QWidget *parent)
    : QDialog(parent)
    , lvRuns(newTable("lvRuns", QStringLiteral("Runs, newest first"),
                      {QStringLiteral("Started"), QStringLiteral("By"), QStringLiteral("Took"),
                       QStringLiteral("Reports"), QStringLiteral("Results")}))
    , lvRunReports(
          newTable("lvRunReports", QStringLiteral("Reports of the run"),
                   {QStringLiteral("Report"), QStringLiteral("Result"), QStringLiteral("Took"),
                    QStringLiteral("Charts"), QStringLiteral("Samples")}))
    , lblDetails(newTextLabel(QStringLiteral("lblDetails"), 3))
    , cmdOpenPage(newButton(QStringLiteral("cmdOpenPage"), QStringLiteral("Open &Page"),
                            QStringLiteral("Opens the report's present page in the browser")))
{
    setObjectName(QStringLiteral("frmHistory"));
    setWindowTitle(QStringLiteral("Run History"));
    setModal(true);
    setSizeGripEnabled(true);
    lblDetails->setAccessibleName(QStringLiteral("What happened"));
    lblDetails->setText(QStringLiteral("Reading the history…"));
    auto *details = new ScrollPane(lblDetails);
    details->setWidgetResizable(true);
    auto *splitter = new QSplitter(Qt::Vertical);
    splitter->setObjectName(QStringLiteral("sspHistory"));
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(lvRuns);
    splitter->addWidget(lvRunReports);
    splitter->addWidget(details);
    splitter->setStretchFactor(0, 2);
    splitter->setStretchFactor(1, 2);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close | QDialogButtonBox::Help);
    buttons->addButton(cmdOpenPage, QDialogButtonBox::ActionRole);
    buttons->button(QDialogButtonBox::Close)->setObjectName(QStringLiteral("cmdClose"));
    buttons->button(QDialogButtonBox::Help)->setObjectName(QStringLiteral("cmdHelp"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(splitter, 1);
    layout->addWidget(buttons);

    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons, &QDialogButtonBox::helpRequested, this, [this] { showHelp(helpPage, this); });
    connect(cmdOpenPage, &QPushButton::clicked, this, &frmHistory::openPage);
    connect(lvRuns, &QTreeWidget::currentItemChanged, this, &frmHistory::showReports);
    connect(lvRunReports, &QTreeWidget::currentItemChanged, this, &frmHistory::showReport);
    connect(lvRunReports, &QTreeWidget::itemActivated, this, &frmHistory::openPage);
    openHelpOnF1(this, helpPage);
    activateAfterDialogs(this);
    const int character = fontMetrics().averageCharWidth();
    lvRuns->setColumnWidth(0, 20 * character);
    lvRuns->setColumnWidth(1, 14 * character);
    lvRuns->setColumnWidth(2, 14 * character);
    lvRunReports->setColumnWidth(0, 36 * character);
    lvRunReports->setColumnWidth(1, 14 * character);
    lvRunReports->setColumnWidth(2, 14 * character);
    lvRunReports->setColumnWidth(3, 9 * character);
    for (const int column : {3, 4})
        lvRunReports->headerItem()->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
    resize(100 * character, 34 * fontMetrics().lineSpacing());
    restoreWindowState(this);
    cmdOpenPage->setEnabled(false);
    lvRuns->setFocus();
    m_reading.start([this, history = runHistory()](const Background::Link &link) {
        link.deliver([this, runs = history.runs()] {
            m_runs = runs;
            showRuns();
        });
    });
}

void frmHistory::showRuns()
{
    lblDetails->clear();
    const QIcon warning = style()->standardIcon(QStyle::SP_MessageBoxWarning);
    for (const RunRecord &run : m_runs) {
        auto *row = new QTreeWidgetItem(
            lvRuns, {timeText(wallTime(run.start)), modeCaption(run.mode),
                     run.end == 0 ? QStringLiteral("Not ended") : durationOf(run.start, run.end),
                     QString::number(run.reports.size()), resultsOf(run)});
        row->setToolTip(4, wrappingToolTip(run.error));
        if (isTroubled(run))
            row->setIcon(4, warning);
    }
    if (m_runs.empty())
        lblDetails->setText(QStringLiteral("No run is on record yet."));
    lvRuns->setCurrentItem(lvRuns->topLevelItem(0));
}

void frmHistory::showReports()
{
    lvRunReports->clear();
    const int number = lvRuns->indexOfTopLevelItem(lvRuns->currentItem());
    if (number < 0)
        return;
    const QLocale locale;
    const QIcon warning = style()->standardIcon(QStyle::SP_MessageBoxWarning);
    for (const ReportRecord &report : m_runs[static_cast<size_t>(number)].reports) {
        auto *row = new QTreeWidgetItem(
            lvRunReports, {report.title,
                           report.start == 0 && report.result == ReportResult::Unfinished
                               ? QStringLiteral("Did not begin")
                               : resultCaption(report.result),
                           durationOf(report.start, report.end), locale.toString(report.charts),
                           locale.toString(report.samples)});
        for (const int column : {3, 4})
            row->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
        if (needsAttention(report.result))
            row->setIcon(1, warning);
    }
    lvRunReports->setCurrentItem(lvRunReports->topLevelItem(0));
    showReport();
}

void frmHistory::showReport()
{
    const int number = lvRuns->indexOfTopLevelItem(lvRuns->currentItem());
    const int place = lvRunReports->indexOfTopLevelItem(lvRunReports->currentItem());
    QStringList lines;
    if (number >= 0)
        lines.append(m_runs[static_cast<size_t>(number)].error);
    if (number >= 0 && place >= 0)
        lines.append(
            detailsOf(m_runs[static_cast<size_t>(number)].reports[static_cast<size_t>(place)]));
    lines.removeAll(QString());
    cmdOpenPage->setEnabled(place >= 0);
    lblDetails->setText(lines.isEmpty() && place >= 0 ? QStringLiteral("Nothing went wrong.")
                                                      : lines.join(u'\n'));
}

void frmHistory::openPage()
{
    const int number = lvRuns->indexOfTopLevelItem(lvRuns->currentItem());
    const int place = lvRunReports->indexOfTopLevelItem(lvRunReports->currentItem());
    if (number < 0 || place < 0)
        return;
    const QString page = OutputTree(gConfig()).reportPage(
        m_runs[static_cast<size_t>(number)].reports[static_cast<size_t>(place)].id);
    if (!fileExists(page))
        showInformation(this, windowTitle(),
                        QStringLiteral("The pages of this report are not there any more."));
    else if (!QDesktopServices::openUrl(QUrl::fromLocalFile(nativePath(page))))
        showWarning(this, windowTitle(), QLatin1String("Error loading browser to ") + page);
}

void frmHistory::done(int result)
{
    saveWindowState(this);
    QDialog::done(result);
}
