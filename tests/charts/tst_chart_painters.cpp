#include "ChartSamples.h"
#include "TextProbe.h"
#include "charts/ChartPainter.h"
#include "charts/ChartStyle.h"
#include "charts/Coverage.h"

#include <QBuffer>
#include <QLocale>
#include <QPdfWriter>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <random>

namespace {

/// Draws into a probe and tells what is wrong with its texts; empty when nothing is.
QString textFault(const Chart &chart, const QSize &size)
{
    TextProbe probe(size);
    QPainter painter(&probe);
    paintChart(painter, chart, size);
    painter.end();
    const QRectF inside(QPointF(0, 0), size);
    for (size_t i = 0; i < probe.texts.size(); ++i) {
        const TextProbe::Text &text = probe.texts[i];
        if (!inside.contains(text.box))
            return QStringLiteral("'%1' leaves the chart").arg(text.text);
        for (size_t k = 0; k < i; ++k) {
            // Lines stand as close as their ascent and descent, rounded.
            const QRectF other = probe.texts[k].box.adjusted(0.5, 1.5, -0.5, -1.5);
            if (other.intersects(text.box.adjusted(0.5, 1.5, -0.5, -1.5)))
                return QStringLiteral("'%1' runs into '%2'").arg(text.text, probe.texts[k].text);
        }
    }
    return {};
}

QStringList textsOf(const Chart &chart)
{
    TextProbe probe(chartSize(chart));
    QPainter painter(&probe);
    paintChart(painter, chart, chartSize(chart));
    painter.end();
    QStringList texts;
    for (const TextProbe::Text &text : probe.texts)
        texts.append(text.text);
    return texts;
}

int pixelsOf(const QImage &image, QRgb color)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        count += static_cast<int>(std::count(line, line + image.width(), color));
    }
    return count;
}

/// Whether a colour stands in a column of the plot of a chart of 640 by 390.
bool columnHas(const QImage &image, int x, QRgb color)
{
    for (int y = 95; y < 325; ++y) {
        if (image.pixel(x, y) == color)
            return true;
    }
    return false;
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

StateChart stateOf(const QList<std::pair<qint64, qint64>> &counts, int minutes = 60)
{
    StateChart chart;
    chart.frame = sampleFrame();
    chart.series = stateSeries(counts, minutes);
    return chart;
}

CounterChart counterOf(const QList<double> &means, double spread = 0)
{
    CounterChart chart;
    chart.frame = sampleFrame();
    chart.valueLabel = QStringLiteral("Response time");
    chart.unit = QStringLiteral("ms");
    chart.series = counterSeries(means, spread);
    return chart;
}

DeviceRateChart devicesOf(int count)
{
    DeviceRateChart chart;
    chart.frame = sampleFrame();
    chart.valueAxisTitle = QStringLiteral("Total Tests Performed");
    chart.categoryAxisTitle = QStringLiteral("Device");
    for (int i = 0; i < count; ++i)
        chart.devices.push_back(
            {QStringLiteral("dev%1").arg(i, 3, 10, QLatin1Char('0')), 1000 + i, i % 4, i % 9 != 5});
    return chart;
}

ChartFrame &frameOf(Chart &chart)
{
    return std::visit([](auto &kind) -> ChartFrame & { return kind.frame; }, chart);
}

} // namespace

class ChartPaintersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QLocale::setDefault(QLocale::c());
        QVERIFY(fontsAvailable());
        warmUpFonts();
    }

    void textsStayInsideAndApart_data()
    {
        QTest::addColumn<QSize>("size");
        for (const QSize &size : {QSize(320, 200), QSize(320, 800), QSize(500, 240),
                                  QSize(640, 390), QSize(1600, 280), QSize(3840, 2160)})
            QTest::addRow("%dx%d", size.width(), size.height()) << size;
    }
    void textsStayInsideAndApart()
    {
        QFETCH(QSize, size);
        QList<double> wave;
        for (int i = 0; i < 168; ++i)
            wave.append(i > 60 && i < 80 ? noValue : 1e6 + 5e5 * std::sin(i / 9.0));
        std::vector<Chart> charts = {stateOf(QList<std::pair<qint64, qint64>>(168, {59, 1})),
                                     stateOf(QList<std::pair<qint64, qint64>>(7, {59, 1}), 1440),
                                     stateOf({}),
                                     counterOf(wave, 4e5),
                                     counterOf({5, noValue, 1e15, -2e15}),
                                     counterOf({noValue, noValue}),
                                     devicesOf(5),
                                     devicesOf(40)};
        for (Chart &chart : charts) {
            for (const bool longTexts : {false, true}) {
                ChartFrame &frame = frameOf(chart);
                frame.size = size;
                if (longTexts) {
                    frame.title = QStringLiteral("A title\nof many words ").repeated(30);
                    frame.subtitle = QString(400, QChar(u'W'));
                    frame.zone = QStringLiteral("America/Argentina/ComodRivadavia, UTC-03:00");
                }
                QCOMPARE(textFault(chart, chartSize(chart)), QString());
            }
        }
    }

    void anySeriesCanBeDrawn()
    {
        std::mt19937 random(4);
        std::uniform_real_distribution<double> unit(-1, 1);
        for (int round = 0; round < 150; ++round) {
            const double power = std::pow(10, static_cast<int>(random() % 25) - 9);
            const double offset = random() % 3 == 0 ? power * 1e4 : 0;
            QList<double> means;
            for (auto i = random() % 400; i > 0; --i)
                means.append(random() % 5 == 0 ? noValue : offset + power * unit(random));
            CounterChart chart = counterOf(means, power / 3);
            chart.unit = QStringList{QString(), QStringLiteral("B/s"), QStringLiteral("bit/s"),
                                     QStringLiteral("%")}[random() % 4];
            chart.frame.labelStep = 1 + static_cast<int>(random() % 5);
            const QSize size(320 + static_cast<int>(random() % 1000),
                             200 + static_cast<int>(random() % 700));
            chart.frame.size = size;
            chart.frame.quality = static_cast<int>(random() % 4);
            QCOMPARE(textFault(chart, size), QString());
            QVERIFY(!drawChart(chart).isNull());
        }
    }

    void gapsOfCountersStayBlank()
    {
        QList<double> means(168, 40.0);
        for (qsizetype i = 0; i < means.size(); ++i)
            means[i] += static_cast<double>(i % 7);
        for (int i = 60; i < 110; ++i)
            means[i] = noValue;
        for (const QList<double> &series : {means, QList<double>(means).fill(noValue)}) {
            const QImage image = drawChart(counterOf(series, 10));
            for (const int x : {290, 330, 370}) {
                for (const QRgb color : {ink::value, ink::valueFill, ink::bandFill, ink::moving})
                    QVERIFY(!columnHas(image, x, color));
            }
        }
        QVERIFY(columnHas(drawChart(counterOf(means, 10)), 200, ink::bandFill));
    }

    void aZeroIsNoGap()
    {
        const QImage image = drawChart(counterOf(QList<double>(168, 0.0)));
        int most = 0; // pixels of the value line in a row
        for (int y = 200; y < image.height(); ++y) {
            int green = 0;
            for (int x = 0; x < image.width(); ++x) {
                const QRgb pixel = image.pixel(x, y);
                green += qGreen(pixel) > qRed(pixel) + 40 && qGreen(pixel) > qBlue(pixel) + 40;
            }
            most = std::max(most, green);
        }
        QVERIFY2(most > 550, qPrintable(QString::number(most)));
    }

    void oneValueIsSeen()
    {
        QList<double> means(168, noValue);
        means[80] = 12;
        QVERIFY(pixelsOf(drawChart(counterOf(means)), ink::value) >
                pixelsOf(drawChart(counterOf(QList<double>(168, noValue))), ink::value) + 5);
    }

    void noDataOfStatesIsNeitherUpNorDown()
    {
        QList<std::pair<qint64, qint64>> counts(168, {60, 0});
        for (int i = 60; i < 110; ++i)
            counts[i] = {0, 0};
        const QImage image = drawChart(stateOf(counts));
        QVERIFY(columnHas(image, 330, ink::noDataFill));
        QVERIFY(!columnHas(image, 330, ink::successFill));
        QVERIFY(!columnHas(image, 330, ink::failure));
        QVERIFY(columnHas(image, 100, ink::successFill));
        QVERIFY(!columnHas(image, 100, ink::noDataFill));
    }

    /// A single failure among thousands changes the look of its bucket from top to bottom.
    void oneFailureIsSeen_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("minutes");
        QTest::newRow("wide buckets") << 24 << 60;
        QTest::newRow("hours of a week") << 168 << 60;
        QTest::newRow("several buckets a pixel") << 2016 << 5;
    }
    void oneFailureIsSeen()
    {
        QFETCH(int, count);
        QFETCH(int, minutes);
        QList<std::pair<qint64, qint64>> counts(count, {1000, 0});
        const QImage perfect = drawChart(stateOf(counts, minutes));
        QCOMPARE(pixelsOf(perfect, ink::failure), 0);
        QCOMPARE(pixelsOf(perfect, ink::partialFill), 0);
        counts[count / 3] = {999, 1};
        const QImage flawed = drawChart(stateOf(counts, minutes));
        QVERIFY(pixelsOf(flawed, ink::failure) >= 2);
        QVERIFY(pixelsOf(flawed, ink::partialFill) > 150);
    }

    void emptyChartsSaySo()
    {
        const QString message = QStringLiteral("No data in this period");
        const QList<std::pair<qint64, qint64>> none(24, {0, 0});
        for (const Chart &chart : std::vector<Chart>{stateOf(none), stateOf({}), counterOf({}),
                                                     counterOf({noValue}), devicesOf(0)})
            QVERIFY(textsOf(chart).contains(message));
        QVERIFY(!textsOf(counterOf({3})).contains(message));
    }

    void figuresStandOnTheChart()
    {
        const QStringList state = textsOf(stateOf({{3, 1}, {0, 0}}));
        QVERIFY(state.contains(
            QStringLiteral("AVERAGE - Count:4  Success:3  Fail:1  Avg Success Rate:75.%")));
        QVERIFY(state.contains(QStringLiteral("TOTALS - Samples:1  Total:4  Success:3  Fail:1")));
        QVERIFY(state.contains(QStringLiteral("Europe/Berlin, UTC+01:00")));
        const QStringList counter = textsOf(counterOf(QList<double>(40, 5.0)));
        for (const char *text : {"95th Percentile", "Moving x4", "Sample Avg.", "5 ms",
                                 "Samples: 40 Max: 5.0 Min: 5.0 Avg: 5.0 95th: 5.0"})
            QVERIFY2(counter.contains(QString::fromLatin1(text)), text);
    }

    void everyDeviceHasItsRowInOrder()
    {
        for (const int count : {1, 30, 300}) {
            const DeviceRateChart chart = devicesOf(count);
            QStringList names =
                textsOf(chart).filter(QRegularExpression(QStringLiteral("^dev\\d")));
            QCOMPARE(names.size(), count);
            QStringList sorted = names;
            sorted.sort();
            QCOMPARE(names, sorted);
            QCOMPARE(textFault(chart, chartSize(chart)), QString());
        }
    }

    void tooManyDevicesAreCounted()
    {
        const DeviceRateChart chart = devicesOf(2000);
        QVERIFY(chartSize(chart).height() <= 8000);
        const QStringList texts = textsOf(chart);
        const auto rows = texts.filter(QRegularExpression(QStringLiteral("^dev\\d"))).size();
        QVERIFY(rows > 300);
        QVERIFY(texts.contains(QStringLiteral("and %1 more devices").arg(2000 - rows)));
    }

    void qualityDecidesThePixels()
    {
        StateChart chart = stateOf({{3, 1}, {4, 0}});
        for (const int quality : {0, 1, 2, 3}) {
            chart.frame.quality = quality;
            const int ratio = quality == 3 ? 2 : 1;
            QCOMPARE(drawChart(chart).size(), QSize(640, 390) * ratio);
        }
    }

    void paintsOnPagesAndScaledPainters()
    {
        const Chart chart = counterOf({1, 5, 2, noValue, 8}, 1);
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        {
            QPdfWriter writer(&buffer);
            QPainter painter(&writer);
            painter.scale(writer.width() / 640.0, writer.width() / 640.0);
            paintChart(painter, chart, QSizeF(640, 390));
        }
        QVERIFY(buffer.data().startsWith("%PDF"));
        QVERIFY(buffer.data().size() > 4'000);

        // Beside another drawing, moved: the same picture as an image of its own.
        QImage wide(700, 450, QImage::Format_RGB32);
        wide.fill(Qt::black);
        QPainter painter(&wide);
        painter.translate(40, 30);
        paintChart(painter, chart, QSizeF(640, 390));
        painter.end();
        QVERIFY(greatestDifference(wide.copy(40, 30, 640, 390), drawChart(chart)) <= 2);
    }

    /// The fast way to fill against the painter's own.
    void masksEqualThePaintersFill()
    {
        std::mt19937 random(5);
        std::uniform_real_distribution<double> x(-20, 320);
        std::uniform_real_distribution<double> y(-20, 220);
        for (int round = 0; round < 40; ++round) {
            const QPolygonF triangle(
                {{x(random), y(random)}, {x(random), y(random)}, {x(random), y(random)}});
            QImage fast(300, 200, QImage::Format_RGB32);
            fast.fill(Qt::white);
            QImage exact = fast;
            QPainter first(&fast);
            first.setRenderHint(QPainter::Antialiasing);
            fillShapes(first, {triangle}, QColor(0, 100, 0));
            first.end();
            QPainter second(&exact);
            second.setRenderHint(QPainter::Antialiasing);
            second.setPen(Qt::NoPen);
            second.setBrush(QColor(0, 100, 0));
            second.drawPolygon(triangle);
            second.end();
            const int most = greatestDifference(fast, exact);
            QVERIFY2(most <= 12, qPrintable(QString::number(most)));
        }
    }
};

QTEST_MAIN(ChartPaintersTest)
#include "tst_chart_painters.moc"
