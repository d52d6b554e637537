#include "app/Interactive.h"

#include "app/Application.h"
#include "app/SingleInstance.h"
#include "base/Error.h"
#include "base/TimeZone.h"
#include "config/Program.h"
#include "config/Status.h"
#include "config/clsGrapherConfig.h"
#include "platform/Drawing.h"
#include "scheduling/Registration.h"
#include "ui/common/IndicatorStyle.h"
#include "ui/common/Messages.h"
#include "ui/main/frmGrapherMain.h"

#include <QApplication>
#include <QMessageBox>

#include <cstdio>
#include <cstdlib>

namespace {

const QString toolName = QStringLiteral("Vantrel Graphing Tool");

/// Without a display Qt would abort the process.
void endWithoutDisplay(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type != QtFatalMsg) {
        std::fputs((message + u'\n').toLocal8Bit().constData(), stderr);
        return;
    }
    refuse(QStringLiteral("there is no display for the window. Start it in a desktop session, or "
                          "name one in the variable DISPLAY. Without a window: --auto runs the "
                          "reports that are due, --run one of them, --help tells the rest."));
    std::fflush(nullptr);
    std::_Exit(ExitStatus::WrongUse);
}

/// Ends a job that is still running although it is no longer registered. Errors are left to the
/// question that follows.
void endForgottenJob(platform::TaskScheduler &scheduler)
{
    try {
        if (!isTaskRegistered(scheduler) && scheduler.isRunning(scheduledTaskName))
            scheduler.endTask(scheduledTaskName);
    } catch (const Error &) {
    }
}

/// False for Cancel.
bool askToRetry(QWidget *window)
{
    QMessageBox box(QMessageBox::Critical, toolName,
                    QStringLiteral("Another instance of Vantrel Graphing Tool is currently "
                                   "running.%1\nYou may wait for the previous instance to complete "
                                   "processing")
                        .arg(workOf(otherHome())),
                    QMessageBox::Retry | QMessageBox::Cancel, window);
    box.setDefaultButton(QMessageBox::Retry);
    return box.exec() == QMessageBox::Retry;
}

} // namespace

std::unique_ptr<QCoreApplication> createWindowApplication(int &argc, char *argv[])
{
    const QtMessageHandler usual = qInstallMessageHandler(endWithoutDisplay);
    auto application = std::make_unique<QApplication>(argc, argv);
    qInstallMessageHandler(usual);
    installIndicatorStyle();
    if (const QStringList spare = platform::spareFonts(); !spare.isEmpty()) {
        QFont font = QApplication::font();
        font.setFamilies(QStringList(font.family()) + spare);
        QApplication::setFont(font);
    }
    QGuiApplication::setDesktopFileName(QStringLiteral("vantrel-grapher"));
    return application;
}

bool waitForOtherInstance(frmGrapherMain &window, platform::TaskScheduler &scheduler,
                          const std::function<bool()> &anotherRuns)
{
    if (!anotherRuns())
        return true;
    window.setEnabled(false);
    endForgottenJob(scheduler);
    bool goesOn = true;
    for (bool another = anotherRuns(); another && goesOn; another = anotherRuns())
        goesOn = askToRetry(&window);
    window.setEnabled(true);
    return goesOn;
}

int runInteractive(const Options &options)
{
    const std::unique_ptr<platform::TaskScheduler> scheduler = platform::systemTaskScheduler();
    frmGrapherMain window(*scheduler, options.folderOptions());
    window.restoreLayout();
    if (!waitForOtherInstance(window, *scheduler, [] { return anotherInstanceWorks(); }))
        return ExitStatus::OtherInstance;
    window.updateAutomate();
    loadGrapherConfig();
    window.show();
    window.loadReports();
    if (const QString fault = timeZoneFault(); !fault.isEmpty())
        ShowStatus(QLatin1String("Warning: ") + fault);
    program().gStartupDone = true;
    window.start();
    return QCoreApplication::exec();
}

void showStartError(const QString &why)
{
    if (qobject_cast<QApplication *>(QCoreApplication::instance()))
        showCritical(nullptr, toolName, why);
}
