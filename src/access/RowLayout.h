#pragma once

#include "access/AccessFile.h"
#include "access/Bytes.h"
#include "access/Format.h"

#include <vector>

namespace mdb {

/// One row's bytes: its column count; the fixed values; the variable values; the table of their
/// start offsets, in reverse; their count; the null mask. A table without variable columns has the
/// fixed values and the null mask only; one with nothing but Booleans may have the count (0) too.
struct RowView
{
    const char *begin = nullptr;
    const char *end = nullptr;
    const char *nullMask = nullptr;
    int columns = 0; ///< of the table when the row was written, deleted ones included

    QByteArrayView bytes() const { return {begin, end}; }

    /// The mask's bit: for a Boolean its value, for other types whether there is a value.
    bool hasBit(int number) const
    {
        return number < columns && (static_cast<quint8>(nullMask[number >> 3]) >> (number & 7) & 1);
    }
};

/// How the rows of one table are laid out.
class RowLayout
{
public:
    RowLayout(const Format &format, const Table &table);

    /// Bytes before the fixed values.
    int fixedStart() const { return m_format->rowHeaderSize; }

    /// Makes a view of a row and checks that its null mask and all fixed values are inside.
    RowView view(const char *begin, const char *end, const Location &where) const;

    /// A variable value that is not NULL; empty where the row is older than the column. Throws when
    /// the table of offsets is broken.
    QByteArrayView variableValue(const RowView &row, int variableIndex,
                                 const Location &where) const;

private:
    const char *maskOfBooleans(const char *begin, const char *end, int columns,
                               const Location &where) const;
    QByteArrayView jet3Value(const RowView &row, int index, const Location &where) const;
    QByteArrayView jet4Value(const RowView &row, int index, const Location &where) const;

    const Format *m_format;
    std::vector<int> m_fixedEnd; ///< by column count: where the last fixed value ends
    int m_maxSize = 0;           ///< of a row in bytes; 0 when that depends on its values
    bool m_hasOnlyBooleans = false;
};

} // namespace mdb
