#pragma once

#include "data/odbc/Odbc.h"

#include <QStringList>

#include <chrono>

/// A connected driver: ODBC's environment and connection handles. All members are called on the
/// connection's DriverThread.
class OdbcSession
{
public:
    struct Settings
    {
        QString connectionText; ///< as odbcText() takes it
        std::chrono::seconds connectionTime;
        std::chrono::seconds commandTime;
    };

    /// Connects, read-only and without a dialog. Throws Error.
    explicit OdbcSession(const Settings &settings);
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
