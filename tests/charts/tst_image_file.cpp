#include "charts/ImageFile.h"
#include "charts/Palette.h"
#include "core/Error.h"

#include <QGuiApplication>
#include <QTest>

#include <algorithm>
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

int greatestDifference(const QImage &a, const QImage &b)
{
    int most = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            most = std::max({most, std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)),
                             std::abs(qBlue(p) - qBlue(q))});
        }
    }
    return most;
}

} // namespace

class ImageFileTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// Every bit depth, and widths that leave a part of the last byte over.
    void fewColoursComeBackExactly_data()
    {
        QTest::addColumn<int>("colors");
        QTest::addColumn<int>("width");
        for (const int colors : {1, 2, 3, 4, 5, 16, 17, 255, 256}) {
            for (const int width : {1, 7, 8, 33, 64})
                QTest::addRow("%d colours, width %d", colors, width) << colors << width;
        }
    }
    void fewColoursComeBackExactly()
    {
        QFETCH(int, colors);
        QFETCH(int, width);
        const QImage image = imageOf(width, 40, colors);
        for (const Compression compression : {Compression::Fast, Compression::Small}) {
            const QImage read =
                QImage::fromData(encodePng(image, compression)).convertToFormat(image.format());
            QCOMPARE(read, image);
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
        const QImage read = QImage::fromData(encodePng(image)).convertToFormat(image.format());
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
        const QImage read = QImage::fromData(encodePng(image)).convertToFormat(image.format());
        QCOMPARE(read, image);
    }

    void anEmptyImageIsAnError() { QVERIFY_EXCEPTION_THROWN(encodePng(QImage()), Error); }

    void formats_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QByteArray>("magic");
        QTest::newRow("PNG") << QStringLiteral("PNG") << QByteArray("\x89PNG");
        QTest::newRow("png") << QStringLiteral("png") << QByteArray("\x89PNG");
        QTest::newRow("empty") << QString() << QByteArray("\x89PNG");
        QTest::newRow("JPG") << QStringLiteral("JPG") << QByteArray("\xFF\xD8\xFF");
        QTest::newRow("BMP") << QStringLiteral("Bmp") << QByteArray("BM");
    }
    void formats()
    {
        QFETCH(QString, format);
        QFETCH(QByteArray, magic);
        const QImage image = imageOf(20, 20, 5);
        const QByteArray bytes = encodeImage(image, format);
        QVERIFY(bytes.startsWith(magic));
        QCOMPARE(QImage::fromData(bytes).size(), image.size());
    }

    void anUnknownFormatIsNamed()
    {
        try {
            encodeImage(imageOf(4, 4, 2), QStringLiteral("WMF9"));
            QFAIL("no error");
        } catch (const Error &error) {
            QVERIFY(error.description.contains(QStringLiteral("WMF9")));
        }
    }
};

QTEST_GUILESS_MAIN(ImageFileTest)
#include "tst_image_file.moc"
