#pragma once

#include "data/access/AccessFile.h"
#include "data/access/Catalog.h"
#include "data/access/PageReader.h"

#include <map>

namespace mdb {

class AccessFile::Private
{
public:
    explicit Private(const QString &path)
        : reader(path)
    {}

    /// A table as the catalog names it; its definition is read when it is asked for.
    struct Entry : CatalogEntry
    {
        std::unique_ptr<Table> table;
    };
    Entry &entry(const QString &name);

    PageReader reader;
    Table catalog;
    std::vector<Entry> entries;
    std::map<int, QString> warnings; ///< by the table's definition page: one for each
};

} // namespace mdb
