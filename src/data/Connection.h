#pragma once

#include "data/Recordset.h"

#include <QSet>

#include <functional>
#include <memory>

/// What the sample queries of a run can ask for, so that an Access file is read only once and no
/// more of it is kept than needed. Instants are inclusive.
struct SampleScope
{
    QSet<qint64> dataIdents;
    qint64 from = 0;
    qint64 to = 0;
};

/// An open monitoring database, read-only. Used on one thread only, with its recordsets;
/// gConnection on the main thread.
class Connection
{
public:
    virtual ~Connection() = default;

    /// Runs a query. `wanted` names the columns that will be read (all when empty); reading
    /// another one is an error. Throws Error with the database's number and description.
    virtual std::unique_ptr<Recordset> open(const QString &sql, const QStringList &wanted = {}) = 0;

    /// Announces samples that the queries to come can need; may be called for several reports in
    /// turn, best for all of them before the first query. A query outside of what was announced is
    /// still answered right, at the cost of another pass over the file. A server needs no such hint
    /// and ignores it.
    virtual void expectSamples(const SampleScope &scope);

    /// Looks whether the database file has changed since it was opened; if so, forgets what was
    /// kept of it. Throws Error, and then stays as it was.
    virtual void refresh();

    /// False when a failure has ended it; OpenDatabase then opens another one.
    virtual bool isOpen();

    /// What is wrong with a database file as far as it was read, but no error: a line for each
    /// table that states more rows than it has. None from a server.
    virtual QStringList warnings() const;

    /// Reads all tables of a database file; a line for each error and each warning. None from a
    /// server.
    virtual QStringList verify();

    /// Gives back the memory of the samples and forgets which ones were announced.
    virtual void releaseSamples();
};

/// The process's one connection; null until OpenDatabase.
extern std::unique_ptr<Connection> gConnection;

/// Marks a run. While one lives, OpenDatabase leaves what the open connection has read as it is, so
/// that all reports of the run see one state of the data and read samples and whole tables once; at
/// its end these are released.
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
std::function<std::unique_ptr<Connection>()> connectionOpener();

/// Closes it; what the connection kept in memory is released. Errors are ignored.
void CloseDatabase();

/// Runs a query and fetches its rows whole.
StaticRecordset openStatic(const QString &sql, const QStringList &wanted = {});
/// The same for whole tables, which each report asks for: in a run they are fetched only once.
StaticRecordset openTable(const QString &sql);
