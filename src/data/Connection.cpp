#include "data/Connection.h"

#include "core/Error.h"
#include "core/Files.h"
#include "core/State.h"
#include "core/Status.h"
#include "core/Trouble.h"
#include "data/AccessDatabase.h"
#include "data/odbc/ConnectionText.h"
#include "data/odbc/OdbcDatabase.h"

std::unique_ptr<MonitoringDatabase> gConnection;

namespace {

int openRuns = 0;

QString accessPath()
{
    return gDataPath + QLatin1String("VTRGData.MDB");
}

bool usesConnectionText()
{
    return gGraphDataSQL || gGraphDataDSN;
}

/// How the connection is named to readers.
QString connectionText()
{
    if (usesConnectionText())
        return maskPasswords(gSQLConnect);
    return QLatin1String("Provider='Microsoft.Jet.OLEDB.4.0';Data Source='") + accessPath() +
           QLatin1Char('\'');
}

} // namespace

DatabaseRun::DatabaseRun()
{
    ++openRuns;
}

DatabaseRun::~DatabaseRun()
{
    --openRuns;
}

/// The place where kinds of connection are told apart.
std::function<std::unique_ptr<MonitoringDatabase>()> databaseOpener()
{
    if (!usesConnectionText())
        return [path = nativePath(accessPath())] { return std::make_unique<AccessDatabase>(path); };
    return [text = gSQLConnect, connectionTimeout = gConnectionTimeout,
            commandTimeout = gCommandTimeout, fetchesWhole = gUseClientCursor] {
        return std::make_unique<OdbcDatabase>(text, connectionTimeout, commandTimeout,
                                              fetchesWhole);
    };
}

bool OpenDatabase(QString &message)
{
    ShowStatus(QStringLiteral("Opening database connection."));
    try {
        if (!gConnection || !gConnection->isOpen()) {
            CloseDatabase();
            gConnection = databaseOpener()();
        } else if (openRuns == 0) {
            gConnection->refresh();
        }
    } catch (const Error &error) {
        message = QLatin1String("Error opening database '") + connectionText() +
                  QLatin1String("' ") + errorTail(error);
        logTrouble(message);
        ShowStatus(message);
        return false;
    }
    ShowStatus(QStringLiteral("Database Opened."));
    return true;
}

void CloseDatabase()
{
    gConnection.reset();
}
