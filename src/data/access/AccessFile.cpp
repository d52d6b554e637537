#include "data/access/AccessFile.h"

#include "core/Error.h"
#include "data/access/AccessFilePrivate.h"
#include "data/access/TableDefinition.h"

#include <algorithm>

namespace mdb {

namespace {

constexpr quint32 catalogPage = 2;
constexpr qint64 tableObject = 1;
constexpr quint32 systemFlags = 0x80000002;
constexpr quint32 pageBits = 0x00FFFFFF;

bool sameName(const QString &a, const QString &b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

} // namespace

int Table::column(const QString &columnName) const
{
    for (size_t i = 0; i < columns.size(); ++i) {
        if (sameName(columns[i].name, columnName))
            return static_cast<int>(i);
    }
    return -1;
}

AccessFile::AccessFile(const QString &path)
    : d(std::make_unique<Private>(path))
{
    const Table catalog = readDefinition(d->reader, QStringLiteral("MSysObjects"), catalogPage);
    const int id = catalog.column(QStringLiteral("Id"));
    const int name = catalog.column(QStringLiteral("Name"));
    const int type = catalog.column(QStringLiteral("Type"));
    const int flags = catalog.column(QStringLiteral("Flags"));
    if (id < 0 || name < 0 || type < 0 || flags < 0) {
        const Place place{path, catalog.name, catalogPage};
        place.fail(QStringLiteral("the catalog lacks a column"));
    }
    RowCursor row(*this, catalog);
    while (row.next()) {
        if (row.integer(type) != tableObject)
            continue;
        Private::Entry entry;
        entry.name = row.text(name);
        entry.page = static_cast<quint32>(row.integer(id)) & pageBits;
        entry.isSystem = static_cast<quint32>(row.integer(flags)) & systemFlags;
        d->entries.push_back(std::move(entry));
    }
}

AccessFile::~AccessFile() = default;

QString AccessFile::path() const
{
    return d->reader.path();
}

std::vector<QString> AccessFile::tableNames() const
{
    std::vector<QString> names;
    for (const Private::Entry &entry : d->entries) {
        if (!entry.isSystem)
            names.push_back(entry.name);
    }
    return names;
}

const Table &AccessFile::table(const QString &name)
{
    const auto entry = std::find_if(d->entries.begin(), d->entries.end(),
                                    [&](const auto &one) { return sameName(one.name, name); });
    if (entry == d->entries.end()) {
        throw Error(ItemNotFound,
                    u'\'' + path() + QStringLiteral("': there is no table '") + name + u'\'');
    }
    if (!entry->table) {
        entry->table = std::make_unique<Table>(readDefinition(d->reader, entry->name, entry->page));
    }
    return *entry->table;
}

void AccessFile::checkSize() const
{
    d->reader.checkSize();
}

} // namespace mdb
