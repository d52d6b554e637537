#pragma once

#include "data/MonitoringDatabase.h"

/// The process's one connection to the monitoring database; null until OpenDatabase.
extern std::unique_ptr<MonitoringDatabase> gConnection;

/// Marks a run. While one lives, OpenDatabase leaves what the open connection has read as it is, so
/// that all reports of the run see one state of the small tables.
class DatabaseRun
{
public:
    DatabaseRun();
    ~DatabaseRun();
    DatabaseRun(const DatabaseRun &) = delete;
    DatabaseRun &operator=(const DatabaseRun &) = delete;
};

/// Makes sure that gConnection is open, and shows how it goes as status lines. Outside of a run an
/// open connection is refreshed. On failure false;
/// `message` then holds "Error opening database '<connection text>' [number] description", which
/// also goes to the status line and to the event log.
bool OpenDatabase(QString &message);

/// Opens a further connection to the database of the present settings, for work beside the main
/// thread. Ask for it on the main thread; it can be called on any, and throws Error.
std::function<std::unique_ptr<MonitoringDatabase>()> databaseOpener();

/// Closes it; what the connection kept in memory is released. Errors are ignored.
void CloseDatabase();
