#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>

/// Image files as bytes. Any thread; the same image gives the same bytes.

enum class Compression {
    Fast, ///< for the many images of a run
    Small ///< a tenth smaller, at ten times the cost
};

/// A PNG file: with a palette where the image allows it (see charts/Palette.h), else in full
/// colour. Throws Error when the image is empty or there is no memory.
QByteArray encodePng(const QImage &image, Compression compression = Compression::Fast);

/// A file in a format of the configuration (`IMG_Format`): "PNG" in any case, or another one that
/// the system's image plug-ins write ("JPG", "BMP", ...); empty means PNG. Throws Error on an
/// unknown format and when encoding fails.
QByteArray encodeImage(const QImage &image, const QString &format,
                       Compression compression = Compression::Fast);
