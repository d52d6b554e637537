#pragma once

#include "odbc/OdbcSession.h"
#include "odbc/RowBlock.h"

#include <QStringList>

#include <memory>

/// A running query, read forward only in blocks of rows. All members but `cancel` are called on the
/// connection's DriverThread.
class OdbcStatement
{
public:
    explicit OdbcStatement(std::shared_ptr<OdbcSession> session);

    /// Runs a query and prepares to read the columns named in `wanted` (all when empty). Throws
    /// Error, ItemNotFound where the result has no such column.
    void execute(const QString &sql, const QStringList &wanted, std::chrono::seconds time);

    /// Reads the next rows into block(); none after the last. Throws Error.
    void fetch();

    const std::vector<OdbcColumn> &columns() const { return m_columns; }
    const RowBlock &block() const { return m_block; }

    /// Asks the driver to stop its current call. On any thread.
    void cancel();

private:
    void describeColumns(const QStringList &wanted);
    void bind();
    std::size_t acceptedRows(std::size_t rows);
    void bindRows(std::size_t rows);
    bool fetchBound();
    void fetchOneByOne();
    void readCell(std::size_t column, std::size_t row);
    bool readText(SQLUSMALLINT number, QString &text);
    template <typename Character, typename Append>
    SQLRETURN readChunks(SQLUSMALLINT number, SQLSMALLINT type, bool &isNull, Append append);
    bool set(SQLINTEGER attribute, SQLPOINTER value);

    std::shared_ptr<OdbcSession> m_session;
    OdbcHandle m_statement;
    std::vector<OdbcColumn> m_columns;
    RowBlock m_block;
    bool m_isBound = false; ///< whole blocks are fetched; else rows are read cell by cell
    bool m_isFirstBlock = true;
    bool m_isAtEnd = false;
    std::size_t m_blockRows = 0;
    SQLULEN m_rowsFetched = 0;
    std::vector<SQLUSMALLINT> m_rowStatus;
};
