#pragma once

#include "data/access/PageReader.h"

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

/// The row table of a data page, checked as a whole: offsets fall from row to row, no row reaches
/// into the table, and what lies free between them is as much as the page states. `slots` keeps its
/// memory from page to page.
void readRowTable(const Format &format, QByteArrayView page, const Place &place,
                  std::vector<RowSlot> &slots);

/// One row of a data page of any owner, as it stands there. Fails at `place` with the page's number
/// when the page is no data page or has no such row. The view holds until the reader's next page.
QByteArrayView rowBytes(PageReader &reader, RowPointer pointer, const Place &place,
                        RowSlot *slot = nullptr);

} // namespace mdb
