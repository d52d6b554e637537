#pragma once

#include "access/AccessFile.h"
#include "access/PageReader.h"

#include <QHash>

namespace mdb {

/// Reads the definition of a table, which may span several pages. Everything that decoding rows
/// relies on is checked: page types, cycles, counts, column numbers, values that overlap.
Table readDefinition(PageReader &reader, const QString &name, quint32 page);

/// Whether the file has that page and it is part of a definition.
bool isDefinitionPage(PageReader &reader, quint32 page);

/// Sets the result types of calculated columns, given by case-folded column name. Columns without
/// one keep the type of the definition.
void setResultTypes(Table &table, const QHash<QString, quint8> &types, const Location &where);

/// What changes in a definition as rows are added and deleted.
struct TableState
{
    qint64 statedRows = 0;
    RowPointer ownedPages; ///< the map of the table's pages
};

/// Reads it from the file's current pages.
TableState readState(PageReader &reader, const Table &table);

} // namespace mdb
