#pragma once

#include <QString>

#include <atomic>
#include <map>
#include <memory>

class clsGrapherConfig;

/// Process-wide state of the application core. Main thread only, but for `CancelRequested`.

extern bool gAutoMode;         ///< an unattended run
extern QString gDataPath;      ///< the monitoring product's data folder, ends in a separator
extern QString gGraphDataPath; ///< the tool's own data folder, ends in a separator
extern QString gCommandLine;   ///< the command line's text, less the long options
extern std::map<QString, QString> gCmdParams; ///< made empty by each InitGrapher, and left empty
extern std::unique_ptr<clsGrapherConfig> gConfig; ///< set once start-up has read it
extern bool gStartupDone;                         ///< status lines are shown from here on

// Connection settings, read from the product's configuration by GetGraphDataPath().
extern bool gUseClientCursor;     ///< fetch recordsets whole before use
extern bool gGraphDataDSN;        ///< the data lies behind an ODBC data source; Access dialect
extern bool gGraphDataSQL;        ///< the data lies in SQL Server; SQL Server dialect
extern qint32 gCommandTimeout;    ///< seconds
extern qint32 gConnectionTimeout; ///< seconds
extern bool gGraphDataGroups;     ///< read and kept, used by nothing yet
extern QString gSQLConnect;       ///< connection text for the two flags above

/// Set by a cancel from any thread or signal handler; a run tests it between its steps.
extern std::atomic<bool> CancelRequested;
static_assert(std::atomic<bool>::is_always_lock_free);

/// Puts all of the above, the host settings and the status line back to their first state.
void resetState();
