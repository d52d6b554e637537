#include "report/TablesOfContents.h"

#include "core/Error.h"
#include "core/Files.h"
#include "core/GrapherConfig.h"
#include "core/State.h"
#include "core/Status.h"
#include "core/TimeZone.h"
#include "data/Connection.h"
#include "definitions/Dates.h"
#include "definitions/DefinitionStores.h"
#include "report/OutputTree.h"
#include "report/RequiredTemplates.h"
#include "report/SummaryFigures.h"

namespace {

/// Shows "Creating Work Path: " and creates the output folder.
bool createOutputFolder(QString &errorText)
{
    const QString folder = outputFolder();
    ShowStatus(QLatin1String("Creating Work Path: ") + folder);
    return createWorkPath(folder, errorText);
}

QString chartTitleOf(const clsReportDef &report)
{
    const auto chart = gChartDefs.find(report.ChartID);
    return chart ? chart->ChartTitle : QString();
}

/// The master table of contents before and behind the list of reports.
ListParts masterParts(const clsChartOutputBuilder &builder)
{
    return fillListTemplate(builder.TOC, QLatin1String("%%report.list%%"), onNewPage({}));
}

QString masterEntry(const clsChartOutputBuilder &builder, const clsReportDef &report, int number,
                    const ReportStandings &standings)
{
    const ReportStanding standing = standings.value(report.ReportID.toLower());
    const QString id = linkText(folderSafe(report.ReportID));
    // A report that never ran has no pages: no link leads there, and its figures stay empty.
    const auto figures = readSummaryFigures(reportFolder(report.ReportID) + summaryCsvName);
    Placeholders values = figures.value_or(SummaryFigures()).placeholders();
    if (!figures) {
        for (auto &[name, value] : values)
            value = QString();
    }
    const auto link = [&](const QString &page) {
        return PageValue::html(figures ? QStringLiteral(" href=\"%1/%2\"").arg(id, linkText(page))
                                       : QString());
    };
    values.insert(values.end(), {
                                    {QLatin1String("report.href"), link(gConfig->TOU_REPORT)},
                                    {QLatin1String("summary.href"), link(gConfig->TOU_REP_Summary)},
                                    {QLatin1String("devices.href"), link(gConfig->TOU_REP_TOC)},
                                    {QLatin1String("report.id"), id},
                                    {QLatin1String("report.tempid"), QString::number(number)},
                                    {QLatin1String("report.title"), report.ReportTitle},
                                    {QLatin1String("chart.title"), chartTitleOf(report)},
                                    {QLatin1String("report.lastrun"), standing.lastRun},
                                    {QLatin1String("report.lastresult"), standing.lastResult},
                                    {QLatin1String("report.lastnote"), standing.lastNote},
                                    {QLatin1String("report.nextdue"), standing.nextDue},
                                    {QLatin1String("report.devices"),
                                     QString::number(report.ReportDevices.size())},
                                });
    return fillTemplate(builder.TOC_ReportItem, values);
}

bool writeMasterTOC(QString &errorText, const ReportStandings &standings)
{
    ShowStatus(QStringLiteral("Generating Master TOC"));
    if (!createOutputFolder(errorText))
        return false;
    ShowStatus(QStringLiteral("Loading report definitions."));
    ShowStatus(QStringLiteral("Loading report selections.")); // read before the run
    ShowStatus(QStringLiteral("Loading report TOC templates."));
    ShowStatus(QStringLiteral("Loading TOC Templates"));
    clsChartOutputBuilder builder;
    builder.LoadTOCTemplates();
    builder.requireMasterTemplates();

    ShowStatus(QStringLiteral("Opening database."));
    if (!OpenDatabase(errorText))
        return false;
    ShowStatus(QStringLiteral("Loading device list."));
    const std::shared_ptr<const Inventory> inventory = gConnection->inventory();

    ShowStatus(QStringLiteral("Opening TOC file."));
    const ListParts parts = masterParts(builder);
    PageText page;
    ShowStatus(QStringLiteral("Writing TOC file (reportlist.1)."));
    page.write(parts.before);
    int number = 0;
    for (const auto &report : gReportDefs) {
        if (!createReportFolder(report->ReportID, errorText))
            return false;
        page.write(masterEntry(builder, *report, ++number, standings));
        for (const auto &device : report->ReportDevices) {
            if (inventory->device(device->MUID) &&
                !createDeviceFolder(report->ReportID, device->MUID, errorText))
                return false;
        }
    }
    ShowStatus(QStringLiteral("Writing TOC file (reportlist.2)."));
    page.write(parts.behind);
    saveExactFile(outputFolder() + gConfig->TOU_TOC, page.bytes());
    ShowStatus(QStringLiteral("Finishing TOC Generation"));
    return true;
}

bool writeReportTOC(PlannedReport &report, QString &errorText)
{
    ShowStatus(QLatin1String("Generating TOC: [") + report.title + u']');
    if (!createOutputFolder(errorText))
        return false;
    ShowStatus(QStringLiteral("Loading report TOC templates."));
    clsChartOutputBuilder builder;
    builder.LoadTOCTemplates();
    ShowStatus(QStringLiteral("Opening database."));
    if (!OpenDatabase(errorText))
        return false;
    const std::shared_ptr<const Inventory> inventory = gConnection->inventory();
    requireTemplates(report, *inventory, builder);
    ShowStatus(QStringLiteral("Loading device list."));
    SortDeviceSelection(report, *inventory);
    if (!createReportFolder(report.id, errorText))
        return false;

    const QString folder = reportFolder(report.id);
    const Placeholders reportValues = {
        {QLatin1String("report.title"), report.title},
        {QLatin1String("report.id"), linkText(folderSafe(report.id))},
        {QLatin1String("chart.title"), report.chart.ChartTitle},
    };
    ShowStatus(QStringLiteral("Opening TOC TOP file."));
    PageText top;
    top.write(fillTemplate(builder.REP_Top, onNewPage(reportValues)));
    saveExactFile(folder + gConfig->TOU_REP_Top, top.bytes());

    constexpr QLatin1String marker("%%device.list%%");
    const ListParts contents = fillListTemplate(builder.REP_TOC, marker, onNewPage(reportValues));
    PageText page;
    ShowStatus(QStringLiteral("Writing TOC file (reportlist.1)."));
    page.write(contents.before);
    for (const PlannedReport::Device &device : report.devices) {
        const DeviceRow *row = inventory->device(device.muid);
        if (!row)
            continue;
        if (!createDeviceFolder(report.id, device.muid, errorText))
            return false;
        page.write(
            fillTemplate(builder.REP_DeviceItem,
                         {
                             {QLatin1String("mach.muid"), device.muid},
                             {QLatin1String("mach.unmuid"), linkText(folderSafe(device.muid))},
                             {QLatin1String("mach.name"), row->name},
                             {QLatin1String("mach.desc"), row->description},
                         }));
    }
    ShowStatus(QStringLiteral("Writing TOC file (reportlist.2)."));
    page.write(contents.behind);
    saveExactFile(folder + gConfig->TOU_REP_TOC, page.bytes());
    return true;
}

/// Runs a writer; an error that it throws becomes a status line and the failure text.
template <typename Writer>
bool reportingErrors(QString &errorText, const QString &what, Writer write)
{
    try {
        return write();
    } catch (const std::exception &exception) {
        errorText =
            QStringLiteral("Error generating %1 ").arg(what) + errorTail(errorOf(exception));
        ShowStatus(errorText);
        return false;
    }
}

} // namespace

QString standingTimeText(const QDateTime &time)
{
    return reportDateText(time) + u' ' + reportTimeText(time).left(5);
}

bool GenerateMasterTOC(QString &errorText, const ReportStandings &standings)
{
    return reportingErrors(errorText, QStringLiteral("master TOC"),
                           [&] { return writeMasterTOC(errorText, standings); });
}

bool RefreshMasterTOC(QString &errorText, const ReportStandings &standings)
{
    return reportingErrors(errorText, QStringLiteral("master TOC"), [&] {
        clsChartOutputBuilder builder;
        builder.LoadTOCTemplates();
        builder.requireMasterTemplates();
        const ListParts parts = masterParts(builder);
        PageText page;
        page.write(parts.before);
        int number = 0;
        for (const auto &report : gReportDefs)
            page.write(masterEntry(builder, *report, ++number, standings));
        page.write(parts.behind);
        saveExactFile(outputFolder() + gConfig->TOU_TOC, page.bytes());
        return true;
    });
}

bool GenerateReportTOC(PlannedReport &report, QString &errorText)
{
    return reportingErrors(errorText, QLatin1String("TOC [") + report.title + u']',
                           [&] { return writeReportTOC(report, errorText); });
}
