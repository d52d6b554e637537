#pragma once

#include "data/access/AccessFile.h"
#include "data/access/PageReader.h"

namespace mdb {

/// Reads the definition of a table, which may span several pages. Everything that rows are decoded
/// by is checked: page types, cycles, counts, column numbers and places that collide.
Table readDefinition(PageReader &reader, const QString &name, quint32 page);

/// The row count as the definition states it now.
qint64 readStatedRows(PageReader &reader, const Table &table);

} // namespace mdb
