// What the main window is made of: its controls, actions and menus. What they do is in
// frmGrapherMain.cpp.

#include "config/Program.h"
#include "ui/common/Widgets.h"
#include "ui/help/HelpViewer.h"
#include "ui/main/ReportList.h"
#include "ui/main/ReportView.h"
#include "ui/main/StatusBox.h"
#include "ui/main/UndoSteps.h"
#include "ui/main/frmGrapherMain.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QIcon>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QSplitter>
#include <QStatusBar>
#include <QTimer>
#include <QVBoxLayout>

static void loadIcons()
{
    Q_INIT_RESOURCE(ui); // the room is a static library
}

namespace {

QIcon applicationIcon()
{
    loadIcons();
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64, 128, 256})
        icon.addFile(QStringLiteral(":/icons/vantrel-grapher-%1.png").arg(size));
    return icon;
}

QWidget *newPane(const char *name, QLayout *layout)
{
    auto *pane = new QWidget;
    pane->setObjectName(QLatin1String(name));
    layout->setContentsMargins(0, 0, 0, 0);
    pane->setLayout(layout);
    return pane;
}

} // namespace

frmGrapherMain::frmGrapherMain(platform::TaskScheduler &scheduler, QStringList taskOptions)
    : m_scheduler(scheduler)
    , m_taskOptions(std::move(taskOptions))
    , m_list(new ReportList(this))
    , m_undo(new UndoSteps(this))
    , lvReports(new ReportView(*m_list))
    , txtStatusInfo(new StatusBox)
    , m_firstPanel(new QLabel)
    , Timer1(new QTimer(this))
{
    setObjectName(QStringLiteral("frmGrapherMain"));
    setWindowTitle(QStringLiteral("Vantrel Graphing Tool v " VANTREL_VERSION));
    QApplication::setWindowIcon(applicationIcon());
    makeActions();

    auto *sspMain = new QSplitter(Qt::Vertical);
    sspMain->setObjectName(QStringLiteral("sspMain"));
    sspMain->setChildrenCollapsible(false);
    sspMain->addWidget(makeListPane());
    sspMain->addWidget(makeRunPane());
    sspMain->setStretchFactor(0, 3);
    sspMain->setStretchFactor(1, 1);
    auto *content = new QWidget;
    auto *layout = new QVBoxLayout(content);
    layout->addWidget(sspMain);
    auto *ssScrollMain = new QScrollArea;
    ssScrollMain->setObjectName(QStringLiteral("ssScrollMain"));
    ssScrollMain->setFrameShape(QFrame::NoFrame);
    ssScrollMain->setWidgetResizable(true);
    ssScrollMain->setFocusPolicy(Qt::NoFocus);
    ssScrollMain->setWidget(content);
    setCentralWidget(ssScrollMain);

    QWidget *before = cmdReportAdd;
    for (QWidget *next : std::initializer_list<QWidget *>{
             cmdReportModify, cmdReportRemove, lvReports, lvReports->addButton(), chkAllSteps,
             txtStatusInfo, cmdReportView, cmdReportOpen}) {
        setTabOrder(before, next);
        before = next;
    }

    makeMenus();
    statusBar()->setObjectName(QStringLiteral("StatusBar1"));
    m_firstPanel->setObjectName(QStringLiteral("lblCountdown"));
    m_firstPanel->setTextFormat(Qt::PlainText);
    statusBar()->addWidget(m_firstPanel, 1);

    Timer1->setObjectName(QStringLiteral("Timer1"));
    Timer1->setInterval(1000);
    connect(Timer1, &QTimer::timeout, this, &frmGrapherMain::tick);
    connect(lvReports, &ReportView::offerChosen, this,
            [this](int offer) { editReport(reportFrom(m_offers.at(static_cast<size_t>(offer)))); });
    connect(lvReports, &ReportView::selectionMoved, this, &frmGrapherMain::updateCommands);
    connect(lvReports, &QAbstractItemView::doubleClicked, this, &frmGrapherMain::modifyReport);
    connect(lvReports, &QWidget::customContextMenuRequested, this, &frmGrapherMain::showMenu);
    openHelpOnF1(this, QStringLiteral("main-window.html"));
    activateAfterDialogs(this);
    observer().status = [this](const QString &line) { txtStatusInfo->addLine(line); };
    const int character = fontMetrics().averageCharWidth();
    resize(170 * character, 42 * fontMetrics().lineSpacing());
    updateCommands();
}

frmGrapherMain::~frmGrapherMain()
{
    observer() = {};
}

QAction *frmGrapherMain::newAction(const char *name, const QString &text,
                                   void (frmGrapherMain::*handler)())
{
    auto *action = new QAction(text, this);
    action->setObjectName(QLatin1String(name));
    action->setAutoRepeat(false);
    connect(action, &QAction::triggered, this, handler);
    return action;
}

void frmGrapherMain::makeActions()
{
    mnuFileExit = new QAction(QStringLiteral("E&xit"), this);
    mnuFileExit->setObjectName(QStringLiteral("mnuFileExit"));
    mnuFileExit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    mnuFileExit->setMenuRole(QAction::QuitRole);
    connect(mnuFileExit, &QAction::triggered, this, &QWidget::close);

    mnuReportAdd =
        newAction("mnuReportAdd", QStringLiteral("&Add Report"), &frmGrapherMain::addReport);
    mnuReportAdd->setShortcut(QKeySequence::New);
    mnuReportModify = newAction("mnuReportModify", QStringLiteral("&Modify Report"),
                                &frmGrapherMain::modifyReport);
    mnuReportRemove = newAction("mnuReportRemove", QStringLiteral("&Remove Report"),
                                &frmGrapherMain::removeReport);
    mnuReportDuplicate = newAction("mnuReportDuplicate", QStringLiteral("&Duplicate Report"),
                                   &frmGrapherMain::duplicateReport);
    mnuReportDuplicate->setShortcut(Qt::CTRL | Qt::Key_D);
    mnuUndo = newAction("mnuUndo", QStringLiteral("&Undo"), &frmGrapherMain::undo);
    mnuUndo->setShortcut(QKeySequence::Undo);
    mnuReportView = newAction("mnuReportView", QStringLiteral("Run / &View Report"),
                              &frmGrapherMain::runOrCancel);
    mnuReportView->setShortcut(Qt::Key_F5);
    mnuReportOpen =
        newAction("mnuReportOpen", QStringLiteral("&Open Page"), &frmGrapherMain::openPage);
    mnuReportOpen->setShortcut(QKeySequence::Open);
    mnuDatabase =
        newAction("mnuDatabase", QStringLiteral("&Database…"), &frmGrapherMain::chooseDatabase);
    mnuOpenContents = newAction("mnuOpenContents", QStringLiteral("Open &Contents Page"),
                                &frmGrapherMain::openContents);
    mnuOpenContents->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_O);
    mnuCopyLink = newAction("mnuCopyLink", QStringLiteral("Copy Lin&k"), &frmGrapherMain::copyLink);
    mnuCopyLink->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_C);
    mnuOpenFolder =
        newAction("mnuOpenFolder", QStringLiteral("Open &Folder"), &frmGrapherMain::openFolder);
    mnuCharts = newAction("mnuCharts", QStringLiteral("C&harts…"), &frmGrapherMain::showCharts);
    mnuSchedules =
        newAction("mnuSchedules", QStringLiteral("&Schedules…"), &frmGrapherMain::showSchedules);
    mnuVersions = newAction("mnuVersions", QStringLiteral("&Earlier Versions…"),
                            &frmGrapherMain::showVersions);
    mnuHistory =
        newAction("mnuHistory", QStringLiteral("Run Hi&story…"), &frmGrapherMain::showHistory);
    mnuHistory->setShortcut(Qt::CTRL | Qt::Key_H);
    mnuSetOutput = newAction("mnuSetOutput", QStringLiteral("Set Output &Location"),
                             &frmGrapherMain::setOutputLocation);
    mnuToolsAutomate = newAction("mnuToolsAutomate", QStringLiteral("&Automated Reporting"),
                                 &frmGrapherMain::switchAutomation);
    mnuToolsAutomate->setCheckable(true);
    mnuToolsMail = newAction("mnuToolsMail", QStringLiteral("&Mail..."), &frmGrapherMain::editMail);
    mnuToolsCompact = newAction("mnuToolsCompact", QStringLiteral("&Compact Database"),
                                &frmGrapherMain::showCompactNotice);
    mnuHelp = new QAction(QStringLiteral("&Help"), this);
    mnuHelp->setObjectName(QStringLiteral("mnuHelp"));
    connect(mnuHelp, &QAction::triggered, this, [this] { showHelp(helpContents, this); });

    // Keys that mean something else in a button or a text belong to the list alone.
    mnuReportModify->setShortcuts({Qt::Key_Return, Qt::Key_Enter});
    mnuReportRemove->setShortcut(QKeySequence::Delete);
    for (QAction *action : {mnuReportModify, mnuReportRemove}) {
        action->setShortcutContext(Qt::WidgetShortcut);
        lvReports->addAction(action);
    }
}

void frmGrapherMain::makeMenus()
{
    QMenu *mnuFile = menuBar()->addMenu(QStringLiteral("&File"));
    mnuFile->setObjectName(QStringLiteral("mnuFile"));
    mnuFile->addAction(mnuFileExit);

    mnuEdit = menuBar()->addMenu(QStringLiteral("&Edit"));
    mnuEdit->setObjectName(QStringLiteral("mnuEdit"));
    mnuEdit->addAction(mnuReportAdd);
    mnuEdit->addAction(mnuReportModify);
    mnuEdit->addAction(mnuReportDuplicate);
    mnuEdit->addSeparator();
    mnuEdit->addAction(mnuReportRemove);
    mnuEdit->addAction(mnuUndo);
    mnuEdit->addSeparator();
    mnuEdit->addAction(mnuReportView);
    mnuEdit->addAction(mnuReportOpen);
    mnuEdit->addAction(mnuCopyLink);
    mnuEdit->addAction(mnuOpenFolder);
    mnuEdit->addSeparator();
    mnuEdit->addAction(mnuOpenContents);
    mnuEdit->addAction(mnuHistory);

    QMenu *mnuTools = menuBar()->addMenu(QStringLiteral("&Tools"));
    mnuTools->setObjectName(QStringLiteral("mnuTools"));
    connect(mnuTools, &QMenu::aboutToShow, this, &frmGrapherMain::updateAutomate);
    mnuTools->addAction(mnuDatabase);
    mnuTools->addAction(mnuCharts);
    mnuTools->addAction(mnuSchedules);
    mnuTools->addAction(mnuVersions);
    mnuTools->addSeparator();
    mnuTools->addAction(mnuSetOutput);
    mnuTools->addSeparator();
    mnuTools->addAction(mnuToolsAutomate);
    mnuTools->addAction(mnuToolsMail);
    mnuTools->addSeparator();
    mnuTools->addAction(mnuToolsCompact);

    menuBar()->addAction(mnuHelp);
}

QWidget *frmGrapherMain::makeListPane()
{
    auto *Label1 = new QLabel(QStringLiteral("Configured Reports"));
    Label1->setObjectName(QStringLiteral("Label1"));
    QFont bold = Label1->font();
    bold.setBold(true);
    Label1->setFont(bold);
    cmdReportAdd = newButton(QStringLiteral("cmdReportAdd"), QStringLiteral("Add"),
                             QStringLiteral("Add a new report configuration"));
    cmdReportModify = newButton(QStringLiteral("cmdReportModify"), QStringLiteral("Modify"),
                                QStringLiteral("Modify selected configuration"));
    cmdReportRemove = newButton(QStringLiteral("cmdReportRemove"), QStringLiteral("Remove"),
                                QStringLiteral("Remove selected configuration"));
    connect(cmdReportAdd, &QPushButton::clicked, mnuReportAdd, &QAction::trigger);
    connect(lvReports->addButton(), &QPushButton::clicked, mnuReportAdd, &QAction::trigger);
    connect(cmdReportModify, &QPushButton::clicked, mnuReportModify, &QAction::trigger);
    connect(cmdReportRemove, &QPushButton::clicked, mnuReportRemove, &QAction::trigger);

    auto *header = new QHBoxLayout;
    header->addWidget(Label1);
    QWidget *picReportHeader = newPane("picReportHeader", header);
    auto *edit = new QHBoxLayout;
    edit->addWidget(cmdReportAdd);
    edit->addWidget(cmdReportModify);
    edit->addWidget(cmdReportRemove);
    QWidget *picReportAMR = newPane("picReportAMR", edit);
    auto *head = new QHBoxLayout;
    head->addWidget(picReportHeader, 1);
    head->addWidget(picReportAMR);
    QWidget *pnReportHead = newPane("pnReportHead", head);
    auto *list = new QVBoxLayout;
    list->addWidget(pnReportHead);
    list->addWidget(lvReports, 1);
    return newPane("pnReportsList", list);
}

QWidget *frmGrapherMain::makeRunPane()
{
    txtStatusInfo->setObjectName(QStringLiteral("txtStatusInfo"));
    txtStatusInfo->setAccessibleName(QStringLiteral("Status"));
    cmdReportView = newButton(QStringLiteral("cmdReportView"), QStringLiteral("&Run"),
                              QStringLiteral("Run selected reports"));
    cmdReportOpen = newButton(QStringLiteral("cmdReportOpen"), QStringLiteral("Open &Page"),
                              QStringLiteral("Open the selected report's page in the browser"));
    connect(cmdReportView, &QPushButton::clicked, mnuReportView, &QAction::trigger);
    connect(cmdReportOpen, &QPushButton::clicked, mnuReportOpen, &QAction::trigger);
    pbarCurrent = new QProgressBar;
    pbarCurrent->setObjectName(QStringLiteral("pbarCurrent"));
    pbarCurrent->setAccessibleName(QStringLiteral("Progress of the run"));
    pbarCurrent->setRange(0, 1);
    pbarCurrent->setValue(0);
    pbarCurrent->setFormat(QString());
    pbarCurrent->hide();
    lblRun = new QLabel;
    lblRun->setObjectName(QStringLiteral("lblRun"));
    lblRun->setAccessibleName(QStringLiteral("What the run is at"));
    lblRun->setTextFormat(Qt::PlainText);
    lblRun->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // names of any length
    chkAllSteps = new QCheckBox(QStringLiteral("All &steps"));
    chkAllSteps->setObjectName(QStringLiteral("chkAllSteps"));
    chkAllSteps->setToolTip(QStringLiteral("Shows every line of the status, not only reports, "
                                           "devices and what went wrong"));
    connect(chkAllSteps, &QCheckBox::toggled, txtStatusInfo, &StatusBox::showSteps);

    auto *commands = new QVBoxLayout;
    commands->addWidget(cmdReportView);
    commands->addWidget(cmdReportOpen);
    commands->addStretch();
    auto *sspInfo = new QSplitter(Qt::Horizontal);
    sspInfo->setObjectName(QStringLiteral("sspInfo"));
    sspInfo->setChildrenCollapsible(false);
    sspInfo->addWidget(txtStatusInfo);
    sspInfo->addWidget(newPane("picViewCMD", commands));
    sspInfo->setStretchFactor(0, 1);

    auto *progress = new QVBoxLayout;
    progress->addWidget(pbarCurrent);
    auto *line = new QHBoxLayout;
    line->addWidget(lblRun, 1);
    line->addWidget(chkAllSteps);
    auto *run = new QVBoxLayout;
    run->addLayout(line);
    run->addWidget(sspInfo, 1);
    run->addWidget(newPane("Picture1", progress));
    return newPane("pnRun", run);
}
