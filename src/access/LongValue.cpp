#include "access/LongValue.h"

#include "access/DataPage.h"

namespace mdb {

namespace {

constexpr int headerSize = 12;
constexpr quint32 lengthBits = 0x3FFFFFFF;
constexpr quint32 valueInRow = 0x80000000;
constexpr quint32 valueInOneRow = 0x40000000;
constexpr char ownerMark[] = "LVAL"; ///< in place of the table that owns other data pages

/// A row on a page of long values.
QByteArrayView longRow(PageReader &reader, RowPointer pointer, const Location &where)
{
    RowSlot slot;
    const QByteArrayView row = rowBytes(reader, pointer, where, &slot);
    const QByteArrayView page = reader.page(pointer.page, DataPage, where);
    if (slot.isDeleted() || page.sliced(4, 4) != QByteArrayView(ownerMark)) {
        const Location here{where.file, where.table, pointer.page};
        here.fail(QStringLiteral("row %1 is not part of a long value").arg(pointer.row));
    }
    return row;
}

/// Follows a chain from part to part: a pointer to the next one, 0 in the last, then bytes.
QByteArray readChain(PageReader &reader, RowPointer pointer, qsizetype length,
                     const Location &where)
{
    // Even a cycle ends: each part takes bytes off a length that is at most the file's size.
    QByteArray value;
    for (;;) {
        const Location here{where.file, where.table, pointer.page};
        const QByteArrayView row = longRow(reader, pointer, where);
        const qsizetype size = row.size() - 4;
        if (size <= 0)
            here.fail(QStringLiteral("a part of a long value is empty"));
        const auto next = load<quint32>(row.data());
        value += row.sliced(4, std::min(length - value.size(), size));
        if (next == 0 && value.size() == length)
            return value;
        if (next == 0 || value.size() == length) {
            here.fail(QStringLiteral("a long value of %1 bytes %2")
                          .arg(length)
                          .arg(next == 0 ? QStringLiteral("ends after %1").arg(value.size())
                                         : QStringLiteral("continues after its last one")));
        }
        pointer = RowPointer::from(next);
    }
}

} // namespace

QByteArray readLongValue(PageReader &reader, QByteArrayView stored, const Location &where)
{
    const Bytes bytes(stored, where);
    const quint32 header = bytes.number(0);
    const auto length = static_cast<qsizetype>(header & lengthBits);
    if (header & valueInRow)
        return bytes.part(headerSize, length).toByteArray();
    if (length == 0)
        return {};
    if (length > reader.fileSize())
        where.fail(QStringLiteral("a long value of %1 bytes is longer than the file").arg(length));

    const RowPointer pointer = RowPointer::from(bytes.number(4));
    if (!(header & valueInOneRow))
        return readChain(reader, pointer, length, where);
    const QByteArrayView row = longRow(reader, pointer, where);
    if (row.size() < length) {
        const Location here{where.file, where.table, pointer.page};
        here.fail(QStringLiteral("a long value is shorter than its stated length"));
    }
    return row.first(length).toByteArray();
}

} // namespace mdb
