#include "access/UsageMap.h"

#include "access/DataPage.h"

#include <bit>

namespace mdb {

namespace {

constexpr int bitmapPageHeader = 4;

/// Calls `visit(bitmap, first page)` for each bitmap of a map.
template <typename Visit>
void forEachBitmap(PageReader &reader, RowPointer map, const Location &where, Visit visit)
{
    const QByteArray row = rowBytes(reader, map, where).toByteArray();
    const Location here{where.file, where.table, map.page};
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

std::vector<quint32> ownedPages(PageReader &reader, RowPointer map, const Location &where)
{
    std::vector<quint32> pages;
    forEachBitmap(reader, map, where, [&](QByteArrayView bitmap, quint32 first) {
        for (qsizetype i = 0; i < bitmap.size(); ++i) {
            for (auto bits = static_cast<unsigned>(static_cast<quint8>(bitmap[i])); bits != 0;
                 bits &= bits - 1) {
                const auto bit = static_cast<quint32>(std::countr_zero(bits));
                pages.push_back(first + static_cast<quint32>(i) * 8 + bit);
            }
        }
    });
    for (size_t i = 0; i < pages.size(); ++i) {
        if (i > 0 && pages[i] <= pages[i - 1]) // the page number overflowed
            where.fail(QStringLiteral("the page map is broken"));
    }
    if (!pages.empty())
        reader.requirePage(pages.back(), {where.file, where.table, pages.back()});
    return pages;
}

} // namespace mdb
