#include "access/DataPage.h"

namespace mdb {

void readRowTable(const Format &format, QByteArrayView page, const Location &where,
                  std::vector<RowSlot> &slots)
{
    const auto *bytes = page.data();
    const int rows = load<quint16>(bytes + format.rowCount);
    const int tableEnd = format.rowTable + 2 * rows;
    if (tableEnd > format.pageSize)
        where.fail(QStringLiteral("the page cannot hold the %1 rows that it states").arg(rows));

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
            where.fail(
                QStringLiteral("row %1 is outside the space for rows").arg(&slot - slots.data()));
        }
        end = slot.start;
    }
    const int stated = load<quint16>(bytes + freeSpaceOffset);
    if (stated != end - tableEnd) {
        where.fail(QStringLiteral("the page states %1 free bytes, but its rows leave %2")
                       .arg(stated)
                       .arg(end - tableEnd));
    }
}

QByteArrayView rowBytes(PageReader &reader, RowPointer pointer, const Location &where,
                        RowSlot *slot)
{
    const Location here{where.file, where.table, pointer.page};
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
