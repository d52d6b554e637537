#pragma once

#include "odbc/Odbc.h"

#include <QString>

#include <cstddef>
#include <vector>

/// How a column's values are held.
enum class CellKind {
    Integer, ///< SQLBIGINT
    Flag,    ///< unsigned char; true reads as -1, as in an Access file
    Number,  ///< double
    Single,  ///< double of single precision: a driver misplaces bound floats
    Instant, ///< SQL_TIMESTAMP_STRUCT
    Text,    ///< QString
};

struct OdbcColumn
{
    QString name;
    SQLUSMALLINT number = 0; ///< in the driver's result, from 1
    CellKind kind = CellKind::Text;
};

SQLSMALLINT cellType(CellKind kind);  ///< ODBC's C type; for texts SQL_C_WCHAR
std::size_t cellWidth(CellKind kind); ///< bytes; 0 for texts

/// The values of one column in consecutive rows.
struct ColumnBlock
{
    std::vector<std::byte> cells;
    std::vector<SQLLEN> indicators; ///< SQL_NULL_DATA marks a NULL
    std::vector<QString> texts;     ///< instead of cells
};

/// Consecutive rows of a result, column by column.
struct RowBlock
{
    std::size_t rows = 0;
    std::vector<ColumnBlock> columns;
};
