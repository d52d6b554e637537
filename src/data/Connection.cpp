#include "data/Connection.h"

#include "core/Error.h"
#include "core/Files.h"
#include "core/State.h"
#include "core/Status.h"
#include "core/Trouble.h"
#include "data/odbc/ConnectionText.h"
#include "data/odbc/OdbcConnection.h"
#include "data/sqlite/AccessConnection.h"

#include <map>

std::unique_ptr<Connection> gConnection;

namespace {

int openRuns = 0;
std::map<QString, StaticRecordset> tablesOfRun; ///< by their query

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

void Connection::expectSamples(const SampleScope &) {}

void Connection::refresh() {}

bool Connection::isOpen()
{
    return true;
}

QStringList Connection::warnings() const
{
    return {};
}

QStringList Connection::verify()
{
    return {};
}

void Connection::releaseSamples() {}

DatabaseRun::DatabaseRun()
{
    ++openRuns;
}

DatabaseRun::~DatabaseRun()
{
    if (--openRuns > 0)
        return;
    tablesOfRun.clear();
    if (gConnection)
        gConnection->releaseSamples();
}

/// The place where kinds of connection are told apart.
std::function<std::unique_ptr<Connection>()> connectionOpener()
{
    if (!usesConnectionText())
        return
            [path = nativePath(accessPath())] { return std::make_unique<AccessConnection>(path); };
    return [text = gSQLConnect, connectionTimeout = gConnectionTimeout,
            commandTimeout = gCommandTimeout, fetchesWhole = gUseClientCursor] {
        return std::make_unique<OdbcConnection>(text, connectionTimeout, commandTimeout,
                                                fetchesWhole);
    };
}

bool OpenDatabase(QString &message)
{
    ShowStatus(QStringLiteral("Opening database connection."));
    try {
        if (!gConnection || !gConnection->isOpen()) {
            CloseDatabase();
            gConnection = connectionOpener()();
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
    tablesOfRun.clear();
    gConnection.reset();
}

StaticRecordset openStatic(const QString &sql, const QStringList &wanted)
{
    if (!gConnection)
        throw Error(DatabaseError, QStringLiteral("The database connection is not open"));
    const std::unique_ptr<Recordset> rows = gConnection->open(sql, wanted);
    return StaticRecordset(*rows);
}

StaticRecordset openTable(const QString &sql)
{
    if (openRuns == 0)
        return openStatic(sql);
    const auto known = tablesOfRun.find(sql);
    return known != tablesOfRun.end() ? known->second
                                      : tablesOfRun.emplace(sql, openStatic(sql)).first->second;
}
