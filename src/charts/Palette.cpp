#include "charts/Palette.h"

#include "charts/PerThread.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

namespace {

constexpr size_t mostColors = 256;
constexpr size_t keptColors = 64; ///< inks, and what else fills areas
constexpr QRgb opaque = 0xFF000000;

/// The colours of an image with their frequencies (in what is unlike the row above) and, later,
/// their numbers in the palette: a hash table without deletion.
class ColorTable
{
public:
    static constexpr int full = -1;

    /// The place of a colour in the table, else `full`.
    int find(QRgb color)
    {
        size_t at = (color * 0x9E3779B1u) >> (32 - bits);
        while (m_entries[at].color != color) {
            if (m_entries[at].color == 0) {
                if (m_used == m_entries.size() / 2)
                    return full;
                ++m_used;
                m_entries[at].color = color;
                break;
            }
            at = (at + 1) % m_entries.size();
        }
        return static_cast<int>(at);
    }

    void count(int place) { ++m_entries[static_cast<size_t>(place)].count; }

    /// Most frequent first; equal ones by colour, so that the order is always the same.
    std::vector<QRgb> byFrequency() const
    {
        std::vector<quint64> keys; // sort faster than entries
        keys.reserve(m_used);
        for (const Entry &entry : m_entries) {
            if (entry.color != 0)
                keys.push_back(quint64(~entry.count) << 32 | entry.color);
        }
        std::sort(keys.begin(), keys.end());
        std::vector<QRgb> colors(keys.size());
        std::transform(keys.begin(), keys.end(), colors.begin(),
                       [](quint64 key) { return static_cast<QRgb>(key); });
        return colors;
    }

    void setNumber(QRgb color, int number)
    {
        m_numbers[static_cast<size_t>(find(color))] = static_cast<uchar>(number);
    }
    uchar number(quint16 place) const { return m_numbers[place]; }

private:
    struct Entry
    {
        QRgb color = 0; ///< 0: free, as no opaque colour is
        uint count = 0;
    };

    static constexpr int bits = 13;
    std::vector<Entry> m_entries = std::vector<Entry>(size_t(1) << bits);
    std::vector<uchar> m_numbers = std::vector<uchar>(size_t(1) << bits);
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
bool chooseColors(ColorTable &table, Palette &palette)
{
    const std::vector<QRgb> colors = table.byFrequency();
    const bool all = colors.size() <= mostColors;
    for (size_t i = 0; i < colors.size(); ++i) {
        int number = all || i < keptColors ? -1 : palette.find(colors[i]);
        if (number < 0)
            number = palette.add(colors[i]);
        if (number < 0)
            return false;
        table.setNumber(colors[i], number);
    }
    return true;
}

/// Pixels that are compared with those above them at once.
constexpr int chunk = 8;

bool sameChunk(const QRgb *a, const QRgb *b)
{
    quint64 difference = 0;
    for (int i = 0; i < chunk; i += 2) {
        quint64 left = 0;
        quint64 right = 0;
        std::memcpy(&left, a + i, sizeof left);
        std::memcpy(&right, b + i, sizeof right);
        difference |= left ^ right;
    }
    return difference == 0;
}

/// An image's colours as places in a table. Charts are mostly like the row above, so only chunks
/// that are not have their places here; `isNew` tells for each chunk which it is.
struct Places
{
    std::vector<char> isNew;
    std::vector<quint16> places;
};

/// False when there are too many colours.
bool findPlaces(const QImage &image, ColorTable &table, Places &found)
{
    const int width = image.width();
    const int height = image.height();
    found.isNew.resize(static_cast<size_t>((width + chunk - 1) / chunk * height));
    found.places.resize(static_cast<size_t>(width) * static_cast<size_t>(height));
    char *isNew = found.isNew.data();
    quint16 *to = found.places.data();
    const QRgb *above = nullptr;
    for (int y = 0; y < height; ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        for (int x = 0; x < width; x += chunk) {
            const int count = std::min(chunk, width - x);
            const bool changes = !above || count < chunk || !sameChunk(line + x, above + x);
            *isNew++ = changes ? 1 : 0;
            if (!changes)
                continue;
            for (int i = x; i < x + count; ++i) {
                const int place = table.find(line[i] | opaque);
                if (place == ColorTable::full)
                    return false;
                table.count(place);
                *to++ = static_cast<quint16>(place);
            }
        }
        above = line;
    }
    return true;
}

} // namespace

std::optional<PalettedImage> paletted(const QImage &image)
{
    ColorTable table;
    auto &found = perThread<Places, PalettedImage>(); // used again by the next image
    Palette palette;
    if (!findPlaces(image, table, found) || !chooseColors(table, palette))
        return {};

    PalettedImage result;
    result.colors = std::move(palette.colors);
    result.width = image.width();
    result.height = image.height();
    result.pixels.resize(static_cast<size_t>(image.width()) * static_cast<size_t>(image.height()));
    uchar *pixel = result.pixels.data();
    auto isNew = found.isNew.cbegin();
    auto place = found.places.cbegin();
    for (int y = 0; y < result.height; ++y) {
        for (int x = 0; x < result.width; x += chunk) {
            const int count = std::min(chunk, result.width - x);
            if (*isNew++) {
                pixel = std::transform(place, place + count, pixel,
                                       [&](quint16 at) { return table.number(at); });
                place += count;
            } else {
                pixel = std::copy_n(pixel - result.width, chunk, pixel);
            }
        }
    }
    return result;
}
