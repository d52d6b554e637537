#include "charts/Palette.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace {

constexpr size_t mostColors = 256;
constexpr QRgb opaque = 0xFF000000;

/// The colours of an image with their frequencies: a hash table without deletion.
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

/// Gives every colour its number; the most frequent ones are kept, and of the rest those that no
/// kept one is near enough to. False when that makes too many.
bool chooseColors(const std::vector<ColorTable::Entry *> &entries, std::vector<QRgb> &colors)
{
    const size_t kept = entries.size() <= mostColors ? entries.size() : mostColors / 2;
    for (size_t i = 0; i < entries.size(); ++i) {
        ColorTable::Entry &entry = *entries[i];
        size_t nearest = colors.size();
        int least = paletteTolerance + 1;
        for (size_t k = 0; i >= kept && k < colors.size() && least > 0; ++k) {
            if (const int away = distance(entry.color, colors[k]); away < least) {
                least = away;
                nearest = k;
            }
        }
        if (nearest == colors.size()) {
            if (colors.size() == mostColors)
                return false;
            colors.push_back(entry.color);
        }
        entry.number = static_cast<uchar>(nearest);
    }
    return true;
}

} // namespace

std::optional<PalettedImage> paletted(const QImage &image)
{
    ColorTable table;
    const auto row = [&](int y) { return reinterpret_cast<const QRgb *>(image.constScanLine(y)); };
    for (int y = 0; y < image.height(); ++y) {
        const QRgb *line = row(y);
        for (int x = 0; x < image.width();) {
            const int from = x;
            const QRgb color = line[x];
            while (x < image.width() && line[x] == color)
                ++x;
            ColorTable::Entry *entry = table.find(color | opaque);
            if (!entry)
                return {};
            entry->count += static_cast<uint>(x - from);
        }
    }

    PalettedImage result;
    if (!chooseColors(table.byFrequency(), result.colors))
        return {};
    result.width = image.width();
    result.height = image.height();
    result.pixels.resize(static_cast<size_t>(image.width()) * static_cast<size_t>(image.height()));
    uchar *pixel = result.pixels.data();
    for (int y = 0; y < image.height(); ++y) {
        const QRgb *line = row(y);
        for (int x = 0; x < image.width();) {
            const int from = x;
            const QRgb color = line[x];
            while (x < image.width() && line[x] == color)
                ++x;
            pixel = std::fill_n(pixel, x - from, table.find(color | opaque)->number);
        }
    }
    return result;
}
