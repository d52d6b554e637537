#pragma once

#include "data/Recordset.h"
#include "data/odbc/Block.h"

#include <deque>

class OdbcLink;
class OdbcStatement;

/// A query's rows, block by block. May outlive its connection.
class OdbcRecordset : public Recordset
{
public:
    OdbcRecordset(std::shared_ptr<OdbcLink> link, const QString &sql, const QStringList &wanted);
    ~OdbcRecordset() override;
    OdbcRecordset(const OdbcRecordset &) = delete;
    OdbcRecordset &operator=(const OdbcRecordset &) = delete;

    /// Fetches all rows that are still to come; the server is free for another query then.
    void fetchRest();

    QStringList columns() const override { return m_names; }
    bool next() override;
    bool isNull(int column) const override;
    qint64 integer(int column) const override;
    double number(int column) const override;
    qint64 instant(int column) const override;
    QString text(int column) const override;
    QVariant value(int column) const override;

private:
    struct Cell;
    Cell cell(int column) const;
    bool nextBlock();
    void finish();

    std::shared_ptr<OdbcLink> m_link;
    std::shared_ptr<OdbcStatement> m_statement; ///< null once all rows have come
    std::vector<OdbcColumn> m_columns;
    QStringList m_names;
    std::deque<Block> m_fetched;    ///< blocks behind the present one
    Block m_own;                    ///< the present block, once it was fetched ahead
    const Block *m_block = nullptr; ///< the present one
    std::size_t m_row = 0;          ///< in it
};
