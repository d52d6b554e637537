#pragma once

#include "data/access/PageReader.h"

namespace mdb {

/// The bytes of a memo or OLE value. `stored` is what stands in the row: a header of 12 bytes with
/// the length and either the value behind it, or a pointer to one row, or to a chain of rows, on
/// pages of their own. Fails at `place` when the value is not there as a whole.
QByteArray readLongValue(PageReader &reader, QByteArrayView stored, const Place &place);

} // namespace mdb
