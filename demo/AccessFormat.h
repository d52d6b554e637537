#pragma once

#include "demo/PageFile.h"

#include <QByteArray>
#include <QUuid>

#include <cstring>
#include <utility>
#include <vector>

/// The parts of a Jet 4 file. All but UsageMaps are pure functions. Numbers are little-endian.
namespace demo {

inline constexpr int dataPageHeader = 14; ///< bytes before the row table
inline constexpr int maxRowsOnPage = 255; ///< a row's number is one byte
inline constexpr int maxRowBytes = 4060;
inline constexpr int maxLongValueRow = 4076;
inline constexpr quint16 rowDeleted = 0x8000;
inline constexpr quint16 rowPointer = 0x4000;
inline constexpr quint16 rowOffsetMask = 0x1FFF;
inline constexpr quint32 longValueOwner = 0x4C41564C; ///< "LVAL" in place of an owning table

template <typename Number>
void put(std::uint8_t *to, Number value)
{
    std::memcpy(to, &value, sizeof value);
}

template <typename Number>
void appendNumber(QByteArray &bytes, Number value)
{
    bytes.append(reinterpret_cast<const char *>(&value), sizeof value);
}

template <typename Number>
Number get(const std::uint8_t *from)
{
    Number value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

/// A row of the file. Stored as one byte row number and three bytes page number.
struct RowAddress
{
    int page = 0;
    int row = 0;

    quint32 pointer() const { return quint32(page) << 8 | quint32(row); }
};

/// Text as a Text or Memo column stores it: UTF-16, or the compressed form if that is shorter (FF
/// FE, one byte a character, 00 toggles to two bytes and back). Replaces `bytes`.
void encodeText(QStringView text, std::vector<std::uint8_t> &bytes);

std::array<std::uint8_t, 16> encodeGuid(const QUuid &guid);

/// A decimal text as the 17 bytes of a Numeric: sign and a 128-bit count of 10^-scale. Throws
/// Error(TypeMismatch) when it is not such a number, Error(Overflow) when it does not fit.
std::array<std::uint8_t, 17> encodeNumeric(const QString &text, int scale);

/// An instant (milliseconds since 1970, UTC) as a DateTime column stores it: days since 1899-12-30.
/// Before that the whole days count backwards and the fraction forwards.
double accessDays(qint64 instant);

/// The database header: signature, version, and the encoded fields (no password, code page 1252,
/// the "General" sort order).
Page headerPage(qint64 createdInstant);

/// The properties of a table in the catalog: the result types of its calculated columns, by column
/// name.
QByteArray encodeResultTypes(const std::vector<std::pair<QString, std::uint8_t>> &types);

/// Appends rows to the data pages of one owner, one page after the other.
class RowPages
{
public:
    RowPages(PageFile &file, quint32 owner, int maxRows = maxRowsOnPage);

    RowAddress add(const std::uint8_t *bytes, int size, quint16 flags = 0);
    /// Whether the current page has room for so many more rows.
    bool hasRoom(int rows, int rowSize) const;
    /// The next row starts a new page.
    void startPage();
    void flush();

    QByteArray row(RowAddress address); ///< its bytes
    /// Sets flags in the page's row table.
    void addFlags(RowAddress address, quint16 flags);
    /// Replaces the row by a pointer. Throws Error(Overflow) when the row is too short for it.
    void replaceByPointer(RowAddress address, RowAddress target);

    const std::vector<int> &pages() const { return m_pages; } ///< ascending
    /// Pages with room for more rows: the last one.
    std::vector<int> roomyPages() const;

private:
    int room() const;
    bool isLast(int page) const;
    void change(RowAddress address, const auto &edit);

    PageFile &m_file;
    quint32 m_owner;
    int m_maxRows;
    std::vector<int> m_pages;
    Page m_page; ///< the last page, until it is full
    int m_rows = 0;
    int m_end = 0; ///< rows fill the page from its end down to here
};

/// Writes usage maps: the pages of each owner. A map is a row of 69 bytes with the bits of up to
/// 512 pages or, if they are further apart, the numbers of up to 17 map pages.
class UsageMaps
{
public:
    explicit UsageMaps(PageFile &file);

    /// Writes the map of an owner's pages and, in the next row, of those with room.
    RowAddress addPair(const std::vector<int> &pages, const std::vector<int> &roomyPages);
    void flush() { m_rows.flush(); }

    /// Writes page 1, the map of free pages, after everything else has been written.
    static void writeGlobalMap(PageFile &file);

private:
    std::array<std::uint8_t, 69> map(const std::vector<int> &pages);

    PageFile &m_file;
    RowPages m_rows;
};

} // namespace demo
