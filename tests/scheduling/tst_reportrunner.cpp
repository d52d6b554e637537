#include "core/Clock.h"
#include "core/platform/EventLog.h"
#include "data/Connection.h"
#include "definitions/DefinitionStores.h"
#include "demo/AccessWriter.h"
#include "scheduling/ReportRunner.h"
#include "scheduling/RunHistory.h"
#include "support/Sandbox.h"

#include <QGuiApplication>
#include <QImage>
#include <QTest>

namespace {

const QByteArray reportFile = R"(<REPORTDEFINITIONS>
<CUSTOMREPORT ReportID="{R-1}" ReportTitle="Night of the change" ChartID="{C-1}" OutputFile="" OutputTemplate="">
<SCHEDULE ScheduleID="{S-1}" LastRunDate="2024-03-31T10:00:00-00:00"/>
<DEVICE MUID="{M-2}"><DATUM DataIDent="21"/></DEVICE>
<DEVICE MUID="{M-3}"><DATUM DataIDent="31"/></DEVICE>
<DEVICE MUID="{M-9}"><DATUM DataIDent="91"/></DEVICE>
<DEVICE MUID="{M-1}"><DATUM DataIDent="99"/><DATUM DataIDent="11"/><DATUM DataIDent="12"/></DEVICE>
</CUSTOMREPORT>
<CUSTOMREPORT ReportID="{R-2}" ReportTitle="Never scheduled" ChartID="{C-1}"><DEVICE MUID="{M-1}"/></CUSTOMREPORT>
</REPORTDEFINITIONS>)";

/// 00:00 to 05:59:59 of the night in which Berlin's clocks go from 02:00 to 03:00.
const QByteArray chartFile = R"(<CHARTDEFS>
<CHART ChartID="{C-1}" Title="Night" SampleLabel="Probe" Frequency="1" SubFreq="1" ChartDuration="8"
 StateFile="state.txt" CountFile="count.txt"
 StartTime="2024-03-30T23:00:00-00:00" EndTime="2024-03-31T03:59:59-00:00"/>
</CHARTDEFS>)";

const QByteArray scheduleFile = R"(<SCHEDULES>
<SCHEDULE ScheduleID="{S-1}" SchedInterval="2" Reschedule="0"
 HourList="0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23"
 MonthDayList="1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,31"
 MonthList="1,2,3,4,5,6,7,8,9,10,11,12"/>
</SCHEDULES>)";

double dayNumber(const char *utc)
{
    QDateTime time = QDateTime::fromString(QString::fromLatin1(utc), Qt::ISODate);
    time.setTimeSpec(Qt::UTC);
    return static_cast<double>(time.toMSecsSinceEpoch()) / 86'400'000 + 25'569;
}

/// A monitoring database, a configuration with templates that show little but the values, and the
/// definitions above, in a sandbox of its own.
class Site
{
public:
    Site()
    {
        setEventObserver([](int, EventType type, const QString &message) {
            events.append(QString::number(type) + u' ' + message);
        });
        events.clear();
        gAutoMode = true;
        gDataPath = box.path() + u'/';
        gGraphDataPath = gDataPath;
        gConfig->storedOutput = QStringLiteral("%%app.path%%\\Out");
        gConfig->TOU_TOC = QStringLiteral("REPORTS.HTM");
        gConfig->TOU_REPORT = QStringLiteral("REPORT.HTM");
        gConfig->TOU_REP_Top = QStringLiteral("TOP.HTM");
        gConfig->TOU_REP_TOC = QStringLiteral("DEVLIST.HTM");
        gConfig->TOU_REP_Summary = QStringLiteral("SUMMARY.HTM");
        gConfig->IMG_Format = QStringLiteral("PNG");
        gConfig->CopyFileList = {QStringLiteral("style.css"), QStringLiteral("missing.css")};
        addTemplate(gConfig->TIN_TOC, "toc", "<%%report.list%%>\n");
        addTemplate(gConfig->TIN_TOC_ReportItem, "tocitem",
                    "%%report.tempid%% %%report.id%% %%report.title%%");
        addTemplate(gConfig->TIN_REPORT, "report", "%%report.title%% %%report.date%%");
        addTemplate(gConfig->TIN_REP_TOC, "reptoc", "<%%device.list%%>\n");
        addTemplate(gConfig->TIN_REP_DeviceItem, "devitem",
                    "%%mach.muid%% %%mach.unmuid%% %%mach.name%% %%mach.desc%%");
        addTemplate(gConfig->TIN_REP_Top, "top", "%%report.title%% %%report.id%%");
        addTemplate(gConfig->TIN_REP_Summary, "summary", "<%%state.detail%%>\n");
        addTemplate(gConfig->TIN_STATE_Detail, "state",
                    "%%sample.name%% %%sample.csv%% %%report.daterange%%(%%detail.items%%)\n");
        addTemplate(gConfig->TIN_STATE_DetailItem, "staterow",
                    "%%sample.label%% %%successcount%% %%criticalcount%% %%successrate%%");
        addTemplate(gConfig->TIN_COUNT_Detail, "count",
                    "%%sample.name%% %%sample.scale%%(%%detail.items%%)\n");
        addTemplate(gConfig->TIN_COUNT_DetailItem, "countrow", "%%sample.label%% %%sample.value%%");
        addTemplate(gConfig->TIN_DEV_Rep, "device",
                    "%%mach.name%% %%report.date%% %%report.time%%<%%dev.varblist%%>\n");
        addTemplate(gConfig->TIN_VARB_Item, "item",
                    "%%varb.name%% %%dev.graph%%[%%detail.list%%]\n");
        box.write(QStringLiteral("state.txt"), "%%chart.series1%%;%%chart.series2%%");
        box.write(QStringLiteral("count.txt"), "%%chart.series1%%");
        box.write(QStringLiteral("style.css"), "b{}");
        box.write(QStringLiteral("transdot.gif"), "GIF89a");
        box.write(QStringLiteral("ChartSelection.XML"), reportFile);
        box.write(QStringLiteral("ChartDefs.XML"), chartFile);
        box.write(QStringLiteral("ChartSchedules.XML"), scheduleFile);
        writeDatabase();
        LoadReportDefs();
    }
    ~Site()
    {
        setEventObserver(nullptr);
        resetDefinitions();
    }

    RunResult run(RunChoice choice)
    {
        return runReports({QStringLiteral("{R-1}"), QStringLiteral("{R-2}")}, choice);
    }
    /// A page or CSV file of the output tree, its lines joined by "|".
    QString output(const QString &name) const
    {
        return QString::fromUtf8(box.read(QStringLiteral("Out/") + name))
            .trimmed()
            .replace(QLatin1String("\r\n"), QLatin1String("|"))
            .remove(u'\n');
    }
    bool lastRunMoved() const
    {
        return !box.read(QStringLiteral("ChartSelection.XML")).contains("2024-03-31T10:00:00");
    }

    LocalZone zone{"Europe/Berlin"};
    Sandbox box;
    FrozenClock clock{QStringLiteral("2024-04-01T13:14:15")};
    static QStringList events;

private:
    void addTemplate(QString &name, const char *file, const QByteArray &text)
    {
        name = QLatin1String(file);
        box.write(name, text);
    }

    void writeDatabase()
    {
        using demo::Field;
        using demo::FieldType;
        const auto field = [](const char *name, FieldType type) {
            Field made;
            made.name = QLatin1String(name);
            made.type = type;
            return made;
        };
        demo::AccessWriter file(box.path(QStringLiteral("VTRGData.MDB")), 0);
        demo::TableWriter &devices =
            file.addTable(QStringLiteral("Devices"),
                          {field("IDent", FieldType::Long), field("MUID", FieldType::Text),
                           field("MachName", FieldType::Text), field("MachDesc", FieldType::Text)});
        const auto addDevice = [&](int ident, const char *muid, const QString &name) {
            devices.setInteger(0, ident);
            devices.setText(1, QString::fromUtf8(muid));
            devices.setText(2, name);
            devices.setText(3, QStringLiteral("about it"));
            devices.append();
        };
        addDevice(2, "{M-2}", QStringLiteral("beta"));
        addDevice(1, "{M-1}", QStringLiteral("Älpha"));
        addDevice(3, "{M-3}", QStringLiteral("Gamma"));

        demo::TableWriter &fields = file.addTable(
            QStringLiteral("DataFields"),
            {field("DataIDent", FieldType::Long), field("IDent", FieldType::Long),
             field("DataName", FieldType::Text), field("DataDesc", FieldType::Text),
             field("iScale", FieldType::Long), field("IsGlobal", FieldType::Integer)});
        const auto addField = [&](int dataIdent, int ident, const char *name, int scale) {
            fields.setInteger(0, dataIdent);
            fields.setInteger(1, ident);
            fields.setText(2, QString::fromUtf8(name));
            fields.setText(3, QString());
            fields.setInteger(4, scale);
            fields.setInteger(5, 1);
            fields.append();
        };
        addField(11, 1, "Ping", 21);
        addField(12, 1, "Latency", 3);
        addField(21, 2, "Ping", 21);
        addField(31, 3, "Ping", 21);

        demo::TableWriter &scales =
            file.addTable(QStringLiteral("Scales"),
                          {field("iScale", FieldType::Long), field("ScaleName", FieldType::Text),
                           field("ScaleAbbr", FieldType::Text)});
        scales.setInteger(0, 3);
        scales.setText(1, QStringLiteral("Milliseconds"));
        scales.setText(2, QStringLiteral("ms"));
        scales.append();

        demo::TableWriter &values =
            file.addTable(QStringLiteral("DataValues"),
                          {field("DataIDent", FieldType::Long), field("iDate", FieldType::DateTime),
                           field("iState", FieldType::Long), field("iValue", FieldType::Double)});
        const auto addValue = [&](int dataIdent, const char *utc, int state, double value) {
            values.setInteger(0, dataIdent);
            values.setNumber(1, dayNumber(utc));
            values.setInteger(2, state);
            values.setNumber(3, value);
            values.append();
        };
        addValue(11, "2024-03-31T01:10:00", 1, 0); // 03:10 on the wall, stored out of order
        addValue(11, "2024-03-30T22:59:59", 1, 0); // a second before the period
        addValue(11, "2024-03-30T23:00:00", 1, 0); // its first instant
        addValue(11, "2024-03-30T23:30:00", 0, 0);
        addValue(11, "2024-03-31T03:59:59", 1, 0); // its last instant
        addValue(11, "2024-03-31T04:00:00", 0, 0); // a second behind
        addValue(12, "2024-03-31T00:30:00", 1, 1.00004);
        addValue(12, "2024-03-31T00:40:00", 1, 4);
        addValue(12, "2024-03-31T01:00:00", 1, -2.5);
        addValue(21, "2024-03-31T02:00:00", 1, 0);
        file.finish();
    }
};

QStringList Site::events;

} // namespace

class TestReportRunner : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesTheWholeTree();
    void showsTroubleFirst();
    void runsOnlyWhatIsDue();
    void endsAReportWithoutDatabase();
    void namesABrokenReportAndGoesOn();
    void citesTheTransparentImage();
    void cancelsBetweenDevices();
    void tellsInTheMasterListHowReportsEnded();
    void reportsProgressOfTheWholeRun();
    void beginsNoRunWithABrokenFile();
};

void TestReportRunner::writesTheWholeTree()
{
    Site site;
    const RunResult result = site.run(RunChoice::Due);
    QVERIFY2(result.failed == 0, qPrintable(site.box.status.join(u'\n')));
    QCOMPARE(result.reports, 1);
    QCOMPARE(result.chartsWithoutImage, 0);

    QCOMPARE(site.output(QStringLiteral("REPORTS.HTM")),
             QStringLiteral("<|1 R2 Never scheduled|2 R1 Night of the change|>"));
    QCOMPARE(site.output(QStringLiteral("style.css")), QStringLiteral("b{}"));
    QCOMPARE(site.output(QStringLiteral("R1/TOP.HTM")), QStringLiteral("Night of the change R1"));
    QCOMPARE(site.output(QStringLiteral("R1/DEVLIST.HTM")),
             QStringLiteral("<|{M-2} M2 beta about it|{M-3} M3 Gamma about it|"
                            "{M-1} M1 Älpha about it|>"));
    QCOMPARE(site.output(QStringLiteral("R1/REPORT.HTM")),
             QStringLiteral("Night of the change 2024-Apr-01"));
    // Devices in the reverse of the report's order; Gamma has no samples. The summary's period
    // begins a second behind midnight, so the sample of the first instant is not in it.
    QCOMPARE(site.output(QStringLiteral("R1/SUMMARY.HTM")),
             QStringLiteral("<|Night of the change repsum.csv 31-Mar-2024 00:00 to 31-Mar-2024 "
                            "05:59(|Älpha 2 1 66.67|Gamma 0 0 n/a|beta 1 0 100.00|"
                            "<b>Total</b> <b>3</b> <b>1</b> <b>75.00</b>|) |>"));
    QCOMPARE(site.output(QStringLiteral("R1/repsum.csv")),
             QStringLiteral(R"("Sample","Success","Critial","Total","SuccessRate"|)"
                            R"("Älpha",2,1,3,66.6667|"Gamma",0,0,0,0|"beta",1,0,1,100)"));

    // The hour that the clocks skip is no bucket.
    const QString ping = site.output(QStringLiteral("R1/M1/2_detail.csv"));
    QCOMPARE(ping,
             QStringLiteral(
                 R"("Entry Name","Sample Name","Sample","Success","Critial","Total","SuccessRate"|)"
                 R"("Ping","Probe","Mar 31 - 00:00",1,1,2,50|)"
                 R"("Ping","Probe","Mar 31 - 01:00",0,0,0,0|)"
                 R"("Ping","Probe","Mar 31 - 03:00",1,0,1,100|)"
                 R"("Ping","Probe","Mar 31 - 04:00",0,0,0,0|)"
                 R"("Ping","Probe","Mar 31 - 05:00",1,0,1,100)"));
    QCOMPARE(site.output(QStringLiteral("R1/M1/3_detail.csv")),
             QStringLiteral(R"("Entry Name","Sample Name","Sample","Scale","Value"|)"
                            R"("Latency","Probe","Mar 31 - 00:00","Milliseconds",""|)"
                            R"("Latency","Probe","Mar 31 - 01:00","Milliseconds","2.5"|)"
                            R"("Latency","Probe","Mar 31 - 03:00","Milliseconds","-2.5"|)"
                            R"("Latency","Probe","Mar 31 - 04:00","Milliseconds",""|)"
                            R"("Latency","Probe","Mar 31 - 05:00","Milliseconds","")"));

    QString page = site.output(QStringLiteral("R1/M1/DEVREP.HTM"));
    static const QRegularExpression imageName(QStringLiteral("G[0-9A-Z]+\\.PNG"));
    QStringList images;
    for (auto match = imageName.globalMatch(page); match.hasNext();)
        images.append(match.next().captured());
    QCOMPARE(images.size(), 2);
    page.replace(imageName, QStringLiteral("IMAGE"));
    QCOMPARE(page,
             QStringLiteral("Älpha 2024-Apr-01 13:14:15<|Ping IMAGE[|Ping 2_detail.csv "
                            "31-Mar-2024 00:00 to 31-Mar-2024 05:59(|Mar 31 - 00:00 1 1 50.00|"
                            "Mar 31 - 01:00 0 0 n/a|Mar 31 - 03:00 1 0 100.00|"
                            "Mar 31 - 04:00 0 0 n/a|Mar 31 - 05:00 1 0 100.00|"
                            "<b>Total</b> <b>3</b> <b>1</b> <b>75.00</b>|) |] |"
                            "Latency IMAGE[|Latency Milliseconds(|Mar 31 - 00:00 |"
                            "Mar 31 - 01:00 2.50|Mar 31 - 03:00 -2.50|Mar 31 - 04:00 |"
                            "Mar 31 - 05:00 |) |] |>"));
    for (const QString &image : std::as_const(images)) {
        const QImage drawn(site.box.path(QStringLiteral("Out/R1/M1/") + image));
        QCOMPARE(drawn.size(), QSize(640, 390));
    }
    QString graphPage = images[0];
    graphPage.replace(QLatin1String(".PNG"), QLatin1String(".HTM"));
    QCOMPARE(site.output(QStringLiteral("R1/M1/") + graphPage),
             QStringLiteral("1, ,1, ,1;1, ,0, ,0"));
    QVERIFY(!site.box.names(QStringLiteral("Out/R1")).contains(QLatin1String("M9")));
    QVERIFY(!QImage(site.box.path(QStringLiteral("Out/R1/DEVSUM.PNG"))).isNull());
    QVERIFY(!QImage(site.box.path(QStringLiteral("Out/R1/OVERALL.PNG"))).isNull());

    QVERIFY(site.lastRunMoved());
    QVERIFY(site.box.status.contains(QStringLiteral("Total Values: 10")));
    QVERIFY(site.box.status.contains(QStringLiteral("Copy template: missing.css")));
    QCOMPARE(site.box.status.filter(QStringLiteral("missing.css")).size(), 2);

    // Once more: the charts of the last run are gone, so that they do not pile up.
    QVERIFY(site.run(RunChoice::All).failed == 0);
    QCOMPARE(site.box.names(QStringLiteral("Out/R1/M1")).filter(imageName).size(), 2);
}

void TestReportRunner::showsTroubleFirst()
{
    Site site;
    site.box.write(QStringLiteral("report"),
                   "%%total.rate%%, %%total.failed%% of %%total.tests%%, %%total.troubled%% and "
                   "%%total.silent%% of %%total.devices%%:\n%%report.worst%%");
    site.box.write(QStringLiteral("staterow"), "<a%%sample.href%%>%%sample.label%%</a>");
    site.box.write(QStringLiteral("tocitem"),
                   "<a%%report.href%%>%%report.title%%</a> %%total.rate%%%%summary.href%%");
    site.box.write(QStringLiteral("item"), "%%varb.name%% (%%item.failed%%)[%%detail.list%%]\n");
    site.box.write(QStringLiteral("count.txt"), "%%varb.unit%%; %%img.alt%%");
    QVERIFY(site.run(RunChoice::Due).failed == 0);

    QCOMPARE(site.output(QStringLiteral("R1/REPORT.HTM")),
             QStringLiteral("75.00, 1 of 4, 1 and 1 of 3:<a href=\"M1/DEVREP.HTM\">Älpha</a>"));
    const QString summary = site.output(QStringLiteral("R1/SUMMARY.HTM"));
    QVERIFY(summary.contains(QLatin1String("<a href=\"M3/DEVREP.HTM\">Gamma</a>")));
    QVERIFY(summary.contains(QLatin1String("<a><b>Total</b></a>")));
    const QString page = site.output(QStringLiteral("R1/M1/DEVREP.HTM"));
    QVERIFY(page.contains(QLatin1String("<a>Mar 31 - 00:00</a>")));
    QVERIFY(page.contains(QLatin1String("Ping (1)[")) &&
            page.contains(QLatin1String("Latency ()[")));
    QStringList counters;
    const QStringList pages =
        site.box.names(QStringLiteral("Out/R1/M1")).filter(QStringLiteral(".HTM"));
    for (const QString &name : pages)
        counters.append(site.output(QStringLiteral("R1/M1/") + name));
    QCOMPARE(counters.filter(QStringLiteral("ms;")),
             QStringList(QStringLiteral("ms; Mean 0 ms, least -2.5 ms, greatest 2.5 ms, "
                                        "95th percentile -2.5 ms")));
    // The report that never ran leads nowhere.
    QCOMPARE(site.output(QStringLiteral("REPORTS.HTM")),
             QStringLiteral("<|<a>Never scheduled</a> |<a href=\"R1/REPORT.HTM\">Night of the "
                            "change</a> 75.00 href=\"R1/SUMMARY.HTM\"|>"));
}

void TestReportRunner::runsOnlyWhatIsDue()
{
    Site site;
    site.run(RunChoice::Due);
    site.box.status.clear();
    QCOMPARE(site.run(RunChoice::Due).reports, 0); // ran a moment ago
    QVERIFY(!site.box.status.contains(QStringLiteral("Generating Report: [Night of the change]")));
    site.clock.advance(3'600'000);
    QCOMPARE(site.run(RunChoice::Due).reports, 1);
}

void TestReportRunner::endsAReportWithoutDatabase()
{
    Site site;
    QVERIFY(QFile::remove(site.box.path(QStringLiteral("VTRGData.MDB"))));
    const RunResult result = site.run(RunChoice::Due);
    QVERIFY(result.failed > 0);
    QVERIFY(!site.lastRunMoved());
    QVERIFY(!site.events.filter(QStringLiteral("1 Error opening database 'Provider=")).isEmpty());
}

void TestReportRunner::namesABrokenReportAndGoesOn()
{
    Site site;
    QByteArray broken = reportFile;
    broken.replace("<CUSTOMREPORT ReportID=\"{R-2}\"",
                   "<CUSTOMREPORT ReportID=\"{R-0}\" ReportTitle=\"A broken one\" ChartID=\"{X}\"/>"
                   "<CUSTOMREPORT ReportID=\"{R-E}\" ReportTitle=\"Empty\" ChartID=\"{C-1}\"/>"
                   "<CUSTOMREPORT ReportID=\"{R-2}\"");
    site.box.write(QStringLiteral("ChartSelection.XML"), broken);
    const RunResult result = runReports({QStringLiteral("{R-0}"), QStringLiteral("{R-E}"),
                                         QStringLiteral("{R-2}"), QStringLiteral("{R-1}")},
                                        RunChoice::All);
    QCOMPARE(result.reports, 4);
    QCOMPARE(result.failed, 2);
    QCOMPARE(site.box.status.filter(QStringLiteral("Error Generating Report [3001] ")).size(), 1);
    QCOMPARE(site.box.status
                 .filter(QStringLiteral("Error Generating Report [3265] There is no "
                                        "chart definition '{X}' - Setting Chart Def."))
                 .size(),
             1);
    QVERIFY(site.lastRunMoved());
    QVERIFY(site.box.names(QStringLiteral("Out/R1")).contains(QLatin1String("SUMMARY.HTM")));
    const std::vector<RunRecord> runs = readRuns();
    QCOMPARE(runs.size(), size_t(1));
    QCOMPARE(lastRecord(runs, QStringLiteral("{R-0}"))->result, ReportResult::Failed);
    QVERIFY(lastRecord(runs, QStringLiteral("{R-0}"))->error.contains(QLatin1String("'{X}'")));
    QCOMPARE(lastRecord(runs, QStringLiteral("{R-1}"))->result, ReportResult::Ok);
    QVERIFY(!site.events.filter(QStringLiteral("1 Report 'A broken one' failed: ")).isEmpty());
}

void TestReportRunner::citesTheTransparentImage()
{
    Site site;
    gConfig->IMG_Format = QStringLiteral("NONE");
    site.box.write(gConfig->TIN_VARB_Item,
                   "%%varb.name%% %%dev.graph%%[%%detail.list%%]%%img.alt%%\n");
    site.box.write(gConfig->TIN_REPORT, "%%report.note%%");
    const RunResult result = site.run(RunChoice::Due);
    QCOMPARE(result.failed, 0);
    QCOMPARE(result.chartsWithoutImage, 6); // four items, the summary and the overall state
    QVERIFY(site.output(QStringLiteral("R1/M2/DEVREP.HTM"))
                .contains(QLatin1String("Ping ../../transdot.gif[")));
    QVERIFY(site.output(QStringLiteral("R1/M2/DEVREP.HTM"))
                .contains(QLatin1String("]This chart could not be drawn: ")));
    QVERIFY(site.output(QStringLiteral("R1/REPORT.HTM"))
                .endsWith(QLatin1String("6 charts could not be drawn; their values are in the "
                                        "tables.")));
    const ReportRecord record = readRuns().at(0).reports.at(0);
    QCOMPARE(record.result, ReportResult::Partial);
    QCOMPARE(record.charts, 4);
    QCOMPARE(record.samples, 8);
    QCOMPARE(record.chartsWithoutImage, 6);
    QVERIFY(record.chartErrors.first().contains(QLatin1String("NONE")));
    QVERIFY(record.error.isEmpty());
    QVERIFY(site.lastRunMoved());
}

void TestReportRunner::cancelsBetweenDevices()
{
    Site site;
    setStatusSink([&](const QString &line) {
        site.box.status.append(line);
        if (line.startsWith(QLatin1String("Summarizing Gamma")))
            CancelRequested = true;
    });
    const RunResult result = site.run(RunChoice::Due);
    QVERIFY(result.cancelled);
    const QStringList names = site.box.names(QStringLiteral("Out/R1"));
    QVERIFY(!names.contains(QLatin1String("SUMMARY.HTM")));
    QVERIFY(names.contains(QLatin1String("DEVLIST.HTM")));
    QVERIFY(site.box.names(QStringLiteral("Out/R1/M2")).contains(QLatin1String("DEVREP.HTM")));
    QVERIFY(!site.box.names(QStringLiteral("Out/R1/M1")).contains(QLatin1String("DEVREP.HTM")));
    QVERIFY(!site.lastRunMoved());
    QVERIFY(site.events.contains(QStringLiteral("4 Report AutoGraph execution cancelled.")));
    QCOMPARE(site.box.status.last(), QStringLiteral("Report run cancelled by user."));
    QCOMPARE(readRuns().at(0).reports.at(0).result, ReportResult::Cancelled);
}

void TestReportRunner::tellsInTheMasterListHowReportsEnded()
{
    Site site;
    site.box.write(gConfig->TIN_TOC_ReportItem,
                   "%%report.title%%: %%report.lastrun%%, %%report.lastresult%%, "
                   "%%report.nextdue%%");
    site.box.write(QStringLiteral("Out/R1/") + gConfig->TOU_REPORT, "of an earlier run");
    QStringList before;
    setStatusSink([&](const QString &line) {
        if (line.startsWith(QLatin1String("Generating TOC: [")))
            before.append(site.output(QStringLiteral("REPORTS.HTM")));
    });
    QCOMPARE(site.run(RunChoice::Due).failed, 0);
    const QString never = QStringLiteral("<|Never scheduled: , , |Night of the change: ");
    QCOMPARE(before, QStringList(never + QStringLiteral("2024-Mar-31 12:00, , now|>")));
    QCOMPARE(site.output(QStringLiteral("REPORTS.HTM")),
             never + QStringLiteral("2024-Apr-01 13:14, ok, 2024-Apr-01 14:00|>"));
    QCOMPARE(readRuns().at(0).reports.at(0).dueSince.toString(QStringLiteral("MM-dd HH:mm")),
             QStringLiteral("03-31 13:00"));

    // Its old pages still stand; the list says that they are old.
    site.clock.advance(3'600'000);
    QVERIFY(QFile::remove(site.box.path(QStringLiteral("VTRGData.MDB"))));
    CloseDatabase();
    QVERIFY(site.run(RunChoice::Due).failed > 0);
    QCOMPARE(site.output(QStringLiteral("REPORTS.HTM")),
             never + QStringLiteral("2024-Apr-01 14:14, failed, now|>"));
    QVERIFY(site.box.names(QStringLiteral("Out/R1")).contains(QLatin1String("SUMMARY.HTM")));
}

void TestReportRunner::reportsProgressOfTheWholeRun()
{
    Site site;
    QStringList seen;
    setProgressSink([&](const Progress &progress) {
        const QString text = QStringLiteral("%1 %2/%3")
                                 .arg(progress.report.left(5))
                                 .arg(progress.done)
                                 .arg(progress.all);
        if (seen.isEmpty() || seen.last() != text)
            seen.append(text);
    });
    site.run(RunChoice::All);
    setProgressSink({});
    // Items of a device that the database does not know are done with their report.
    QCOMPARE(seen, QStringList({QStringLiteral("Night 0/6"), QStringLiteral("Night 1/6"),
                                QStringLiteral("Night 2/6"), QStringLiteral("Night 3/6"),
                                QStringLiteral("Night 4/6"), QStringLiteral("Night 5/6"),
                                QStringLiteral("Night 6/6"), QStringLiteral("Never 6/6")}));
}

void TestReportRunner::beginsNoRunWithABrokenFile()
{
    Site site;
    const QByteArray broken = "<CHARTDEFS>\n<CHART\n</CHARTDEFS>";
    site.box.write(QStringLiteral("ChartDefs.XML"), broken);
    const RunResult result = site.run(RunChoice::Due);
    QCOMPARE(result.reports, 0);
    QCOMPARE(result.failed, 1);
    QVERIFY(!site.lastRunMoved());
    QCOMPARE(site.box.read(QStringLiteral("ChartDefs.XML")), broken);
    QVERIFY(!site.box.names().contains(QStringLiteral("Out")));
    QVERIFY(readRuns().front().error.contains(QStringLiteral("ChartDefs.XML:3:")));
    QVERIFY(Site::events.last().contains(QStringLiteral("ChartDefs.XML:3:")));
}

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    TestReportRunner test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_reportrunner.moc"
