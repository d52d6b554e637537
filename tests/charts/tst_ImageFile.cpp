#include "Images.h"
#include "charts/ImageFile.h"
#include "charts/Palette.h"
#include "support/Rows.h"

#include <random>

namespace {

/// An image of `colors` different colours.
QImage imageOf(int width, int height, int colors)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int i = (y * width + x) % colors;
            image.setPixel(x, y, qRgb(i * 37 % 256, i * 91 % 256, i / 3 % 256));
        }
    }
    return image;
}

QImage decoded(const QByteArray &bytes)
{
    return QImage::fromData(bytes).convertToFormat(QImage::Format_RGB32);
}

} // namespace

class ImageFileTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// At every bit depth, and widths that leave a part of the last byte over.
    void fewColoursComeBackExactly()
    {
        for (const int colors : {1, 2, 3, 4, 5, 16, 17, 255, 256}) {
            for (const int width : {1, 7, 8, 33}) {
                const QImage image = imageOf(width, 40, colors);
                for (const Compression compression : {Compression::Fast, Compression::Small})
                    QCOMPARE(decoded(encodePng(image, compression)), image);
            }
        }
    }

    void inksStayExactBesideManyEdgeColours()
    {
        QImage image(200, 100, QImage::Format_RGB32);
        image.fill(qRgb(255, 255, 255));
        for (int x = 0; x < 200; ++x) {
            for (int y = 0; y < 8; ++y)
                image.setPixel(x, y, qRgb(x, 255 - x, (x + y * 8) % 256)); // 1,600 colours
        }
        for (int x = 0; x < 200; ++x)
            image.setPixel(x, 60, qRgb(212, 80, 12));
        const QImage read = decoded(encodePng(image));
        QVERIFY(greatestDifference(read, image) <= paletteTolerance);
        QCOMPARE(read.pixel(100, 60), qRgb(212, 80, 12));
        QCOMPARE(read.pixel(100, 90), qRgb(255, 255, 255));
    }

    void manyColoursAreKeptInFull()
    {
        std::mt19937 random(3);
        QImage image(150, 120, QImage::Format_RGB32);
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                image.setPixel(x, y, static_cast<uint>(random()) | 0xFF000000U);
        }
        QVERIFY(!paletted(image));
        QCOMPARE(decoded(encodePng(image)), image);
    }

    void formats_data()
    {
        const Rows<QString, bool, QByteArray> row("format", "known", "magic");
        row.each({{"PNG", true, "\x89PNG"}, {" png", true, "\x89PNG"}, {"", true, "\x89PNG"}});
        row.each({{"JPG", true, "\xFF\xD8\xFF"}, {"jpeg", true, "\xFF\xD8"}, {"Bmp", true, "BM"}});
        row.each({{"GIF", false, "\x89PNG"}, {"PPM", false, "\x89PNG"}, {"W/9", false, "\x89PNG"}});
    }
    void formats()
    {
        QFETCH(QString, format);
        QFETCH(QByteArray, magic);
        QTEST(isImageFormat(format), "known");
        const QByteArray bytes = encodeImage(imageOf(20, 20, 5), format);
        QVERIFY(bytes.startsWith(magic));
        QCOMPARE(QImage::fromData(bytes).size(), QSize(20, 20));
    }
};

QTEST_GUILESS_MAIN(ImageFileTest)
#include "tst_ImageFile.moc"
