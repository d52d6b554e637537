#include "report/DeviceReport.h"

#include "charts/ChartPainter.h"
#include "charts/ChartStatistics.h"
#include "charts/ValueAxis.h"
#include "core/Error.h"
#include "core/Files.h"
#include "core/GrapherConfig.h"
#include "core/Numbers.h"
#include "core/State.h"
#include "data/BucketLabels.h"
#include "data/CalculatedSummary.h"
#include "data/Connection.h"
#include "data/Queries.h"
#include "definitions/Dates.h"
#include "report/ChartFrames.h"
#include "report/Csv.h"
#include "report/GraphEntry.h"
#include "report/OutputTree.h"
#include "report/StateRow.h"

#include <QDir>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <future>

namespace {

/// Numbers the images of a process in base 36, so that names are unique across all its reports.
QString nextImageNumber()
{
    static qint64 count = 0;
    return QString::number(++count, 36).toUpper();
}

QString textOf(const StaticRecordset &rows, const QString &column)
{
    return rows.text(rows.column(column));
}

bool isState(const DataSeries &series)
{
    return series.scale == stateScale;
}

/// How many tests of a state item failed; empty for a counter item.
QString failedTests(const DataSeries &series)
{
    return isState(series) ? QString::number(stateStatistics(series).failures) : QString();
}

/// Says of a state item that it does not count; empty for all others.
QString noteOf(bool counts, const DataSeries &series)
{
    if (counts || !isState(series))
        return QString();
    return QStringLiteral("Does not count: this state item is not global, so its tests are left "
                          "out of the success rates of the device and of the report.");
}

/// Decimals that suit all the means of a series: two at least, more for small values.
int valueDecimals(const DataSeries &series)
{
    return std::max(2, counterStatistics(series).decimals());
}

void saveLater(const ReportContext &context, const QString &path, const QByteArray &bytes)
{
    context.files.push_back(context.pool.submitFile(path, bytes));
}

} // namespace

DataSeries seriesOf(const ReportContext &context, const std::vector<SummaryRow> &summary, int scale)
{
    DataSeries series;
    series.frequency = context.chart.ChartFrequency;
    series.minuteInterval = context.chart.MinuteInterval;
    series.scale = scale;
    if (const auto error =
            GenerateDataSeries(summary, context.start, context.end, context.latest, series))
        throw Error(Overflow, error->description);
    return series;
}

PendingOutcome failedOutcome(const Error &error)
{
    std::promise<Outcome> outcome;
    outcome.set_value(error);
    return outcome.get_future().share();
}

DevicePage::DevicePage(const ReportContext &context, const clsReportDeviceDef &device,
                       const QString &previousFolder, const QString &nextFolder)
    : m_context(context)
    , m_device(device)
    , m_name(textOf(context.devices, QStringLiteral("MachName")))
    , m_description(textOf(context.devices, QStringLiteral("MachDesc")))
    , m_ident(textOf(context.devices, QStringLiteral("IDent")))
    , m_folder(deviceFolder(context.report, device.MUID))
{
    const clsReportDef &report = context.report;
    m_values = {
        {QLatin1String("mach.name"), m_name},
        {QLatin1String("mach.desc"), m_description},
        {QLatin1String("report.date"), reportDateText(report.RunDate)},
        {QLatin1String("report.time"), reportTimeText(report.RunDate)},
        {QLatin1String("report.id"), linkText(folderSafe(report.ReportID))},
        {QLatin1String("report.title"), report.ReportTitle},
        {QLatin1String("report.daterange"),
         dateRangeText(context.chart.StartTime, context.chart.EndTime)},
        {QLatin1String("report.zone"), context.zone},
        {QLatin1String("chart.title"), context.chart.ChartTitle},
        {QLatin1String("dev.prev"), linkText(previousFolder)},
        {QLatin1String("dev.next"), linkText(nextFolder)},
        {QLatin1String("dev.items"), QString()},
        {QLatin1String("dev.counted"), QString()},
    };
    m_values = onNewPage(m_values);
    findCountedItems();
}

void DevicePage::findCountedItems()
{
    StaticRecordset &fields = m_context.fields;
    fields.setFilter(QStringLiteral("[IDent]='%1'").arg(m_ident));
    const int ident = fields.column(QStringLiteral("DataIDent"));
    const int name = fields.column(QStringLiteral("DataName"));
    for (; !fields.eof(); fields.moveNext()) {
        if (isCounted(fields))
            m_counted.push_back({fields.integer(ident), fields.text(name)});
    }
    std::sort(m_counted.begin(), m_counted.end(),
              [](const CountedItem &a, const CountedItem &b) { return a.dataIdent < b.dataIdent; });
}

bool DevicePage::findItem(const QString &dataIdent) const
{
    m_context.fields.setFilter(
        QStringLiteral("[IDent]=%1 and [DataIDent]=%2").arg(quoted(m_ident), quoted(dataIdent)));
    return !m_context.fields.eof();
}

void DevicePage::chartItems(Progress &progress)
{
    ShowStatus(QStringLiteral("Generating Device Report: [%1][%2]")
                   .arg(m_context.report.ReportTitle, m_name));
    ShowStatus(QStringLiteral("Creating graph data..."));
    int number = 0;
    for (const auto &dataItem : m_device.DataItems) {
        ++number;
        if (findItem(dataItem->DataIDent)) {
            Item item;
            item.number = number;
            item.csv = QString::number(number) + QLatin1String("_detail.csv");
            chartItem(item, dataItem->DataIDent);
            progress.item = item.name;
            m_items.push_back(std::move(item));
        }
        ++progress.done;
        showProgress(progress);
    }
    addUncharted();
}

/// The tests of the items that count without being charted here, and of those whose chart failed.
void DevicePage::addUncharted()
{
    for (CountedItem &counted : m_counted) {
        if (counted.isAdded)
            continue;
        ShowStatus(QLatin1String("Counting Tests: [") + counted.name + u']');
        try {
            m_context.overall.add(summaryOf(QString::number(counted.dataIdent)));
        } catch (const Error &error) {
            if (error.number != Overflow)
                throw;
            m_context.overall.problem = error;
        }
    }
}

void DevicePage::chartItem(Item &item, const QString &dataIdent)
{
    const StaticRecordset &fields = m_context.fields;
    item.name = textOf(fields, QStringLiteral("DataName"));
    item.description = textOf(fields, QStringLiteral("DataDesc"));
    const QString scale = textOf(fields, QStringLiteral("iScale"));
    item.series.scale = leadingInteger(scale);
    StaticRecordset &scales = m_context.scales;
    scales.setFilter(QLatin1String("[iScale]=") + QString::number(item.series.scale));
    if (!scales.eof()) {
        item.scaleName = textOf(scales, QStringLiteral("ScaleName"));
        item.unit = textOf(scales, QStringLiteral("ScaleAbbr"));
    }

    const clsGraphDef &chart = m_context.chart;
    const auto counted =
        std::find_if(m_counted.begin(), m_counted.end(),
                     [ident = fields.integer(fields.column(QStringLiteral("DataIDent")))](
                         const CountedItem &one) { return one.dataIdent == ident; });
    item.counts = counted != m_counted.end();
    if (item.counts && counted->number == 0)
        counted->number = item.number;

    ShowStatus(QLatin1String("Generating Chart: [") + item.name + u']');
    const QString image = u'G' + nextImageNumber();
    item.image.fileName = image + QLatin1String(".PNG");
    item.image.size = QSize(gConfig->IMG_Width, gConfig->IMG_Height);
    item.graphPage = image + QLatin1String(".HTM");
    try {
        const std::vector<SummaryRow> summary = summaryOf(dataIdent);
        if (item.counts && !counted->isAdded) {
            m_context.overall.add(summary);
            counted->isAdded = true;
        }
        ShowStatus(QStringLiteral("Generating series..."));
        item.series = seriesOf(m_context, summary, item.series.scale);
    } catch (const Error &error) {
        // A value that no sum takes, or a period of too many intervals, spoils this chart alone.
        if (error.number != Overflow)
            throw;
        item.image.outcome = failedOutcome(error);
        return;
    }
    ShowStatus(QStringLiteral("Generating output..."));
    const ChartFrame frame =
        chartFrame(m_context, chart.ChartTitle, m_name + QStringLiteral(" \u2013 ") + item.name);
    Chart drawn = StateChart{frame, item.series};
    if (!isState(item.series))
        drawn = CounterChart{frame, chart.SampleLabel, item.unit, item.series};
    item.image.size = chartSize(drawn);
    item.image.outcome = m_context.pool.submit(std::move(drawn), m_folder + item.image.fileName,
                                               gConfig->IMG_Format);
    ++m_context.outcome.charts;
}

/// The samples of an item, by bucket. Throws Error(Overflow) for one that no sum takes.
std::vector<SummaryRow> DevicePage::summaryOf(const QString &dataIdent)
{
    const clsGraphDef &chart = m_context.chart;
    ShowStatus(QStringLiteral("Submitting query..."));
    const std::unique_ptr<Recordset> raw =
        gConnection->open(GetDataValuesSQL(dataIdent, chart.StartTime, chart.EndTime),
                          {QStringLiteral("DataIDent"), QStringLiteral("iDate"),
                           QStringLiteral("iState"), QStringLiteral("iValue")});
    ShowStatus(QStringLiteral("Calculating..."));
    std::vector<SummaryRow> summary =
        BuildCalculatedSummary(*raw, chart.ChartFrequency, chart.MinuteInterval);
    for (const SummaryRow &row : summary)
        m_context.outcome.samples += row.QCount;
    return summary;
}

void DevicePage::setCounts(const DeviceCounts &counts)
{
    PageText rows;
    const auto row = [](const QString &label, qint64 successes, qint64 failures) {
        return StateRow{label, static_cast<double>(successes), static_cast<double>(failures)};
    };
    for (const CountedItem &counted : m_counted) {
        const ItemCounts tests = counts.of(counted.dataIdent);
        StateRow shown = row(counted.name, tests.successes, tests.failures);
        if (counted.number > 0)
            shown.link = devicePageName + QStringLiteral("#item%1").arg(counted.number);
        else
            shown.label += QLatin1String(" (not charted in this report)");
        rows.write(shown.filled(m_context.builder.STATE_DetailItem));
    }
    rows.write(row({}, counts.successes, counts.failures)
                   .filledAsTotal(m_context.builder.STATE_DetailItem));
    m_values.insert(m_values.begin(),
                    {{QLatin1String("dev.items"), QString::number(m_counted.size())},
                     {QLatin1String("dev.counted"), PageValue::html(rows.text())}});
}

void DevicePage::write()
{
    PageText page;
    constexpr QLatin1String marker("%%dev.varblist%%");
    const ListParts parts = fillListTemplate(m_context.builder.DEV_Rep, marker, m_values);
    page.write(parts.before);
    for (Item &item : m_items) {
        const QString image = item.image.fileName;
        yieldToUser();
        if (const auto error = awaited(item.image.outcome)) {
            m_context.outcome.chartErrors.append(m_folder + image + u' ' + errorTail(*error));
            ShowStatus(QStringLiteral("Error generating chart '%1' ").arg(m_folder + image) +
                       errorTail(*error));
            item.image.fileName = QLatin1String("../../") + transparentImage;
            item.problem = error->description;
        }
        writeGraphPage(item);
        writeItem(page, item);
    }
    page.write(parts.behind);
    saveLater(m_context, m_folder + devicePageName, page.bytes());
    removeStaleCharts();
}

QString DevicePage::keyFigures(const Item &item) const
{
    if (isState(item.series)) {
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

/// What readers of the page get in place of the image; of one that is missing they learn why.
PageValue DevicePage::alternative(const Item &item) const
{
    if (item.problem.isEmpty())
        return keyFigures(item);
    return PageValue::plain(QStringLiteral("This chart could not be drawn: %1").arg(item.problem));
}

/// The page's placeholders and those of one item.
Placeholders DevicePage::itemValues(const Item &item) const
{
    Placeholders values = m_values;
    values.insert(values.end(),
                  {
                      {QLatin1String("varb.name"), item.name},
                      {QLatin1String("varb.desc"), item.description},
                      {QLatin1String("varb.unit"), item.unit},
                      {QLatin1String("dev.graph"), item.image.fileName},
                      {QLatin1String("dev.graphpage"), item.graphPage},
                      {QLatin1String("sample.csv"), item.csv},
                      {QLatin1String("item.id"), QString::number(item.number)},
                      {QLatin1String("item.failed"), failedTests(item.series)},
                      {QLatin1String("item.note"), noteOf(item.counts, item.series)},
                      {QLatin1String("img.width"), QString::number(item.image.size.width())},
                      {QLatin1String("img.height"), QString::number(item.image.size.height())},
                      {QLatin1String("img.alt"), alternative(item)},
                  });
    return values;
}

void DevicePage::writeGraphPage(const Item &item) const
{
    const clsGraphDef &chart = m_context.chart;
    clsGraphEntry entry;
    entry.deviceName = m_name;
    entry.deviceDescription = m_description;
    entry.itemName = item.name;
    entry.itemDescription = item.description;
    entry.chartTitle = chart.ChartTitle;
    entry.sampleLabel = chart.SampleLabel;
    entry.scaleName = item.scaleName;
    entry.startTime = chart.StartTime;
    entry.endTime = chart.EndTime;
    entry.setSeries(item.series);
    PageText page;
    page.write(entry.FillChartTemplate(isState(item.series) ? chart.StateTemplateData
                                                            : chart.CountTemplateData,
                                       onNewPage(itemValues(item))));
    saveLater(m_context, m_folder + item.graphPage, page.bytes());
}

void DevicePage::writeItem(PageText &page, const Item &item)
{
    constexpr QLatin1String marker("%%detail.list%%");
    const ListParts section =
        fillListTemplate(m_context.builder.VARB_Item, marker, itemValues(item));
    page.write(section.before);
    writeDetails(page, item);
    page.write(section.behind);
}

void DevicePage::writeDetails(PageText &page, const Item &item) const
{
    constexpr QLatin1String marker("%%detail.items%%");
    const clsChartOutputBuilder &builder = m_context.builder;
    const clsGraphDef &chart = m_context.chart;
    const bool state = isState(item.series);
    const ListParts table = fillListTemplate(
        state ? builder.STATE_Detail : builder.COUNT_Detail, marker,
        {
            {QLatin1String("sample.name"), item.name},
            {QLatin1String("sample.csv"), item.csv},
            {QLatin1String("sample.description"), item.description},
            {QLatin1String("sample.scale"), item.scaleName},
            {QLatin1String("report.daterange"), dateRangeText(chart.StartTime, chart.EndTime)},
            {QLatin1String("chart.title"), chart.ChartTitle},
        });
    page.write(table.before);

    CsvText names; // what each record begins with
    names.text(item.name).text(chart.SampleLabel);
    const QString start = QStringLiteral("Start");
    const BucketLabels labels(item.series.frequency, QLocale::c());
    CsvText csv;
    csv.text(QStringLiteral("Entry Name"))
        .text(QStringLiteral("Sample Name"))
        .text(QStringLiteral("Sample"));
    if (state) {
        csv.text(QStringLiteral("Success"))
            .text(QStringLiteral("Critial"))
            .text(QStringLiteral("Total"))
            .text(QStringLiteral("SuccessRate"))
            .text(start)
            .endRecord();
        StateRow total;
        for (const SeriesBucket &bucket : item.series.buckets) {
            const StateRow row{bucket.longLabel, static_cast<double>(bucket.successes),
                               static_cast<double>(bucket.failures())};
            page.write(row.filled(builder.STATE_DetailItem));
            csv.fields(names).text(labels.longForm(bucket.wallStart));
            row.addCounts(csv);
            csv.fixed(row.rate()).text(isoTimeText(bucket.start)).endRecord();
            total.successes += row.successes;
            total.failures += row.failures;
        }
        page.write(total.filledAsTotal(builder.STATE_DetailItem));
    } else {
        csv.text(QStringLiteral("Scale")).text(QStringLiteral("Value")).text(start).endRecord();
        CsvText scale;
        scale.text(item.scaleName);
        const int decimals = valueDecimals(item.series);
        for (const SeriesBucket &bucket : item.series.buckets) {
            const bool empty = bucket.isEmpty();
            page.write(fillTemplate(builder.COUNT_DetailItem,
                                    {{QLatin1String("sample.label"), bucket.longLabel},
                                     {QLatin1String("sample.value"),
                                      empty ? QString() : fixedNumber(bucket.mean, decimals)}}));
            csv.fields(names)
                .text(labels.longForm(bucket.wallStart))
                .fields(scale)
                .quotedNumber(empty ? QString() : trimmedNumber(bucket.mean, 6))
                .text(isoTimeText(bucket.start))
                .endRecord();
        }
    }
    page.write(table.behind);
    saveLater(m_context, m_folder + item.csv, csv.bytes());
}

void DevicePage::removeStaleCharts() const
{
    // Image numbers differ from run to run: what the new page does not cite would pile up.
    QSet<QString> cited;
    for (const Item &item : m_items) {
        cited.insert(item.image.fileName);
        cited.insert(item.graphPage);
    }
    static const QRegularExpression chartFile(QStringLiteral("^G[0-9A-Z]+\\.(PNG|HTM)$"));
    QDir folder(nativePath(m_folder));
    const QStringList names = folder.entryList(QDir::Files);
    for (const QString &name : names) {
        if (!cited.contains(name) && chartFile.match(name).hasMatch())
            folder.remove(name);
    }
}
