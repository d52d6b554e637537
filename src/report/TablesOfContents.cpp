#include "report/TablesOfContents.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/TimeZone.h"
#include "definitions/Dates.h"
#include "report/OutputTree.h"
#include "report/RequiredTemplates.h"

namespace {

/// Shows "Creating Work Path: " and creates the output folder.
void createOutputFolder(const RunSession &session)
{
    session.log.status(QLatin1String("Creating Work Path: ") + session.tree.folder());
    session.tree.create(session.log);
}

/// The master table of contents before and after the list of reports.
ListParts masterParts(const clsChartOutputBuilder &builder)
{
    return fillListTemplate(builder.TOC, QLatin1String("%%report.list%%"), onNewPage({}));
}

QString masterEntry(const clsChartOutputBuilder &builder, const clsGrapherConfig &settings,
                    const ContentsEntry &entry, int number)
{
    const ReportStanding &standing = entry.standing;
    const QString id = linkText(folderSafe(entry.id));
    // A report that never ran has no pages, and so no links or figures.
    Placeholders values = standing.figures.value_or(SummaryFigures()).placeholders();
    if (!standing.figures) {
        for (auto &[name, value] : values)
            value = QString();
    }
    const auto link = [&](const QString &page) {
        return PageValue::html(standing.hasPages
                                   ? QStringLiteral(" href=\"%1/%2\"").arg(id, linkText(page))
                                   : QString());
    };
    values.insert(values.end(),
                  {
                      {QLatin1String("report.href"), link(settings.TOU_REPORT)},
                      {QLatin1String("summary.href"), link(settings.TOU_REP_Summary)},
                      {QLatin1String("devices.href"), link(settings.TOU_REP_TOC)},
                      {QLatin1String("report.id"), id},
                      {QLatin1String("report.tempid"), QString::number(number)},
                      {QLatin1String("report.title"), entry.title},
                      {QLatin1String("chart.title"), entry.chartTitle},
                      {QLatin1String("report.lastrun"), standing.lastRun},
                      {QLatin1String("report.lastresult"), standing.lastResult},
                      {QLatin1String("report.lastnote"), standing.lastNote},
                      {QLatin1String("report.nextdue"), standing.nextDue},
                      {QLatin1String("report.devices"), QString::number(entry.muids.size())},
                      {QLatin1String("report.archive"),
                       archiveLine(standing.archive, id, settings.TOU_REPORT)},
                  });
    return fillTemplate(builder.TOC_ReportItem, values);
}

void writeMasterTOC(const std::vector<ContentsEntry> &entries, RunSession &session)
{
    const RunLog &log = session.log;
    log.status(QStringLiteral("Generating Master TOC"));
    createOutputFolder(session);
    log.status(QStringLiteral("Loading report definitions."));
    log.status(QStringLiteral("Loading report selections.")); // the plan holds them
    log.status(QStringLiteral("Loading report TOC templates."));
    log.status(QStringLiteral("Loading TOC Templates"));
    clsChartOutputBuilder builder;
    builder.LoadTOCTemplates(session.settings, log);
    builder.requireMasterTemplates();

    log.status(QStringLiteral("Opening database."));
    MonitoringDatabase &database = session.openDatabase();
    log.status(QStringLiteral("Loading device list."));
    const std::shared_ptr<const Inventory> inventory = database.inventory();

    log.status(QStringLiteral("Opening TOC file."));
    const ListParts parts = masterParts(builder);
    PageText page;
    log.status(QStringLiteral("Writing TOC file (reportlist.1)."));
    page.write(parts.before);
    int number = 0;
    for (const ContentsEntry &entry : entries) {
        session.tree.createReportFolder(entry.id, log);
        page.write(masterEntry(builder, session.settings, entry, ++number));
        for (const QString &muid : entry.muids) {
            if (inventory->device(muid))
                session.tree.createDeviceFolder(entry.id, muid, log);
        }
    }
    log.status(QStringLiteral("Writing TOC file (reportlist.2)."));
    page.write(parts.behind);
    saveExactFile(session.tree.contentsPage(), page.bytes());
    log.status(QStringLiteral("Finishing TOC Generation"));
}

void writeReportTOC(const PlannedReport &report, RunSession &session)
{
    const RunLog &log = session.log;
    const clsGrapherConfig &settings = session.settings;
    log.status(QLatin1String("Generating TOC: [") + report.title + u']');
    createOutputFolder(session);
    log.status(QStringLiteral("Loading report TOC templates."));
    clsChartOutputBuilder builder;
    builder.LoadTOCTemplates(settings, log);
    log.status(QStringLiteral("Opening database."));
    const std::shared_ptr<const Inventory> inventory = session.openDatabase().inventory();
    requireTemplates(report, *inventory, builder, settings);
    log.status(QStringLiteral("Loading device list."));
    log.status(QStringLiteral("Sorting device selection.")); // done before the first report
    session.tree.createReportFolder(report.id, log);

    const QString folder = session.tree.reportFolder(report.id);
    const Placeholders reportValues = {
        {QLatin1String("report.title"), report.title},
        {QLatin1String("report.id"), linkText(folderSafe(report.id))},
        {QLatin1String("chart.title"), report.chart.ChartTitle},
    };
    log.status(QStringLiteral("Opening TOC TOP file."));
    PageText top;
    top.write(fillTemplate(builder.REP_Top, onNewPage(reportValues)));
    saveExactFile(folder + settings.TOU_REP_Top, top.bytes());

    constexpr QLatin1String marker("%%device.list%%");
    const ListParts contents = fillListTemplate(builder.REP_TOC, marker, onNewPage(reportValues));
    PageText page;
    log.status(QStringLiteral("Writing TOC file (reportlist.1)."));
    page.write(contents.before);
    for (const PlannedReport::Device &device : report.devices) {
        const DeviceRow *row = inventory->device(device.muid);
        if (!row)
            continue;
        session.tree.createDeviceFolder(report.id, device.muid, log);
        page.write(
            fillTemplate(builder.REP_DeviceItem,
                         {
                             {QLatin1String("mach.muid"), device.muid},
                             {QLatin1String("mach.unmuid"), linkText(folderSafe(device.muid))},
                             {QLatin1String("mach.name"), row->name},
                             {QLatin1String("mach.desc"), row->description},
                         }));
    }
    log.status(QStringLiteral("Writing TOC file (reportlist.2)."));
    page.write(contents.behind);
    saveExactFile(folder + settings.TOU_REP_TOC, page.bytes());
}

/// Runs a writer; what it throws becomes the text of the whole.
template <typename Writer>
void namingErrors(const RunLog &log, const QString &what, Writer write)
{
    try {
        write();
    } catch (const ShownError &) {
        throw;
    } catch (const std::exception &exception) {
        const Error error = errorOf(exception);
        throw ShownError(log, error.number,
                         QStringLiteral("Error generating %1 ").arg(what) + errorTail(error));
    }
}

} // namespace

QString standingTimeText(const QDateTime &time)
{
    return reportDateText(time) + u' ' + reportTimeText(time).left(5);
}

void GenerateMasterTOC(const std::vector<ContentsEntry> &entries, RunSession &session)
{
    namingErrors(session.log, QStringLiteral("master TOC"),
                 [&] { writeMasterTOC(entries, session); });
}

void RefreshMasterTOC(const std::vector<ContentsEntry> &entries, const clsGrapherConfig &settings,
                      const RunLog &log)
{
    namingErrors(log, QStringLiteral("master TOC"), [&] {
        clsChartOutputBuilder builder;
        builder.LoadTOCTemplates(settings, log);
        builder.requireMasterTemplates();
        const ListParts parts = masterParts(builder);
        PageText page;
        page.write(parts.before);
        int number = 0;
        for (const ContentsEntry &entry : entries)
            page.write(masterEntry(builder, settings, entry, ++number));
        page.write(parts.behind);
        saveExactFile(OutputTree(settings).contentsPage(), page.bytes());
    });
}

void GenerateReportTOC(const PlannedReport &report, RunSession &session)
{
    namingErrors(session.log, QLatin1String("TOC [") + report.title + u']',
                 [&] { writeReportTOC(report, session); });
}
