#include "ChartSamples.h"
#include "Images.h"
#include "TextProbe.h"
#include "charts/ChartPainter.h"
#include "charts/ChartStyle.h"
#include "charts/Coverage.h"
#include "support/Rows.h"

#include <QLocale>
#include <QRegularExpression>

#include <cmath>
#include <random>

namespace {

std::vector<TextProbe::Text> probed(const Chart &chart)
{
    TextProbe probe(chartSize(chart));
    QPainter painter(&probe);
    paintChart(painter, chart, chartSize(chart));
    painter.end();
    return probe.texts();
}

/// What is wrong with a chart's texts; empty when nothing is.
QString textFault(const Chart &chart)
{
    const std::vector<TextProbe::Text> texts = probed(chart);
    const QRectF inside(QPointF(0, 0), chartSize(chart));
    for (size_t i = 0; i < texts.size(); ++i) {
        const auto &[text, box] = texts[i];
        if (!inside.contains(box))
            return QString("'%1' leaves the chart").arg(text);
        for (size_t k = 0; k < i; ++k) {
            // Lines stand as close as their ascent and descent, rounded.
            const QRectF other = texts[k].box.adjusted(0.5, 1.5, -0.5, -1.5);
            if (other.intersects(box.adjusted(0.5, 1.5, -0.5, -1.5)))
                return QString("'%1' runs into '%2'").arg(text, texts[k].text);
        }
    }
    return {};
}

QStringList textsOf(const Chart &chart)
{
    QStringList texts;
    for (const TextProbe::Text &text : probed(chart))
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
    return pixelsOf(image.copy(x, 95, 1, 230), color) > 0;
}

StateChart stateOf(const Counts &counts, int minutes = 60)
{
    return {sampleFrame(), stateSeries(counts, minutes)};
}

CounterChart counterOf(const QList<double> &means, double spread = 0)
{
    return {sampleFrame(), "Response time", "ms", counterSeries(means, spread)};
}

DeviceRateChart devicesOf(int count)
{
    DeviceRateChart chart{sampleFrame(), "Total Tests Performed", "Device", {}};
    for (int i = 0; i < count; ++i)
        chart.devices.push_back({QString::asprintf("dev%03d", i), 1000 + i, i % 4, i % 9 != 5});
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
        const Rows<QString, QSize> row("name", "size");
        row.each({{"least", {320, 200}}, {"usual", {640, 390}}, {"large", {3840, 2160}}});
    }
    void textsStayInsideAndApart()
    {
        QFETCH(QSize, size);
        QList<double> wave;
        for (int i = 0; i < 168; ++i)
            wave.append(i > 60 && i < 80 ? noValue : 1e6 + 5e5 * std::sin(i / 9.0));
        for (Chart chart : std::vector<Chart>{
                 stateOf(Counts(168, {59, 1})), stateOf(Counts(7, {59, 1}), 1440), stateOf({}),
                 counterOf(wave, 4e5), counterOf({5, noValue, 1e15, -2e15}),
                 counterOf({noValue, noValue}), devicesOf(5), devicesOf(40)}) {
            ChartFrame &frame = frameOf(chart);
            frame.size = size;
            QCOMPARE(textFault(chart), "");
            frame.title = QString("A title\nof many words ").repeated(30);
            frame.subtitle = QString(400, u'W');
            frame.zone = "America/Argentina/ComodRivadavia, UTC-03:00";
            QCOMPARE(textFault(chart), "");
        }
    }

    void anySeriesCanBeDrawn()
    {
        std::mt19937 random(4);
        std::uniform_real_distribution<double> unit(-1, 1);
        for (int round = 0; round < 150; ++round) {
            const double power = std::pow(10, static_cast<int>(random() % 25) - 9);
            QList<double> means;
            for (auto i = random() % 400; i > 0; --i)
                means.append(random() % 5 == 0 ? noValue : power * unit(random));
            CounterChart chart = counterOf(means, power / 3);
            chart.unit = QStringList{QString(), "B/s", "bit/s", "%"}[random() % 4];
            chart.frame.labelStep = 1 + static_cast<int>(random() % 5);
            chart.frame.size = QSize(320 + static_cast<int>(random() % 1000),
                                     200 + static_cast<int>(random() % 700));
            chart.frame.quality = static_cast<int>(random() % 4);
            QCOMPARE(textFault(chart), "");
            QCOMPARE(drawChart(chart).size(),
                     chart.frame.size * (chart.frame.quality == 3 ? 2 : 1));
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

    void zerosAndSingleValuesAreSeen()
    {
        CounterChart zeros = counterOf(QList<double>(168, 0.0));
        zeros.frame.quality = 1; // lines of one colour
        QVERIFY(pixelsOf(drawChart(zeros), ink::value) > 550);
        QList<double> means(168, noValue);
        const int without = pixelsOf(drawChart(counterOf(means)), ink::value);
        means[80] = 12;
        QVERIFY(pixelsOf(drawChart(counterOf(means)), ink::value) > without + 5);
    }

    void noDataOfStatesIsNeitherUpNorDown()
    {
        Counts counts(168, {60, 0});
        for (int i = 60; i < 110; ++i)
            counts[i] = {0, 0};
        const QImage image = drawChart(stateOf(counts));
        for (const auto &[x, isGap] : {std::pair(330, true), std::pair(100, false)}) {
            QCOMPARE(columnHas(image, x, ink::noDataFill), isGap);
            QCOMPARE(columnHas(image, x, ink::successFill), !isGap);
            QVERIFY(!columnHas(image, x, ink::failure));
        }
    }

    /// One bad interval, with room for each and with many to a pixel column.
    void theWorstOfAColumnIsSeen()
    {
        for (const int intervals : {48, 500, 2400, 105'120}) {
            Counts counts(intervals, {1000, 0});
            QCOMPARE(pixelsOf(drawChart(stateOf(counts, 5)), ink::failure), 0);
            counts[intervals / 3] = {999, 1};
            const QImage one = drawChart(stateOf(counts, 5)).copy(0, 70, 640, 255);
            QVERIFY(pixelsOf(one, ink::partialFill) > 150 && pixelsOf(one, ink::failure) > 0);
            counts[intervals / 2] = {0, 1};
            counts[intervals / 2 + 1] = {0, 0};
            const Chart chart = stateOf(counts, 5);
            const QImage image = drawChart(chart);
            int tallest = 0;
            for (int x = 0; x < image.width(); ++x)
                tallest = std::max(tallest, pixelsOf(image.copy(x, 95, 1, 230), ink::failure));
            QVERIFY2(tallest > 150, qPrintable(QString::number(tallest)));
            QCOMPARE(textsOf(chart).filter("the worst of each pixel column").size(),
                     intervals > 1000 ? 1 : 0);
            QCOMPARE(textFault(chart), QString());
        }
    }

    void emptyChartsSaySo()
    {
        const QString message = "No data in this period";
        const Counts none(24, {0, 0});
        for (const Chart &chart : std::vector<Chart>{stateOf(none), stateOf({}), counterOf({}),
                                                     counterOf({noValue}), devicesOf(0)})
            QVERIFY(textsOf(chart).contains(message));
        QVERIFY(!textsOf(counterOf({3})).contains(message));
    }

    void figuresStandOnTheChart()
    {
        const QStringList state = textsOf(stateOf({{3, 1}, {0, 0}}));
        QVERIFY(state.contains("AVERAGE - Count:4  Success:3  Fail:1  Avg Success Rate:75.%"));
        QVERIFY(state.contains("Europe/Berlin, UTC+01:00"));
        const QStringList counter =
            textsOf(counterOf(QList<double>(37, 4.0) + QList<double>{8, 8, 8}));
        QVERIFY(counter.contains("Samples: 40 Max: 8.0 Min: 4.0 Avg: 4.3 95th: 8.0"));
        for (const char *text : {"Moving x4", "4.3 ms", "8 ms"})
            QVERIFY2(!counter.filter(text).isEmpty(), text);
    }

    void everyDeviceHasItsRowInOrderOrIsCounted()
    {
        for (const int count : {1, 300, 2000}) {
            const DeviceRateChart chart = devicesOf(count);
            QVERIFY(chartSize(chart).height() <= 8000);
            const QStringList texts = textsOf(chart);
            const QStringList names = texts.filter(QRegularExpression("^dev\\d"));
            QVERIFY(names.size() > 300 || names.size() == count);
            QCOMPARE(names.size() == count ||
                         texts.contains(QString("and %1 more devices").arg(count - names.size())),
                     true);
            QVERIFY(std::is_sorted(names.begin(), names.end()));
            QCOMPARE(textFault(chart), "");
        }
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
#include "tst_ChartPainters.moc"
