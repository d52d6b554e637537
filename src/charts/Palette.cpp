#include "charts/Palette.h"

#include "charts/PerThread.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

constexpr size_t mostColors = 256;
constexpr size_t keptColors = 64; ///< inks, and what else fills areas
constexpr QRgb opaque = 0xFF000000;

/// The colours of an image with their frequencies (in rows unlike the one above): a hash table
/// without deletion.
class ColorTable
{
public:
    struct Entry
    {
        QRgb color = 0; ///< 0: free, as no opaque colour is
        uint count = 0;
        uchar number = 0; ///< in the palette
    };

    /// The entry of a colour; null when the table is full.
    Entry *find(QRgb color)
    {
        size_t at = (color * 0x9E3779B1u) >> (32 - bits);
        while (m_entries[at].color != color) {
            if (m_entries[at].color == 0) {
                if (m_used == m_entries.size() / 2)
                    return nullptr;
                ++m_used;
                m_entries[at].color = color;
                break;
            }
            at = (at + 1) % m_entries.size();
        }
        return &m_entries[at];
    }

    quint16 placeOf(const Entry *entry) const
    {
        return static_cast<quint16>(entry - m_entries.data());
    }
    /// The numbers in the palette, by place.
    std::vector<uchar> numbers() const
    {
        std::vector<uchar> list(m_entries.size());
        std::transform(m_entries.begin(), m_entries.end(), list.begin(),
                       [](const Entry &entry) { return entry.number; });
        return list;
    }

    /// By frequency, most frequent first; equal ones by colour, so that the order is always the
    /// same.
    std::vector<Entry *> byFrequency()
    {
        std::vector<Entry *> used;
        used.reserve(m_used);
        for (Entry &entry : m_entries) {
            if (entry.color != 0)
                used.push_back(&entry);
        }
        std::sort(used.begin(), used.end(), [](const Entry *a, const Entry *b) {
            return a->count != b->count ? a->count > b->count : a->color < b->color;
        });
        return used;
    }

private:
    static constexpr int bits = 13;
    std::vector<Entry> m_entries = std::vector<Entry>(size_t(1) << bits);
    size_t m_used = 0;
};

int distance(QRgb a, QRgb b)
{
    return std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                     std::abs(qBlue(a) - qBlue(b))});
}

/// The palette in the making. Colours that share the upper bits of their channels are mostly near
/// each other, so that few need the search through the whole palette.
class Palette
{
public:
    /// The number of a colour that is near enough, the nearest one first; none: -1.
    int find(QRgb color)
    {
        const size_t cell = cellOf(color);
        if (m_cells[cell] >= 0 && distance(color, colors[numberIn(cell)]) <= paletteTolerance)
            return m_cells[cell];
        int number = -1;
        int least = paletteTolerance + 1;
        for (size_t i = 0; i < colors.size(); ++i) {
            if (const int away = distance(color, colors[i]); away < least) {
                least = away;
                number = static_cast<int>(i);
            }
        }
        m_cells[cell] = static_cast<qint16>(number);
        return number;
    }

    /// The new colour's number; -1 when there are too many.
    int add(QRgb color)
    {
        if (colors.size() == mostColors)
            return -1;
        colors.push_back(color);
        const int number = static_cast<int>(colors.size()) - 1;
        m_cells[cellOf(color)] = static_cast<qint16>(number);
        return number;
    }

    std::vector<QRgb> colors;

private:
    static size_t cellOf(QRgb color)
    {
        return static_cast<size_t>((qRed(color) >> 4) << 8 | (qGreen(color) >> 4) << 4 |
                                   qBlue(color) >> 4);
    }
    size_t numberIn(size_t cell) const { return static_cast<size_t>(m_cells[cell]); }

    std::vector<qint16> m_cells = std::vector<qint16>(16 * 16 * 16, -1);
};

/// Gives every colour its number; the most frequent ones are kept, and of the rest those that no
/// kept one is near enough to. False when that makes too many.
bool chooseColors(const std::vector<ColorTable::Entry *> &entries, Palette &palette)
{
    const bool all = entries.size() <= mostColors;
    for (size_t i = 0; i < entries.size(); ++i) {
        ColorTable::Entry &entry = *entries[i];
        int number = all || i < keptColors ? -1 : palette.find(entry.color);
        if (number < 0)
            number = palette.add(entry.color);
        if (number < 0)
            return false;
        entry.number = static_cast<uchar>(number);
    }
    return true;
}

/// Calls `use(color, length)` for each stretch of one colour until it returns false; whether it
/// never did.
template <typename Use>
bool forEachRun(const QRgb *line, int width, Use use)
{
    for (int x = 0; x < width;) {
        const int from = x;
        const QRgb color = line[x];
        while (x < width && line[x] == color)
            ++x;
        if (!use(color, x - from))
            return false;
    }
    return true;
}

} // namespace

std::optional<PalettedImage> paletted(const QImage &image)
{
    const int width = image.width();
    const int height = image.height();
    const auto row = [&](int y) { return reinterpret_cast<const QRgb *>(image.constScanLine(y)); };
    const auto sameAsAbove = [&](int y) {
        return y > 0 &&
               std::memcmp(row(y), row(y - 1), static_cast<size_t>(width) * sizeof(QRgb)) == 0;
    };

    // First every pixel gets the place of its colour in the table, then the number in the palette.
    ColorTable table;
    // Half a megabyte, used again by the next image.
    auto &places = perThread<std::vector<quint16>, PalettedImage>();
    places.resize(static_cast<size_t>(width) * static_cast<size_t>(height));
    quint16 *place = places.data();
    for (int y = 0; y < height; ++y) {
        if (sameAsAbove(y)) {
            place += width;
            continue;
        }
        const bool complete = forEachRun(row(y), width, [&](QRgb color, int length) {
            ColorTable::Entry *entry = table.find(color | opaque);
            if (!entry)
                return false;
            entry->count += static_cast<uint>(length);
            place = std::fill_n(place, length, table.placeOf(entry));
            return true;
        });
        if (!complete)
            return {};
    }

    PalettedImage result;
    Palette palette;
    if (!chooseColors(table.byFrequency(), palette))
        return {};
    result.colors = std::move(palette.colors);
    result.width = width;
    result.height = height;
    const std::vector<uchar> numbers = table.numbers();
    result.pixels.resize(places.size());
    uchar *pixel = result.pixels.data();
    place = places.data();
    for (int y = 0; y < height; ++y) {
        if (sameAsAbove(y))
            std::copy_n(pixel - width, width, pixel);
        else
            std::transform(place, place + width, pixel, [&](quint16 at) { return numbers[at]; });
        place += width;
        pixel += width;
    }
    return result;
}
