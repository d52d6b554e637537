#include "data/odbc/Link.h"

#include "data/odbc/ConnectionText.h"
#include "data/odbc/Diagnostics.h"
#include "data/odbc/Statement.h"

OdbcLink::OdbcLink(const OdbcSession::Settings &settings)
    : m_settings(settings)
    , m_passwords(passwordsIn(settings.connectionText))
{
    const auto made = std::make_shared<std::shared_ptr<OdbcSession>>();
    run([made, settings] { *made = std::make_shared<OdbcSession>(settings); },
        settings.connectionTime);
    m_session = std::move(*made);
}

OdbcLink::~OdbcLink()
{
    if (m_thread.isGivenUp())
        return;
    try {
        // Disconnecting may talk to the server too.
        m_thread.run([session = std::move(m_session)] {}, m_settings.connectionTime);
    } catch (...) {
        // There is nobody left to tell.
    }
}

/// The one way to the driver: everything that fails on the connection's thread passes here.
void OdbcLink::run(std::function<void()> work, std::chrono::seconds time,
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

void OdbcLink::timeOut(std::chrono::seconds time)
{
    m_failure = QStringLiteral("The database did not answer within %1 s").arg(time.count());
    throw Error(DatabaseTimeout, m_failure);
}

std::shared_ptr<OdbcStatement> OdbcLink::execute(const QString &sql, const QStringList &wanted)
{
    const auto made = std::make_shared<std::shared_ptr<OdbcStatement>>();
    const std::chrono::seconds time = m_settings.commandTime;
    run([made, session = m_session] { *made = std::make_shared<OdbcStatement>(session); }, time);
    std::shared_ptr<OdbcStatement> statement = std::move(*made);
    try {
        run([statement, sql, wanted, time] { statement->execute(sql, wanted, time); }, time,
            [statement] { statement->cancel(); });
    } catch (...) {
        release(std::move(statement));
        throw;
    }
    return statement;
}

void OdbcLink::fetch(const std::shared_ptr<OdbcStatement> &statement)
{
    run([statement] { statement->fetch(); }, m_settings.commandTime,
        [statement] { statement->cancel(); });
}

void OdbcLink::release(std::shared_ptr<OdbcStatement> statement) noexcept
{
    if (m_thread.isGivenUp())
        return;
    try {
        if (!m_thread.run([statement = std::move(statement)] {}, m_settings.commandTime))
            m_failure = QStringLiteral("The database did not end a query in time");
    } catch (...) {
        m_failure = QStringLiteral("The database could not end a query");
    }
}

bool OdbcLink::isOpen()
{
    if (!m_failure.isEmpty())
        return false;
    const auto isAlive = std::make_shared<bool>(false);
    try {
        run([isAlive, session = m_session] { *isAlive = session->isAlive(); },
            m_settings.connectionTime);
    } catch (const Error &) {
        return false;
    }
    return *isAlive;
}
