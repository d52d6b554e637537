#pragma once

#include <QString>

#include <atomic>
#include <map>

/// How the program was started, and what it works on. Main thread only, but for `CancelRequested`.
struct Program
{
    bool gAutoMode = false; ///< an unattended run
    QString gDataPath;      ///< the monitoring product's data folder, ends in a separator
    QString gGraphDataPath; ///< the tool's own data folder, ends in a separator
    QString gCommandLine;   ///< the command line's text, less the long options
    std::map<QString, QString> gCmdParams; ///< made empty by each InitGrapher, and left empty
    bool gStartupDone = false;             ///< status lines are shown from here on
    bool FinishLogged = false;             ///< the end of the run is in the event log

    // Connection settings, read from the product's configuration by GetGraphDataPath().
    bool gUseClientCursor = false;  ///< fetch recordsets whole before use
    bool gGraphDataDSN = false;     ///< the data is in an ODBC data source; Access dialect
    bool gGraphDataSQL = false;     ///< the data is in SQL Server; SQL Server dialect
    qint32 gCommandTimeout = 60;    ///< seconds
    qint32 gConnectionTimeout = 30; ///< seconds
    bool gGraphDataGroups = false;  ///< read and kept, used by nothing yet
    QString gSQLConnect;            ///< connection text for the two flags above

    /// Set by a cancel from any thread or signal handler; a run tests it between its steps.
    std::atomic<bool> CancelRequested = false;
    static_assert(std::atomic<bool>::is_always_lock_free);
};

/// That of the current state.
Program &program();
