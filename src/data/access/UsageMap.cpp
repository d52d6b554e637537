#include "data/access/UsageMap.h"

#include "data/access/DataPage.h"

#include <bit>

namespace mdb {

namespace {

constexpr int bitmapPageHeader = 4;

/// Calls `visit(bitmap, first page)` for each stretch of pages that a map covers.
template <typename Visit>
void forEachBitmap(PageReader &reader, RowPointer map, const Place &place, Visit visit)
{
    const QByteArray row = rowBytes(reader, map, place).toByteArray();
    const Place here{place.file, place.table, map.page};
    const Bytes bytes(row, here);
    switch (bytes.byte(0)) {
    case 0:
        visit(QByteArrayView(row).sliced(bytes.part(0, 5).size()), bytes.number(1));
        break;
    case 1: {
        const int bitmapSize = reader.format().pageSize - bitmapPageHeader;
        for (qsizetype at = 1; at + 4 <= row.size(); at += 4) {
            const quint32 page = bytes.number(at);
            if (page == 0)
                continue;
            visit(reader.page(page, UsageMapPage, here).sliced(bitmapPageHeader),
                  static_cast<quint32>((at - 1) / 4 * bitmapSize * 8));
        }
        break;
    }
    default:
        here.fail(QStringLiteral("the page map is of an unknown type"));
    }
}

} // namespace

std::vector<quint32> ownedPages(PageReader &reader, RowPointer map, const Place &place)
{
    std::vector<quint32> pages;
    forEachBitmap(reader, map, place, [&](QByteArrayView bitmap, quint32 first) {
        for (qsizetype i = 0; i < bitmap.size(); ++i) {
            for (auto bits = static_cast<unsigned>(static_cast<quint8>(bitmap[i])); bits != 0;
                 bits &= bits - 1) {
                const auto bit = static_cast<quint32>(std::countr_zero(bits));
                pages.push_back(first + static_cast<quint32>(i) * 8 + bit);
            }
        }
    });
    for (size_t i = 0; i < pages.size(); ++i) {
        if (i > 0 && pages[i] <= pages[i - 1]) // a first page near the end of all numbers
            place.fail(QStringLiteral("the page map is broken"));
    }
    if (!pages.empty())
        reader.requirePage(pages.back(), {place.file, place.table, pages.back()});
    return pages;
}

} // namespace mdb
