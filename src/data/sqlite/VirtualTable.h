#pragma once

#include <QString>

#include <exception>
#include <memory>
#include <sqlite3.h>

/// SQLite's virtual tables as C++ objects. What one of them throws ends the SQLite call; the
/// exception is kept in the table's `ErrorSlot`, for the caller to throw on.

/// Holds the exception that ended a call into SQLite.
struct ErrorSlot
{
    std::exception_ptr error;
    /// Throws the exception on, if there is one, and forgets it.
    void rethrow();
};

/// A walk over the rows of a virtual table.
class VirtualCursor
{
public:
    virtual ~VirtualCursor() = default;

    /// Starts the walk that `bestIndex` planned; the row is then the first one, if there is one.
    virtual void filter(int plan, const char *planText, int count, sqlite3_value **values) = 0;
    virtual void next() = 0;
    virtual bool eof() const = 0;
    virtual void column(sqlite3_context *context, int column) const = 0;
    /// A number that tells the row from all others of the table, however the walk was planned.
    virtual qint64 rowNumber() const = 0;
};

class VirtualTable
{
public:
    virtual ~VirtualTable() = default;

    /// The "CREATE TABLE" text that tells the columns.
    virtual QString declaration() const = 0;
    /// Plans a walk. Conditions that are used are checked again by SQLite unless
    /// they are marked to be omitted.
    virtual void bestIndex(sqlite3_index_info &info) = 0;
    virtual std::unique_ptr<VirtualCursor> open() = 0;
};

/// Makes a virtual table known to a database under a name. The table has to outlive the database;
/// `slot` receives exceptions.
void addVirtualTable(sqlite3 *database, const QString &name, VirtualTable &table, ErrorSlot &slot);

/// A name in double quotes, as SQLite takes any name.
QString quotedName(const QString &name);
