#include "ui/main/frmGrapherMain.h"

#include "base/Clock.h"
#include "base/Error.h"
#include "base/Files.h"
#include "base/Paths.h"
#include "base/TimeZone.h"
#include "config/Program.h"
#include "config/clsGrapherConfig.h"
#include "definitions/Definitions.h"
#include "mail/MailRun.h"
#include "platform/TaskbarProgress.h"
#include "report/OutputTree.h"
#include "scheduling/Metrics.h"
#include "scheduling/Registration.h"
#include "scheduling/Standings.h"
#include "ui/common/Messages.h"
#include "ui/common/UiState.h"
#include "ui/editors/frmCustomRange.h"
#include "ui/editors/frmMail.h"
#include "ui/help/HelpViewer.h"
#include "ui/main/ReportList.h"
#include "ui/main/ReportView.h"
#include "ui/main/RunLine.h"
#include "ui/main/RunThread.h"
#include "ui/main/StatusBox.h"
#include "ui/main/UndoSteps.h"
#include "ui/main/frmAutomate.h"
#include "ui/main/frmDatabase.h"
#include "ui/main/frmOutputPath.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QMenu>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>

namespace {

constexpr qint64 millisecondsPerMinute = 60'000;
constexpr qint64 minutesBetweenRuns = 60;

const QString cancelToolTip = QStringLiteral("Click to cancel reporting...");
const QString runAgainToolTip = QStringLiteral("Click to start reporing..."); // as users know it

QString resultLine(const RunResult &result)
{
    QString line =
        QStringLiteral("Report run finished%1: %2 %3")
            .arg(result.error.isEmpty() ? QString() : QStringLiteral(" with errors"))
            .arg(result.reports)
            .arg(result.reports == 1 ? QLatin1String("report") : QLatin1String("reports"));
    if (result.failedReports > 0)
        line += QStringLiteral(", %1 failed").arg(result.failedReports);
    if (result.chartsWithoutImage > 0)
        line += QStringLiteral(", %1 charts without image").arg(result.chartsWithoutImage);
    return line + u'.';
}

/// Empty: there was nothing to send.
QString mailLine(const MailResult &result)
{
    if (result.sent + result.waiting + result.lost == 0)
        return {};
    QString line = QStringLiteral("Mails: %1 sent").arg(result.sent);
    if (result.waiting > 0)
        line += QStringLiteral(", %1 waiting for the next run").arg(result.waiting);
    if (result.lost > 0)
        line += QStringLiteral(", %1 refused or given up").arg(result.lost);
    return line + u'.';
}

} // namespace

void frmGrapherMain::restoreLayout()
{
    restoreWindowState(this);
}

void frmGrapherMain::loadReports()
{
    definitions().LoadReportDefs();
    definitions().LoadChartDefs();
    definitions().LoadScheduleDefs();
    m_list->refresh();
    const QStringList errors = definitions().fileErrors() + definitions().errors();
    if (errors.isEmpty())
        return;
    for (const QString &error : errors)
        txtStatusInfo->addLine(QLatin1String("Error reading definitions: ") + error);
    showCritical(this, windowTitle(),
                 QStringLiteral("These definitions could not be read and are missing here:\n\n%1"
                                "\n\nThey stay in their files as they are. Correct them by hand, "
                                "then start again; until then nothing can be saved to a file of "
                                "which nothing could be read.")
                     .arg(errors.join(u'\n')));
}

void frmGrapherMain::updateAutomate()
{
    QString trouble;
    try {
        const QString otherHome = otherTaskHome(m_scheduler);
        mnuToolsAutomate->setChecked(otherHome.isEmpty() && isTaskRegistered(m_scheduler));
        if (!otherHome.isEmpty())
            trouble = QStringLiteral("The hourly job makes the reports of another folder, '%1', "
                                     "not those of '%2'. Tools, Automated Reporting changes that.")
                          .arg(otherHome, programFolder());
    } catch (const Error &error) {
        // Not knowing is not the same as there being none: the last that is known stands.
        trouble = QLatin1String("Error reading the scheduled tasks ") + errorTail(error);
    }
    if (!trouble.isEmpty() && trouble != m_automateTrouble)
        txtStatusInfo->addLine(trouble);
    m_automateTrouble = trouble;
    if (mnuToolsAutomate->isChecked())
        return;
    m_firstPanel->clear();
    m_lastCheck = 0;
}

void frmGrapherMain::start()
{
    lvReports->selectFirst();
    updateCommands();
    const bool isEmpty = m_list->rowCount() == 0;
    QWidget *first = isEmpty ? static_cast<QWidget *>(lvReports->addButton()) : lvReports;
    first->setFocus();
    Timer1->start();
    if (isEmpty)
        lookForDatabase(true);
}

void frmGrapherMain::tick()
{
    if (!mnuToolsAutomate->isChecked())
        return;
    const qint64 present = currentInstant();
    if (m_lastCheck == 0 || m_isRunning) {
        m_lastCheck = present;
        return;
    }
    const qint64 minutes = std::abs(present - m_lastCheck) / millisecondsPerMinute;
    if (minutes < minutesBetweenRuns) {
        const qint64 left = minutesBetweenRuns - minutes;
        m_firstPanel->setText(QStringLiteral("Scheduled report run in %1 minutes. ").arg(left) +
                              m_list->dueText(wallTime(present + left * millisecondsPerMinute)));
    } else if (QApplication::activeModalWidget()) {
        // A run reads all definitions afresh: not under an editor that is about to save some.
        m_firstPanel->setText(
            QStringLiteral("The scheduled report run waits for the open dialog to be closed."));
    } else {
        runWhatIsDue();
    }
}

void frmGrapherMain::runWhatIsDue()
{
    m_focusBefore = focusWidget();
    m_lastCheck = currentInstant();
    Timer1->stop();
    setEnabled(false);
    m_firstPanel->setText(
        QStringLiteral("Scheduled report run in progress. Closing the window cancels it."));
    lvReports->selectAll();
    updateCommands();
    const QStringList all = lvReports->selectedIds();
    if (all.isEmpty())
        endScheduledRun();
    else
        run({all, RunChoice::Due, RunMode::Scheduled}, nullptr);
}

void frmGrapherMain::endScheduledRun()
{
    m_firstPanel->clear();
    setEnabled(true);
    Timer1->start();
    m_lastCheck = currentInstant();
    if (m_focusBefore)
        m_focusBefore->setFocus();
}

void frmGrapherMain::updateCommands()
{
    const qsizetype selected = lvReports->selectedIds().size();
    const bool isOne = selected == 1;
    const auto enable = [](QAction *action, QPushButton *button, bool enabled) {
        action->setEnabled(enabled);
        button->setEnabled(enabled);
    };
    enable(mnuReportView, cmdReportView, m_isRunning || selected > 0);
    enable(mnuReportOpen, cmdReportOpen, isOne);
    enable(mnuReportModify, cmdReportModify, isOne);
    mnuDatabase->setEnabled(!m_isRunning);
    enable(mnuReportRemove, cmdReportRemove, selected > 0 && !m_isRunning);
    mnuReportDuplicate->setEnabled(isOne);
    mnuCopyLink->setEnabled(isOne);
    mnuOpenFolder->setEnabled(isOne);
    const QString step = m_undo->next();
    mnuUndo->setEnabled(!step.isEmpty() && !m_isRunning);
    mnuUndo->setText(step.isEmpty() ? QStringLiteral("&Undo")
                                    : QStringLiteral("&Undo %1").arg(step));
    for (QAction *action : {mnuCharts, mnuSchedules, mnuVersions})
        action->setEnabled(!m_isRunning);
    mnuSetOutput->setEnabled(!m_isRunning);
    mnuToolsAutomate->setEnabled(!m_isRunning);
}

void frmGrapherMain::showMenu(const QPoint &place)
{
    updateCommands();
    mnuEdit->popup(lvReports->viewport()->mapToGlobal(place));
}

void frmGrapherMain::runOrCancel()
{
    const QStringList selected = lvReports->selectedIds();
    if (m_isRunning)
        requestCancel();
    else if (!selected.isEmpty())
        run({selected, RunChoice::All, RunMode::Window}, this);
}

void frmGrapherMain::requestCancel()
{
    program().CancelRequested = true;
    ShowStatus(QStringLiteral("Cancel requested."));
}

void frmGrapherMain::run(const RunOrder &order, RunHost *host)
{
    m_runMode = order.mode;
    setRunning(true);
    m_run = new RunThread(planRun(order, host), this);
    connect(m_run, &RunThread::linesShown, txtStatusInfo, &StatusBox::addLines);
    connect(m_run, &RunThread::progressMade, this, &frmGrapherMain::showProgress);
    connect(m_run, &RunThread::reportChanged, m_list, &ReportList::takeRecord);
    connect(m_run, &RunThread::ended, this, &frmGrapherMain::endRun);
}

void frmGrapherMain::endRun(const RunResult &result)
{
    m_run->deleteLater();
    m_run = nullptr;
    if (m_runMode == RunMode::Window)
        tellEnd(result);
    finishRun(result);
    program().CancelRequested = false; // what editors ask the database next is not meant
    setRunning(false);
    if (!result.cancelled)
        txtStatusInfo->addLine(resultLine(result));
    m_list->refresh();
    updateCommands();
    if (m_runMode == RunMode::Scheduled) {
        endScheduledRun();
        sendMails(result.exitStatus());
    }
    if (m_closesAfterRun)
        QTimer::singleShot(0, this, &QWidget::close);
}

/// To the user who started the run.
void frmGrapherMain::tellEnd(const RunResult &result)
{
    const bool isProduced = result.failedReports == 0 && result.error.isEmpty();
    if (!result.cancelled && isProduced) {
        openContents();
    } else if (result.cancelled && !m_closesAfterRun) { // the user has said goodbye already
        showInformation(this, QStringLiteral("Report Execution"),
                        QStringLiteral("Report execution cancelled."));
    }
}

void frmGrapherMain::setRunning(bool running)
{
    m_isRunning = running;
    cmdReportView->setText(running ? QStringLiteral("&Cancel") : QStringLiteral("&Run"));
    cmdReportView->setToolTip(running ? cancelToolTip : runAgainToolTip);
    mnuReportView->setText(running ? QStringLiteral("&Cancel Run")
                                   : QStringLiteral("Run / &View Report"));
    pbarCurrent->setRange(0, 1);
    pbarCurrent->setValue(0);
    pbarCurrent->setFormat(QString());
    pbarCurrent->setVisible(running);
    lblRun->clear();
    m_runStart = currentInstant();
    platform::showTaskbarProgress(winId(), 0, 0);
    updateCommands();
}

void frmGrapherMain::showProgress(const Progress &progress)
{
    pbarCurrent->setRange(0, std::max(progress.all, 1));
    pbarCurrent->setValue(progress.done);
    pbarCurrent->setFormat(progress.all > 0 ? QStringLiteral("%v of %m") : QString());
    lblRun->setText(runLine(progress, currentInstant() - m_runStart));
    platform::showTaskbarProgress(winId(), progress.done, progress.all);
}

void frmGrapherMain::chooseDatabase()
{
    const DatabaseSettings before = databaseSettings();
    frmDatabase dialog(this);
    dialog.exec();
    const DatabaseSettings present = databaseSettings();
    if (present == before)
        return;
    // An hourly job that is registered from now on takes the folder from the configuration.
    if (const qsizetype at = m_taskOptions.indexOf(QLatin1String("--dbpath")); at >= 0)
        m_taskOptions.remove(at, 2);
    ShowStatus(QLatin1String("Database: ") + databaseSource().name);
    if (m_list->rowCount() == 0)
        lookForDatabase(false);
}

/// For somebody who starts with nothing: offers reports of what the database holds; where there is
/// none, has it chosen first if `asks`.
void frmGrapherMain::lookForDatabase(bool asks)
{
    const DatabaseSource source = databaseSource();
    const bool isFile = !databaseSettings().isServer();
    m_asking.start([this, source, isFile, asks](const Background::Link &link) {
        try {
            const std::unique_ptr<MonitoringDatabase> database = source.connect();
            const auto offers = readyReports(*database->inventory());
            link.deliver([this, offers] { showOffers(offers); });
        } catch (const Error &error) {
            const bool isMissing = isFile && error.number == FileNotFound;
            const QString text =
                QStringLiteral("Error opening database '%1' ").arg(source.name) + errorTail(error);
            link.deliver([this, text, isMissing, asks] {
                ShowStatus(text);
                if (isMissing && asks && !m_isRunning && !QApplication::activeModalWidget())
                    chooseDatabase();
            });
        }
    });
}

void frmGrapherMain::showOffers(const std::vector<ReadyReport> &offers)
{
    m_offers = offers;
    QStringList texts;
    for (const ReadyReport &offer : m_offers)
        texts.append(QStringLiteral("%1 (%2)…").arg(offer.title, offer.found));
    lvReports->setOffers(texts);
}

void frmGrapherMain::setOutputLocation()
{
    frmOutputPath dialog(this);
    dialog.exec();
}

void frmGrapherMain::switchAutomation()
{
    // The click has changed the check mark already.
    const bool wasChecked = !mnuToolsAutomate->isChecked();
    mnuToolsAutomate->setChecked(wasChecked); // until the scheduler says otherwise
    try {
        if (wasChecked) {
            unregisterTask(m_scheduler);
        } else if (!isTaskRegistered(m_scheduler) || askToTakeOverJob()) {
            frmAutomate dialog(m_scheduler, m_taskOptions, this);
            dialog.exec();
        }
    } catch (const Error &error) {
        showCritical(this, QStringLiteral("Automate Graphing"),
                     QStringLiteral("The scheduled task could not be changed.") +
                         QLatin1String("\n\n") + errorTail(error));
    }
    updateAutomate();
    tick();
}

/// Whether the hourly job of another folder is to become this one's.
bool frmGrapherMain::askToTakeOverJob()
{
    const QString otherHome = otherTaskHome(m_scheduler);
    return !otherHome.isEmpty() &&
           askYesNo(this, QStringLiteral("Automate Graphing"),
                    QStringLiteral("There is one hourly job, and it makes the reports of "
                                   "another folder:\n\n%1\n\nHave it make those of this "
                                   "folder instead?\n\n%2\n\nThe reports of the other folder "
                                   "then no longer run by themselves.")
                        .arg(otherHome, programFolder()));
}

void frmGrapherMain::editMail()
{
    try {
        frmMail dialog(mailSite(), this);
        const QStringList errors = dialog.readErrors();
        if (!errors.isEmpty())
            showWarning(this, QStringLiteral("Mail"),
                        QStringLiteral("These settings could not be read and are missing here:"
                                       "\n\n%1\n\nThey stay in the file until you save.")
                            .arg(errors.join(u'\n')));
        dialog.exec();
    } catch (const Error &error) {
        showCritical(this, QStringLiteral("Mail"),
                     QStringLiteral("The mail settings cannot be read. They stay as they are; "
                                    "correct the file by hand, then try again.") +
                         QLatin1String("\n\n") + errorTail(error));
    }
}

/// What the run that just ended calls for, and what waits from earlier ones. Closing the window
/// breaks it off; what was not sent waits for the next run.
void frmGrapherMain::sendMails(int status)
{
    if (m_closesAfterRun || m_mails.isBusy())
        return;
    m_mails.start(
        [this, status, metrics = gConfig().metricsPath(),
         site = mailSite()](const Background::Link &link) {
            Observer watcher;
            watcher.status = [this, &link](const QString &line) {
                link.deliver([this, line] { txtStatusInfo->addLine(line); });
            };
            const MailResult result = mailAfterRun(site, watcher);
            if (const QString line = mailLine(result); !line.isEmpty())
                watcher.status(line);
            if (QString error;
                !saveMetrics(metrics, site.history, {status, waitingMails(site)}, &error))
                watcher.status(error);
        },
        [this](const QString &error) {
            txtStatusInfo->addLine(QLatin1String("Error sending mail ") + error);
        });
}

void frmGrapherMain::showCompactNotice()
{
    showInformation(this, QStringLiteral("Feature Removed"),
                    QStringLiteral("Please use the Compact Database option from the Vantrel "
                                   "Console Tools menu."));
}

void frmGrapherMain::closeEvent(QCloseEvent *event)
{
    if (m_isRunning) {
        event->ignore();
        if (m_closesAfterRun || !askYesNo(this, windowTitle(),
                                          QStringLiteral("A report run is in progress.\n"
                                                         "Cancel it and exit when it has ended?")))
            return;
        m_closesAfterRun = true;
        if (m_isRunning) // it may have ended behind the question
            requestCancel();
        else
            QTimer::singleShot(0, this, &QWidget::close);
        return;
    }
    Timer1->stop();
    if (m_mails.isBusy())
        program().CancelRequested = true;
    saveWindowState(this);
    QMainWindow::closeEvent(event);
}

bool frmGrapherMain::acceptErrors(const QStringList &errors)
{
    return askYesNo(this, QStringLiteral("Report Execution"),
                    QStringLiteral("These definition files cannot be read:\n\n%1\n\nRun the "
                                   "reports without them? The files stay as they are.")
                        .arg(errors.join(u'\n')));
}

bool frmGrapherMain::askCustomRange(clsGraphDef &chart, const QStringList &reportTitles)
{
    return editCustomRange(chart, reportTitles, this);
}
