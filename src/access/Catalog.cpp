#include "access/Catalog.h"

#include "access/TableDefinition.h"

#include <algorithm>
#include <array>

namespace mdb {

namespace {

constexpr quint32 catalogPage = 2;
constexpr quint32 systemFlags = 0x80000002;
constexpr quint32 pageBits = 0x00FFFFFF;

enum ObjectType : qint64 { TableObject = 1, OdbcLink = 4, FileLink = 6 };

int requiredColumn(const Table &catalog, const QString &file, const char *name, ColumnType type)
{
    const int column = catalog.column(QLatin1String(name));
    if (column >= 0) {
        const Column &found = catalog.columns[static_cast<size_t>(column)];
        const bool isFixed = type != ColumnType::Text && type != ColumnType::Ole;
        if (found.type == type && found.isFixed == isFixed && !found.isCalculated)
            return column;
    }
    const Location where{file, catalog.name, catalogPage};
    where.fail(QStringLiteral("the catalog's column '%1' is missing or of another type")
                   .arg(QLatin1String(name)));
}

/// The columns that tables are found by.
struct CatalogColumns
{
    CatalogColumns(const Table &catalog, const QString &file)
        : id(requiredColumn(catalog, file, "Id", ColumnType::Long))
        , name(requiredColumn(catalog, file, "Name", ColumnType::Text))
        , type(requiredColumn(catalog, file, "Type", ColumnType::Integer))
        , flags(requiredColumn(catalog, file, "Flags", ColumnType::Long))
    {}

    int id;
    int name;
    int type;
    int flags;
};

void requireValue(const RowCursor &row, const Table &catalog, int column)
{
    if (row.isNull(column)) {
        row.fail(QStringLiteral("a row of the catalog has no '%1'")
                     .arg(catalog.columns[static_cast<size_t>(column)].name));
    }
}

/// Text of a column that some catalogs lack.
QString optionalText(const RowCursor &row, const Table &catalog, const char *name)
{
    const int column = catalog.column(QLatin1String(name));
    return column < 0 ? QString() : row.text(column);
}

/// The settings between semicolons; a value with a semicolon is in braces.
QStringList settingsOf(const QString &connectText)
{
    QStringList settings = {QString()};
    bool isInBraces = false;
    for (const QChar c : connectText) {
        if (c == u'{' || c == u'}')
            isInBraces = c == u'{';
        if (c == u';' && !isInBraces)
            settings.append(QString());
        else
            settings.last() += c;
    }
    return settings;
}

/// The parts of a link's connect text that say where it leads: its kind, and settings without
/// secrets.
QString shownConnectText(const QString &text)
{
    constexpr std::array shownKeys = {"DSN", "FILEDSN", "DRIVER", "SERVER", "DATABASE", "DBQ"};
    QStringList shown;
    for (const QString &setting : settingsOf(text)) {
        const QString key = setting.section(u'=', 0, 0).trimmed();
        const bool isKind = shown.isEmpty() && !setting.contains(u'=');
        const bool isShown = std::any_of(shownKeys.begin(), shownKeys.end(), [&](const char *each) {
            return key.compare(QLatin1String(each), Qt::CaseInsensitive) == 0;
        });
        if (!setting.isEmpty() && (isKind || isShown))
            shown.append(setting);
    }
    return shown.join(u';');
}

QString linkTargetOf(const RowCursor &row, const Table &catalog)
{
    QStringList targets = {optionalText(row, catalog, "Database"),
                           shownConnectText(optionalText(row, catalog, "Connect"))};
    targets.removeAll(QString());
    return QStringLiteral("'%1' in '%2'")
        .arg(optionalText(row, catalog, "ForeignName"), targets.join(QLatin1String("', ")));
}

/// A table's id is the page of its definition; no other object has the id of such a page.
void requireNoTable(const RowCursor &row, qint64 id, qint64 type, PageReader &reader)
{
    const auto page = static_cast<quint32>(id);
    if (id <= 0 || (page & ~pageBits) != 0 || !isDefinitionPage(reader, page))
        return;
    row.fail(QStringLiteral("the catalog lists the table on page %1 as an object of type %2")
                 .arg(page)
                 .arg(type));
}

} // namespace

Table readCatalogDefinition(PageReader &reader)
{
    Table catalog = readDefinition(reader, QStringLiteral("MSysObjects"), catalogPage);
    const CatalogColumns required(catalog, reader.path());
    return catalog;
}

std::vector<CatalogEntry> readCatalog(AccessFile &file, const Table &catalog, PageReader &reader)
{
    const CatalogColumns column(catalog, file.path());
    std::vector<CatalogEntry> entries;
    RowCursor row(file, catalog);
    while (row.next()) {
        for (const int required : {column.id, column.type})
            requireValue(row, catalog, required);
        const qint64 id = row.integer(column.id);
        const qint64 type = row.integer(column.type);
        if (type != TableObject)
            requireNoTable(row, id, type, reader);
        if (type != TableObject && type != OdbcLink && type != FileLink)
            continue;
        for (const int required : {column.name, column.flags})
            requireValue(row, catalog, required);
        CatalogEntry entry;
        entry.name = row.text(column.name);
        if (entry.name.isEmpty())
            row.fail(QStringLiteral("a table of the catalog has an empty name"));
        entry.id = id;
        entry.page = static_cast<quint32>(entry.id) & pageBits;
        entry.isSystem = static_cast<quint32>(row.integer(column.flags)) & systemFlags;
        if (type != TableObject)
            entry.linkTarget = linkTargetOf(row, catalog);
        entries.push_back(std::move(entry));
    }
    return entries;
}

QByteArray readProperties(AccessFile &file, const Table &catalog, const CatalogEntry &entry)
{
    const CatalogColumns column(catalog, file.path());
    const int properties = requiredColumn(catalog, file.path(), "LvProp", ColumnType::Ole);
    RowCursor row(file, catalog);
    while (row.next()) {
        if (row.integer(column.type) == TableObject && row.integer(column.id) == entry.id)
            return row.bytes(properties);
    }
    return {};
}

} // namespace mdb
