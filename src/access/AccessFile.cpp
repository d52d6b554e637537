#include "access/AccessFile.h"

#include "access/AccessFilePrivate.h"
#include "access/Properties.h"
#include "access/TableDefinition.h"
#include "base/Error.h"

#include <algorithm>

namespace mdb {

namespace {

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
    d->catalog = readCatalogDefinition(d->reader);
    for (CatalogEntry &entry : readCatalog(*this, d->catalog, d->reader))
        d->entries.push_back({std::move(entry), nullptr});
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

AccessFile::Private::Entry &AccessFile::Private::entry(const QString &name)
{
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [&](const auto &one) { return sameName(one.name, name); });
    if (found != entries.end())
        return *found;
    throw Error(ItemNotFound,
                u'\'' + reader.path() + QStringLiteral("': there is no table '") + name + u'\'');
}

QString AccessFile::linkTarget(const QString &name) const
{
    return d->entry(name).linkTarget;
}

const Table &AccessFile::table(const QString &name)
{
    Private::Entry &entry = d->entry(name);
    if (entry.table)
        return *entry.table;
    if (!entry.linkTarget.isEmpty()) {
        throw Error(ItemNotFound,
                    Location{path(), entry.name}.message(
                        QStringLiteral("its rows are not in this file, it is linked to ") +
                        entry.linkTarget));
    }
    auto table = std::make_unique<Table>(readDefinition(d->reader, entry.name, entry.page));
    if (std::any_of(table->columns.begin(), table->columns.end(),
                    [](const Column &column) { return column.isCalculated; })) {
        const Location where{path(), entry.name, entry.page};
        const QByteArray properties = readProperties(*this, d->catalog, entry);
        setResultTypes(*table, resultTypes(properties, where), where);
    }
    entry.table = std::move(table);
    return *entry.table;
}

QStringList AccessFile::warnings() const
{
    QStringList texts;
    for (const auto &[page, text] : d->warnings)
        texts.append(text);
    return texts;
}

void AccessFile::checkSize() const
{
    d->reader.checkSize();
}

} // namespace mdb
