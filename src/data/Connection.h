#pragma once

#include "data/Recordset.h"

#include <QSet>

#include <memory>

/// What the sample queries of a run can ask for, so that an Access file is read only once and no
/// more of it is kept than needed. Instants are inclusive.
struct SampleScope
{
    QSet<qint64> dataIdents;
    qint64 from = 0;
    qint64 to = 0;
};

/// An open monitoring database, read-only. Main thread only.
class Connection
{
public:
    virtual ~Connection() = default;

    /// Runs a query. `wanted` names the columns that will be read (all when empty); reading
    /// another one is an error. Throws Error with the database's number and description.
    virtual std::unique_ptr<Recordset> open(const QString &sql, const QStringList &wanted = {}) = 0;

    /// Announces the samples that the queries to come can need. A query outside the scope is still
    /// answered right, at the cost of another pass over the file. A server needs no such hint and
    /// ignores it.
    virtual void expectSamples(const SampleScope &scope);
};

/// The process's one connection; null until OpenDatabase.
extern std::unique_ptr<Connection> gConnection;

/// Makes sure that gConnection is open, and shows how it goes as status lines. On failure false;
/// `message` then holds "Error opening database '<connection text>' [number] description", which
/// also goes to the status line and to the event log.
bool OpenDatabase(QString &message);

/// Closes it; what the connection kept in memory is released. Errors are ignored.
void CloseDatabase();

/// Runs a query and fetches its rows whole.
StaticRecordset openStatic(const QString &sql, const QStringList &wanted = {});
