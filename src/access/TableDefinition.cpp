#include "access/TableDefinition.h"

#include "access/Values.h"
#include "base/CodePages.h"

#include <set>

namespace mdb {

namespace {

constexpr int definitionLengthOffset = 8;
constexpr int nextPageOffset = 4;
constexpr int pageHeader = 8;
constexpr int columnLimit = 4096; ///< far more than any table can have

constexpr quint8 fixedFlag = 0x01;
constexpr quint8 calculatedFlags = 0xC0; ///< in the second byte of flags

/// The concatenated pages of the definition, without the headers of all but the first.
QByteArray definitionBytes(PageReader &reader, quint32 firstPage, const Location &where)
{
    QByteArray bytes;
    std::set<quint32> seen;
    for (quint32 page = firstPage; page != 0;) {
        const Location here{where.file, where.table, page};
        if (!seen.insert(page).second)
            here.fail(QStringLiteral("the definition's pages form a cycle"));
        const QByteArrayView content = reader.page(page, DefinitionPage, here);
        bytes += content.sliced(bytes.isEmpty() ? 0 : pageHeader);
        page = load<quint32>(content.data() + nextPageOffset);
    }
    return bytes;
}

/// Bytes that a value of a fixed type takes; 0 when it depends on the column.
int typeSize(ColumnType type)
{
    switch (type) {
    case ColumnType::Boolean:
        return 0;
    case ColumnType::Byte:
        return 1;
    case ColumnType::Integer:
        return 2;
    case ColumnType::Long:
    case ColumnType::Single:
    case ColumnType::Complex:
        return 4;
    case ColumnType::Currency:
    case ColumnType::Double:
    case ColumnType::DateTime:
    case ColumnType::BigInt:
        return 8;
    case ColumnType::Guid:
        return 16;
    case ColumnType::Numeric:
        return 17;
    case ColumnType::DateTimeExtended:
        return 42;
    default:
        return 0;
    }
}

bool isKnownType(quint8 code)
{
    return (code >= 1 && code <= 12) || code == 15 || code == 16 || (code >= 18 && code <= 20);
}

/// The type for a stored code; internal types of Access are read as bytes.
ColumnType columnType(quint8 code)
{
    return isKnownType(code) ? static_cast<ColumnType>(code) : ColumnType::Binary;
}

Column readColumn(const Format &format, const Bytes &bytes, int at, const Location &where)
{
    Column column;
    column.type = columnType(bytes.byte(at));
    column.number = bytes.word(at + format.columnNumber);
    column.variableIndex = bytes.word(at + format.columnVariableIndex);
    column.fixedOffset = bytes.word(at + format.columnFixedOffset);
    column.size = bytes.word(at + format.columnLength);
    column.isFixed = bytes.byte(at + format.columnFlags) & fixedFlag;
    if (column.type == ColumnType::Numeric)
        column.scale = bytes.byte(at + format.columnScale);
    if (format.columnMoreFlags >= 0) {
        const quint8 flags = bytes.byte(at + format.columnMoreFlags);
        column.isCalculated = (flags & calculatedFlags) == calculatedFlags;
    }
    const int size = typeSize(column.type);
    if (column.isFixed && size != 0 && column.size != size) {
        where.fail(QStringLiteral("column number %1 of type %2 cannot have %3 bytes")
                       .arg(column.number)
                       .arg(static_cast<int>(column.type))
                       .arg(column.size));
    }
    return column;
}

QString readName(PageReader &reader, const Bytes &bytes, int &at, const Location &where)
{
    if (reader.format().isJet3()) {
        const int length = bytes.byte(at);
        const auto name = codePageText(bytes.part(at + 1, length), reader.codePage());
        if (!name)
            where.fail(
                QStringLiteral("text in code page %1 cannot be read").arg(reader.codePage()));
        at += 1 + length;
        return *name;
    }
    const int length = bytes.word(at);
    const QByteArrayView units = bytes.part(at + 2, length);
    at += 2 + length;
    return unicodeText(units);
}

/// Throws when the values of two columns overlap, or one is outside the row.
void checkOverlaps(const Table &table, const Location &where)
{
    std::vector<bool> numbers(static_cast<size_t>(table.maxColumns));
    std::vector<bool> variable(static_cast<size_t>(table.variableColumns));
    std::vector<bool> fixed;
    const auto claim = [&](std::vector<bool> &claimed, int at, int count, const Column &column) {
        for (auto i = static_cast<size_t>(at); i < static_cast<size_t>(at + count); ++i) {
            if (i >= claimed.size() || claimed[i]) {
                where.fail(QStringLiteral("column '") + column.name +
                           QStringLiteral("' has an impossible position in the row"));
            }
            claimed[i] = true;
        }
    };
    for (const Column &column : table.columns) {
        if (column.isCalculated && column.isFixed) {
            where.fail(QStringLiteral("calculated column '") + column.name +
                       QStringLiteral("' is among those of fixed size"));
        }
        claim(numbers, column.number, 1, column);
        if (!column.isFixed) {
            claim(variable, column.variableIndex, 1, column);
        } else if (column.type != ColumnType::Boolean) {
            const auto end = static_cast<size_t>(column.fixedOffset + column.size);
            fixed.resize(std::max(fixed.size(), end));
            claim(fixed, column.fixedOffset, column.size, column);
        }
    }
}

} // namespace

Table readDefinition(PageReader &reader, const QString &name, quint32 page)
{
    const Format &format = reader.format();
    const Location where{reader.path(), name, page};
    const QByteArray content = definitionBytes(reader, page, where);
    const Bytes bytes(content, where);
    if (bytes.number(definitionLengthOffset) > static_cast<quint32>(content.size()))
        where.fail(QStringLiteral("the definition is longer than its pages"));

    Table table;
    table.name = name;
    table.definitionPage = static_cast<int>(page);
    table.statedRows = bytes.number(format.statedRows);
    table.maxColumns = bytes.word(format.maxColumns);
    table.variableColumns = bytes.word(format.variableColumns);
    const int columns = bytes.word(format.columns);
    const quint32 indexes = bytes.number(format.indexes);
    if (columns == 0 || columns > table.maxColumns || table.maxColumns > columnLimit ||
        table.variableColumns > table.maxColumns || indexes > columnLimit) {
        where.fail(QStringLiteral("the definition's counts are impossible"));
    }

    int at = format.indexStart + static_cast<int>(indexes) * format.indexSize;
    table.columns.reserve(static_cast<size_t>(columns));
    for (int i = 0; i < columns; ++i, at += format.columnSize)
        table.columns.push_back(readColumn(format, bytes, at, where));
    for (Column &column : table.columns)
        column.name = readName(reader, bytes, at, where);
    checkOverlaps(table, where);
    return table;
}

bool isDefinitionPage(PageReader &reader, quint32 page)
{
    if (page >= reader.pageCount())
        return false;
    return reader.page(page, Location{reader.path(), {}, page})[0] == DefinitionPage;
}

void setResultTypes(Table &table, const QHash<QString, quint8> &types, const Location &where)
{
    for (Column &column : table.columns) {
        const auto type = types.constFind(column.name.toCaseFolded());
        if (!column.isCalculated || type == types.cend())
            continue;
        if (!isKnownType(*type)) {
            where.fail(QStringLiteral("column '%1' has results of the unknown type %2")
                           .arg(column.name)
                           .arg(*type));
        }
        column.type = columnType(*type);
    }
}

TableState readState(PageReader &reader, const Table &table)
{
    const auto page = static_cast<quint32>(table.definitionPage);
    const Location where{reader.path(), table.name, page};
    const Bytes bytes(reader.page(page, DefinitionPage, where), where);
    return {bytes.number(reader.format().statedRows),
            RowPointer::from(bytes.number(reader.format().ownedPages))};
}

} // namespace mdb
