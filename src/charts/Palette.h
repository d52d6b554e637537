#pragma once

#include <QByteArray>
#include <QImage>
#include <QRgb>

#include <optional>
#include <vector>

/// An image as numbers of at most 256 colours. Pure functions, any thread.

struct PalettedImage
{
    std::vector<QRgb> colors; ///< opaque
    int width = 0;
    int height = 0;
    std::vector<uchar> pixels; ///< numbers into `colors`, row by row
};

/// The image with its own colours where it has at most 256 of them. Charts have a few hundred more
/// at the edges of letters and lines: there, each colour that is rare becomes the nearest kept one,
/// at most `paletteTolerance` away in each channel, which no eye tells apart. None where that is
/// not possible. `image` has 32 bits a pixel; its alpha channel is ignored.
std::optional<PalettedImage> paletted(const QImage &image);

/// Of 255. Inks lie further apart, so that no thin line merges with what lies behind it.
inline constexpr int paletteTolerance = 16;
