#include "core/State.h"

#include "core/GrapherConfig.h"
#include "core/HostSettings.h"
#include "core/Paths.h"
#include "core/Status.h"
#include "core/Trouble.h"

bool gAutoMode = false;
QString gDataPath;
QString gGraphDataPath;
QString gCommandLine;
std::map<QString, QString> gCmdParams;
std::unique_ptr<clsGrapherConfig> gConfig;
bool gStartupDone = false;

bool gUseClientCursor = false;
bool gGraphDataDSN = false;
bool gGraphDataSQL = false;
qint32 gCommandTimeout = 60;
qint32 gConnectionTimeout = 30;
bool gGraphDataGroups = false;
QString gSQLConnect;

std::atomic<bool> CancelRequested = false;

void resetState()
{
    gAutoMode = false;
    gDataPath.clear();
    gGraphDataPath.clear();
    gCommandLine.clear();
    gCmdParams.clear();
    gConfig.reset();
    gStartupDone = false;
    gUseClientCursor = gGraphDataDSN = gGraphDataSQL = gGraphDataGroups = false;
    gCommandTimeout = 60;
    gConnectionTimeout = 30;
    gSQLConnect.clear();
    CancelRequested = false;
    resetHostSettings();
    resetPaths();
    setStatusSink({});
    setProgressSink({});
    setTroubleSink({});
    setYieldHook({});
}
