#include "data/access/DataPage.h"

namespace mdb {

void readRowTable(const Format &format, QByteArrayView page, const Place &place,
                  std::vector<RowSlot> &slots)
{
    const auto *bytes = page.data();
    const int rows = load<quint16>(bytes + format.rowCount);
    const int tableEnd = format.rowTable + 2 * rows;
    if (tableEnd > format.pageSize)
        place.fail(QStringLiteral("the page cannot hold the %1 rows that it names").arg(rows));

    slots.resize(static_cast<size_t>(rows));
    int end = format.pageSize;
    const char *entry = bytes + format.rowTable;
    for (RowSlot &slot : slots) {
        const auto offset = load<quint16>(entry);
        entry += 2;
        slot.start = offset & rowOffsetBits;
        slot.end = end;
        slot.flags = offset;
        if (slot.start > end || slot.start < tableEnd) {
            place.fail(
                QStringLiteral("row %1 does not lie where rows can").arg(&slot - slots.data()));
        }
        end = slot.start;
    }
    const int stated = load<quint16>(bytes + freeSpaceOffset);
    if (stated != end - tableEnd) {
        place.fail(QStringLiteral("the page states %1 free bytes, but its rows leave %2")
                       .arg(stated)
                       .arg(end - tableEnd));
    }
}

QByteArrayView rowBytes(PageReader &reader, RowPointer pointer, const Place &place, RowSlot *slot)
{
    const Place here{place.file, place.table, pointer.page};
    const QByteArrayView page = reader.page(pointer.page, DataPage, here);
    std::vector<RowSlot> slots;
    readRowTable(reader.format(), page, here, slots);
    if (static_cast<size_t>(pointer.row) >= slots.size())
        here.fail(QStringLiteral("a pointer names row %1, which does not exist").arg(pointer.row));
    const RowSlot &found = slots[static_cast<size_t>(pointer.row)];
    if (slot)
        *slot = found;
    return page.sliced(found.start, found.end - found.start);
}

} // namespace mdb
