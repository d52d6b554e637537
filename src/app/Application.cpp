#include "app/Application.h"

#include "app/Check.h"
#include "app/Interactive.h"
#include "app/Listings.h"
#include "app/RunDisplay.h"
#include "app/SingleInstance.h"
#include "core/Clock.h"
#include "core/Error.h"
#include "core/Files.h"
#include "core/GrapherConfig.h"
#include "core/OneLine.h"
#include "core/Paths.h"
#include "core/StartUp.h"
#include "core/State.h"
#include "core/Trouble.h"
#include "core/platform/Drawing.h"
#include "core/platform/EventLog.h"
#include "core/platform/Terminal.h"
#include "data/Connection.h"
#include "definitions/DefinitionStores.h"
#include "scheduling/Registration.h"
#include "scheduling/ReportRunner.h"
#include "scheduling/RunHistory.h"

#include <QGuiApplication>

#include <cstdio>

namespace {

void print(std::FILE *stream, const QString &line)
{
    std::fputs((oneLine(line) + u'\n').toUtf8().constData(), stream);
    std::fflush(stream);
}

QStringList allReportIds()
{
    QStringList ids;
    for (const auto &report : gReportDefs)
        ids.append(report->ReportID);
    return ids;
}

/// The ids of the reports that the user named by id or title; Error names the first unknown one.
QStringList reportIdsOf(const QStringList &names)
{
    QStringList ids;
    for (const QString &name : names) {
        const qsizetype before = ids.size();
        for (const auto &report : gReportDefs) {
            if (report->ReportID.compare(name, Qt::CaseInsensitive) == 0 ||
                report->ReportTitle.compare(name, Qt::CaseInsensitive) == 0)
                ids.append(report->ReportID);
        }
        if (ids.size() > before)
            continue;
        const QStringList errors = definitionErrors(); // it may be one of them
        throw Error(ItemNotFound,
                    (QStringList{QStringLiteral("There is no report '%1'").arg(name)} + errors)
                        .join(QLatin1String("; ")));
    }
    return ids;
}

int runUnattended(const QStringList &ids, RunChoice choice)
{
    const RunDisplay display(stdout, stderr);
    platform::onCancelRequest([] { CancelRequested = true; }); // at the run's next check
    const RunResult result = runReports(ids, choice);
    if (result.cancelled)
        return Cancelled;
    return result.failed() ? ReportFailed : Done;
}

int changeRegistration(const Options &options)
{
    const std::unique_ptr<platform::TaskScheduler> scheduler = platform::systemTaskScheduler();
    if (options.command == Command::Unregister)
        return show(unregisterTask(*scheduler)
                        ? QStringLiteral("Scheduled task has been removed.\n")
                        : QStringLiteral("There is no scheduled task.\n"));
    if (options.command == Command::Register) {
        show(registerTask(*scheduler, {}, options.folderOptions())
                 ? QStringLiteral("Scheduled task has been added.\n")
                 : QStringLiteral("There is a scheduled task already; it stays as it is.\n"));
        QString reason;
        if (!registerEventSource(reason))
            show(QStringLiteral("The event log will show this program's entries without their "
                                "description: %1\nRun --register as administrator once.\n")
                     .arg(reason));
    }
    if (!isTaskRegistered(*scheduler))
        return show(QStringLiteral("There is no scheduled task.\n"));
    const QString advice = scheduler->advice();
    return show(scheduler->openTask(scheduledTaskName).commandLine + u'\n' +
                (advice.isEmpty() ? advice : advice + u'\n'));
}

int check()
{
    try {
        loadGrapherConfig();
    } catch (const Error &error) {
        show(error.description + u'\n'); // names the place; nothing else can be found without it
        return WrongUse;
    }
    QString note;
    const Findings findings = checkEverything(note);
    if (!note.isEmpty())
        print(stderr, note);
    if (findings.lines().isEmpty())
        return show(QStringLiteral("No findings.\n"));
    show(findings.lines().join(u'\n') + u'\n');
    return WrongUse;
}

/// A run with a definition file of which nothing can be read would skip reports, and nobody is
/// there to see it: the run does not start. Throws Error naming the places.
void checkDefinitionFiles()
{
    LoadChartDefs();
    LoadScheduleDefs();
    const QStringList errors = definitionFileErrors();
    if (!errors.isEmpty())
        throw Error(InvalidFileFormat, errors.join(QLatin1String("; ")));
    const QString reports = configurationFolder() + QLatin1String("ChartSelection.XML");
    if (gAutoMode && !fileExists(reports))
        throw Error(FileNotFound,
                    QStringLiteral("There is no file '%1': no report is defined").arg(reports));
}

/// The list, with what could not be read of the definitions.
int listReports()
{
    LoadScheduleDefs();
    show(reportListText());
    const QStringList unread = definitionFileErrors();
    const QStringList errors = unread + definitionErrors();
    for (const QString &error : errors)
        print(stderr, QLatin1String("Error reading definitions: ") + error);
    if (!unread.isEmpty())
        return WrongUse;
    return errors.isEmpty() ? Done : ReportFailed;
}

/// The commands that need no definitions.
bool isRegistration(Command command)
{
    return command == Command::Register || command == Command::Unregister ||
           command == Command::Registered;
}

/// The system's start-up order: paths and mode, instance check, configuration, definitions.
int startUp(const Options &options)
{
    locateProgramFolder(options.home);
    if (isRegistration(options.command))
        return changeRegistration(options);
    gCommandLine = options.command == Command::None ? options.systemText : QString();
    InitGrapher();
    if (const QString folder = options.dataFolder(); !folder.isEmpty())
        gDataPath = NormalizeFolder(folder);
    if (options.command == Command::History)
        return show(historyText(readRuns()));
    const bool runs = gAutoMode || (options.command == Command::None && !options.run.isEmpty());
    if (runs && anotherInstanceRuns()) {
        print(stderr,
              QStringLiteral("Another instance of Vantrel Graphing Tool is currently running."));
        return OtherInstance;
    }
    if (options.command == Command::Check)
        return check();
    if (!runs && options.command == Command::None)
        return runInteractive(options);
    loadGrapherConfig();
    LoadReportDefs();
    if (options.command == Command::List)
        return listReports();
    checkDefinitionFiles();
    gStartupDone = true;

    if (!options.run.isEmpty())
        return runUnattended(reportIdsOf(options.run), RunChoice::All);
    const QStringList ids = allReportIds();
    return ids.isEmpty() && definitionErrors().isEmpty() ? Done
                                                         : runUnattended(ids, RunChoice::Due);
}

/// An unattended run that cannot begin says so where the others are on record.
void recordFailedStart(const QString &why)
{
    if (gGraphDataPath.isEmpty()) { // where the history lies is not known
        logTrouble(why);
        return;
    }
    {
        const LoggedToday logged(troublesOfToday(readRuns()));
        logTrouble(why);
    }
    RunRecord run;
    run.start = run.end = currentInstant();
    run.mode = scheduledMode;
    run.error = why;
    saveRun(run);
}

/// Closes and releases everything, and logs the end of an unattended run.
void shutDown(int status)
{
    CloseDatabase();
    if (gAutoMode && status != OtherInstance)
        logRunFinished();
    resetDefinitions();
    releaseInstance();
}

void printQtMessage(QtMsgType, const QMessageLogContext &, const QString &message)
{
    // Neither matters here: no run-time folder, and the manifest's word on screens before Qt's own.
    if (!message.startsWith(QLatin1String("QStandardPaths: XDG_RUNTIME_DIR not set")) &&
        !message.startsWith(QLatin1String("SetProcessDpiAwarenessContext")))
        print(stderr, message);
}

} // namespace

int show(const QString &text)
{
    std::fputs(printable(text).toUtf8().constData(), stdout);
    return Done;
}

int refuse(const QString &why)
{
    print(stderr, QLatin1String("VantrelGrapher: ") + why);
    return WrongUse;
}

std::unique_ptr<QCoreApplication> createApplication(int &argc, char *argv[], const Options &options)
{
    if (!options.unattended())
        return createWindowApplication(argc, argv);
    qputenv("QT_QPA_PLATFORM", platform::drawingPlatform());
    // Outside of a login session Qt warns of a missing runtime folder, which nothing here uses: an
    // hourly job would mail it every hour.
    if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR"))
        qInstallMessageHandler(printQtMessage);
    return std::make_unique<QGuiApplication>(argc, argv);
}

int runApplication(const Options &options)
{
    int status = WrongUse;
    try {
        status = startUp(options);
    } catch (const std::exception &exception) {
        const QString text = QLatin1String("Error starting ") + errorTail(errorOf(exception));
        if (gAutoMode)
            recordFailedStart(text);
        refuse(text);
        showStartError(text);
    }
    shutDown(status);
    return status;
}
