#include "core/StartUp.h"

#include "core/HostSettings.h"
#include "core/Paths.h"
#include "core/State.h"
#include "core/platform/EventLog.h"
#include "core/platform/Processes.h"

#include <algorithm>

namespace {

const QLatin1String unattendedKeyword("/AUTO");

QString withoutQuotes(QString commandLine)
{
    return commandLine.remove(u'"');
}

} // namespace

void InitGrapher()
{
    gAutoMode = withoutQuotes(gCommandLine).contains(unattendedKeyword, Qt::CaseInsensitive);
    SetDataPath(QString());
    gDataPath = NormalizeFolder(GetDataPath());
    SetGraphDataPath(QString());
    gGraphDataPath = NormalizeFolder(GetGraphDataPath());

    gCmdParams.clear();
    if (gAutoMode)
        LogEvent(runEvent, EventInformation,
                 QStringLiteral("Vantrel Automated Graphing Report started..."));
    if (const std::optional<QString> folder = dataPathIn(gCommandLine))
        gDataPath = *folder;
}

std::optional<QString> dataPathIn(const QString &commandLine)
{
    QString text = withoutQuotes(commandLine);
    // Only the upper-case form is taken out; "/auto" stays as an argument without a value.
    text.remove(unattendedKeyword, Qt::CaseSensitive);
    std::optional<QString> folder;
    const QStringList arguments = text.split(u'/');
    for (const QString &argument : arguments) {
        const qsizetype equals = argument.indexOf(u'=');
        if (equals < 0)
            continue;
        const QString name = argument.left(equals).trimmed().toUpper();
        const QString value = argument.mid(equals + 1).trimmed().toUpper();
        if (name == u"DBPATH")
            folder = NormalizeFolder(value);
    }
    return folder;
}

bool makesReports(const QStringList &arguments)
{
    static const QStringList others = {
        QStringLiteral("--help"),       QStringLiteral("--version"),   QStringLiteral("--list"),
        QStringLiteral("--history"),    QStringLiteral("--check"),     QStringLiteral("--register"),
        QStringLiteral("--unregister"), QStringLiteral("--registered")};
    return std::none_of(arguments.begin(), arguments.end(),
                        [](const QString &argument) { return others.contains(argument); });
}

int VTRGraphPrevInstance()
{
    return platform::countOtherProcesses(platform::ownImageName(), makesReports);
}

void logRunFinished()
{
    static bool FinishLogged = false;
    if (FinishLogged)
        return;
    FinishLogged = true;
    LogEvent(runEvent, EventInformation,
             QStringLiteral("Vantrel Automated Graphing Report finished..."));
}
