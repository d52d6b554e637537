#pragma once

#include "config/HostSettings.h"
#include "config/RunLog.h"
#include "database/MonitoringDatabase.h"

/// Where the monitoring database is. A value, for any thread.
struct DatabaseSource
{
    QString name; ///< the connection text for readers, passwords masked
    /// Opens a connection. Throws Error.
    std::function<std::unique_ptr<MonitoringDatabase>()> connect;
};

/// The one of the present settings. Main thread only.
DatabaseSource databaseSource();

/// One of settings that need not be in force, with the present time-outs. Main thread only.
DatabaseSource databaseSource(const DatabaseSettings &settings);

/// A connection that is opened when it is needed, and once more when a failure has ended it. Used
/// on one thread at a time.
class DatabaseConnection
{
public:
    explicit DatabaseConnection(DatabaseSource source);

    /// Makes sure that the connection is open, and shows how it goes as status lines. Throws
    /// ShownError: "Error opening database '<connection text>' [number] description", which the
    /// event log has, too.
    MonitoringDatabase &open(RunLog &log);

    /// Null before it is opened and after a failed opening.
    MonitoringDatabase *get() const { return m_database.get(); }

private:
    DatabaseSource m_source;
    std::unique_ptr<MonitoringDatabase> m_database;
};
