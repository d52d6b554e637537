#pragma once

#include "data/access/AccessFile.h"
#include "data/access/PageReader.h"

#include <QHash>

namespace mdb {

/// Reads the definition of a table, which may span several pages. Everything that rows are decoded
/// by is checked: page types, cycles, counts, column numbers and places that collide.
Table readDefinition(PageReader &reader, const QString &name, quint32 page);

/// Whether the file has that page, and a definition begins or goes on there.
bool isDefinitionPage(PageReader &reader, quint32 page);

/// Gives calculated columns the types of their results, which are told by the columns' case-folded
/// names. A column whose type is not told keeps the one of the definition.
void setResultTypes(Table &table, const QHash<QString, quint8> &types, const Place &place);

/// What changes in a definition as rows come and go.
struct TableState
{
    qint64 statedRows = 0;
    RowPointer ownedPages; ///< the map of the table's pages
};

/// Reads it from the definition as it stands now.
TableState readState(PageReader &reader, const Table &table);

} // namespace mdb
