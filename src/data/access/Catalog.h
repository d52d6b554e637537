#pragma once

#include "data/access/AccessFile.h"

namespace mdb {

class PageReader;

/// A table as the file's catalog names it.
struct CatalogEntry
{
    QString name;
    qint64 id = 0;
    quint32 page = 0; ///< of its definition, when it is not linked
    bool isSystem = false;
    QString linkTarget; ///< see AccessFile::linkTarget
};

/// The definition of the catalog. Throws Error(InvalidFileFormat) when it lacks one of the columns
/// that tables are found by, or has one of another type.
Table readCatalogDefinition(PageReader &reader);

/// All tables that the catalog names. Throws Error(InvalidFileFormat) for a row that lacks what a
/// table is found by, and for one that makes something else of a table.
std::vector<CatalogEntry> readCatalog(AccessFile &file, const Table &catalog, PageReader &reader);

/// The properties of a table's columns, as stored; empty when it has none.
QByteArray readProperties(AccessFile &file, const Table &catalog, const CatalogEntry &entry);

} // namespace mdb
