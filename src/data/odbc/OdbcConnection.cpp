#include "data/odbc/OdbcConnection.h"

#include "data/odbc/Link.h"
#include "data/odbc/OdbcRecordset.h"

OdbcConnection::OdbcConnection(const QString &connectionText, int connectionTimeout,
                               int commandTimeout, bool fetchesWhole)
    : m_link(std::make_shared<OdbcLink>(
          OdbcSession::Settings{connectionText, std::chrono::seconds(connectionTimeout),
                                std::chrono::seconds(commandTimeout)}))
    , m_fetchesWhole(fetchesWhole)
{}

OdbcConnection::~OdbcConnection() = default;

std::unique_ptr<Recordset> OdbcConnection::open(const QString &sql, const QStringList &wanted)
{
    auto rows = std::make_unique<OdbcRecordset>(m_link, sql, wanted);
    if (m_fetchesWhole)
        rows->fetchRest();
    return rows;
}

bool OdbcConnection::isOpen()
{
    return m_link->isOpen();
}
