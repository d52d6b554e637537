#pragma once

#include <QByteArray>
#include <QImage>
#include <QRgb>

#include <optional>
#include <vector>

/// Images with at most 256 colours. Pure functions, any thread.

struct PalettedImage
{
    std::vector<QRgb> colors; ///< opaque
    int width = 0;
    int height = 0;
    std::vector<uchar> pixels; ///< indexes into `colors`, row by row
};

/// The image with its own colours if there are at most 256. Antialiased charts have a few hundred
/// more at the edges of letters and lines: each rare one becomes the nearest kept one, at most
/// `paletteTolerance` away in each channel, which nobody can see. Null where that is not possible.
/// `image` has 32 bits a pixel; its alpha channel is ignored.
std::optional<PalettedImage> paletted(const QImage &image);

/// Of 255. The colours of ChartStyle are further apart, so that no thin line gets lost.
inline constexpr int paletteTolerance = 16;
