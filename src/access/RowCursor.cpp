#include "access/AccessFile.h"
#include "access/AccessFilePrivate.h"
#include "access/DataPage.h"
#include "access/LongValue.h"
#include "access/RowLayout.h"
#include "access/TableDefinition.h"
#include "access/UsageMap.h"
#include "access/Values.h"
#include "base/CodePages.h"
#include "base/DayNumbers.h"
#include "base/Error.h"

#include <algorithm>
#include <new>
#include <optional>
#include <stdexcept>

namespace mdb {

namespace {

constexpr quint32 pagesPerBlock = 64;
constexpr quint32 maxGap = 4; ///< reading a few other pages costs less than another call
constexpr int ownerOffset = 4;
constexpr int maxPointers = 16;  ///< a moved row has one pointer; more than these are a cycle
constexpr int envelopeSize = 20; ///< before a calculated value
constexpr int envelopeLength = 16;

bool isLong(const Column &column)
{
    return column.type == ColumnType::Ole || column.type == ColumnType::Memo;
}

} // namespace

class RowCursor::Private
{
public:
    Private(AccessFile::Private &ofFile, const Table &ofTable)
        : file(ofFile)
        , reader(ofFile.reader)
        , table(ofTable)
        , layout(ofFile.reader.format(), ofTable)
    {
        where = {reader.path(), table.name, table.definitionPage};
        reader.forget();
        const TableState state = readState(reader, table);
        statedRows = state.statedRows;
        pages = ownedPages(reader, state.ownedPages, where);
        block.resize(static_cast<qsizetype>(pagesPerBlock) * reader.format().pageSize);
    }

    bool nextPage();
    void readBlock(quint32 first);
    bool belongsToTable(QByteArrayView bytes) const;
    bool isGivenUp(quint32 number);
    void checkOwner(QByteArrayView bytes, const Location &here) const;
    void followPointer(const RowSlot &slot);
    void checkRowCount();

    const char *fixedValue(const Column &column) const
    {
        return row.begin + layout.fixedStart() + column.fixedOffset;
    }
    QByteArrayView stored(const Column &column) const;
    QByteArrayView sized(const Column &column, qsizetype size) const;
    QByteArrayView result(const Column &column, QByteArrayView envelope) const;
    bool hasValue(const Column &column) const;
    QByteArray longValue(const Column &column) const;
    QByteArray numericOf(const Column &column) const;
    QString textOf(const Column &column, QByteArrayView bytes) const;
    qint64 instantOf(const Column &column) const;
    [[noreturn]] void failValue(const Column &column, const QString &what) const;

    /// Returns what `make` returns for a column's value, whose size may exceed the memory.
    template <typename Make>
    auto made(const Column &column, Make make) const
    {
        try {
            return make();
        } catch (const std::bad_alloc &) {
            failValue(column, notEnoughMemory());
        } catch (const std::length_error &) {
            failValue(column, notEnoughMemory());
        }
    }
    static QString notEnoughMemory() { return QStringLiteral("needs more memory than there is"); }

    AccessFile::Private &file;
    PageReader &reader;
    const Table &table;
    RowLayout layout;
    Location where; ///< the current page
    qint64 statedRows = 0;
    qint64 foundRows = 0;

    std::vector<quint32> pages;
    size_t pageAt = 0; ///< index of the next one to visit
    QByteArray block;  ///< pages read at once
    quint32 blockFirst = 0;
    quint32 blockCount = 0;

    std::vector<RowSlot> slots;
    size_t slotAt = 0; ///< index of the next one to visit
    const char *page = nullptr;
    QByteArray moved; ///< a row that a pointer led to
    RowView row;
};

RowCursor::RowCursor(AccessFile &file, const Table &table)
    : m_columns(table.columns.data())
    , d(std::make_unique<Private>(*file.d, table))
{}

RowCursor::~RowCursor() = default;
RowCursor::RowCursor(RowCursor &&) noexcept = default;

bool RowCursor::next()
{
    for (;;) {
        while (d->slotAt < d->slots.size()) {
            const RowSlot &slot = d->slots[d->slotAt++];
            if (slot.isDeleted())
                continue;
            ++d->foundRows;
            if (slot.isPointer())
                d->followPointer(slot);
            else
                d->row = d->layout.view(d->page + slot.start, d->page + slot.end, d->where);
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
    where.page = number;
    if (number - blockFirst >= blockCount)
        readBlock(number);
    ++pageAt;
    page =
        block.constData() + static_cast<qsizetype>(number - blockFirst) * reader.format().pageSize;
    const QByteArrayView bytes(page, reader.format().pageSize);
    if (!belongsToTable(bytes) && isGivenUp(number))
        return true;
    checkOwner(bytes, where);
    readRowTable(reader.format(), bytes, where, slots);
    return true;
}

bool RowCursor::Private::belongsToTable(QByteArrayView bytes) const
{
    return bytes[0] == DataPage &&
           load<quint32>(bytes.data() + ownerOffset) == static_cast<quint32>(table.definitionPage);
}

/// Whether the table's map no longer has a page: another program may delete rows while we read.
bool RowCursor::Private::isGivenUp(quint32 number)
{
    reader.forget();
    const std::vector<quint32> present =
        ownedPages(reader, readState(reader, table).ownedPages, where);
    return !std::binary_search(present.begin(), present.end(), number);
}

/// Reads pages from `first` on, as far as the table's pages are close together.
void RowCursor::Private::readBlock(quint32 first)
{
    quint32 last = first;
    for (size_t i = pageAt + 1; i < pages.size(); ++i) {
        if (pages[i] - last > maxGap || pages[i] - first >= pagesPerBlock)
            break;
        last = pages[i];
    }
    blockCount = 0;
    reader.readBlock(first, last - first + 1, block.data(), where);
    blockFirst = first;
    blockCount = last - first + 1;
}

void RowCursor::Private::checkOwner(QByteArrayView bytes, const Location &here) const
{
    if (belongsToTable(bytes))
        return;
    if (bytes[0] != DataPage) {
        here.fail(QStringLiteral("the page is of type %1, not a data page")
                      .arg(static_cast<quint8>(bytes[0])));
    }
    here.fail(QStringLiteral("the page belongs to the table defined on page %1")
                  .arg(load<quint32>(bytes.data() + ownerOffset)));
}

void RowCursor::Private::followPointer(const RowSlot &slot)
{
    QByteArrayView bytes(page + slot.start, page + slot.end);
    Location here = where;
    for (int i = 0; i < maxPointers; ++i) {
        if (bytes.size() < 4)
            here.fail(QStringLiteral("a row's pointer is cut short"));
        const RowPointer pointer = RowPointer::from(load<quint32>(bytes.data()));
        here.page = pointer.page;
        RowSlot target;
        bytes = rowBytes(reader, pointer, here, &target);
        checkOwner(reader.page(pointer.page, here), here);
        if (!target.isDeleted()) {
            here.fail(QStringLiteral("row %1 is the target of a pointer but not marked as such")
                          .arg(pointer.row));
        }
        if (target.isPointer())
            continue;
        moved = bytes.toByteArray();
        row = layout.view(moved.constData(), moved.constData() + moved.size(), here);
        return;
    }
    here.fail(QStringLiteral("a row's pointers form a cycle"));
}

/// The count in the definition is not reliable: it is 0 after an unclean close, other programs add
/// and delete rows while we read, and some do not count. But where it states more rows than were
/// found both before and after reading, rows may be lost.
void RowCursor::Private::checkRowCount()
{
    where.page = table.definitionPage;
    if (foundRows >= statedRows)
        return;
    reader.forget();
    const qint64 stated = std::min(statedRows, readState(reader, table).statedRows);
    if (foundRows >= stated)
        return;
    file.warnings[table.definitionPage] = where.message(
        QStringLiteral("the table states %1 rows, but %2 were found").arg(stated).arg(foundRows));
}

/// The bytes of a value that is not NULL, without its envelope if it has one; of a long value what
/// the row holds.
QByteArrayView RowCursor::Private::stored(const Column &column) const
{
    if (column.isFixed)
        return {fixedValue(column), column.size};
    const QByteArrayView bytes = layout.variableValue(row, column.variableIndex, where);
    return column.isCalculated && !isLong(column) ? result(column, bytes) : bytes;
}

/// The content of the envelope of a calculated value; empty when it is NULL.
QByteArrayView RowCursor::Private::result(const Column &column, QByteArrayView envelope) const
{
    if (envelope.isEmpty())
        return {};
    if (envelope.size() < envelopeSize)
        failValue(column, QStringLiteral("is too short"));
    const auto size = load<quint32>(envelope.data() + envelopeLength);
    if (size > envelope.size() - envelopeSize)
        failValue(column, QStringLiteral("is longer than its envelope"));
    return envelope.sliced(envelopeSize, size);
}

bool RowCursor::Private::hasValue(const Column &column) const
{
    if (!row.hasBit(column.number))
        return false;
    if (!column.isCalculated)
        return true;
    return isLong(column) ? !longValue(column).isEmpty() : !stored(column).isEmpty();
}

QByteArray RowCursor::Private::longValue(const Column &column) const
{
    return made(column, [&] {
        const QByteArray value = readLongValue(reader, stored(column), where);
        return column.isCalculated ? result(column, value).toByteArray() : value;
    });
}

QByteArray RowCursor::Private::numericOf(const Column &column) const
{
    if (!column.isCalculated)
        return numericText(sized(column, 17), column.scale);
    if (const std::optional<QByteArray> text = calculatedNumericText(stored(column)))
        return *text;
    failValue(column, QStringLiteral("is not a number"));
}

QByteArrayView RowCursor::Private::sized(const Column &column, qsizetype size) const
{
    const QByteArrayView bytes = stored(column);
    if (bytes.size() < size)
        failValue(column, QStringLiteral("is too short"));
    return bytes;
}

QString RowCursor::Private::textOf(const Column &column, QByteArrayView bytes) const
{
    const bool isJet3 = reader.format().isJet3();
    const std::optional<QString> text = made(
        column, [&] { return isJet3 ? codePageText(bytes, reader.codePage()) : jet4Text(bytes); });
    if (text)
        return *text;
    failValue(
        column,
        isJet3 ? QStringLiteral("is in code page %1, which cannot be read").arg(reader.codePage())
               : QStringLiteral("ends within a character"));
}

qint64 RowCursor::Private::instantOf(const Column &column) const
{
    std::optional<qint64> instant;
    if (column.type == ColumnType::DateTimeExtended)
        instant = instantOfExtendedDate(stored(column));
    else
        instant = instantOfAccessDate(load<double>(sized(column, 8).data()));
    if (instant)
        return *instant;
    failValue(column, QStringLiteral("is not a valid date"));
}

void RowCursor::Private::failValue(const Column &column, const QString &what) const
{
    where.fail(QStringLiteral("a value of column '%1' ").arg(column.name) + what);
}

void RowCursor::fail(const QString &what) const
{
    d->where.fail(what);
}

bool RowCursor::hasNoResult(const Column &c) const
{
    return !d->hasValue(c);
}

qint64 RowCursor::instant(int column) const
{
    const Column &c = at(column);
    if (!hasBit(c.number))
        return 0;
    if (c.type != ColumnType::DateTime || !c.isFixed)
        return d->hasValue(c) ? d->instantOf(c) : 0;
    if (const auto instant = instantOfAccessDate(load<double>(m_fixed + c.fixedOffset)))
        return *instant;
    d->failValue(c, QStringLiteral("is not a valid date"));
}

qint64 RowCursor::otherInteger(const Column &c) const
{
    if (c.type == ColumnType::Boolean && !c.isCalculated)
        return hasBit(c.number);
    if (!d->hasValue(c))
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
    if (c.type != ColumnType::Boolean && !d->hasValue(c))
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
        return d->numericOf(c).toDouble();
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
    if (isLong(c))
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
        d->made(c, [&] { out += text(column).toUtf8(); });
        return;
    case ColumnType::Single:
        return appendNumber(out, load<float>(d->sized(c, 4).data()));
    case ColumnType::Double:
        return appendNumber(out, load<double>(d->sized(c, 8).data()));
    case ColumnType::Currency:
        out += decimalText(load<qint64>(d->sized(c, 8).data()), 4);
        return;
    case ColumnType::Numeric:
        out += d->numericOf(c);
        return;
    case ColumnType::Guid:
        out += guidText(d->sized(c, 16));
        return;
    case ColumnType::DateTime:
    case ColumnType::DateTimeExtended:
        return appendInstant(out, d->instantOf(c));
    case ColumnType::Binary:
    case ColumnType::Ole:
        d->made(c, [&] { out += bytes(column).toHex(); });
        return;
    default:
        return appendNumber(out, integer(column));
    }
}

} // namespace mdb
