#include "app/Application.h"

#include "core/Error.h"
#include "core/GrapherConfig.h"
#include "core/Paths.h"
#include "core/StartUp.h"
#include "core/State.h"
#include "core/Status.h"
#include "core/platform/EventLog.h"
#include "data/Connection.h"
#include "definitions/DefinitionStores.h"
#include "scheduling/ReportRunner.h"

#include <QGuiApplication>

#include <csignal>
#include <cstdio>

namespace {

void print(std::FILE *stream, const QString &line)
{
    std::fputs((line + u'\n').toUtf8().constData(), stream);
    std::fflush(stream);
}

/// The first signal cancels at the run's next check; the second one ends the process.
void cancelOnSignal(int number)
{
    CancelRequested = true;
    std::signal(number, SIG_DFL);
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
        if (ids.size() == before)
            throw Error(ItemNotFound, QStringLiteral("There is no report '%1'").arg(name));
    }
    return ids;
}

int listReports()
{
    for (const auto &report : gReportDefs)
        print(stdout, report->ReportID + u'\t' + report->ReportTitle);
    return Done;
}

int runUnattended(const QStringList &ids, RunChoice choice)
{
    std::signal(SIGINT, cancelOnSignal);
    std::signal(SIGTERM, cancelOnSignal);
    const RunResult result = runReports(ids, choice);
    if (result.cancelled)
        return Cancelled;
    return result.failed > 0 ? ReportFailed : Done;
}

/// The system's start-up order: paths and mode, instance check, configuration, definitions.
int startUp(const Options &options)
{
    locateProgramFolder(options.home);
    gCommandLine = options.systemText;
    InitGrapher();
    if (!options.dataPath.isEmpty())
        gDataPath = NormalizeFolder(options.dataPath);
    const bool runs = gAutoMode || !options.run.isEmpty();
    if (runs && VTRGraphPrevInstance() > 0) {
        print(stderr,
              QStringLiteral("Another instance of Vantrel Graphing Tool is currently running."));
        return OtherInstance;
    }
    loadGrapherConfig();
    LoadReportDefs();
    setStatusSink([](const QString &line) { print(stdout, line); });
    gStartupDone = true;

    if (options.list)
        return listReports();
    if (!options.run.isEmpty())
        return runUnattended(reportIdsOf(options.run), RunChoice::All);
    if (!gAutoMode)
        return refuse(QStringLiteral("this program has no window; use /AUTO, --run or --list "
                                     "(see --help)"));
    const QStringList ids = allReportIds();
    return ids.isEmpty() ? Done : runUnattended(ids, RunChoice::Due);
}

/// Closes and releases everything, and logs the end of an unattended run.
void shutDown(int status)
{
    CloseDatabase();
    if (gAutoMode && status != OtherInstance)
        logRunFinished();
    resetDefinitions();
}

} // namespace

int show(const QString &text)
{
    std::fputs(text.toUtf8().constData(), stdout);
    return Done;
}

int refuse(const QString &why)
{
    print(stderr, QLatin1String("VantrelGrapher: ") + why);
    return WrongUse;
}

std::unique_ptr<QCoreApplication> createApplication(int &argc, char *argv[], const Options &options)
{
    if (options.unattended())
        qputenv("QT_QPA_PLATFORM", "offscreen");
    return std::make_unique<QGuiApplication>(argc, argv);
}

int runApplication(const Options &options)
{
    int status = WrongUse;
    try {
        status = startUp(options);
    } catch (const Error &error) {
        const QString text = QLatin1String("Error starting ") + errorTail(error);
        if (gAutoMode)
            LogEvent(runEvent, EventError, text);
        refuse(text);
    }
    shutDown(status);
    return status;
}
