#include "charts/ImageFile.h"

#include "base/Error.h"
#include "charts/Palette.h"
#include "charts/PerThread.h"

#include <QBuffer>
#include <QImageWriter>
#include <QtEndian>

#include <libdeflate.h>
#include <memory>

namespace {

/// Even the fastest level finds the repetitions in a chart's flat areas; the next ones take half as
/// long again for a few per cent.
constexpr int fastLevel = 1;
constexpr int smallLevel = 9;

struct FreeCompressor
{
    void operator()(libdeflate_compressor *compressor) const
    {
        libdeflate_free_compressor(compressor);
    }
};
using Compressor = std::unique_ptr<libdeflate_compressor, FreeCompressor>;

/// One compressor a thread and level, as they are large and slow to set up.
libdeflate_compressor *compressorFor(Compression compression)
{
    struct Compressors
    {
        Compressor fast;
        Compressor small;
    };
    const bool isSmall = compression == Compression::Small;
    auto &own = perThread<Compressors, Compressors>();
    Compressor &wanted = isSmall ? own.small : own.fast;
    if (!wanted)
        wanted.reset(libdeflate_alloc_compressor(isSmall ? smallLevel : fastLevel));
    if (!wanted)
        throw Error(Overflow, QStringLiteral("No memory to compress an image"));
    return wanted.get();
}

void appendNumber(QByteArray &bytes, quint32 number)
{
    const quint32 bigEndian = qToBigEndian(number);
    bytes.append(reinterpret_cast<const char *>(&bigEndian), sizeof bigEndian);
}

void appendChunk(QByteArray &file, QByteArrayView type, QByteArrayView content)
{
    appendNumber(file, static_cast<quint32>(content.size()));
    const qsizetype start = file.size();
    file.append(type).append(content);
    const auto length = static_cast<size_t>(file.size() - start);
    appendNumber(file, libdeflate_crc32(0, file.constData() + start, length));
}

QByteArray compressed(const QByteArray &rows, Compression compression)
{
    libdeflate_compressor *compressor = compressorFor(compression);
    const auto length = static_cast<size_t>(rows.size());
    QByteArray result(static_cast<qsizetype>(libdeflate_zlib_compress_bound(compressor, length)),
                      Qt::Uninitialized);
    const size_t written = libdeflate_zlib_compress(
        compressor, rows.constData(), length, result.data(), static_cast<size_t>(result.size()));
    result.truncate(static_cast<qsizetype>(written));
    return result;
}

/// Bits a pixel for so many colours.
int depthFor(size_t colors)
{
    return colors <= 2 ? 1 : colors <= 4 ? 2 : colors <= 16 ? 4 : 8;
}

/// The rows of a PNG file: a filter byte (none), then the pixels, the first ones in the high bits.
QByteArray palettedRows(const PalettedImage &image, int depth)
{
    const int perByte = 8 / depth;
    const qsizetype stride = 1 + (image.width + perByte - 1) / perByte;
    QByteArray rows(stride * image.height, 0);
    for (int y = 0; y < image.height; ++y) {
        const uchar *from = image.pixels.data() + static_cast<qsizetype>(y) * image.width;
        auto *to = reinterpret_cast<uchar *>(rows.data()) + y * stride + 1;
        if (depth == 8) {
            std::copy_n(from, image.width, to);
            continue;
        }
        for (int x = 0; x < image.width; ++x)
            to[x / perByte] |= static_cast<uchar>(from[x] << (8 - depth * (x % perByte + 1)));
    }
    return rows;
}

/// Qt's name for a format of the configuration.
QByteArray writerName(const QString &format)
{
    const QString name = format.trimmed();
    return name.isEmpty() ? QByteArray("png") : name.toLower().toUtf8();
}

QByteArray colorRows(const QImage &image)
{
    const qsizetype stride = 1 + qsizetype(3) * image.width();
    QByteArray rows(stride * image.height(), 0);
    for (int y = 0; y < image.height(); ++y) {
        const auto *from = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        char *to = rows.data() + y * stride + 1;
        for (int x = 0; x < image.width(); ++x) {
            *to++ = static_cast<char>(qRed(from[x]));
            *to++ = static_cast<char>(qGreen(from[x]));
            *to++ = static_cast<char>(qBlue(from[x]));
        }
    }
    return rows;
}

} // namespace

QByteArray encodePng(const QImage &source, Compression compression)
{
    constexpr char palettedType = 3;
    constexpr char colorType = 2;
    const QImage image = source.convertToFormat(QImage::Format_RGB32);
    if (image.isNull())
        throw Error(InvalidFileFormat, QStringLiteral("An empty image cannot be written"));
    const std::optional<PalettedImage> indexed = paletted(image);
    const int depth = indexed ? depthFor(indexed->colors.size()) : 8;

    QByteArray file("\x89PNG\r\n\x1A\n", 8);
    QByteArray header;
    appendNumber(header, static_cast<quint32>(image.width()));
    appendNumber(header, static_cast<quint32>(image.height()));
    header.append(static_cast<char>(depth)).append(indexed ? palettedType : colorType);
    header.append(3, '\0'); // deflate, the usual filters, not interlaced
    appendChunk(file, "IHDR", header);
    if (indexed) {
        QByteArray palette;
        for (const QRgb color : indexed->colors)
            palette.append(static_cast<char>(qRed(color)))
                .append(static_cast<char>(qGreen(color)))
                .append(static_cast<char>(qBlue(color)));
        appendChunk(file, "PLTE", palette);
    }
    appendChunk(
        file, "IDAT",
        compressed(indexed ? palettedRows(*indexed, depth) : colorRows(image), compression));
    appendChunk(file, "IEND", {});
    return file;
}

bool isImageFormat(const QString &format)
{
    const QByteArray name = writerName(format);
    const bool isKnown = name == "png" || name == "jpg" || name == "jpeg" || name == "bmp";
    return isKnown && QImageWriter::supportedImageFormats().contains(name);
}

QByteArray encodeImage(const QImage &image, const QString &format, Compression compression)
{
    const QByteArray wanted = writerName(format);
    if (wanted == "png" || !isImageFormat(format))
        return encodePng(image, compression);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, wanted);
    writer.setQuality(90);
    if (!writer.write(image))
        throw Error(DeviceIO, QStringLiteral("Cannot write a %1 image: %2")
                                  .arg(format.trimmed(), writer.errorString()));
    return bytes;
}
