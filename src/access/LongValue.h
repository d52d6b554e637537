#pragma once

#include "access/PageReader.h"

namespace mdb {

/// The bytes of a memo or OLE value. `stored` is what the row holds: a header of 12 bytes with the
/// length, then either the value itself, or a pointer to one row or a chain of rows on pages of
/// their own. Throws when the value is not complete.
QByteArray readLongValue(PageReader &reader, QByteArrayView stored, const Location &where);

} // namespace mdb
