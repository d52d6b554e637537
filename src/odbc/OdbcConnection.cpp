#include "odbc/OdbcConnection.h"

#include "odbc/ConnectionText.h"
#include "odbc/OdbcError.h"
#include "odbc/OdbcRecordset.h"
#include "odbc/OdbcStatement.h"

OdbcConnection::OdbcConnection(const QString &connectionText, int connectionTimeout,
                               int commandTimeout, bool fetchesWhole)
    : m_passwords(passwordsIn(connectionText))
    , m_connectionTime(connectionTimeout)
    , m_commandTime(commandTimeout)
    , m_fetchesWhole(fetchesWhole)
{
    const auto made = std::make_shared<std::shared_ptr<OdbcSession>>();
    run(
        [made, connectionText, connection = m_connectionTime, command = m_commandTime] {
            *made = std::make_shared<OdbcSession>(connectionText, connection, command);
        },
        m_connectionTime);
    m_session = std::move(*made);
}

OdbcConnection::~OdbcConnection()
{
    if (m_thread.isGivenUp())
        return;
    try {
        // Disconnecting may talk to the server too.
        m_thread.run([session = std::move(m_session)] {}, m_connectionTime);
    } catch (...) {
        // Nobody is left who could use the connection.
    }
}

std::unique_ptr<OdbcRecordset> OdbcConnection::open(const QString &sql, const QStringList &wanted)
{
    auto rows = std::make_unique<OdbcRecordset>(shared_from_this(), sql, wanted);
    if (m_fetchesWhole)
        rows->fetchRest();
    return rows;
}

/// The one way to the driver: everything that fails on its thread passes here.
void OdbcConnection::run(std::function<void()> work, std::chrono::seconds time,
                         std::function<void()> cancel)
{
    if (!m_failure.isEmpty())
        throw Error(DatabaseTimeout,
                    QStringLiteral("The database connection is broken: %1").arg(m_failure));
    try {
        if (!m_thread.run(std::move(work), time, std::move(cancel)))
            timeOut(time);
    } catch (const OdbcError &error) {
        constexpr QLatin1String canceled("HY008");
        if (error.state == canceled)
            timeOut(time);
        const QString description = withoutSecrets(error.description, m_passwords);
        if (error.endsConnection())
            m_failure = description;
        throw Error(error.number, description);
    }
}

void OdbcConnection::timeOut(std::chrono::seconds time)
{
    m_failure = QStringLiteral("The database did not answer within %1 s").arg(time.count());
    throw Error(DatabaseTimeout, m_failure);
}

std::shared_ptr<OdbcStatement> OdbcConnection::execute(const QString &sql,
                                                       const QStringList &wanted)
{
    const auto made = std::make_shared<std::shared_ptr<OdbcStatement>>();
    run([made, session = m_session] { *made = std::make_shared<OdbcStatement>(session); },
        m_commandTime);
    std::shared_ptr<OdbcStatement> statement = std::move(*made);
    try {
        run([statement, sql, wanted,
             time = m_commandTime] { statement->execute(sql, wanted, time); },
            m_commandTime, [statement] { statement->cancel(); });
    } catch (...) {
        release(std::move(statement));
        throw;
    }
    return statement;
}

void OdbcConnection::fetch(const std::shared_ptr<OdbcStatement> &statement)
{
    run([statement] { statement->fetch(); }, m_commandTime, [statement] { statement->cancel(); });
}

void OdbcConnection::release(std::shared_ptr<OdbcStatement> statement) noexcept
{
    if (m_thread.isGivenUp())
        return;
    try {
        if (!m_thread.run([statement = std::move(statement)] {}, m_commandTime))
            m_failure = QStringLiteral("The database did not end a query in time");
    } catch (...) {
        m_failure = QStringLiteral("The database could not end a query");
    }
}

bool OdbcConnection::isOpen()
{
    if (!m_failure.isEmpty())
        return false;
    const auto isAlive = std::make_shared<bool>(false);
    try {
        run([isAlive, session = m_session] { *isAlive = session->isAlive(); }, m_connectionTime);
    } catch (const Error &) {
        return false;
    }
    return *isAlive;
}
