#include "demo/AccessFormat.h"

#include "base/Error.h"

#include <QString>

#include <algorithm>
#include <cmath>

namespace demo {

namespace {

constexpr int usageMapRow = 69;
constexpr int inlinePages = (usageMapRow - 5) * 8;
constexpr int mapPageHeader = 4;
constexpr int pagesPerMapPage = (pageSize - mapPageHeader) * 8;
constexpr int maxMapPages = (usageMapRow - 1) / 4;

/// RC4 with the engine's fixed key: the header's fields are hidden, not protected.
void encodeHeaderFields(std::uint8_t *bytes, int size)
{
    constexpr std::array<std::uint8_t, 4> key = {0xC7, 0xDA, 0x39, 0x6B};
    std::array<std::uint8_t, 256> state;
    for (unsigned i = 0; i < 256; ++i)
        state[i] = std::uint8_t(i);
    std::uint8_t j = 0;
    for (unsigned i = 0; i < 256; ++i) {
        j = std::uint8_t(j + state[i] + key[i % key.size()]);
        std::swap(state[i], state[j]);
    }
    std::uint8_t a = 0;
    std::uint8_t b = 0;
    for (int i = 0; i < size; ++i) {
        a = std::uint8_t(a + 1);
        b = std::uint8_t(b + state[a]);
        std::swap(state[a], state[b]);
        bytes[i] ^= state[std::uint8_t(state[a] + state[b])];
    }
}

using MapRow = std::array<std::uint8_t, usageMapRow>;

/// A map in the row itself; pages outside its range are not in it.
MapRow inlineMap(const std::vector<int> &pages, int first)
{
    MapRow row{};
    put(row.data() + 1, qint32(first));
    for (const int page : pages) {
        const int bit = page - first;
        row[std::size_t(5 + bit / 8)] |= std::uint8_t(1 << bit % 8);
    }
    return row;
}

bool fitsInline(const std::vector<int> &pages, int first)
{
    return pages.empty() || pages.back() - first < inlinePages;
}

/// A map on pages of its own, left out where the owner has no pages. `take` returns the number of a
/// new map page.
MapRow referenceMap(PageFile &file, const std::vector<int> &pages, const auto &take)
{
    MapRow row{};
    row[0] = 1;
    auto page = pages.begin();
    while (page != pages.end()) {
        const int stretch = *page / pagesPerMapPage;
        if (stretch >= maxMapPages)
            throw Error(Overflow, QStringLiteral("An Access file cannot be larger than 2 GB"));
        Page map{};
        map[0] = 5;
        map[1] = 1;
        for (; page != pages.end() && *page / pagesPerMapPage == stretch; ++page) {
            const int bit = *page % pagesPerMapPage;
            map[std::size_t(mapPageHeader + bit / 8)] |= std::uint8_t(1 << bit % 8);
        }
        const int number = take();
        put(row.data() + 1 + 4 * stretch, qint32(number));
        file.write(number, map);
    }
    return row;
}

} // namespace

void encodeText(QStringView text, std::vector<std::uint8_t> &bytes)
{
    const auto size = std::size_t(text.size()) * 2;
    bytes.clear();
    bytes.push_back(0xFF);
    bytes.push_back(0xFE);
    bool compressed = true;
    bool possible = size > 0;
    for (const QChar character : text) {
        // A byte 00 always toggles, so characters with such a low byte cannot be compressed.
        const char16_t code = character.unicode();
        possible = (code & 0xFF) != 0 && bytes.size() < size;
        if (!possible)
            break;
        if ((code < 0x100) != compressed) {
            bytes.push_back(0);
            compressed = !compressed;
        }
        bytes.push_back(std::uint8_t(code & 0xFF));
        if (!compressed)
            bytes.push_back(std::uint8_t(code >> 8));
    }
    if (possible && bytes.size() < size)
        return;

    bytes.resize(size);
    if (size > 0)
        std::memcpy(bytes.data(), text.utf16(), size);
}

std::array<std::uint8_t, 16> encodeGuid(const QUuid &guid)
{
    std::array<std::uint8_t, 16> bytes;
    put(bytes.data(), guid.data1);
    put(bytes.data() + 4, guid.data2);
    put(bytes.data() + 6, guid.data3);
    std::copy(std::begin(guid.data4), std::end(guid.data4), bytes.begin() + 8);
    return bytes;
}

std::array<std::uint8_t, 17> encodeNumeric(const QString &text, int scale)
{
    const bool negative = text.startsWith(u'-');
    const qsizetype first = negative ? 1 : 0;
    const qsizetype point = text.indexOf(u'.');
    const qsizetype decimals = point < 0 ? 0 : text.size() - point - 1;
    QString digits = text.mid(first).remove(u'.');
    if (digits.isEmpty() || decimals > scale ||
        !std::all_of(digits.cbegin(), digits.cend(),
                     [](QChar c) { return c >= u'0' && c <= u'9'; }))
        throw Error(TypeMismatch,
                    QStringLiteral("'%1' is not a number of %2 decimals").arg(text).arg(scale));
    digits += QString(scale - decimals, u'0');

    std::array<quint32, 4> words{}; // the most significant one first
    for (const QChar digit : digits) {
        quint64 carry = quint64(digit.unicode() - u'0');
        for (int i = 3; i >= 0; --i) {
            carry += quint64(words[std::size_t(i)]) * 10;
            words[std::size_t(i)] = quint32(carry);
            carry >>= 32;
        }
        if (carry != 0)
            throw Error(Overflow, QStringLiteral("'%1' does not fit a Numeric").arg(text));
    }
    std::array<std::uint8_t, 17> bytes{};
    bytes[0] = negative ? 0x80 : 0;
    for (std::size_t i = 0; i < words.size(); ++i)
        put(bytes.data() + 1 + 4 * i, words[i]);
    return bytes;
}

double accessDays(qint64 instant)
{
    constexpr double millisecondsPerDay = 86'400'000.0;
    constexpr double epoch = 25569.0; // 1970-01-01
    const double days = double(instant) / millisecondsPerDay + epoch;
    if (days >= 0)
        return days;
    const double whole = std::floor(days);
    return whole - (days - whole);
}

QByteArray encodeResultTypes(const std::vector<std::pair<QString, std::uint8_t>> &types)
{
    constexpr quint16 namesBlock = 0x80;
    constexpr quint16 columnBlock = 0x01;
    const auto name = [](const QString &text) {
        QByteArray bytes;
        appendNumber(bytes, quint16(2 * text.size()));
        return bytes.append(reinterpret_cast<const char *>(text.utf16()), 2 * text.size());
    };
    QByteArray properties("MR2", 4);
    const auto addBlock = [&](quint16 kind, const QByteArray &content) {
        appendNumber(properties, quint32(6 + content.size()));
        appendNumber(properties, kind);
        properties += content;
    };
    addBlock(namesBlock, name(QStringLiteral("ResultType")));
    for (const auto &[column, type] : types) {
        const QByteArray columnName = name(column);
        QByteArray content;
        appendNumber(content, quint32(4 + columnName.size()));
        content += columnName;
        appendNumber(content, quint16(9)); // bytes of this property
        content += '\0';
        content += char(2);                // its value is a Byte
        appendNumber(content, quint16(0)); // the first of the names
        appendNumber(content, quint16(1));
        content += char(type);
        addBlock(columnBlock, content);
    }
    return properties;
}

Page headerPage(qint64 createdInstant)
{
    Page page{};
    page[1] = 1;
    std::memcpy(page.data() + 4, "Standard Jet DB", 16);
    page[0x14] = 1; // Jet 4

    const double created = accessDays(createdInstant);
    put<quint16>(&page[0x3A], 0x0409);
    put<quint16>(&page[0x3C], 1252);
    put<quint16>(&page[0x6E], 0x0409);
    put(&page[0x72], created);
    // The password's 20 characters, all zero, are hidden a second time under the day of creation.
    for (std::size_t i = 0x42; i < 0x42 + 40; i += 4)
        put(&page[i], qint32(created));
    encodeHeaderFields(&page[0x18], 128);
    std::memcpy(&page[0x9C], "4.0", 4);
    return page;
}

RowPages::RowPages(PageFile &file, quint32 owner, int maxRows)
    : m_file(file)
    , m_owner(owner)
    , m_maxRows(maxRows)
{}

int RowPages::room() const
{
    return m_end - dataPageHeader - 2 * m_rows;
}

bool RowPages::isLast(int page) const
{
    return !m_pages.empty() && page == m_pages.back();
}

bool RowPages::hasRoom(int rows, int rowSize) const
{
    return !m_pages.empty() && m_rows + rows <= m_maxRows && room() >= rows * (rowSize + 2);
}

RowAddress RowPages::add(const std::uint8_t *bytes, int size, quint16 flags)
{
    if (!hasRoom(1, size))
        startPage();
    m_end -= size;
    std::memcpy(m_page.data() + m_end, bytes, std::size_t(size));
    put(m_page.data() + dataPageHeader + 2 * m_rows, quint16(m_end | flags));
    return {m_pages.back(), m_rows++};
}

void RowPages::startPage()
{
    flush();
    m_pages.push_back(m_file.allocate());
    m_page.fill(0);
    m_page[0] = 1;
    m_page[1] = 1;
    put(m_page.data() + 4, m_owner);
    m_rows = 0;
    m_end = pageSize;
}

void RowPages::flush()
{
    if (m_pages.empty())
        return;
    put(m_page.data() + 2, quint16(room()));
    put(m_page.data() + 12, quint16(m_rows));
    m_file.write(m_pages.back(), m_page);
}

void RowPages::change(RowAddress address, const auto &edit)
{
    if (isLast(address.page)) {
        edit(m_page);
        return;
    }
    Page page;
    m_file.read(address.page, page);
    edit(page);
    m_file.write(address.page, page);
}

QByteArray RowPages::row(RowAddress address)
{
    Page read;
    if (!isLast(address.page))
        m_file.read(address.page, read);
    const Page &page = isLast(address.page) ? m_page : read;
    const std::uint8_t *entry = page.data() + dataPageHeader + 2 * address.row;
    const int begin = get<quint16>(entry) & rowOffsetMask;
    const int end = address.row == 0 ? pageSize : get<quint16>(entry - 2) & rowOffsetMask;
    return QByteArray(reinterpret_cast<const char *>(page.data()) + begin, end - begin);
}

void RowPages::addFlags(RowAddress address, quint16 flags)
{
    change(address, [&](Page &page) {
        std::uint8_t *entry = page.data() + dataPageHeader + 2 * address.row;
        put(entry, quint16(get<quint16>(entry) | flags));
    });
}

void RowPages::replaceByPointer(RowAddress address, RowAddress target)
{
    if (row(address).size() < 4)
        throw Error(Overflow, QStringLiteral("A row of fewer than 4 bytes cannot be moved"));
    change(address, [&](Page &page) {
        const auto *entry = page.data() + dataPageHeader + 2 * address.row;
        put(page.data() + (get<quint16>(entry) & rowOffsetMask), target.pointer());
    });
    addFlags(address, rowPointer);
}

std::vector<int> RowPages::roomyPages() const
{
    if (m_pages.empty() || m_rows >= m_maxRows)
        return {};
    return {m_pages.back()};
}

UsageMaps::UsageMaps(PageFile &file)
    : m_file(file)
    , m_rows(file, 0)
{}

std::array<std::uint8_t, usageMapRow> UsageMaps::map(const std::vector<int> &pages)
{
    const int first = pages.empty() ? 0 : pages.front();
    if (fitsInline(pages, first))
        return inlineMap(pages, first);
    return referenceMap(m_file, pages, [&] { return m_file.allocate(); });
}

RowAddress UsageMaps::addPair(const std::vector<int> &pages, const std::vector<int> &roomyPages)
{
    if (!m_rows.hasRoom(2, usageMapRow))
        m_rows.startPage();
    const MapRow owned = map(pages);
    const MapRow roomy = map(roomyPages);
    const RowAddress address = m_rows.add(owned.data(), usageMapRow);
    m_rows.add(roomy.data(), usageMapRow);
    return address;
}

void UsageMaps::writeGlobalMap(PageFile &file)
{
    // The map has the free pages: none in the file, but all after its end, as far as the map goes.
    const auto freePages = [](int from, int to) {
        std::vector<int> pages;
        for (int page = from; page < to; ++page)
            pages.push_back(page);
        return pages;
    };
    MapRow row;
    if (file.pageCount() <= inlinePages) {
        row = inlineMap(freePages(file.pageCount(), inlinePages), 0);
    } else {
        // As many map pages as there are ranges, including one that the map pages themselves may
        // need.
        int maps = 0;
        while (maps * pagesPerMapPage < file.pageCount() + maps)
            ++maps;
        std::vector<int> numbers;
        numbers.reserve(static_cast<size_t>(maps));
        for (int i = 0; i < maps; ++i)
            numbers.push_back(file.allocate());
        Page full{}; // a range without free pages
        full[0] = 5;
        full[1] = 1;
        for (const int number : numbers)
            file.write(number, full);
        row = referenceMap(file, freePages(file.pageCount(), maps * pagesPerMapPage),
                           [&] { return numbers.back(); });
        row[0] = 1;
        for (int i = 0; i < maps; ++i)
            put(row.data() + 1 + 4 * i, qint32(numbers[std::size_t(i)]));
    }
    Page page{};
    page[0] = 1;
    page[1] = 1;
    const int begin = pageSize - usageMapRow;
    put(&page[2], quint16(begin - dataPageHeader - 2));
    put<quint16>(&page[12], 1);
    put(&page[dataPageHeader], quint16(begin));
    std::memcpy(&page[std::size_t(begin)], row.data(), usageMapRow);
    file.write(1, page);
}

} // namespace demo
