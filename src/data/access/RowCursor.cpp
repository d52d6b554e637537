#include "core/Error.h"
#include "data/access/AccessFile.h"
#include "data/access/AccessFilePrivate.h"
#include "data/access/DataPage.h"
#include "data/access/LongValue.h"
#include "data/access/RowLayout.h"
#include "data/access/TableDefinition.h"
#include "data/access/UsageMap.h"
#include "data/access/Values.h"

#include <algorithm>
#include <optional>

namespace mdb {

namespace {

constexpr quint32 pagesPerBlock = 64;
constexpr quint32 gapReadThrough = 4; ///< reading a few foreign pages costs less than another call
constexpr int ownerOffset = 4;
constexpr int mostPointers = 16; ///< a row is moved on by one pointer; more than these are a ring
constexpr int envelopeSize = 20; ///< in front of a calculated value
constexpr int envelopeLength = 16;

} // namespace

class RowCursor::Private
{
public:
    Private(PageReader &pageReader, const Table &ofTable)
        : reader(pageReader)
        , table(ofTable)
        , layout(pageReader.format(), ofTable)
    {
        place = {reader.path(), table.name, table.definitionPage};
        reader.forget();
        const TableState state = readState(reader, table);
        statedRows = state.statedRows;
        pages = ownedPages(reader, state.ownedPages, place);
        block.resize(static_cast<qsizetype>(pagesPerBlock) * reader.format().pageSize);
    }

    bool nextPage();
    void readBlock(quint32 first);
    void checkOwner(QByteArrayView page, const Place &here) const;
    void followPointer(const RowSlot &slot);
    bool takesPage(QByteArrayView page);
    void countDeleted(const RowSlot &slot);
    bool countsDeletedRows(qint64 stated) const;
    void checkRowCount();

    const char *fixedValue(const Column &column) const
    {
        return row.begin + layout.fixedStart() + column.fixedOffset;
    }
    QByteArrayView stored(const Column &column) const;
    QByteArrayView sized(const Column &column, qsizetype size) const;
    QByteArray longValue(const Column &column) const
    {
        return readLongValue(reader, stored(column), place);
    }
    QString textOf(const Column &column, QByteArrayView bytes) const;
    qint64 instantOf(const Column &column) const;
    [[noreturn]] void failDate(const Column &column) const;

    PageReader &reader;
    const Table &table;
    RowLayout layout;
    Place place; ///< the page that the walk is on
    qint64 statedRows = 0;
    qint64 foundRows = 0;
    qint64 deletedRows = 0;       ///< rows flagged as deleted, moved rows that a pointer names not
                                  ///< among them once the walk is done
    qint64 halfDeletedRows = 0;   ///< those of them that carry the one flag alone
    std::optional<Error> foreign; ///< about the first page that is none of the table's

    std::vector<quint32> pages;
    size_t pageAt = 0; ///< next one to visit
    QByteArray block;  ///< pages read in one go
    quint32 blockFirst = 0;
    quint32 blockCount = 0;

    std::vector<RowSlot> slots;
    size_t slotAt = 0; ///< next one to visit
    const char *page = nullptr;
    QByteArray moved; ///< a row that a pointer led to
    RowView row;
};

RowCursor::RowCursor(AccessFile &file, const Table &table)
    : m_columns(table.columns.data())
    , d(std::make_unique<Private>(file.d->reader, table))
{}

RowCursor::~RowCursor() = default;
RowCursor::RowCursor(RowCursor &&) noexcept = default;

bool RowCursor::next()
{
    for (;;) {
        while (d->slotAt < d->slots.size()) {
            const RowSlot &slot = d->slots[d->slotAt++];
            if (slot.isDeleted()) {
                d->countDeleted(slot);
                continue;
            }
            ++d->foundRows;
            if (slot.isPointer())
                d->followPointer(slot);
            else
                d->row = d->layout.view(d->page + slot.start, d->page + slot.end, d->place);
            m_fixed = d->row.begin + d->layout.fixedStart();
            m_nullMask = d->row.nullMask;
            m_rowColumns = d->row.columns;
            return true;
        }
        if (!d->nextPage())
            return false;
    }
}

bool RowCursor::Private::nextPage()
{
    slots.clear();
    slotAt = 0;
    if (pageAt == pages.size()) {
        checkRowCount();
        return false;
    }
    const quint32 number = pages[pageAt];
    place.page = number;
    if (number - blockFirst >= blockCount)
        readBlock(number);
    ++pageAt;
    page =
        block.constData() + static_cast<qsizetype>(number - blockFirst) * reader.format().pageSize;
    const QByteArrayView bytes(page, reader.format().pageSize);
    if (takesPage(bytes))
        readRowTable(reader.format(), bytes, place, slots);
    return true;
}

/// Whether a page of the table's map holds rows of the table. Maps keep pages that were given back
/// now and then: whether one that belongs to another table is such a page, or damaged, is known
/// once the rows are counted.
bool RowCursor::Private::takesPage(QByteArrayView bytes)
{
    try {
        checkOwner(bytes, place);
        return true;
    } catch (const Error &error) {
        if (!foreign)
            foreign = error;
        return false;
    }
}

void RowCursor::Private::countDeleted(const RowSlot &slot)
{
    ++deletedRows;
    if (!slot.isPointer())
        ++halfDeletedRows;
}

/// Reads the run of pages that begins with `first`, as far as the table's pages lie close together.
void RowCursor::Private::readBlock(quint32 first)
{
    quint32 last = first;
    for (size_t i = pageAt + 1; i < pages.size(); ++i) {
        if (pages[i] - last > gapReadThrough || pages[i] - first >= pagesPerBlock)
            break;
        last = pages[i];
    }
    blockCount = 0;
    reader.readBlock(first, last - first + 1, block.data(), place);
    blockFirst = first;
    blockCount = last - first + 1;
}

void RowCursor::Private::checkOwner(QByteArrayView bytes, const Place &here) const
{
    if (bytes[0] != DataPage) {
        here.fail(QStringLiteral("the page is of type %1, not a data page")
                      .arg(static_cast<quint8>(bytes[0])));
    }
    const auto owner = load<quint32>(bytes.data() + ownerOffset);
    if (owner != static_cast<quint32>(table.definitionPage)) {
        here.fail(QStringLiteral("the page belongs to the table defined on page %1").arg(owner));
    }
}

void RowCursor::Private::followPointer(const RowSlot &slot)
{
    QByteArrayView bytes(page + slot.start, page + slot.end);
    Place here = place;
    for (int i = 0; i < mostPointers; ++i) {
        if (bytes.size() < 4)
            here.fail(QStringLiteral("a row's pointer is cut short"));
        const RowPointer pointer = RowPointer::from(load<quint32>(bytes.data()));
        here.page = pointer.page;
        RowSlot target;
        bytes = rowBytes(reader, pointer, here, &target);
        checkOwner(reader.page(pointer.page, here), here);
        if (!target.isDeleted()) {
            here.fail(QStringLiteral("row %1 is pointed to, yet also stands for itself")
                          .arg(pointer.row));
        }
        if (target.isPointer()) {
            --deletedRows;
            continue;
        }
        --deletedRows; // the walk meets it as a deleted row
        --halfDeletedRows;
        moved = bytes.toByteArray();
        row = layout.view(moved.constData(), moved.constData() + moved.size(), here);
        return;
    }
    here.fail(QStringLiteral("a row's pointers form a ring"));
}

/// Some programs flag rows as deleted without counting them off. The count then is that of all
/// rows; a single row that carries one flag alone may as well be a live one with a bit flipped.
bool RowCursor::Private::countsDeletedRows(qint64 stated) const
{
    return stated == foundRows + deletedRows && (deletedRows > 1 || halfDeletedRows == 0);
}

/// The count in the definition is no measure of what there should be: it is 0 after an unclean
/// close, and other programs add and delete rows meanwhile. Yet fewer rows than it states both
/// before and after the walk are rows lost.
void RowCursor::Private::checkRowCount()
{
    place.page = table.definitionPage;
    if (foreign && (statedRows == 0 || foundRows < statedRows))
        throw Error(*foreign);
    if (foundRows >= statedRows)
        return;
    reader.forget();
    const qint64 stated = std::min(statedRows, readState(reader, table).statedRows);
    if (foundRows < stated && !countsDeletedRows(stated)) {
        place.fail(QStringLiteral("the table states %1 rows, but only %2 can be found")
                       .arg(stated)
                       .arg(foundRows));
    }
}

/// The bytes of a value that is not NULL, out of its envelope if it has one.
QByteArrayView RowCursor::Private::stored(const Column &column) const
{
    QByteArrayView bytes;
    if (column.isFixed)
        bytes = {fixedValue(column), column.size};
    else
        bytes = layout.variableValue(row, column.variableIndex, place);
    if (!column.isCalculated || column.type == ColumnType::Memo)
        return bytes;
    const Bytes envelope(bytes, place);
    return envelope.part(envelopeSize, envelope.number(envelopeLength));
}

QByteArrayView RowCursor::Private::sized(const Column &column, qsizetype size) const
{
    const QByteArrayView bytes = stored(column);
    if (bytes.size() < size) {
        place.fail(QStringLiteral("a value of column '") + column.name +
                   QStringLiteral("' is too short"));
    }
    return bytes;
}

QString RowCursor::Private::textOf(const Column &column, QByteArrayView bytes) const
{
    if (reader.format().isJet3())
        return codePageText(bytes, reader.codePage());
    if (const std::optional<QString> text = jet4Text(bytes))
        return *text;
    place.fail(QStringLiteral("a text of column '") + column.name +
               QStringLiteral("' ends within a character"));
}

qint64 RowCursor::Private::instantOf(const Column &column) const
{
    std::optional<qint64> instant;
    if (column.type == ColumnType::DateTimeExtended)
        instant = instantOfExtendedDate(stored(column));
    else
        instant = instantOfDays(load<double>(sized(column, 8).data()));
    if (instant)
        return *instant;
    failDate(column);
}

void RowCursor::Private::failDate(const Column &column) const
{
    place.fail(QStringLiteral("a value of column '") + column.name +
               QStringLiteral("' is no date"));
}

qint64 RowCursor::instant(int column) const
{
    const Column &c = at(column);
    if (!hasBit(c.number))
        return 0;
    if (c.type != ColumnType::DateTime || !c.isFixed)
        return d->instantOf(c);
    if (const auto instant = instantOfDays(load<double>(m_fixed + c.fixedOffset)))
        return *instant;
    d->failDate(c);
}

qint64 RowCursor::otherInteger(const Column &c) const
{
    if (c.type == ColumnType::Boolean && !c.isCalculated)
        return hasBit(c.number);
    if (!hasBit(c.number))
        return 0;
    switch (c.type) {
    case ColumnType::Boolean:
        return d->sized(c, 1)[0] != 0;
    case ColumnType::Byte:
        return load<quint8>(d->sized(c, 1).data());
    case ColumnType::Integer:
        return load<qint16>(d->sized(c, 2).data());
    case ColumnType::Long:
    case ColumnType::Complex:
        return load<qint32>(d->sized(c, 4).data());
    case ColumnType::BigInt:
        return load<qint64>(d->sized(c, 8).data());
    default:
        return qRound64(otherNumber(c));
    }
}

double RowCursor::otherNumber(const Column &c) const
{
    if (c.type != ColumnType::Boolean && !hasBit(c.number))
        return 0;
    switch (c.type) {
    case ColumnType::Single:
        return static_cast<double>(load<float>(d->sized(c, 4).data()));
    case ColumnType::Double:
    case ColumnType::DateTime:
        return load<double>(d->sized(c, 8).data());
    case ColumnType::Currency:
        return static_cast<double>(load<qint64>(d->sized(c, 8).data())) / 10'000;
    case ColumnType::Numeric:
        return numericText(d->sized(c, 17), c.scale).toDouble();
    case ColumnType::Text:
        return d->textOf(c, d->stored(c)).toDouble();
    case ColumnType::Boolean:
    case ColumnType::Byte:
    case ColumnType::Integer:
    case ColumnType::Long:
    case ColumnType::Complex:
    case ColumnType::BigInt:
        return static_cast<double>(otherInteger(c));
    default:
        return 0;
    }
}

QByteArray RowCursor::bytes(int column) const
{
    if (isNull(column))
        return {};
    const Column &c = at(column);
    if (c.type == ColumnType::Ole || c.type == ColumnType::Memo)
        return d->longValue(c);
    return d->stored(c).toByteArray();
}

QString RowCursor::text(int column) const
{
    if (isNull(column))
        return {};
    const Column &c = at(column);
    if (c.type == ColumnType::Text)
        return d->textOf(c, d->stored(c));
    if (c.type == ColumnType::Memo)
        return d->textOf(c, d->longValue(c));
    QByteArray text;
    appendText(column, text);
    return QString::fromLatin1(text);
}

void RowCursor::appendText(int column, QByteArray &out) const
{
    if (isNull(column))
        return;
    const Column &c = at(column);
    switch (c.type) {
    case ColumnType::Text:
    case ColumnType::Memo:
        out += text(column).toUtf8();
        return;
    case ColumnType::Single:
        return appendNumber(out, load<float>(d->sized(c, 4).data()));
    case ColumnType::Double:
        return appendNumber(out, load<double>(d->sized(c, 8).data()));
    case ColumnType::Currency:
        out += decimalText(load<qint64>(d->sized(c, 8).data()), 4);
        return;
    case ColumnType::Numeric:
        out += numericText(d->sized(c, 17), c.scale);
        return;
    case ColumnType::Guid:
        out += guidText(d->sized(c, 16));
        return;
    case ColumnType::DateTime:
    case ColumnType::DateTimeExtended:
        return appendInstant(out, d->instantOf(c));
    case ColumnType::Binary:
    case ColumnType::Ole:
        out += bytes(column).toHex();
        return;
    default:
        return appendNumber(out, integer(column));
    }
}

} // namespace mdb
