#include "report/DevicePage.h"

#include "base/Numbers.h"
#include "charts/ValueAxis.h"
#include "report/Csv.h"
#include "report/OutputTree.h"
#include "report/StateRow.h"
#include "report/clsGraphEntry.h"

#include <algorithm>

namespace {

/// The number of failed tests of a state item; empty for a counter item.
QString failedTests(const ItemFacts &item)
{
    return item.series.isState() ? QString::number(item.tests.failures) : QString();
}

/// The note on a state item that does not count; empty for all others.
QString noteOf(const ItemFacts &item)
{
    if (item.counts || !item.series.isState())
        return QString();
    return QStringLiteral("Does not count: this state item is not global, so its tests are left "
                          "out of the success rates of the device and of the report.");
}

QString keyFigures(const ItemFacts &item)
{
    if (item.series.isState()) {
        const qint64 tests = item.tests.successes + item.tests.failures;
        if (tests == 0)
            return QStringLiteral("No data in this period");
        return QStringLiteral("Success rate %1 %, %2 of %3 tests failed")
            .arg(fixedNumber(item.tests.overallRate, 2))
            .arg(item.tests.failures)
            .arg(tests);
    }
    const CounterStatistics &values = item.values;
    if (values.count == 0)
        return QStringLiteral("No data in this period");
    const auto text = [&](double value) { return readableValue(value, item.unit); };
    return QStringLiteral("Of single samples: least %1, greatest %2. Of interval means: least %3, "
                          "greatest %4, mean %5, 95th percentile %6")
        .arg(text(values.minSample), text(values.maxSample), text(values.min), text(values.max),
             text(values.mean), text(values.percentile95));
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
        for (const CountedItem &item : m_device.counted) {
            StateRow shown{item.name, item.successes, item.failures};
            if (item.number > 0)
                shown.link = devicePageName + QStringLiteral("#item%1").arg(item.number);
            else
                shown.label += QLatin1String(" (not charted in this report)");
            rows.write(shown.filled(rowTemplate));
        }
        const StateRow total{{}, m_device.counts.successes, m_device.counts.failures};
        rows.write(total.filledAsTotal(rowTemplate));
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

    /// The alternative text of the image; of a missing one the reason.
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
                          {QLatin1String("item.failed"), failedTests(item)},
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
        entry.chartTitle = chart.ChartTitle;
        entry.sampleLabel = chart.SampleLabel;
        entry.startTime = chart.StartTime;
        entry.endTime = chart.EndTime;
        entry.setItem(item);
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

    /// The first fields of each record of an item's CSV file.
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

    /// Writes the rows of a state item's table; returns the CSV file's bytes.
    QByteArray writeTests(PageText &page, const ItemFacts &item) const
    {
        CsvText csv = csvWithHeader({"Entry Name", "Sample Name", "Sample", "Success", "Critial",
                                     "Total", "SuccessRate", "Start"});
        const CsvText names = recordStart(item);
        const QString &rowTemplate = m_context.builder.STATE_DetailItem;
        for (size_t i = 0; i < item.series.buckets.size(); ++i) {
            const BucketValue &bucket = item.series.buckets[i];
            const AxisBucket &interval = item.series.interval(i);
            const StateRow row{interval.longLabel, bucket.successes, bucket.failures()};
            page.write(row.filled(rowTemplate));
            csv.fields(names).text(interval.plainLabel);
            row.addCounts(csv);
            csv.fixed(row.rate()).text(interval.isoStart).endRecord();
        }
        const StateRow total{{}, item.tests.successes, item.tests.failures};
        page.write(total.filledAsTotal(rowTemplate));
        return csv.bytes();
    }

    /// Writes the rows of a counter item's table; returns the CSV file's bytes.
    QByteArray writeValues(PageText &page, const ItemFacts &item) const
    {
        CsvText csv =
            csvWithHeader({"Entry Name", "Sample Name", "Sample", "Scale", "Value", "Start"});
        const CsvText names = recordStart(item);
        CsvText scale;
        scale.text(item.scaleName);
        const int decimals = std::max(2, item.values.decimals());
        for (size_t i = 0; i < item.series.buckets.size(); ++i) {
            const BucketValue &bucket = item.series.buckets[i];
            const AxisBucket &interval = item.series.interval(i);
            const bool isEmpty = bucket.isEmpty();
            page.write(fillTemplate(m_context.builder.COUNT_DetailItem,
                                    {{QLatin1String("sample.label"), interval.longLabel},
                                     {QLatin1String("sample.value"),
                                      isEmpty ? QString() : fixedNumber(bucket.mean, decimals)}}));
            csv.fields(names)
                .text(interval.plainLabel)
                .fields(scale)
                .quotedNumber(isEmpty ? QString() : trimmedNumber(bucket.mean, 6))
                .text(interval.isoStart)
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
