#include "config/StartUp.h"

#include "base/Paths.h"
#include "config/HostSettings.h"
#include "config/Program.h"
#include "platform/EventLog.h"
#include "platform/Processes.h"

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
    program().gAutoMode =
        withoutQuotes(program().gCommandLine).contains(unattendedKeyword, Qt::CaseInsensitive);
    SetDataPath(QString());
    program().gDataPath = NormalizeFolder(GetDataPath());
    SetGraphDataPath(QString());
    program().gGraphDataPath = NormalizeFolder(GetGraphDataPath());

    program().gCmdParams.clear();
    if (program().gAutoMode)
        LogEvent(runEvent, EventInformation,
                 QStringLiteral("Vantrel Automated Graphing Report started..."));
    if (const std::optional<QString> folder = dataPathIn(program().gCommandLine))
        program().gDataPath = *folder;
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
        QStringLiteral("--help"),       QStringLiteral("--version"),
        QStringLiteral("--list"),       QStringLiteral("--history"),
        QStringLiteral("--check"),      QStringLiteral("--register"),
        QStringLiteral("--unregister"), QStringLiteral("--registered"),
        QStringLiteral("--mail"),       QStringLiteral("--mail-test"),
        QStringLiteral("--outbox")};
    return std::none_of(arguments.begin(), arguments.end(), [](const QString &argument) {
        return others.contains(argument.section(u'=', 0, 0));
    });
}

int VTRGraphPrevInstance()
{
    return platform::countOtherProcesses(platform::ownImageName(), makesReports);
}

void logRunFinished()
{
    if (program().FinishLogged)
        return;
    program().FinishLogged = true;
    LogEvent(runEvent, EventInformation,
             QStringLiteral("Vantrel Automated Graphing Report finished..."));
}
