#pragma once

#include "data/access/AccessFile.h"
#include "data/access/PageReader.h"

namespace mdb {

class AccessFile::Private
{
public:
    explicit Private(const QString &path)
        : reader(path)
    {}

    /// A table as the catalog names it; its definition is read when it is asked for.
    struct Entry
    {
        QString name;
        quint32 page = 0;
        bool isSystem = false;
        std::unique_ptr<Table> table;
    };

    PageReader reader;
    std::vector<Entry> entries;
};

} // namespace mdb
