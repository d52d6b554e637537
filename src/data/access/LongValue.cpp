#include "data/access/LongValue.h"

#include "data/access/DataPage.h"

namespace mdb {

namespace {

constexpr int headerSize = 12;
constexpr quint32 lengthBits = 0x3FFFFFFF;
constexpr quint32 valueInRow = 0x80000000;
constexpr quint32 valueInOneRow = 0x40000000;
constexpr char ownerMark[] = "LVAL"; ///< where other data pages name their table

/// A row on a page of long values.
QByteArrayView longRow(PageReader &reader, RowPointer pointer, const Place &place)
{
    RowSlot slot;
    const QByteArrayView row = rowBytes(reader, pointer, place, &slot);
    const QByteArrayView page = reader.page(pointer.page, DataPage, place);
    if (slot.isDeleted() || page.sliced(4, 4) != QByteArrayView(ownerMark)) {
        const Place here{place.file, place.table, pointer.page};
        here.fail(QStringLiteral("row %1 is no part of a long value").arg(pointer.row));
    }
    return row;
}

/// Follows a chain from part to part: a pointer to the next one, 0 in the last, then bytes.
QByteArray readChain(PageReader &reader, RowPointer pointer, qsizetype length, const Place &place)
{
    // A ring ends, as each part takes bytes from a length that the file itself bounds.
    QByteArray value;
    for (;;) {
        const Place here{place.file, place.table, pointer.page};
        const QByteArrayView row = longRow(reader, pointer, place);
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
                                         : QStringLiteral("goes on after its last one")));
        }
        pointer = RowPointer::from(next);
    }
}

} // namespace

QByteArray readLongValue(PageReader &reader, QByteArrayView stored, const Place &place)
{
    const Bytes bytes(stored, place);
    const quint32 header = bytes.number(0);
    const auto length = static_cast<qsizetype>(header & lengthBits);
    if (header & valueInRow)
        return bytes.part(headerSize, length).toByteArray();
    if (length == 0)
        return {};
    if (length > reader.fileSize())
        place.fail(QStringLiteral("a long value of %1 bytes is longer than the file").arg(length));

    const RowPointer pointer = RowPointer::from(bytes.number(4));
    if (!(header & valueInOneRow))
        return readChain(reader, pointer, length, place);
    const QByteArrayView row = longRow(reader, pointer, place);
    if (row.size() < length) {
        const Place here{place.file, place.table, pointer.page};
        here.fail(QStringLiteral("a long value is shorter than it should be"));
    }
    return row.first(length).toByteArray();
}

} // namespace mdb
