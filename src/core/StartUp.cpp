#include "core/StartUp.h"

#include "core/HostSettings.h"
#include "core/Paths.h"
#include "core/State.h"
#include "core/platform/EventLog.h"
#include "core/platform/Processes.h"

void InitGrapher()
{
    gAutoMode = false;
    SetDataPath(QString());
    gDataPath = NormalizeFolder(GetDataPath());
    SetGraphDataPath(QString());
    gGraphDataPath = NormalizeFolder(GetGraphDataPath());

    QString text = gCommandLine;
    text.remove(u'"');
    text = text.trimmed();
    if (text.contains(QLatin1String("/AUTO"), Qt::CaseInsensitive)) {
        // Only the upper-case form is taken out; "/auto" stays as an argument without a value.
        text.remove(QLatin1String("/AUTO"), Qt::CaseSensitive);
        gAutoMode = true;
        LogEvent(runEvent, EventInformation,
                 QStringLiteral("Vantrel Automated Graphing Report started..."));
    }
    gCmdParams.clear();
    const QStringList arguments = text.split(u'/');
    for (const QString &argument : arguments) {
        const qsizetype equals = argument.indexOf(u'=');
        if (equals < 0)
            continue;
        const QString name = argument.left(equals).trimmed().toUpper();
        const QString value = argument.mid(equals + 1).trimmed().toUpper();
        if (name == u"DBPATH")
            gDataPath = NormalizeFolder(value);
    }
}

int VTRGraphPrevInstance()
{
    const int count = platform::countProcesses(platform::ownImageName());
    return count < 1 ? 0 : count - 1;
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
