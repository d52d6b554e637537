#pragma once

#include "data/access/PageReader.h"

#include <vector>

namespace mdb {

/// The pages that a usage map names, ascending. The map is a row on a data page: either a bitmap
/// that starts at some page, or a list of pages that hold bitmaps. Fails at `place` when the map is
/// broken or names a page that the file does not hold.
std::vector<quint32> ownedPages(PageReader &reader, RowPointer map, const Place &place);

} // namespace mdb
