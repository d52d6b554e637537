#pragma once

#include "data/Recordset.h"

#include <QString>

#include <memory>

class OdbcLink;

/// A connection to SQL Server or an ODBC data source. Errors carry the driver's native number and
/// its own texts with their SQL states, without passwords.
///
/// No call takes longer than the time-out that was set, whatever the driver and the server do:
/// then it throws Error(DatabaseTimeout). A failure that may have broken the connection ends it;
/// each later query fails at once, until OpenDatabase has connected afresh.
///
/// A query that is opened while another one's rows are still to come fetches those first: not every
/// server runs two at a time.
class OdbcConnection
{
public:
    /// Connects by a text in one of the forms of data/odbc/ConnectionText.h. Time-outs in seconds,
    /// 0: none. `fetchesWhole`: recordsets are fetched whole before use. Throws Error.
    OdbcConnection(const QString &connectionText, int connectionTimeout, int commandTimeout,
                   bool fetchesWhole);
    ~OdbcConnection();

    std::unique_ptr<Recordset> open(const QString &sql, const QStringList &wanted = {});

    /// False after a failure that ended the connection, and when the driver knows it to be dead.
    bool isOpen();

private:
    std::shared_ptr<OdbcLink> m_link;
    bool m_fetchesWhole;
};
