#pragma once

#include "odbc/ConnectionText.h"
#include "odbc/Odbc.h"

#include <chrono>

/// The installed drivers and data sources. On any thread; reads files. Throws Error where there is
/// no driver manager.
OdbcNames installedOdbcNames();

/// A connected driver: ODBC's environment and connection handles. All members are called on the
/// connection's DriverThread.
class OdbcSession
{
public:
    /// Connects, read-only and without a dialog, by a text for odbcText(). Time-outs of 0: none.
    /// Throws Error.
    OdbcSession(const QString &connectionText, std::chrono::seconds connectionTime,
                std::chrono::seconds commandTime);
    ~OdbcSession();
    OdbcSession(const OdbcSession &) = delete;
    OdbcSession &operator=(const OdbcSession &) = delete;

    /// As far as the driver knows.
    bool isAlive() const;

    SQLHANDLE connection() const { return m_connection.get(); }

    /// Texts are asked for as UTF-16 until the driver refuses that, then as its bytes.
    bool offersUtf16 = true;

private:
    OdbcHandle m_environment;
    OdbcHandle m_connection;
    bool m_isConnected = false;
};
