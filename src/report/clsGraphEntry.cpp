#include "report/clsGraphEntry.h"

#include "base/Numbers.h"
#include "report/OutputTree.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

const QString blank = QStringLiteral(" ");

/// How many points a chart page shows at once, by frequency.
int visiblePoints(ChartFrequencyCode frequency)
{
    constexpr std::array points = {120, 24, 30, 12, 10};
    return points[static_cast<size_t>(qBound(ByMinute, frequency, ByYear))];
}

/// One series: its values joined by commas, and their total.
class SeriesText
{
public:
    void add(double value)
    {
        append(trimmedNumber(value, 6));
        m_total += value;
    }
    void addEmpty() { append(blank); }
    QString text() const { return m_text; }
    /// With as many decimals as a sum of this size has in a double.
    QString total() const
    {
        const int whole = m_total == 0 ? 1 : static_cast<int>(std::log10(std::abs(m_total))) + 1;
        return trimmedNumber(m_total, std::clamp(15 - whole, 0, 6));
    }

private:
    void append(const QString &entry)
    {
        if (m_any)
            m_text += u',';
        m_text += entry;
        m_any = true;
    }
    QString m_text;
    double m_total = 0;
    bool m_any = false;
};

} // namespace

QString chartTimeText(const QDateTime &wall)
{
    return localTimeText(wall, QStringLiteral("yyyy-MMM-dd HH:mm"));
}

void clsGraphEntry::setItem(const ItemFacts &item)
{
    const DataSeries &data = item.series;
    const bool state = data.isState();
    std::array<SeriesText, 3> series;
    QStringList labelList;
    for (size_t i = 0; i < data.buckets.size(); ++i) {
        const BucketValue &bucket = data.buckets[i];
        labelList.append(data.interval(i).longLabel);
        if (bucket.isEmpty()) {
            for (SeriesText &text : series)
                text.addEmpty();
            continue;
        }
        if (state) {
            const auto success = static_cast<double>(bucket.successes);
            const auto count = static_cast<double>(bucket.count);
            series[0].add(success);
            series[1].add(count - success);
            series[2].add(success / count * 100);
        } else {
            series[0].add(bucket.mean);
            series[1].add(bucket.min);
            series[2].add(bucket.max);
        }
    }
    frequency = data.axis->frequency();
    labels = labelList.join(u',');
    series1 = series[0].text();
    series2 = series[1].text();
    series3 = series[2].text();
    series1Total = series[0].total();
    series2Total = series[1].total();
    series3Total = series[2].total();
    itemName = item.name;
    itemDescription = item.description;
    scaleName = item.scaleName;
    ranged = state ? QStringLiteral("true") : QStringLiteral("false");
    if (state) { // not a sum: the whole period's rate
        series3Total =
            item.tests.bucketsWithData > 0 ? trimmedNumber(item.tests.overallRate, 6) : blank;
        lowRange = QStringLiteral("0");
        upperRange = QStringLiteral("100");
        return;
    }
    lowRange = trimmedNumber(item.values.minSample, 6);
    upperRange = trimmedNumber(item.values.maxSample, 6);
    average = trimmedNumber(item.values.mean, 6);
    percentile95 = trimmedNumber(item.values.percentile95, 6);
    movingPeriod = QString::number(item.values.movingPeriod);
    SeriesText means;
    for (const std::optional<double> &mean : item.values.moving) {
        if (mean)
            means.add(*mean);
        else
            means.addEmpty();
    }
    moving = means.text();
}

QString clsGraphEntry::FillChartTemplate(const QString &text, const Placeholders &page)
{
    const int visible = visiblePoints(frequency);
    pointCount = static_cast<qint32>(series1.count(u','));
    filled = 1;
    Placeholders values = {
        {QLatin1String("chart.title"), chartTitle},
        {QLatin1String("chart.samplelabel"), sampleLabel},
        {QLatin1String("mach.name"), deviceName},
        {QLatin1String("mach.desc"), deviceDescription},
        {QLatin1String("varb.name"), itemName},
        {QLatin1String("varb.desc"), itemDescription},
        {QLatin1String("chart.scroll"),
         pointCount <= visible ? QStringLiteral("false") : QStringLiteral("true")},
        {QLatin1String("chart.maxscroll"), QString::number(visible)},
        {QLatin1String("chart.starttime"), chartTimeText(startTime)},
        {QLatin1String("chart.endtime"), chartTimeText(endTime)},
        {QLatin1String("chart.series1"), series1},
        {QLatin1String("chart.series2"), series2},
        {QLatin1String("chart.series3"), series3},
        {QLatin1String("chart.labels"), labels},
        {QLatin1String("chart.series1.total"), series1Total},
        {QLatin1String("chart.series2.total"), series2Total},
        {QLatin1String("chart.series3.total"), series3Total},
        {QLatin1String("chart.scalename"), scaleName},
        {QLatin1String("chart.lowrange"), lowRange},
        {QLatin1String("chart.upperrange"), upperRange},
        {QLatin1String("chart.ranged"), ranged},
        {QLatin1String("chart.average"), average},
        {QLatin1String("chart.percentile95"), percentile95},
        {QLatin1String("chart.moving"), moving},
        {QLatin1String("chart.movingperiod"), movingPeriod},
    };
    values.insert(values.end(), page.begin(), page.end());
    return fillTemplate(text, values);
}
