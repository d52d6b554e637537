#pragma once

#include "access/AccessFile.h"
#include "access/Catalog.h"
#include "access/PageReader.h"

#include <map>

namespace mdb {

class AccessFile::Private
{
public:
    explicit Private(const QString &path)
        : reader(path)
    {}

    /// A table as the catalog lists it; its definition is read on first use.
    struct Entry : CatalogEntry
    {
        std::unique_ptr<Table> table;
    };
    Entry &entry(const QString &name);

    PageReader reader;
    Table catalog;
    std::vector<Entry> entries;
    std::map<int, QString> warnings; ///< at most one a table, by its definition page
};

} // namespace mdb
