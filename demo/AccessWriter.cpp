#include "demo/AccessWriter.h"

#include "base/Error.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace demo {

namespace {

constexpr int definitionHeader = 63;
constexpr int definitionColumn = 25;
constexpr int definitionPageHeader = 8;
constexpr quint32 definitionMagic = 1625;
constexpr int maxInlineLongValue = 64;
constexpr int envelopeSize = 23;           ///< bytes around a calculated value
constexpr int calculatedSize = 39;         ///< stated of calculated columns other than texts
constexpr qint64 maxCompressedMemo = 1024; ///< characters

constexpr quint32 systemObject = 0x80000000;
constexpr qint32 rootContainer = 0x0F000000;
constexpr qint32 tablesContainer = 0x0F000001;

int fixedSize(FieldType type)
{
    switch (type) {
    case FieldType::Boolean:
        return 0; // the null mask holds the value
    case FieldType::Byte:
        return 1;
    case FieldType::Integer:
        return 2;
    case FieldType::Long:
    case FieldType::Single:
        return 4;
    case FieldType::Currency:
    case FieldType::Double:
    case FieldType::DateTime:
        return 8;
    case FieldType::Guid:
        return 16;
    default:
        return -1;
    }
}

bool isLong(FieldType type)
{
    return type == FieldType::Memo || type == FieldType::Ole;
}

bool isText(FieldType type)
{
    return type == FieldType::Memo || type == FieldType::Text;
}

int statedSize(const Field &field)
{
    if (field.resultType)
        return isText(field.type) ? 2 * field.size + envelopeSize : calculatedSize;
    switch (field.type) {
    case FieldType::Boolean:
        return 1;
    case FieldType::Text:
        return 2 * field.size;
    case FieldType::Binary:
        return field.size;
    case FieldType::Numeric:
        return 17;
    default:
        return std::max(0, fixedSize(field.type));
    }
}

/// Whether rows hold pointers to the values, or short values after a header.
bool isLong(const Field &field)
{
    return isLong(field.resultType.value_or(field.type));
}

} // namespace

TableWriter::TableWriter(PageFile &file, QString name, bool isSystem,
                         const std::vector<Field> &fields, const TableOptions &options)
    : m_file(file)
    , m_name(std::move(name))
    , m_isSystem(isSystem)
    , m_order(options.definitionOrder)
    , m_definitionPages{file.allocate()}
    , m_rows(file, quint32(m_definitionPages.front()), options.maxRowsOnPage)
{
    if (fields.size() > 255)
        throw Error(Overflow, QStringLiteral("A table has at most 255 fields"));
    for (const Field &field : fields) {
        Column &column = m_columns.emplace_back();
        column.field = field;
        column.isFixed = fixedSize(field.type) >= 0 && !field.resultType;
        column.fixedOffset = column.isFixed ? m_fixedBytes : 0;
        column.variableIndex = m_variables;
        column.size = statedSize(field);
        if (column.isFixed)
            m_fixedBytes += fixedSize(field.type);
        else
            ++m_variables;
        if (isLong(field))
            column.longValues = std::make_unique<RowPages>(file, longValueOwner);
    }
    if (m_order.empty()) {
        m_order.resize(fields.size());
        std::iota(m_order.begin(), m_order.end(), 0);
    }
    std::erase_if(m_order, [&](int i) { return fields[std::size_t(i)].dropped; });
    setRowFields(int(fields.size()));

    const auto bytes = definition({}, {}).size();
    for (auto placed = qsizetype(pageSize); placed < bytes;
         placed += pageSize - definitionPageHeader)
        m_definitionPages.push_back(file.allocate());
}

void TableWriter::setRowFields(int count)
{
    m_rowFields = count;
    m_rowFixedBytes = 0;
    m_rowVariables = 0;
    for (int i = 0; i < count; ++i) {
        const Column &column = m_columns[std::size_t(i)];
        if (column.isFixed)
            m_rowFixedBytes = column.fixedOffset + fixedSize(column.field.type);
        else
            ++m_rowVariables;
    }
}

TableWriter::Column &TableWriter::column(int field, std::initializer_list<FieldType> types)
{
    Column &found = m_columns.at(std::size_t(field));
    if (std::find(types.begin(), types.end(), found.field.type) == types.end())
        throw Error(TypeMismatch, QStringLiteral("Table '%1': '%2' holds another type of values")
                                      .arg(m_name, found.field.name));
    return found;
}

void TableWriter::markSet(int field)
{
    m_notNull[std::size_t(field / 8)] |= std::uint8_t(1 << field % 8);
}

void TableWriter::setFixed(int field, const void *bytes, std::size_t size)
{
    std::memcpy(m_fixed.data() + m_columns[std::size_t(field)].fixedOffset, bytes, size);
    markSet(field);
}

void TableWriter::setBoolean(int field, bool value)
{
    column(field, {FieldType::Boolean});
    if (value)
        markSet(field);
}

void TableWriter::setInteger(int field, qint64 value)
{
    const FieldType type =
        column(field, {FieldType::Byte, FieldType::Integer, FieldType::Long}).field.type;
    const auto fits = [value](auto number) {
        return value >= std::numeric_limits<decltype(number)>::min() &&
               value <= std::numeric_limits<decltype(number)>::max();
    };
    if ((type == FieldType::Byte && !fits(quint8())) ||
        (type == FieldType::Integer && !fits(qint16())) ||
        (type == FieldType::Long && !fits(qint32())))
        throw Error(Overflow, QStringLiteral("Table '%1': %2 does not fit").arg(m_name).arg(value));
    setFixed(field, &value, std::size_t(fixedSize(type))); // the low bytes come first
}

void TableWriter::setNumber(int field, double value)
{
    const Column &target =
        column(field, {FieldType::Single, FieldType::Double, FieldType::DateTime});
    if (target.field.type == FieldType::Single) {
        const auto single = float(value);
        setFixed(field, &single, sizeof single);
        return;
    }
    setFixed(field, &value, sizeof value);
}

void TableWriter::setCurrency(int field, qint64 tenThousandths)
{
    column(field, {FieldType::Currency});
    setFixed(field, &tenThousandths, sizeof tenThousandths);
}

void TableWriter::setNumeric(int field, const QString &decimal)
{
    Column &target = column(field, {FieldType::Numeric});
    const auto bytes = encodeNumeric(decimal, target.field.scale);
    target.value.assign(bytes.begin(), bytes.end());
    markSet(field);
}

void TableWriter::setGuid(int field, const QUuid &value)
{
    column(field, {FieldType::Guid});
    const auto bytes = encodeGuid(value);
    setFixed(field, bytes.data(), bytes.size());
}

void TableWriter::setText(int field, QStringView value)
{
    Column &target = column(field, {FieldType::Text, FieldType::Memo});
    const bool isMemo = target.field.type == FieldType::Memo;
    if (!isMemo && value.size() > target.field.size)
        throw Error(Overflow, QStringLiteral("Table '%1': a text is longer than the %2 characters "
                                             "of '%3'")
                                  .arg(m_name)
                                  .arg(target.field.size)
                                  .arg(target.field.name));
    if (isMemo && value.size() > maxCompressedMemo) {
        const auto *bytes = reinterpret_cast<const std::uint8_t *>(value.utf16());
        target.value.assign(bytes, bytes + 2 * value.size());
    } else {
        encodeText(value, target.value);
    }
    if (isMemo)
        storeLongValue(target);
    markSet(field);
}

void TableWriter::setBytes(int field, QByteArrayView value)
{
    Column &target = column(field, {FieldType::Binary, FieldType::Ole});
    target.value.assign(value.begin(), value.end());
    if (isLong(target.field.type))
        storeLongValue(target);
    else if (value.size() > target.field.size)
        throw Error(Overflow, QStringLiteral("Table '%1': too many bytes").arg(m_name));
    markSet(field);
}

void TableWriter::setResult(int field, QByteArrayView value)
{
    Column &target = m_columns.at(std::size_t(field));
    target.value.assign(std::size_t(envelopeSize + value.size()), 0);
    put(&target.value[16], quint32(value.size()));
    std::copy(value.begin(), value.end(), target.value.begin() + 20);
    if (target.longValues)
        storeLongValue(target);
    markSet(field);
}

/// Stores a long value depending on its length: after its header in the row, in a row of a page of
/// long values, or in a chain of such rows, each of which starts with a pointer to the next. Leaves
/// in `value` what the row itself holds.
void TableWriter::storeLongValue(Column &column)
{
    constexpr std::size_t headSize = 12;
    constexpr quint32 isInline = 0x80000000;
    constexpr quint32 isOneRow = 0x40000000;
    constexpr std::size_t maxInChainedRow = maxLongValueRow - 4;

    std::vector<std::uint8_t> &value = column.value;
    const auto size = value.size();
    std::array<std::uint8_t, headSize> head{};
    if (size <= std::size_t(maxInlineLongValue)) {
        put(head.data(), quint32(size) | isInline);
        value.insert(value.begin(), head.begin(), head.end());
        return;
    }
    if (size >= isOneRow)
        throw Error(Overflow, QStringLiteral("Table '%1': a value is too long").arg(m_name));

    RowAddress first;
    if (size <= std::size_t(maxLongValueRow)) {
        first = column.longValues->add(value.data(), int(size));
        put(head.data(), quint32(size) | isOneRow);
    } else {
        // From the last piece to the first, so that each has the address of the next one.
        std::array<std::uint8_t, maxLongValueRow> piece;
        auto begin = (size - 1) / maxInChainedRow * maxInChainedRow;
        quint32 next = 0;
        for (auto end = size; end > 0; end = begin, begin -= std::min(begin, maxInChainedRow)) {
            put(piece.data(), next);
            std::memcpy(piece.data() + 4, value.data() + begin, end - begin);
            first = column.longValues->add(piece.data(), int(4 + end - begin));
            next = first.pointer();
        }
        put(head.data(), quint32(size));
    }
    put(head.data() + 4, first.pointer());
    value.assign(head.begin(), head.end());
}

RowAddress TableWriter::append()
{
    std::uint8_t *at = m_row.data();
    const auto spaceFor = [&](std::size_t size) {
        if (at + size > m_row.data() + maxRowBytes)
            throw Error(Overflow, QStringLiteral("Table '%1': a row is too long").arg(m_name));
    };
    put(at, quint16(m_rowFields));
    at += 2;
    spaceFor(std::size_t(m_rowFixedBytes));
    std::memcpy(at, m_fixed.data(), std::size_t(m_rowFixedBytes));
    at += m_rowFixedBytes;

    if (m_variables > 0) {
        std::array<quint16, 256> offsets{};
        int count = 0;
        for (int i = 0; i < m_rowFields; ++i) {
            Column &column = m_columns[std::size_t(i)];
            if (column.isFixed)
                continue;
            offsets[std::size_t(count++)] = quint16(at - m_row.data());
            spaceFor(column.value.size());
            std::copy(column.value.begin(), column.value.end(), at);
            at += column.value.size();
            column.value.clear();
        }
        const auto end = quint16(at - m_row.data());
        spaceFor(std::size_t(2 * count + 4));
        put(at, end);
        while (count > 0)
            put(at += 2, offsets[std::size_t(--count)]);
        put(at += 2, quint16(m_rowVariables));
        at += 2;
    } else if (m_fixedBytes == 0) {
        put(at, quint16(0)); // Booleans alone have the count of variable values
        at += 2;
    }
    const auto maskBytes = std::size_t(m_rowFields + 7) / 8;
    spaceFor(maskBytes);
    std::memcpy(at, m_notNull.data(), maskBytes);
    at += maskBytes;

    std::memset(m_fixed.data(), 0, std::size_t(m_fixedBytes));
    m_notNull.fill(0);
    ++m_rowCount;
    return m_rows.add(m_row.data(), int(at - m_row.data()));
}

void TableWriter::deleteRow(RowAddress address)
{
    m_rows.addFlags(address, rowDeleted | rowPointer);
    --m_rowCount;
}

void TableWriter::moveRow(RowAddress address)
{
    const QByteArray bytes = m_rows.row(address);
    if (m_rows.pages().back() == address.page)
        m_rows.startPage();
    // The moved row is marked as deleted: only the pointer leads to it.
    const RowAddress target = m_rows.add(reinterpret_cast<const std::uint8_t *>(bytes.data()),
                                         int(bytes.size()), rowDeleted);
    m_rows.replaceByPointer(address, target);
}

/// The definition before it is divided into pages.
QByteArray TableWriter::definition(RowAddress ownedMap, RowAddress roomyMap) const
{
    QByteArray bytes(definitionHeader, '\0');
    auto *header = reinterpret_cast<std::uint8_t *>(bytes.data());
    put(header + 12, definitionMagic);
    put(header + 16, qint32(m_statedRows >= 0 ? m_statedRows : m_rowCount));
    header[24] = 1; // automatic numbers may be used
    header[40] = m_isSystem ? 'S' : 'N';
    put(header + 41, quint16(m_columns.size()));
    put(header + 43, quint16(m_variables));
    put(header + 45, quint16(m_order.size()));
    put(header + 55, ownedMap.pointer());
    put(header + 59, roomyMap.pointer());

    for (const int number : m_order) {
        const Column &column = m_columns[std::size_t(number)];
        std::array<std::uint8_t, definitionColumn> entry{};
        entry[0] = std::uint8_t(column.field.type);
        put(&entry[1], definitionMagic);
        put(&entry[5], quint16(number));
        put(&entry[7], quint16(column.variableIndex));
        put(&entry[9], quint16(number));
        if (isText(column.field.type)) {
            put<quint16>(&entry[11], 0x0409);
            entry[16] = 1; // compressed where that is shorter
        } else if (column.field.type == FieldType::Numeric) {
            entry[11] = std::uint8_t(column.field.precision);
            entry[12] = std::uint8_t(column.field.scale);
        }
        entry[15] = column.isFixed ? 3 : 2;
        if (column.field.resultType)
            entry[16] |= 0xC0;
        put(&entry[21], quint16(column.fixedOffset));
        put(&entry[23], quint16(column.size));
        bytes.append(reinterpret_cast<const char *>(entry.data()), definitionColumn);
    }
    for (const int number : m_order) {
        const QString &fieldName = m_columns[std::size_t(number)].field.name;
        appendNumber(bytes, quint16(2 * fieldName.size()));
        bytes.append(reinterpret_cast<const char *>(fieldName.utf16()), 2 * fieldName.size());
    }
    for (const int number : m_order) {
        const Column &column = m_columns[std::size_t(number)];
        if (!column.longValues)
            continue;
        appendNumber(bytes, quint16(number));
        appendNumber(bytes, column.longValueMap.pointer());
        appendNumber(bytes,
                     RowAddress{column.longValueMap.page, column.longValueMap.row + 1}.pointer());
    }
    appendNumber(bytes, quint16(0xFFFF));
    put(reinterpret_cast<std::uint8_t *>(bytes.data()) + 8, quint32(bytes.size()));
    return bytes;
}

QByteArray TableWriter::properties() const
{
    std::vector<std::pair<QString, std::uint8_t>> types;
    for (const Column &column : m_columns) {
        if (column.field.resultType)
            types.emplace_back(column.field.name, std::uint8_t(*column.field.resultType));
    }
    return types.empty() ? QByteArray() : encodeResultTypes(types);
}

void TableWriter::finish(UsageMaps &maps)
{
    m_rows.flush();
    for (Column &column : m_columns) {
        if (!column.longValues)
            continue;
        column.longValues->flush();
        column.longValueMap =
            maps.addPair(column.longValues->pages(), column.longValues->roomyPages());
    }
    const RowAddress owned = maps.addPair(m_rows.pages(), m_rows.roomyPages());
    const QByteArray bytes = definition(owned, {owned.page, owned.row + 1});

    // The first page includes the header's bytes, the others start with a header of their own.
    qsizetype done = definitionPageHeader;
    for (std::size_t i = 0; i < m_definitionPages.size(); ++i) {
        const auto size = std::min<qsizetype>(bytes.size() - done, pageSize - definitionPageHeader);
        Page page{};
        page[0] = 2;
        page[1] = 1;
        const auto unused = pageSize - definitionPageHeader - size;
        put(&page[2], quint16(std::max<qsizetype>(0, unused - definitionPageHeader)));
        if (i + 1 < m_definitionPages.size())
            put(&page[4], qint32(m_definitionPages[i + 1]));
        std::memcpy(&page[definitionPageHeader], bytes.constData() + done, std::size_t(size));
        m_file.write(m_definitionPages[i], page);
        done += size;
    }
}

AccessWriter::AccessWriter(const QString &path, qint64 createdInstant)
    : m_created(createdInstant)
    , m_file(path)
{
    m_file.allocate(); // the header
    m_file.allocate(); // the map of free pages
    using enum FieldType;
    const auto name = [](const char *text) { return QString::fromLatin1(text); };
    // Readers look for the catalog on page 2.
    addTable(name("MSysObjects"), true,
             {{name("Id"), Long},
              {name("ParentId"), Long},
              {name("Name"), Text},
              {name("Type"), Integer},
              {name("DateCreate"), DateTime},
              {name("DateUpdate"), DateTime},
              {name("Owner"), Binary},
              {name("Flags"), Long},
              {name("Database"), Memo},
              {name("Connect"), Memo},
              {name("ForeignName"), Text},
              {name("RmtInfoShort"), Binary},
              {name("RmtInfoLong"), Ole},
              {name("Lv"), Ole},
              {name("LvProp"), Ole},
              {name("LvModule"), Ole},
              {name("LvExtra"), Ole}},
             {});
    addTable(name("MSysACEs"), true,
             {{name("ACM"), Long},
              {name("FInheritable"), Boolean},
              {name("ObjectId"), Long},
              {name("SID"), Binary}},
             {});
    addTable(name("MSysQueries"), true,
             {{name("Attribute"), Byte},
              {name("Expression"), Memo},
              {name("Flag"), Integer},
              {name("LvExtra"), Ole},
              {name("Name1"), Text},
              {name("Name2"), Text},
              {name("ObjectId"), Long},
              {name("Order"), Binary}},
             {});
    addTable(name("MSysRelationships"), true,
             {{name("ccolumn"), Long},
              {name("grbit"), Long},
              {name("icolumn"), Long},
              {name("szColumn"), Text},
              {name("szObject"), Text},
              {name("szReferencedColumn"), Text},
              {name("szReferencedObject"), Text},
              {name("szRelationship"), Text}},
             {});
}

TableWriter &AccessWriter::addTable(const QString &name, const std::vector<Field> &fields,
                                    const TableOptions &options)
{
    return addTable(name, false, fields, options);
}

TableWriter &AccessWriter::addTable(const QString &name, bool isSystem,
                                    const std::vector<Field> &fields, const TableOptions &options)
{
    m_tables.emplace_back(new TableWriter(m_file, name, isSystem, fields, options));
    return *m_tables.back();
}

void AccessWriter::addLink(const QString &name, const QString &database, const QString &connect,
                           const QString &foreignName)
{
    m_links.push_back({name, database, connect, foreignName});
}

void AccessWriter::addCatalogRow(qint32 id, qint32 parent, const QString &name, int type,
                                 quint32 flags)
{
    const QByteArrayView defaultOwner("\xA6\x33", 2);
    constexpr qint32 fullAccess = 0xFFFFF;

    TableWriter &objects = *m_tables[0];
    objects.setInteger(0, id);
    objects.setInteger(1, parent);
    objects.setText(2, name);
    objects.setInteger(3, type);
    objects.setNumber(4, accessDays(m_created));
    objects.setNumber(5, accessDays(m_created));
    objects.setBytes(6, defaultOwner);
    objects.setInteger(7, qint32(flags));
    objects.append();

    TableWriter &rights = *m_tables[1];
    rights.setInteger(0, fullAccess);
    rights.setInteger(2, id);
    rights.setBytes(3, defaultOwner);
    rights.append();
}

void AccessWriter::writeCatalog()
{
    constexpr int container = 3;
    constexpr int table = 1;
    constexpr int odbcLink = 4;
    constexpr int fileLink = 6;
    addCatalogRow(tablesContainer, rootContainer, QStringLiteral("Tables"), container,
                  systemObject);
    addCatalogRow(0x0F000002, rootContainer, QStringLiteral("Databases"), container, systemObject);
    addCatalogRow(0x0F000003, rootContainer, QStringLiteral("Relationships"), container,
                  systemObject);
    addCatalogRow(0x10000000, 0x0F000002, QStringLiteral("MSysDb"), 2, systemObject);
    TableWriter &objects = *m_tables[0];
    qint32 id = std::numeric_limits<qint32>::min();
    for (const Link &link : m_links) {
        objects.setText(8, link.database);
        objects.setText(9, link.connect);
        objects.setText(10, link.foreignName);
        addCatalogRow(id++, tablesContainer, link.name,
                      link.database.isEmpty() ? odbcLink : fileLink, 0);
    }
    for (const auto &entry : m_tables) {
        if (const QByteArray properties = entry->properties(); !properties.isEmpty())
            objects.setBytes(14, properties);
        addCatalogRow(entry->definitionPage(), tablesContainer, entry->name(), table,
                      entry->m_isSystem ? systemObject : 0);
    }
}

void AccessWriter::finish()
{
    writeCatalog();
    UsageMaps maps(m_file);
    for (const auto &table : m_tables)
        table->finish(maps);
    maps.flush();
    UsageMaps::writeGlobalMap(m_file);
    m_file.write(0, headerPage(m_created));
    m_file.commit();
}

} // namespace demo
