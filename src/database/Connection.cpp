#include "database/Connection.h"

#include "base/Files.h"
#include "base/Paths.h"
#include "config/Program.h"
#include "database/AccessDatabase.h"
#include "database/OdbcDatabase.h"
#include "odbc/ConnectionText.h"

DatabaseSource databaseSource()
{
    return databaseSource(DatabaseSettings{program().gDataPath, program().gGraphDataSQL,
                                           program().gGraphDataDSN, program().gSQLConnect});
}

DatabaseSource databaseSource(const DatabaseSettings &settings)
{
    if (settings.isServer())
        return {maskPasswords(settings.connectionText),
                [dialect = settings.isSqlServer ? SqlDialect::SqlServer : SqlDialect::Access,
                 text = settings.connectionText, connectionTimeout = program().gConnectionTimeout,
                 commandTimeout = program().gCommandTimeout,
                 fetchesWhole = program().gUseClientCursor] {
                    return std::make_unique<OdbcDatabase>(dialect, text, connectionTimeout,
                                                          commandTimeout, fetchesWhole);
                }};
    const QString file = NormalizeFolder(settings.dataPath) + QLatin1String("VTRGData.MDB");
    return {QStringLiteral("Provider='Microsoft.Jet.OLEDB.4.0';Data Source='%1'").arg(file),
            [file] { return std::make_unique<AccessDatabase>(nativePath(file)); }};
}

DatabaseConnection::DatabaseConnection(DatabaseSource source)
    : m_source(std::move(source))
{}

MonitoringDatabase &DatabaseConnection::open(RunLog &log)
{
    log.status(QStringLiteral("Opening database connection."));
    try {
        if (m_database && !m_database->isOpen())
            m_database.reset();
        if (!m_database)
            m_database = m_source.connect();
    } catch (const Error &error) {
        const QString text =
            QStringLiteral("Error opening database '%1' ").arg(m_source.name) + errorTail(error);
        log.event(EventError, text);
        throw ShownError(log, error.number, text);
    }
    log.status(QStringLiteral("Database Opened."));
    return *m_database;
}
