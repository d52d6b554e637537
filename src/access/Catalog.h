#pragma once

#include "access/AccessFile.h"

namespace mdb {

class PageReader;

/// A table as the file's catalog lists it.
struct CatalogEntry
{
    QString name;
    qint64 id = 0;
    quint32 page = 0; ///< of its definition, when it is not linked
    bool isSystem = false;
    QString linkTarget; ///< see AccessFile::linkTarget
};

/// The definition of the catalog. Throws Error(InvalidFileFormat) when a column that tables are
/// found by is missing or of the wrong type.
Table readCatalogDefinition(PageReader &reader);

/// All tables in the catalog. Throws Error(InvalidFileFormat) for a row without the values that a
/// table is found by, and for one that lists a table as another kind of object.
std::vector<CatalogEntry> readCatalog(AccessFile &file, const Table &catalog, PageReader &reader);

/// The properties of a table's columns, as stored; empty when it has none.
QByteArray readProperties(AccessFile &file, const Table &catalog, const CatalogEntry &entry);

} // namespace mdb
