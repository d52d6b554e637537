#include "charts/Palette.h"

#include "charts/PerThread.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

namespace {

constexpr size_t maxColors = 256;
constexpr size_t keptColors = 64; ///< the most frequent ones, which fill areas
constexpr QRgb opaque = 0xFF000000;

/// The colours of an image with their frequencies (in chunks that differ from the row above) and,
/// later, their indexes in the palette: a hash table without deletion.
class ColorTable
{
public:
    static constexpr int full = -1;

    /// The slot of a colour, which is added if missing; `full` when there is no room.
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

    void count(int slot) { ++m_entries[static_cast<size_t>(slot)].count; }

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

    void setIndex(QRgb color, int index)
    {
        m_indexes[static_cast<size_t>(find(color))] = static_cast<uchar>(index);
    }
    uchar index(quint16 slot) const { return m_indexes[slot]; }

private:
    struct Entry
    {
        QRgb color = 0; ///< 0, which is not opaque: a free slot
        uint count = 0;
    };

    static constexpr int bits = 13;
    std::vector<Entry> m_entries = std::vector<Entry>(size_t(1) << bits);
    std::vector<uchar> m_indexes = std::vector<uchar>(size_t(1) << bits);
    size_t m_used = 0;
};

int distance(QRgb a, QRgb b)
{
    return std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                     std::abs(qBlue(a) - qBlue(b))});
}

/// The palette while it is built. Colours that share the upper bits of their channels are mostly
/// close, so that few need a search through the whole palette.
class Palette
{
public:
    /// The index of a colour within the tolerance, usually the nearest one; -1 without one.
    int find(QRgb color)
    {
        const size_t cell = cellOf(color);
        if (m_cells[cell] >= 0 && distance(color, colors[indexIn(cell)]) <= paletteTolerance)
            return m_cells[cell];
        int nearest = -1;
        int smallest = paletteTolerance + 1;
        for (size_t i = 0; i < colors.size(); ++i) {
            if (const int away = distance(color, colors[i]); away < smallest) {
                smallest = away;
                nearest = static_cast<int>(i);
            }
        }
        m_cells[cell] = static_cast<qint16>(nearest);
        return nearest;
    }

    /// The new colour's index; -1 when there are too many.
    int add(QRgb color)
    {
        if (colors.size() == maxColors)
            return -1;
        colors.push_back(color);
        const int index = static_cast<int>(colors.size()) - 1;
        m_cells[cellOf(color)] = static_cast<qint16>(index);
        return index;
    }

    std::vector<QRgb> colors;

private:
    static size_t cellOf(QRgb color)
    {
        return static_cast<size_t>((qRed(color) >> 4) << 8 | (qGreen(color) >> 4) << 4 |
                                   qBlue(color) >> 4);
    }
    size_t indexIn(size_t cell) const { return static_cast<size_t>(m_cells[cell]); }

    std::vector<qint16> m_cells = std::vector<qint16>(16 * 16 * 16, -1);
};

/// Gives every colour its index; the most frequent ones are kept, and of the rest those without a
/// kept one within the tolerance. False when those are too many.
bool chooseColors(ColorTable &table, Palette &palette)
{
    const std::vector<QRgb> colors = table.byFrequency();
    const bool keepsAll = colors.size() <= maxColors;
    for (size_t i = 0; i < colors.size(); ++i) {
        int index = keepsAll || i < keptColors ? -1 : palette.find(colors[i]);
        if (index < 0)
            index = palette.add(colors[i]);
        if (index < 0)
            return false;
        table.setIndex(colors[i], index);
    }
    return true;
}

/// Pixels that are compared with those above them at a time.
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

/// An image's pixels as slots of a table. Most chunks of a chart equal the chunk above, and only
/// the others have their slots here; `isNew` marks those.
struct Slots
{
    std::vector<char> isNew; ///< by chunk
    std::vector<quint16> pixels;
};

/// False when there are too many colours.
bool findSlots(const QImage &image, ColorTable &table, Slots &found)
{
    const int width = image.width();
    const int height = image.height();
    found.isNew.resize(static_cast<size_t>((width + chunk - 1) / chunk * height));
    found.pixels.resize(static_cast<size_t>(width) * static_cast<size_t>(height));
    char *isNew = found.isNew.data();
    quint16 *to = found.pixels.data();
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
                const int slot = table.find(line[i] | opaque);
                if (slot == ColorTable::full)
                    return false;
                table.count(slot);
                *to++ = static_cast<quint16>(slot);
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
    auto &found = perThread<Slots, PalettedImage>();
    Palette palette;
    if (!findSlots(image, table, found) || !chooseColors(table, palette))
        return {};

    PalettedImage result;
    result.colors = std::move(palette.colors);
    result.width = image.width();
    result.height = image.height();
    result.pixels.resize(static_cast<size_t>(image.width()) * static_cast<size_t>(image.height()));
    uchar *pixel = result.pixels.data();
    auto isNew = found.isNew.cbegin();
    auto slot = found.pixels.cbegin();
    for (int y = 0; y < result.height; ++y) {
        for (int x = 0; x < result.width; x += chunk) {
            const int count = std::min(chunk, result.width - x);
            if (*isNew++) {
                pixel = std::transform(slot, slot + count, pixel,
                                       [&](quint16 at) { return table.index(at); });
                slot += count;
            } else {
                pixel = std::copy_n(pixel - result.width, chunk, pixel);
            }
        }
    }
    return result;
}
