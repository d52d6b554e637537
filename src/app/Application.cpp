#include "app/Application.h"

#include "app/Check.h"
#include "app/Interactive.h"
#include "app/Listings.h"
#include "app/MailCommands.h"
#include "app/RunDisplay.h"
#include "app/SingleInstance.h"
#include "base/Clock.h"
#include "base/Error.h"
#include "base/Files.h"
#include "base/OneLine.h"
#include "base/Paths.h"
#include "base/TimeZone.h"
#include "config/Program.h"
#include "config/RunLog.h"
#include "config/StartUp.h"
#include "config/clsGrapherConfig.h"
#include "definitions/Definitions.h"
#include "platform/Drawing.h"
#include "platform/EventLog.h"
#include "platform/Terminal.h"
#include "scheduling/Metrics.h"
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
    for (const auto &report : definitions().gReportDefs)
        ids.append(report->ReportID);
    return ids;
}

/// The ids of the reports that the user named by id or title; Error names the first unknown one.
QStringList reportIdsOf(const QStringList &names)
{
    QStringList ids;
    for (const QString &name : names) {
        const qsizetype before = ids.size();
        for (const auto &report : definitions().gReportDefs) {
            if (report->ReportID.compare(name, Qt::CaseInsensitive) == 0 ||
                report->ReportTitle.compare(name, Qt::CaseInsensitive) == 0)
                ids.append(report->ReportID);
        }
        if (ids.size() > before)
            continue;
        const QStringList errors = definitions().errors(); // it may be one of them
        throw Error(ItemNotFound,
                    (QStringList{QStringLiteral("There is no report '%1'").arg(name)} + errors)
                        .join(QLatin1String("; ")));
    }
    return ids;
}

/// Makes one report into a PDF file, and nothing else.
int makePdf(const Options &options)
{
    const QStringList ids = reportIdsOf({options.pdfReport});
    if (ids.size() > 1)
        throw Error(DuplicateKey, QStringLiteral("%1 reports are called '%2': name one by its id")
                                      .arg(ids.size())
                                      .arg(options.pdfReport));
    const RunDisplay display(stdout, stderr);
    platform::onCancelRequest([] { program().CancelRequested = true; });
    return runReports({ids, RunChoice::All, RunMode::OnRequest, options.pdfFile}).exitStatus();
}

int runUnattended(const QStringList &ids, RunChoice choice)
{
    const RunMode mode = program().gAutoMode ? RunMode::Scheduled : RunMode::OnRequest;
    const RunDisplay display(stdout, stderr);
    platform::onCancelRequest([] { program().CancelRequested = true; }); // at the run's next check
    const int status = runReports({ids, choice, mode}).exitStatus();
    const MailResult mails =
        mode == RunMode::Scheduled ? mailAfterRun(mailSite(), observer()) : MailResult();
    if (status != ExitStatus::Done)
        return status;
    if (mails.failed())
        return ExitStatus::ReportFailed;
    return mails.cancelled ? ExitStatus::Cancelled : ExitStatus::Done;
}

int changeRegistration(const Options &options)
{
    const std::unique_ptr<platform::TaskScheduler> scheduler = platform::systemTaskScheduler();
    if (options.command == Command::Unregister)
        return printText(unregisterTask(*scheduler)
                             ? QStringLiteral("Scheduled task has been removed.\n")
                             : QStringLiteral("There is no scheduled task.\n"));
    if (options.command == Command::Register) {
        printText(registerTask(*scheduler, {}, options.folderOptions())
                      ? QStringLiteral("Scheduled task has been added.\n")
                      : QStringLiteral("There is a scheduled task already; it stays as it is.\n"));
        try {
            registerEventSource();
        } catch (const Error &error) {
            printText(QStringLiteral("The event log will show this program's entries without their "
                                     "description: %1\nRun --register as administrator once.\n")
                          .arg(error.description));
        }
    }
    if (!isTaskRegistered(*scheduler))
        return printText(QStringLiteral("There is no scheduled task.\n"));
    const QString advice = scheduler->advice();
    return printText(scheduler->openTask(scheduledTaskName).commandLine + u'\n' +
                     (advice.isEmpty() ? advice : advice + u'\n'));
}

int check()
{
    try {
        loadGrapherConfig();
    } catch (const Error &error) {
        printText(error.description + u'\n'); // says where; nothing can be done without it
        return ExitStatus::WrongUse;
    }
    QString note;
    const Findings findings = checkEverything(note);
    if (!note.isEmpty())
        print(stderr, note);
    if (findings.lines().isEmpty())
        return printText(QStringLiteral("No findings.\n"));
    printText(findings.lines().join(u'\n') + u'\n');
    return ExitStatus::WrongUse;
}

/// Throws Error if a definition file cannot be read: the run would skip its reports, and nobody
/// would notice.
void checkDefinitionFiles()
{
    definitions().LoadChartDefs();
    definitions().LoadScheduleDefs();
    const QStringList errors = definitions().fileErrors();
    if (!errors.isEmpty())
        throw Error(InvalidFileFormat, errors.join(QLatin1String("; ")));
    const QString reports = configurationFolder() + QLatin1String("ChartSelection.XML");
    if (program().gAutoMode && !fileExists(reports))
        throw Error(FileNotFound,
                    QStringLiteral("There is no file '%1': no report is defined").arg(reports));
}

/// The list, and the errors of definitions that could not be read.
int listReports()
{
    definitions().LoadScheduleDefs();
    const int shown = printText(reportListText());
    const QStringList unread = definitions().fileErrors();
    const QStringList errors = unread + definitions().errors();
    for (const QString &error : errors)
        print(stderr, QLatin1String("Error reading definitions: ") + error);
    if (!unread.isEmpty())
        return ExitStatus::WrongUse;
    return errors.isEmpty() ? shown : ExitStatus::ReportFailed;
}

/// The commands that need no definitions.
bool isRegistration(Command command)
{
    return command == Command::Register || command == Command::Unregister ||
           command == Command::Registered;
}

/// The product's start-up order: paths and mode, instance check, configuration, definitions.
int startUp(const Options &options)
{
    locateProgramFolder(options.home);
    if (isRegistration(options.command))
        return changeRegistration(options);
    program().gCommandLine = options.command == Command::None ? options.systemText : QString();
    InitGrapher();
    if (const QString folder = options.dataFolder(); !folder.isEmpty())
        program().gDataPath = NormalizeFolder(folder);
    if (options.command == Command::History)
        return printText(historyText(runHistory().runs()));
    const bool runs = program().gAutoMode || options.makesReports();
    if (runs && anotherInstanceRuns()) {
        print(stderr,
              QStringLiteral("Another instance of Vantrel Graphing Tool is currently running.") +
                  workOf(otherHome()));
        return ExitStatus::OtherInstance;
    }
    if (const QString fault = timeZoneFault(); !fault.isEmpty())
        print(stderr, QLatin1String("Warning: ") + fault);
    if (options.command == Command::Check)
        return check();
    if (!runs && options.command == Command::None)
        return runInteractive(options);
    loadGrapherConfig();
    if (options.command == Command::Outbox)
        return listOutbox(mailSite());
    if (options.command == Command::MailTest)
        return testMails(mailSite(), options.testRecipient);
    definitions().LoadReportDefs();
    if (options.command == Command::Mail)
        return mailReports(mailSite(), reportIdsOf(options.mail));
    if (options.command == Command::List)
        return listReports();
    checkDefinitionFiles();
    program().gStartupDone = true;

    if (!options.pdfFile.isEmpty())
        return makePdf(options);
    if (!options.run.isEmpty())
        return runUnattended(reportIdsOf(options.run), RunChoice::All);
    const QStringList ids = allReportIds();
    return ids.isEmpty() && definitions().errors().isEmpty() ? ExitStatus::Done
                                                             : runUnattended(ids, RunChoice::Due);
}

/// Records an unattended run that cannot start.
void recordFailedStart(const QString &why)
{
    if (program().gGraphDataPath.isEmpty()) { // the folder of the history is not known
        LogEvent(runEvent, EventError, why);
        return;
    }
    const RunHistory history = runHistory();
    RunLog log({}, Attendance::Unattended, troublesOfToday(history.runs()));
    log.event(EventError, why);
    RunRecord run;
    run.start = run.end = currentInstant();
    run.mode = scheduledMode;
    run.error = why;
    try {
        history.save(run);
    } catch (const Error &error) {
        log.event(EventError, QLatin1String("Error saving run history ") + errorTail(error));
        return;
    }
    mailAfterRun(mailSite(), {});
}

/// Tells whoever watches the runs how the last one ended. Returns the program's status.
int saveMetricsOf(const Options &options, int status)
{
    const QString path = options.metrics.isEmpty() ? gConfig().metricsPath() : options.metrics;
    if (path.isEmpty() || program().gGraphDataPath.isEmpty())
        return status;
    QString error;
    if (saveMetrics(path, runHistory(), {status, waitingMails(mailSite())}, &error))
        return status;
    print(stderr, error);
    return status == ExitStatus::Done ? int(ExitStatus::ReportFailed) : status;
}

/// Closes and releases everything, and logs the end of an unattended run.
void shutDown(int status)
{
    platform::onCancelRequest(nullptr);
    if (program().gAutoMode && status != ExitStatus::OtherInstance)
        logRunFinished();
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

int printText(const QString &text)
{
    std::fputs(printable(text).toUtf8().constData(), stdout);
    if (std::fflush(stdout) == 0 && !std::ferror(stdout))
        return ExitStatus::Done;
    print(stderr, QStringLiteral("VantrelGrapher: the standard output cannot be written"));
    return ExitStatus::ReportFailed;
}

int refuse(const QString &why)
{
    print(stderr, QLatin1String("VantrelGrapher: ") + why);
    return ExitStatus::WrongUse;
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
    int status = ExitStatus::WrongUse;
    try {
        status = startUp(options);
    } catch (const std::exception &exception) {
        const QString text = QLatin1String("Error starting ") + errorTail(errorOf(exception));
        if (program().gAutoMode)
            recordFailedStart(text);
        refuse(text);
        showStartError(text);
    }
    if (options.makesReports() && options.pdfFile.isEmpty() && status != ExitStatus::OtherInstance)
        status = saveMetricsOf(options, status);
    shutDown(status);
    return status;
}
