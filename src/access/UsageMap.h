#pragma once

#include "access/PageReader.h"

#include <vector>

namespace mdb {

/// The pages in a usage map, ascending. The map is a row on a data page: either a bitmap from some
/// first page on, or a list of pages that hold bitmaps. Throws when the map is broken or has a page
/// that the file does not have.
std::vector<quint32> ownedPages(PageReader &reader, RowPointer map, const Location &where);

} // namespace mdb
