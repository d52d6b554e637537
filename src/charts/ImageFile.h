#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>

/// Image files as bytes. Any thread; the same image gives the same bytes.

enum class Compression {
    Fast, ///< for a run with its many images
    Small ///< a tenth smaller, at ten times the cost
};

/// A PNG file: with a palette where the image allows it (see charts/Palette.h), else in full
/// colour. Throws Error when the image is empty or there is no memory.
QByteArray encodePng(const QImage &image, Compression compression = Compression::Fast);

/// Whether charts can be written in a format of the configuration (`IMG_Format`): "PNG", "JPG",
/// "JPEG" or "BMP" in any case; empty means PNG.
bool isImageFormat(const QString &format);

/// A file in such a format, or else as PNG. Throws Error when encoding fails.
QByteArray encodeImage(const QImage &image, const QString &format,
                       Compression compression = Compression::Fast);
