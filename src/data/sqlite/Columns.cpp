#include "data/sqlite/Columns.h"

#include "data/DayNumbers.h"
#include "data/sqlite/VirtualTable.h"

#include <QStringList>

namespace {

int compareTexts(void *, int leftBytes, const void *left, int rightBytes, const void *right)
{
    const QStringView first(static_cast<const char16_t *>(left), leftBytes / 2);
    const QStringView second(static_cast<const char16_t *>(right), rightBytes / 2);
    return first.compare(second, Qt::CaseInsensitive);
}

QLatin1String sqlType(ColumnKind kind)
{
    switch (kind) {
    case ColumnKind::Integer:
        return QLatin1String(" INTEGER");
    case ColumnKind::Number:
    case ColumnKind::Date:
        return QLatin1String(" REAL");
    case ColumnKind::Text:
        return QLatin1String(" TEXT COLLATE ACCESS");
    case ColumnKind::Bytes:
        break;
    }
    return QLatin1String(" BLOB");
}

} // namespace

ColumnKind kindOf(const mdb::Column &column)
{
    switch (column.type) {
    case mdb::ColumnType::Boolean:
    case mdb::ColumnType::Byte:
    case mdb::ColumnType::Integer:
    case mdb::ColumnType::Long:
    case mdb::ColumnType::BigInt:
        return ColumnKind::Integer;
    case mdb::ColumnType::Currency:
    case mdb::ColumnType::Single:
    case mdb::ColumnType::Double:
    case mdb::ColumnType::Numeric:
        return ColumnKind::Number;
    case mdb::ColumnType::DateTime:
        return ColumnKind::Date;
    case mdb::ColumnType::Text:
    case mdb::ColumnType::Memo:
    case mdb::ColumnType::Guid:
    case mdb::ColumnType::DateTimeExtended:
        return ColumnKind::Text;
    case mdb::ColumnType::Binary:
    case mdb::ColumnType::Ole:
    case mdb::ColumnType::Complex:
        break;
    }
    return ColumnKind::Bytes;
}

void addAccessCollation(sqlite3 *database)
{
    sqlite3_create_collation(database, accessCollation, SQLITE_UTF16_ALIGNED, nullptr,
                             compareTexts);
}

QString declarationOf(const mdb::Table &table)
{
    QStringList columns;
    for (const mdb::Column &column : table.columns)
        columns.append(quotedName(column.name) + sqlType(kindOf(column)));
    return QLatin1String("CREATE TABLE t(") + columns.join(u',') + QLatin1Char(')');
}

qint64 integerOf(const mdb::RowCursor &row, const mdb::Table &table, int column)
{
    const qint64 value = row.integer(column);
    const bool isBoolean =
        table.columns[static_cast<size_t>(column)].type == mdb::ColumnType::Boolean;
    return isBoolean ? -value : value;
}

void resultOf(sqlite3_context *context, const mdb::RowCursor &row, const mdb::Table &table,
              int column)
{
    if (row.isNull(column)) {
        sqlite3_result_null(context);
        return;
    }
    switch (kindOf(table.columns[static_cast<size_t>(column)])) {
    case ColumnKind::Integer:
        sqlite3_result_int64(context, integerOf(row, table, column));
        break;
    case ColumnKind::Number:
        sqlite3_result_double(context, row.number(column));
        break;
    case ColumnKind::Date:
        sqlite3_result_double(context, dayNumber(row.instant(column)));
        break;
    case ColumnKind::Text:
        resultText(context, row.text(column));
        break;
    case ColumnKind::Bytes:
        resultBytes(context, row.bytes(column));
        break;
    }
}

void resultText(sqlite3_context *context, const QString &text)
{
    sqlite3_result_text64(context, reinterpret_cast<const char *>(text.utf16()),
                          static_cast<sqlite3_uint64>(text.size()) * 2, SQLITE_TRANSIENT,
                          SQLITE_UTF16);
}

void resultBytes(sqlite3_context *context, const QByteArray &bytes)
{
    sqlite3_result_blob64(context, bytes.constData(), static_cast<sqlite3_uint64>(bytes.size()),
                          SQLITE_TRANSIENT);
}
