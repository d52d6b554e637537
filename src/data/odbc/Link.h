#pragma once

#include "data/odbc/DriverThread.h"
#include "data/odbc/Session.h"

#include <QStringList>

class OdbcRecordset;
class OdbcStatement;

/// What a connection and its recordsets share: the session and the thread on which it lives.
/// Main thread only.
class OdbcLink
{
public:
    /// Connects. Throws Error.
    explicit OdbcLink(const OdbcSession::Settings &settings);
    ~OdbcLink();
    OdbcLink(const OdbcLink &) = delete;
    OdbcLink &operator=(const OdbcLink &) = delete;

    /// Runs a query.
    std::shared_ptr<OdbcStatement> execute(const QString &sql, const QStringList &wanted);
    /// Reads the statement's next block.
    void fetch(const std::shared_ptr<OdbcStatement> &statement);
    /// Frees a statement where it was made.
    void release(std::shared_ptr<OdbcStatement> statement) noexcept;

    bool isOpen();

    /// The recordset whose rows come from the server still; null when there is none.
    OdbcRecordset *reading = nullptr;

private:
    void run(std::function<void()> work, std::chrono::seconds time,
             std::function<void()> cancel = {});
    [[noreturn]] void timeOut(std::chrono::seconds time);

    OdbcSession::Settings m_settings;
    QStringList m_passwords;
    DriverThread m_thread;
    std::shared_ptr<OdbcSession> m_session;
    QString m_failure; ///< what ended the connection
};
