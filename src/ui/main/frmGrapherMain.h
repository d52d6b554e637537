#pragma once

#include "platform/TaskScheduler.h"
#include "scheduling/ReportRunner.h"
#include "ui/common/Background.h"
#include "ui/editors/ReadyReports.h"

#include <QMainWindow>
#include <QPointer>

class QAction;
class QCheckBox;
class QLabel;
class QProgressBar;
class QPushButton;
class QTimer;
class ReportList;
class ReportView;
class RunThread;
class StatusBox;
class UndoSteps;
class clsReportDef;

/// The main window: the configured reports, the commands on them, the status lines and the progress
/// of a run, and the timer of scheduled runs. Takes the place of observer() for as long as it
/// lives; there is one at a time.
///
/// A run is planned in a handler, which may ask the user, and takes place on a thread of its own.
/// The Run command cancels it meanwhile; definitions can be added and modified, which is for the
/// next run.
class frmGrapherMain : public QMainWindow, private RunHost
{
    Q_OBJECT

public:
    /// `taskOptions`: what the hourly job needs behind "/AUTO" to find this program's folders.
    frmGrapherMain(platform::TaskScheduler &scheduler, QStringList taskOptions);
    ~frmGrapherMain() override;

    /// Puts the window where it was when it last closed.
    void restoreLayout();

    /// Loads the definitions and fills the list; says which files could not be read whole.
    void loadReports();

    /// Checks "Automated Reporting" when the hourly job is registered for this program's folder.
    /// Says in the status lines when it works for another folder, and when the scheduler cannot
    /// tell: the check mark then stays as it is.
    void updateAutomate();

    /// Recomputes the command states, and starts Timer1.
    void start();

public Q_SLOTS:
    /// What Timer1 does every second.
    void tick();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    // Construction
    void makeActions();
    void makeMenus();
    QWidget *makeListPane();
    QWidget *makeRunPane();
    QAction *newAction(const char *name, const QString &text, void (frmGrapherMain::*handler)());

    // Commands
    void addReport();
    void modifyReport();
    void removeReport();
    void runOrCancel();
    void duplicateReport();
    void undo();
    void openPage();
    void chooseDatabase();
    void lookForDatabase(bool asks);
    void showOffers(const std::vector<ReadyReport> &offers);
    void openContents();
    void copyLink();
    void openFolder();
    void showCharts();
    void showSchedules();
    void showVersions();
    void showHistory();
    void setOutputLocation();
    void switchAutomation();
    void editMail();
    void showCompactNotice();

    void updateCommands();
    void showMenu(const QPoint &place);
    bool editReport(const clsReportDef &shown);
    void removePages(const QStringList &reportIds);
    QString selectedPage();
    bool askToTakeOverJob();
    void run(const RunOrder &order, RunHost *host);
    void endRun(const RunResult &result);
    void tellEnd(const RunResult &result);
    void setRunning(bool running);
    void runWhatIsDue();
    void endScheduledRun();
    void sendMails(int status); ///< of the run, an ExitStatus
    void requestCancel();
    void showProgress(const Progress &progress);
    void openInBrowser(const QString &url);

    // RunHost
    bool acceptErrors(const QStringList &errors) override;
    bool askCustomRange(clsGraphDef &chart, const QStringList &reportTitles) override;

    platform::TaskScheduler &m_scheduler;
    QStringList m_taskOptions;
    ReportList *m_list;
    UndoSteps *m_undo;

    ReportView *lvReports;
    StatusBox *txtStatusInfo;
    QPushButton *cmdReportView;
    QPushButton *cmdReportOpen;
    QPushButton *cmdReportModify;
    QPushButton *cmdReportAdd;
    QPushButton *cmdReportRemove;
    QProgressBar *pbarCurrent;
    QLabel *lblRun; ///< what the run is at
    QCheckBox *chkAllSteps;
    QLabel *m_firstPanel; ///< of StatusBar1
    QTimer *Timer1;

    QMenu *mnuEdit;
    QAction *mnuFileExit;
    QAction *mnuReportAdd;
    QAction *mnuReportModify;
    QAction *mnuReportRemove;
    QAction *mnuReportDuplicate;
    QAction *mnuUndo;
    QAction *mnuReportView;
    QAction *mnuReportOpen;
    QAction *mnuDatabase;
    QAction *mnuOpenContents;
    QAction *mnuCopyLink;
    QAction *mnuOpenFolder;
    QAction *mnuCharts;
    QAction *mnuSchedules;
    QAction *mnuVersions;
    QAction *mnuHistory;
    QAction *mnuSetOutput;
    QAction *mnuToolsAutomate;
    QAction *mnuToolsMail;
    QAction *mnuToolsCompact;
    QAction *mnuHelp;

    bool m_isRunning = false; ///< from its planning on
    RunMode m_runMode = RunMode::Window;
    Background m_asking;               ///< for the database
    std::vector<ReadyReport> m_offers; ///< to a user who has no report
    RunThread *m_run = nullptr;        ///< while the run takes place
    Background m_mails;                ///< what a scheduled run called for
    bool m_closesAfterRun = false;
    qint64 m_runStart = 0;           ///< instant
    QPointer<QWidget> m_focusBefore; ///< a scheduled run
    QString m_automateTrouble;       ///< said already
    qint64 m_lastCheck = 0;          ///< instant at which the countdown started; 0: not yet
};
