#include "report/DevicePage.h"

#include "charts/ChartStatistics.h"
#include "charts/ValueAxis.h"
#include "core/Numbers.h"
#include "report/Csv.h"
#include "report/GraphEntry.h"
#include "report/OutputTree.h"
#include "report/StateRow.h"

#include <algorithm>

namespace {

/// How many tests of a state item failed; empty for a counter item.
QString failedTests(const DataSeries &series)
{
    return series.isState() ? QString::number(stateStatistics(series).failures) : QString();
}

/// Says of a state item that it does not count; empty for all others.
QString noteOf(const ItemFacts &item)
{
    if (item.counts || !item.series.isState())
        return QString();
    return QStringLiteral("Does not count: this state item is not global, so its tests are left "
                          "out of the success rates of the device and of the report.");
}

/// Decimals that suit all the means of a series: two at least, more for small values.
int valueDecimals(const DataSeries &series)
{
    return std::max(2, counterStatistics(series).decimals());
}

QString keyFigures(const ItemFacts &item)
{
    if (item.series.isState()) {
        const StateStatistics state = stateStatistics(item.series);
        const qint64 tests = state.successes + state.failures;
        if (tests == 0)
            return QStringLiteral("No data in this period");
        return QStringLiteral("Success rate %1 %, %2 of %3 tests failed")
            .arg(fixedNumber(state.overallRate, 2))
            .arg(state.failures)
            .arg(tests);
    }
    const CounterStatistics counter = counterStatistics(item.series);
    if (counter.count() == 0)
        return QStringLiteral("No data in this period");
    const auto text = [&](double value) { return readableValue(value, item.unit); };
    const auto [least, greatest] = valueRange(item.series);
    return QStringLiteral("Of single samples: least %1, greatest %2. Of interval means: least %3, "
                          "greatest %4, mean %5, 95th percentile %6")
        .arg(text(least), text(greatest), text(counter.least), text(counter.greatest),
             text(counter.mean), text(counter.percentile95));
}

/// Writes the pages and CSV files of one device.
class DeviceWriter
{
public:
    DeviceWriter(const ReportContext &context, const DeviceFacts &device,
                 const std::vector<ItemFiles> &files, const Neighbours &neighbours)
        : m_context(context)
        , m_device(device)
        , m_files(files)
        , m_values(context.placeholders())
    {
        m_values.insert(m_values.begin(),
                        {
                            {QLatin1String("mach.name"), device.counts.name},
                            {QLatin1String("mach.desc"), device.description},
                            {QLatin1String("dev.prev"), linkText(neighbours.previous)},
                            {QLatin1String("dev.next"), linkText(neighbours.next)},
                            {QLatin1String("dev.items"), QString::number(device.counted.size())},
                            {QLatin1String("dev.counted"), PageValue::html(countedRows())},
                        });
    }

    std::vector<OutputFile> write()
    {
        constexpr QLatin1String marker("%%dev.varblist%%");
        const Placeholders values = onNewPage(m_values);
        const ListParts parts = fillListTemplate(m_context.builder.DEV_Rep, marker, values);
        PageText page;
        page.write(parts.before);
        for (size_t i = 0; i < m_device.items.size(); ++i)
            writeItem(page, m_device.items[i], m_files[i], values);
        page.write(parts.behind);
        m_output.push_back({devicePageName, page.bytes()});
        return std::move(m_output);
    }

private:
    /// The rows of the state items that count, and their total.
    QString countedRows() const
    {
        PageText rows;
        const QString &rowTemplate = m_context.builder.STATE_DetailItem;
        const auto row = [](const QString &label, qint64 successes, qint64 failures) {
            return StateRow{label, static_cast<double>(successes), static_cast<double>(failures)};
        };
        for (const CountedItem &item : m_device.counted) {
            StateRow shown = row(item.name, item.successes, item.failures);
            if (item.number > 0)
                shown.link = devicePageName + QStringLiteral("#item%1").arg(item.number);
            else
                shown.label += QLatin1String(" (not charted in this report)");
            rows.write(shown.filled(rowTemplate));
        }
        const DeviceCounts &counts = m_device.counts;
        rows.write(row({}, counts.successes, counts.failures).filledAsTotal(rowTemplate));
        return rows.text();
    }

    void writeItem(PageText &page, const ItemFacts &item, const ItemFiles &files,
                   const Placeholders &pageValues)
    {
        constexpr QLatin1String marker("%%detail.list%%");
        writeGraphPage(item, files);
        const ListParts section = fillListTemplate(m_context.builder.VARB_Item, marker,
                                                   itemValues(item, files, pageValues));
        page.write(section.before);
        writeDetails(page, item, files);
        page.write(section.behind);
    }

    /// What readers of the page get in place of the image; of one that is missing they learn why.
    static PageValue alternative(const ItemFacts &item, const ItemFiles &files)
    {
        if (!files.problem)
            return keyFigures(item);
        return PageValue::plain(
            QStringLiteral("This chart could not be drawn: %1").arg(files.problem->description));
    }

    /// The page's placeholders and those of one item.
    static Placeholders itemValues(const ItemFacts &item, const ItemFiles &files,
                                   Placeholders values)
    {
        values.insert(values.end(),
                      {
                          {QLatin1String("varb.name"), item.name},
                          {QLatin1String("varb.desc"), item.description},
                          {QLatin1String("varb.unit"), item.unit},
                          {QLatin1String("dev.graph"), citedImage(files)},
                          {QLatin1String("dev.graphpage"), files.page},
                          {QLatin1String("sample.csv"), files.csv},
                          {QLatin1String("item.id"), QString::number(item.number)},
                          {QLatin1String("item.failed"), failedTests(item.series)},
                          {QLatin1String("item.note"), noteOf(item)},
                          {QLatin1String("img.width"), QString::number(files.imageSize.width())},
                          {QLatin1String("img.height"), QString::number(files.imageSize.height())},
                          {QLatin1String("img.alt"), alternative(item, files)},
                      });
        return values;
    }

    static QString citedImage(const ItemFiles &files)
    {
        return files.problem ? QLatin1String("../../") + transparentImage : files.image;
    }

    void writeGraphPage(const ItemFacts &item, const ItemFiles &files)
    {
        const clsGraphDef &chart = m_context.plan.chart;
        clsGraphEntry entry;
        entry.deviceName = m_device.counts.name;
        entry.deviceDescription = m_device.description;
        entry.itemName = item.name;
        entry.itemDescription = item.description;
        entry.chartTitle = chart.ChartTitle;
        entry.sampleLabel = chart.SampleLabel;
        entry.scaleName = item.scaleName;
        entry.startTime = chart.StartTime;
        entry.endTime = chart.EndTime;
        entry.setSeries(item.series);
        PageText page;
        page.write(entry.FillChartTemplate(item.series.isState() ? chart.StateTemplateData
                                                                 : chart.CountTemplateData,
                                           onNewPage(itemValues(item, files, m_values))));
        m_output.push_back({files.page, page.bytes()});
    }

    void writeDetails(PageText &page, const ItemFacts &item, const ItemFiles &files)
    {
        constexpr QLatin1String marker("%%detail.items%%");
        const clsChartOutputBuilder &builder = m_context.builder;
        const bool isState = item.series.isState();
        const ListParts table =
            fillListTemplate(isState ? builder.STATE_Detail : builder.COUNT_Detail, marker,
                             {
                                 {QLatin1String("sample.name"), item.name},
                                 {QLatin1String("sample.csv"), files.csv},
                                 {QLatin1String("sample.description"), item.description},
                                 {QLatin1String("sample.scale"), item.scaleName},
                                 {QLatin1String("report.daterange"), m_context.range},
                                 {QLatin1String("chart.title"), m_context.plan.chart.ChartTitle},
                             });
        page.write(table.before);
        const QByteArray csv = isState ? writeTests(page, item) : writeValues(page, item);
        page.write(table.behind);
        m_output.push_back({files.csv, csv});
    }

    /// What each record of an item's CSV file begins with.
    CsvText recordStart(const ItemFacts &item) const
    {
        CsvText names;
        names.text(item.name).text(m_context.plan.chart.SampleLabel);
        return names;
    }

    static CsvText csvWithHeader(std::initializer_list<const char *> columns)
    {
        CsvText csv;
        for (const char *column : columns)
            csv.text(QLatin1String(column));
        csv.endRecord();
        return csv;
    }

    /// The rows of a state item's table; the CSV file's bytes.
    QByteArray writeTests(PageText &page, const ItemFacts &item) const
    {
        CsvText csv = csvWithHeader({"Entry Name", "Sample Name", "Sample", "Success", "Critial",
                                     "Total", "SuccessRate", "Start"});
        const CsvText names = recordStart(item);
        const QString &rowTemplate = m_context.builder.STATE_DetailItem;
        StateRow total;
        for (size_t i = 0; i < item.series.buckets.size(); ++i) {
            const BucketValue &bucket = item.series.buckets[i];
            const AxisBucket &place = item.series.place(i);
            const StateRow row{place.longLabel, static_cast<double>(bucket.successes),
                               static_cast<double>(bucket.failures())};
            page.write(row.filled(rowTemplate));
            csv.fields(names).text(place.plainLabel);
            row.addCounts(csv);
            csv.fixed(row.rate()).text(place.isoStart).endRecord();
            total.successes += row.successes;
            total.failures += row.failures;
        }
        page.write(total.filledAsTotal(rowTemplate));
        return csv.bytes();
    }

    /// The rows of a counter item's table; the CSV file's bytes.
    QByteArray writeValues(PageText &page, const ItemFacts &item) const
    {
        CsvText csv =
            csvWithHeader({"Entry Name", "Sample Name", "Sample", "Scale", "Value", "Start"});
        const CsvText names = recordStart(item);
        CsvText scale;
        scale.text(item.scaleName);
        const int decimals = valueDecimals(item.series);
        for (size_t i = 0; i < item.series.buckets.size(); ++i) {
            const BucketValue &bucket = item.series.buckets[i];
            const AxisBucket &place = item.series.place(i);
            const bool isEmpty = bucket.isEmpty();
            page.write(fillTemplate(m_context.builder.COUNT_DetailItem,
                                    {{QLatin1String("sample.label"), place.longLabel},
                                     {QLatin1String("sample.value"),
                                      isEmpty ? QString() : fixedNumber(bucket.mean, decimals)}}));
            csv.fields(names)
                .text(place.plainLabel)
                .fields(scale)
                .quotedNumber(isEmpty ? QString() : trimmedNumber(bucket.mean, 6))
                .text(place.isoStart)
                .endRecord();
        }
        return csv.bytes();
    }

    const ReportContext &m_context;
    const DeviceFacts &m_device;
    const std::vector<ItemFiles> &m_files;
    Placeholders m_values; ///< of the whole page
    std::vector<OutputFile> m_output;
};

} // namespace

std::vector<OutputFile> deviceFiles(const ReportContext &context, const DeviceFacts &device,
                                    const std::vector<ItemFiles> &files,
                                    const Neighbours &neighbours)
{
    return DeviceWriter(context, device, files, neighbours).write();
}
