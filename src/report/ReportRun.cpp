#include "report/ReportRun.h"

#include "charts/ChartStyle.h"
#include "charts/ImageFile.h"
#include "core/Clock.h"
#include "core/Error.h"
#include "core/Files.h"
#include "core/GrapherConfig.h"
#include "core/Numbers.h"
#include "core/Paths.h"
#include "core/State.h"
#include "core/Status.h"
#include "core/TimeZone.h"
#include "core/Trouble.h"
#include "core/platform/EventLog.h"
#include "data/Connection.h"
#include "data/Queries.h"
#include "definitions/Dates.h"
#include "definitions/DefinitionStores.h"
#include "report/DeviceReport.h"
#include "report/OutputTree.h"
#include "report/ReportSummary.h"
#include "report/RequiredTemplates.h"

#include <algorithm>
#include <limits>

namespace {

/// The chart definition of a report with the period of a run at `runDate`.
clsGraphDef chartOf(const clsReportDef &report, const QDateTime &runDate)
{
    const auto found = gChartDefs.find(report.ChartID);
    if (!found)
        throw Error(ItemNotFound,
                    QStringLiteral("There is no chart definition '%1'").arg(report.ChartID));
    clsGraphDef chart = *found;
    if (chart.ChartDuration != CustomRange)
        chart.EndTime = runDate;
    chart.SetStart();
    return chart;
}

QStringList deviceKeys(const clsReportDef &report)
{
    QStringList keys;
    for (const auto &device : report.ReportDevices)
        keys.append(device->MUID);
    return keys;
}

qint64 countSamples()
{
    const QString sql =
        gGraphDataSQL
            ? QStringLiteral(" SELECT rowcnt as TCOUNT  FROM sysindexes  WHERE object_name(id) = "
                             "'DataValues'  AND name='DataValues_PK'")
            : QStringLiteral("Select Count(1) as TCOUNT from DataValues");
    const std::unique_ptr<Recordset> count = gConnection->open(sql);
    return count->next() ? count->integer(count->column(QStringLiteral("TCOUNT"))) : 0;
}

/// Adds the state items of some devices (lower-case MUIDs), which the summary asks for.
void addStateItems(const QSet<QString> &muids, SampleScope &scope)
{
    QSet<qint64> idents;
    const auto devices = gConnection->open(QStringLiteral("Select IDent, MUID from Devices"));
    while (devices->next()) {
        if (muids.contains(devices->text(1).toLower()))
            idents.insert(devices->integer(0));
    }
    const auto items =
        gConnection->open(QStringLiteral("Select DataIDent, IDent, iScale from DataFields"));
    while (items->next()) {
        if (items->integer(2) == stateScale && idents.contains(items->integer(1)))
            scope.dataIdents.insert(items->integer(0));
    }
}

DeviceCounts countsOf(const clsReportDeviceDef &device, const QString &ident,
                      const clsGraphDef &chart)
{
    ShowStatus(QStringLiteral("Calculating Device Summary..."));
    StaticRecordset rows = openStatic(
        GetStateSummarySQL(chart.StartTime, chart.EndTime, stateSummaryList(device.MUID)));
    rows.setFilter(QLatin1String("[IDent]=") + quoted(ident));
    DeviceCounts counts;
    counts.name = device.DisplayName;
    counts.folder = folderSafe(device.MUID);
    counts.add(rows);
    return counts;
}

/// One report's run, step by step. `step` is the last element of an error's text.
class ReportRun
{
public:
    ReportRun(clsReportDef &report, ReportOutcome &outcome, Progress &progress, ChartPool &pool)
        : m_report(report)
        , m_outcome(outcome)
        , m_progress(progress)
        , m_pool(pool)
    {}
    /// What is left of a report that ended early is nobody's any more.
    ~ReportRun()
    {
        m_pool.cancel();
        m_pool.waitForDone();
    }
    ReportRun(const ReportRun &) = delete;
    ReportRun &operator=(const ReportRun &) = delete;

    QString step;

    void run()
    {
        ShowStatus(QLatin1String("Generating Report: [") + m_report.ReportTitle + u']');
        LoadChartDefs();
        const QStringList keys = deviceKeys(m_report);
        step = QStringLiteral("Setting Chart Def.");
        clsChartOutputBuilder builder;
        builder.LoadTOCTemplates();
        m_report.RunDate = now();
        const qint64 runInstant = currentInstant();
        const clsGraphDef chart = chartOf(m_report, m_report.RunDate);
        if (!OpenDatabase(m_outcome.errorText)) {
            ShowStatus(QLatin1String("Unable to generate report - database failure: ") +
                       m_outcome.errorText);
            return;
        }
        requireTemplates(m_report, builder);
        ShowStatus(QStringLiteral("Calculating DBLength"));
        const qint64 samples = countSamples();
        if (CancelRequested) {
            showNoData();
            return;
        }

        StaticRecordset fields = openTable(QStringLiteral("Select * from DataFields"));
        StaticRecordset scales = openTable(QStringLiteral("Select * from Scales"));
        const StaticRecordset all = openTable(QStringLiteral("Select IDent from Devices"));
        ShowStatus(QStringLiteral("Evaluating "));
        ShowStatus(QStringLiteral("Total Devices: %1").arg(all.recordCount()));
        ShowStatus(QStringLiteral("Total Fields: %1").arg(fields.recordCount()));
        ShowStatus(QLatin1String("Total Values: ") +
                   groupedNumber(static_cast<double>(samples), 0));
        StaticRecordset devices = openStatic(GetSelectedDevicesSQL(keys));
        ShowStatus(QStringLiteral("Loading selected devices list..."));
        if (devices.recordCount() == 0 || CancelRequested) {
            showNoData();
            return;
        }

        if (!fontsAvailable())
            throw Error(FileNotFound, QString::fromUtf16(noFontsMessage));
        warmUpFonts();
        std::vector<PendingOutcome> files;
        OverallTests overall;
        const qint64 start = instantOf(chart.StartTime);
        const qint64 end = instantOf(chart.EndTime);
        const ReportContext context{m_report,
                                    chart,
                                    builder,
                                    devices,
                                    fields,
                                    scales,
                                    m_pool,
                                    files,
                                    m_outcome,
                                    overall,
                                    periodText(chart.StartTime, chart.EndTime),
                                    zoneText(start, end),
                                    start,
                                    end,
                                    runInstant};
        std::vector<DeviceCounts> counts = runDevices(context);
        awaitAll(files);
        if (CancelRequested)
            return;
        // Pages list the devices in the reverse of the report's order.
        std::reverse(counts.begin(), counts.end());
        GenerateReportSummary(context, counts);
    }

private:
    void showNoData() const
    {
        ShowStatus(QLatin1String("No device data available for report ") + m_report.ReportTitle);
    }

    std::vector<DeviceCounts> runDevices(const ReportContext &context)
    {
        StaticRecordset &devices = context.devices;
        const int nameColumn = devices.column(QStringLiteral("MachName"));
        const int identColumn = devices.column(QStringLiteral("IDent"));
        const auto find = [&](const clsReportDeviceDef &device) {
            devices.setFilter(QLatin1String("[MUID]=") + quoted(device.MUID));
            return !devices.eof();
        };
        std::vector<clsReportDeviceDef *> known;
        for (const auto &device : m_report.ReportDevices) {
            if (!find(*device))
                continue; // no longer in the database
            known.push_back(device.get());
        }

        std::vector<DeviceCounts> counts;
        std::unique_ptr<DevicePage> previous; // its charts are being drawn
        for (size_t i = 0; i < known.size() && !CancelRequested; ++i) {
            clsReportDeviceDef &device = *known[i];
            find(device);
            device.DisplayName = devices.text(nameColumn);
            const QString ident = devices.text(identColumn);
            ShowStatus(QLatin1String("Summarizing ") + device.DisplayName);
            m_progress.device = device.DisplayName;
            m_progress.item.clear();
            showProgress(m_progress);
            if (CancelRequested)
                break;
            auto page = std::make_unique<DevicePage>(
                context, device, i > 0 ? folderSafe(known[i - 1]->MUID) : QString(),
                i + 1 < known.size() ? folderSafe(known[i + 1]->MUID) : QString());
            page->chartItems(m_progress);
            write(previous);
            if (!CancelRequested) {
                counts.push_back(countsOf(device, ident, context.chart));
                page->setCounts(counts.back());
            }
            previous = std::move(page);
        }
        write(previous);
        return counts;
    }

    void write(const std::unique_ptr<DevicePage> &page) const
    {
        if (!page)
            return;
        page->write();
        ++m_outcome.devicePages;
    }

    clsReportDef &m_report;
    ReportOutcome &m_outcome;
    Progress &m_progress;
    ChartPool &m_pool;
};

} // namespace

ReportOutcome GenerateReport(clsReportDef &report, Progress &progress, ChartPool &pool)
{
    ReportOutcome outcome;
    ReportRun run(report, outcome, progress, pool);
    try {
        run.run();
    } catch (const std::exception &exception) {
        const Error error = errorOf(exception);
        outcome.errorNumber = error.number;
        outcome.errorText = QLatin1String("Error Generating Report ") + errorTail(error) +
                            QLatin1String(" - ") + run.step;
        ShowStatus(outcome.errorText);
    }
    return outcome;
}

void announceSamples(const std::vector<std::shared_ptr<clsReportDef>> &reports)
{
    if (!gConnection || !gConnection->isOpen())
        return; // each report says so itself
    try {
        const QDateTime runDate = now();
        for (const auto &report : reports) {
            if (!gChartDefs.contains(report->ChartID))
                continue;
            const clsGraphDef chart = chartOf(*report, runDate);
            SampleScope scope;
            scope.from = instantOf(chart.StartTime);
            // A period that ends with the report's own run reaches further by then.
            scope.to = chart.ChartDuration == CustomRange ? instantOf(chart.EndTime)
                                                          : std::numeric_limits<qint64>::max();
            QSet<QString> muids;
            for (const auto &device : report->ReportDevices) {
                muids.insert(device->MUID.toLower());
                for (const auto &item : device->DataItems)
                    scope.dataIdents.insert(item->DataIDent.toLongLong());
            }
            addStateItems(muids, scope);
            gConnection->expectSamples(scope);
        }
    } catch (const std::exception &) {
        // Only a hint; the report that meets the same error names it.
    }
}

void checkImageFormat()
{
    if (isImageFormat(gConfig->IMG_Format))
        return;
    const QString text = QStringLiteral("Charts are written as PNG: IMG_Format '%1' is not PNG, "
                                        "JPEG or BMP")
                             .arg(gConfig->IMG_Format);
    ShowStatus(text);
    if (gAutoMode)
        LogEvent(runEvent, EventWarning, text);
}

void CopyTemplateFiles()
{
    const QString source = NormalizeFolder(gConfig->PTH_Config());
    const QString target = outputFolder();
    for (const QString &name : gConfig->CopyFileList) {
        ShowStatus(QLatin1String("Copy template: ") + name);
        try {
            copyFile(source + name, target + name);
        } catch (const Error &error) {
            const QString text =
                QStringLiteral("Error copying template '%1' ").arg(name) + errorTail(error);
            ShowStatus(text);
            tellTrouble(text);
            if (gAutoMode)
                LogEvent(runEvent, EventWarning, text);
        }
    }
}
