#pragma once

#include "data/Recordset.h"
#include "data/sqlite/VirtualTable.h"

#include <sqlite3.h>

/// The rows of an SQLite statement.
class SqliteRecordset : public Recordset
{
public:
    /// Prepares `sql`, of which the columns named in `wanted` can be read (all when empty). `owner`
    /// keeps the database and the slot alive; `file` is named by errors.
    SqliteRecordset(std::shared_ptr<void> owner, sqlite3 *database, ErrorSlot &slot, QString file,
                    const QString &sql, const QStringList &wanted);
    ~SqliteRecordset() override;
    SqliteRecordset(const SqliteRecordset &) = delete;
    SqliteRecordset &operator=(const SqliteRecordset &) = delete;

    QStringList columns() const override { return m_columns; }
    bool next() override;
    bool isNull(int column) const override;
    qint64 integer(int column) const override;
    double number(int column) const override;
    qint64 instant(int column) const override;
    QString text(int column) const override;
    QVariant value(int column) const override;

private:
    void prepare(const QString &sql);
    [[noreturn]] void fail() const;
    int place(int column) const { return m_places[static_cast<size_t>(column)]; }

    std::shared_ptr<void> m_owner;
    sqlite3 *m_database;
    ErrorSlot &m_slot;
    QString m_file;
    sqlite3_stmt *m_statement = nullptr;
    QStringList m_columns;
    std::vector<int> m_places; ///< the statement's number of each column
};
