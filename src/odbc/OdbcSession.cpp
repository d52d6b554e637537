#include "odbc/OdbcSession.h"

#include "odbc/OdbcError.h"

#include <algorithm>
#include <array>

namespace {

SQLHANDLE withoutPooling()
{
    SQLSetEnvAttr(SQL_NULL_HANDLE, SQL_ATTR_CONNECTION_POOLING, odbcValue(SQL_CP_OFF), 0);
    return SQL_NULL_HANDLE;
}

/// Makes the environment behave as ODBC 3, which connection handles need.
SQLHANDLE asOdbc3(const OdbcHandle &environment)
{
    if (!environment.get())
        throw Error(DatabaseError, QStringLiteral("The ODBC driver manager cannot be started"));
    checkOdbc(SQLSetEnvAttr(environment.get(), SQL_ATTR_ODBC_VERSION, odbcValue(SQL_OV_ODBC3), 0),
              environment);
    return environment.get();
}

using Listing = SQLRETURN(SQL_API *)(SQLHENV, SQLUSMALLINT, SQLWCHAR *, SQLSMALLINT, SQLSMALLINT *,
                                     SQLWCHAR *, SQLSMALLINT, SQLSMALLINT *);

/// The names that SQLDriversW or SQLDataSourcesW lists, each with its description or attributes.
QMap<QString, QString> listed(SQLHANDLE environment, Listing list)
{
    QMap<QString, QString> names;
    std::array<SQLWCHAR, 256> name{};
    std::array<SQLWCHAR, 2048> more{};
    SQLSMALLINT length = 0;
    SQLSMALLINT moreLength = 0;
    SQLUSMALLINT direction = SQL_FETCH_FIRST;
    while (SQL_SUCCEEDED(list(environment, direction, name.data(),
                              static_cast<SQLSMALLINT>(name.size()), &length, more.data(),
                              static_cast<SQLSMALLINT>(more.size()), &moreLength))) {
        const auto size =
            std::clamp(static_cast<qsizetype>(moreLength), qsizetype(0), qsizetype(more.size()));
        // A driver's attributes are separated by nulls.
        names.insert(QString::fromUtf16(reinterpret_cast<const char16_t *>(name.data())),
                     QString::fromUtf16(reinterpret_cast<const char16_t *>(more.data()), size)
                         .replace(QChar(), u' ')
                         .trimmed());
        direction = SQL_FETCH_NEXT;
    }
    return names;
}

OdbcNames namesIn(SQLHANDLE environment)
{
    return {listed(environment, SQLDriversW), listed(environment, SQLDataSourcesW)};
}

} // namespace

OdbcNames installedOdbcNames()
{
    const OdbcHandle environment(SQL_HANDLE_ENV, withoutPooling());
    return namesIn(asOdbc3(environment));
}

OdbcSession::OdbcSession(const QString &connectionText, std::chrono::seconds connectionTime,
                         std::chrono::seconds commandTime)
    : m_environment(SQL_HANDLE_ENV, withoutPooling())
    , m_connection(SQL_HANDLE_DBC, asOdbc3(m_environment))
{
    if (!m_connection.get())
        throw odbcError(SQL_HANDLE_ENV, m_environment.get());
    const SQLHANDLE connection = m_connection.get();
    // A driver may refuse these; the time-outs are then kept by DriverThread alone.
    const auto set = [connection](SQLINTEGER attribute, SQLULEN value) {
        SQLSetConnectAttrW(connection, attribute, odbcValue(value), SQL_IS_UINTEGER);
    };
    set(SQL_ATTR_TRACE, SQL_OPT_TRACE_OFF); // it would write passwords to a file
    set(SQL_ATTR_ACCESS_MODE, SQL_MODE_READ_ONLY);
    if (connectionTime.count() > 0)
        set(SQL_ATTR_LOGIN_TIMEOUT, static_cast<SQLULEN>(connectionTime.count()));
    if (commandTime.count() > 0)
        set(SQL_ATTR_CONNECTION_TIMEOUT, static_cast<SQLULEN>(commandTime.count()));

    const QString text = odbcText(connectionText, namesIn(m_environment.get()));
    checkOdbc(SQLDriverConnectW(connection, nullptr, odbcString(text), SQL_NTS, nullptr, 0, nullptr,
                                SQL_DRIVER_NOPROMPT),
              m_connection);
    m_isConnected = true;
}

OdbcSession::~OdbcSession()
{
    if (m_isConnected)
        SQLDisconnect(m_connection.get());
}

bool OdbcSession::isAlive() const
{
    SQLUINTEGER isDead = SQL_CD_FALSE;
    const SQLRETURN result = SQLGetConnectAttrW(m_connection.get(), SQL_ATTR_CONNECTION_DEAD,
                                                &isDead, SQL_IS_UINTEGER, nullptr);
    return !SQL_SUCCEEDED(result) || isDead == SQL_CD_FALSE;
}
