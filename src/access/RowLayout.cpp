#include "access/RowLayout.h"

#include <algorithm>

namespace mdb {

namespace {

[[noreturn]] void failOffsets(const Location &where)
{
    where.fail(QStringLiteral("a row's table of variable values is broken"));
}

} // namespace

RowLayout::RowLayout(const Format &format, const Table &table)
    : m_format(&format)
    , m_fixedEnd(static_cast<size_t>(table.maxColumns) + 1, format.rowHeaderSize)
{
    for (const Column &column : table.columns) {
        if (!column.isFixed || column.type == ColumnType::Boolean)
            continue;
        const int end = format.rowHeaderSize + column.fixedOffset + column.size;
        for (auto i = static_cast<size_t>(column.number) + 1; i < m_fixedEnd.size(); ++i)
            m_fixedEnd[i] = std::max(m_fixedEnd[i], end);
    }
    if (table.variableColumns == 0 && table.columns.size() + 1 == m_fixedEnd.size()) {
        m_maxSize = m_fixedEnd.back() + (table.maxColumns + 7) / 8;
        m_hasOnlyBooleans = m_fixedEnd.back() == format.rowHeaderSize;
    }
}

RowView RowLayout::view(const char *begin, const char *end, const Location &where) const
{
    const qsizetype size = end - begin;
    if (size < m_format->rowHeaderSize)
        where.fail(QStringLiteral("a row is shorter than its header"));
    const int columns = m_format->isJet3() ? load<quint8>(begin) : load<quint16>(begin);
    if (columns == 0 || static_cast<size_t>(columns) >= m_fixedEnd.size())
        where.fail(QStringLiteral("a row cannot have %1 columns").arg(columns));
    const int maskSize = (columns + 7) / 8;
    if (size < m_fixedEnd[static_cast<size_t>(columns)] + maskSize)
        where.fail(QStringLiteral("a row is shorter than its columns need"));
    if (m_hasOnlyBooleans)
        return {begin, end, maskOfBooleans(begin, end, columns, where), columns};
    if (m_maxSize > 0 && size > m_maxSize)
        where.fail(QStringLiteral("a row is longer than its columns can be"));
    return {begin, end, end - maskSize, columns};
}

/// Where the null mask begins in a row that has nothing else but, perhaps, the count of variable
/// values before or after the mask: 0, in as many bytes as the row's header.
const char *RowLayout::maskOfBooleans(const char *begin, const char *end, int columns,
                                      const Location &where) const
{
    const int header = m_format->rowHeaderSize;
    const int maskSize = (columns + 7) / 8;
    const qsizetype further = end - begin - header - maskSize;
    if (further == 0)
        return begin + header;
    const auto isZero = [header](const char *at) {
        return std::all_of(at, at + header, [](char byte) { return byte == 0; });
    };
    if (further == header && isZero(begin + header))
        return end - maskSize;
    if (further == header && isZero(end - header))
        return begin + header;
    where.fail(QStringLiteral("a row is longer than its columns can be"));
}

QByteArrayView RowLayout::variableValue(const RowView &row, int variableIndex,
                                        const Location &where) const
{
    return m_format->isJet3() ? jet3Value(row, variableIndex, where)
                              : jet4Value(row, variableIndex, where);
}

QByteArrayView RowLayout::jet4Value(const RowView &row, int index, const Location &where) const
{
    const qsizetype before = row.nullMask - row.begin; // bytes before the null mask
    const int fixedEnd = m_fixedEnd[static_cast<size_t>(row.columns)];
    if (before < fixedEnd + 2)
        failOffsets(where);
    const int count = load<quint16>(row.nullMask - 2);
    const qsizetype tableStart = before - 2 - 2 * (count + 1);
    if (tableStart < fixedEnd)
        failOffsets(where);
    if (index >= count)
        return {};
    const char *entry = row.nullMask - 4 - 2 * index;
    const int begin = load<quint16>(entry);
    const int end = load<quint16>(entry - 2);
    const int last = load<quint16>(row.begin + tableStart);
    if (begin < fixedEnd || end < begin || last < end || last > tableStart)
        failOffsets(where);
    return {row.begin + begin, end - begin};
}

QByteArrayView RowLayout::jet3Value(const RowView &row, int index, const Location &where) const
{
    // Offsets are single bytes; a jump table before the count gives, for each further 256 bytes,
    // the first value that begins there. Its last entry can be a dummy.
    const qsizetype before = row.nullMask - row.begin;
    const int fixedEnd = m_fixedEnd[static_cast<size_t>(row.columns)];
    const auto rowSize = static_cast<int>(row.end - row.begin);
    const auto byteBefore = [&](qsizetype distance) -> int {
        if (distance > before - fixedEnd)
            failOffsets(where);
        return static_cast<quint8>(*(row.nullMask - distance));
    };
    const int count = byteBefore(1);
    int jumps = (rowSize - 1) / 256;
    const int tableEnd = 2 + jumps; // distance of the first offset from the null mask
    if ((static_cast<int>(before) - tableEnd - count) / 256 < jumps)
        --jumps;
    if (index >= count)
        return {};

    int used = 0;
    const auto offset = [&](int i) {
        while (used < jumps && byteBefore(2 + used) == i)
            ++used;
        return byteBefore(tableEnd + i) + 256 * used;
    };
    int begin = 0;
    int end = 0;
    int last = fixedEnd;
    for (int i = 0; i <= count; ++i) {
        const int here = offset(i);
        if (here < last || here > before - tableEnd - count)
            failOffsets(where);
        last = here;
        if (i == index)
            begin = here;
        if (i == index + 1)
            end = here;
    }
    return {row.begin + begin, end - begin};
}

} // namespace mdb
