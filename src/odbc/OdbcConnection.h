#pragma once

#include "odbc/DriverThread.h"

#include <QString>
#include <QStringList>

#include <memory>

class OdbcRecordset;
class OdbcSession;
class OdbcStatement;

/// A connection to SQL Server or an ODBC data source, and the thread on which its driver is called.
/// Held by std::make_shared, as its recordsets may outlive their opener. Errors carry the driver's
/// native number and its own texts with their SQL states, without passwords.
///
/// No call takes longer than the time-out that was set, whatever the driver and the server do:
/// then it throws Error(DatabaseTimeout). A failure that may have broken the connection ends it;
/// each later query fails at once, until a new connection is made.
///
/// A query that is opened while rows of another one are still to come fetches those first: not
/// every server runs two at a time.
class OdbcConnection : public std::enable_shared_from_this<OdbcConnection>
{
public:
    /// Connects by a text in one of the forms of odbc/ConnectionText.h. Time-outs in seconds,
    /// 0: none. `fetchesWhole`: recordsets are fetched whole before use. Throws Error.
    OdbcConnection(const QString &connectionText, int connectionTimeout, int commandTimeout,
                   bool fetchesWhole);
    ~OdbcConnection();
    OdbcConnection(const OdbcConnection &) = delete;
    OdbcConnection &operator=(const OdbcConnection &) = delete;

    /// Runs a query; its recordset reads the columns named in `wanted`, all when empty.
    std::unique_ptr<OdbcRecordset> open(const QString &sql, const QStringList &wanted = {});

    /// False after a failure that ended the connection, and when the driver knows it to be dead.
    bool isOpen();

private:
    friend class OdbcRecordset;

    /// Runs a query.
    std::shared_ptr<OdbcStatement> execute(const QString &sql, const QStringList &wanted);
    /// Reads the statement's next block.
    void fetch(const std::shared_ptr<OdbcStatement> &statement);
    /// Frees a statement on the driver's thread.
    void release(std::shared_ptr<OdbcStatement> statement) noexcept;

    void run(std::function<void()> work, std::chrono::seconds time,
             std::function<void()> cancel = {});
    [[noreturn]] void timeOut(std::chrono::seconds time);

    QStringList m_passwords;
    std::chrono::seconds m_connectionTime;
    std::chrono::seconds m_commandTime;
    bool m_fetchesWhole;
    DriverThread m_thread;
    std::shared_ptr<OdbcSession> m_session;
    QString m_failure; ///< what ended the connection

    OdbcRecordset *m_reading = nullptr; ///< the one whose rows are still to come from the server
};
