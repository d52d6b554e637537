#pragma once

#include "odbc/RowBlock.h"

#include <QStringList>

#include <deque>
#include <memory>

class OdbcConnection;
class OdbcStatement;

/// The rows of one query, block by block, read once from first to last. Keeps its connection open.
/// Used on one thread only.
///
/// A column's index is that of its name in `wanted`, whatever its position in the result; without
/// names it is the position. Any value can be read in each way: a number from a text is its leading
/// one, from a date the days since 1899-12-30. NULL reads as 0 or an empty text.
///
/// Dates are instants: milliseconds since 1970-01-01 UTC of the date-time as stored, rounded to
/// the millisecond.
class OdbcRecordset
{
public:
    /// Names are compared without regard to case. Throws Error, ItemNotFound where the result has
    /// no such column.
    OdbcRecordset(std::shared_ptr<OdbcConnection> connection, const QString &sql,
                  const QStringList &wanted);
    ~OdbcRecordset();
    OdbcRecordset(const OdbcRecordset &) = delete;
    OdbcRecordset &operator=(const OdbcRecordset &) = delete;

    /// Fetches all rows that are still to come; the server is free for another query then.
    void fetchRest();

    int columnCount() const { return static_cast<int>(m_order.size()); }

    /// Moves to the next row, initially to the first one; false after the last. Throws Error when
    /// the database fails: rows are never silently missing.
    bool next();

    // Values of the row that next() moved to.
    bool isNull(int column) const;
    /// Fractions are rounded, halves to even. Throws Error(Overflow).
    qint64 integer(int column) const;
    double number(int column) const;
    qint64 instant(int column) const;
    QString text(int column) const;

private:
    struct Cell;
    Cell cell(int column) const;
    bool nextBlock();
    void finish();

    std::shared_ptr<OdbcConnection> m_connection;
    std::shared_ptr<OdbcStatement> m_statement; ///< null once all rows have come
    std::vector<OdbcColumn> m_columns;
    std::vector<std::size_t> m_order;  ///< the position of each column in the result
    std::deque<RowBlock> m_fetched;    ///< blocks after the current one
    RowBlock m_own;                    ///< the current block, once it was fetched ahead
    const RowBlock *m_block = nullptr; ///< the current one
    std::size_t m_row = 0;             ///< in it
};
