#pragma once

#include "data/access/AccessFile.h"
#include "data/sqlite/Columns.h"
#include "data/sqlite/VirtualTable.h"

#include <span>
#include <unordered_map>
#include <variant>
#include <vector>

/// A table of modest size as a virtual table. Each column is read from the file once, when it is
/// first needed, and kept; conditions of the form "column = value" are answered from an index of
/// the column, made when it is first needed. So a join costs as much as its result, whatever the
/// number of devices and items.
class CachedTable : public VirtualTable
{
public:
    /// File and table have to outlive it.
    CachedTable(mdb::AccessFile &file, const mdb::Table &table);
    ~CachedTable() override;

    QString declaration() const override;
    void bestIndex(sqlite3_index_info &info) override;
    std::unique_ptr<VirtualCursor> open() override;

private:
    class Cursor;
    using RowNumber = quint32;

    /// One column's values of all rows, in storage order.
    struct ColumnData
    {
        std::vector<bool> isNull;
        std::variant<std::vector<qint64>, std::vector<double>, std::vector<QString>,
                     std::vector<QByteArray>>
            values;
    };
    /// The rows that have a value, ordered by it, equal ones in storage order.
    struct ColumnIndex
    {
        std::vector<RowNumber> rows;
        size_t distinctValues = 0;
    };

    size_t rowCount();
    const ColumnData &column(int number);
    ColumnData readColumn(int number);
    const ColumnIndex &index(int number);
    bool canSearch(const sqlite3_index_info &info, int constraint) const;
    std::span<const RowNumber> rowsEqual(int number, double value);
    std::span<const RowNumber> rowsEqual(int number, const QString &text);
    void result(sqlite3_context *context, int number, size_t row);

    mdb::AccessFile &m_file;
    const mdb::Table &m_table;
    qint64 m_rowCount = -1; ///< not known yet
    std::unordered_map<int, ColumnData> m_columns;
    std::unordered_map<int, ColumnIndex> m_indexes;
};
