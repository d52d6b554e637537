#pragma once

#include "access/PageReader.h"

namespace mdb {

/// One row of a data page: its bytes and the flags of its offset.
struct RowSlot
{
    int start = 0; ///< offset in the page
    int end = 0;   ///< one past its last byte
    quint16 flags = 0;

    bool isDeleted() const { return flags & deletedRow; }
    bool isPointer() const { return flags & pointerRow; }
};

/// The row table of a data page, checked as a whole: offsets fall from row to row, no row overlaps
/// the table, and the free space between them is what the page states. `slots` keeps its memory
/// from page to page.
void readRowTable(const Format &format, QByteArrayView page, const Location &where,
                  std::vector<RowSlot> &slots);

/// The stored bytes of one row of a data page of any owner. Throws, naming the page, when it is not
/// a data page or has no such row. The view is valid until the reader's next page.
QByteArrayView rowBytes(PageReader &reader, RowPointer pointer, const Location &where,
                        RowSlot *slot = nullptr);

} // namespace mdb
