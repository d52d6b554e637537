#include "base/Clock.h"
#include "database/Connection.h"
#include "definitions/Definitions.h"
#include "scheduling/ReportRunner.h"
#include "scheduling/RunHistory.h"
#include "scheduling/Standings.h"
#include "support/AccessTables.h"
#include "support/Sandbox.h"
#include "support/Zones.h"

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
 StateFile="statechart.html" CountFile="countchart.html"
 StartTime="2024-03-30T23:00:00-00:00" EndTime="2024-03-31T03:59:59-00:00"/>
</CHARTDEFS>)";

const QByteArray scheduleFile = R"(<SCHEDULES>
<SCHEDULE ScheduleID="{S-1}" SchedInterval="2" Reschedule="0"
 HourList="0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23"
 MonthDayList="1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,31"
 MonthList="1,2,3,4,5,6,7,8,9,10,11,12"/>
</SCHEDULES>)";

std::vector<AccessTable> monitoringTables()
{
    using enum demo::FieldType;
    return {{"Devices",
             {{"IDent", Long}, {"MUID", Text}, {"MachName", Text}, {"MachDesc", Text}},
             {{2, "{M-2}", "beta", "about it"},
              {1, "{M-1}", "Älpha", "about it"},
              {3, "{M-3}", "Gamma", "about it"}}},
            {"DataFields",
             {{"DataIDent", Long},
              {"IDent", Long},
              {"DataName", Text},
              {"DataDesc", Text},
              {"iScale", Long},
              {"IsGlobal", Integer}},
             {{11, 1, "Ping", "", 21, 1},
              {12, 1, "Latency", "", 3, 1},
              {21, 2, "Ping", "", 21, 1},
              {31, 3, "Ping", "", 21, 1}}},
            {"Scales",
             {{"iScale", Long}, {"ScaleName", Text}, {"ScaleAbbr", Text}},
             {{3, "Milliseconds", "ms"}}},
            {"DataValues",
             {{"DataIDent", Long}, {"iDate", DateTime}, {"iState", Long}, {"iValue", Double}},
             {{11, utc("2024-03-31T01:10:00"), 1, 0}, // 03:10 on the wall, stored out of order
              {11, utc("2024-03-30T22:59:59"), 1, 0}, // a second before the period
              {11, utc("2024-03-30T23:00:00"), 1, 0}, // its first instant
              {11, utc("2024-03-30T23:30:00"), 0, 0},
              {11, utc("2024-03-31T03:59:59"), 1, 0}, // its last instant
              {11, utc("2024-03-31T04:00:00"), 0, 0}, // a second behind
              {12, utc("2024-03-31T00:30:00"), 1, 1.00004},
              {12, utc("2024-03-31T00:40:00"), 1, 4},
              {12, utc("2024-03-31T01:00:00"), 1, -2.5},
              {21, utc("2024-03-31T02:00:00"), 1, 0}}}};
}

class RangeHost : public RunHost
{
public:
    bool acceptErrors(const QStringList &) override { return true; }
    bool askCustomRange(clsGraphDef &chart, const QStringList &titles) override
    {
        asked.append(chart.ChartTitle + u':' + titles.join(u','));
        chart.EndTime = chart.EndTime.addSecs(lastSecond);
        return true;
    }

    QStringList asked;
    int lastSecond = 0; ///< added to each range
};

/// A monitoring database, a configuration with templates that show little but the values, and the
/// definitions above, in a sandbox of its own.
class Site
{
public:
    Site()
    {
        observer().trouble = [](const QString &text) { troubles.append(text); };
        troubles.clear();
        program().gDataPath = program().gGraphDataPath = box.path() + u'/';
        gConfig().storedOutput = "%%app.path%%\\Out";
        gConfig().TOU_TOC = "REPORTS.HTM";
        gConfig().TOU_REPORT = "REPORT.HTM";
        gConfig().TOU_REP_Top = "TOP.HTM";
        gConfig().TOU_REP_TOC = "DEVLIST.HTM";
        gConfig().TOU_REP_Summary = "SUMMARY.HTM";
        gConfig().IMG_Format = "PNG";
        gConfig().CopyFileList = {"style.css"};
        addTemplate(gConfig().TIN_TOC, "toc.html", "<%%report.list%%>\n");
        addTemplate(gConfig().TIN_TOC_ReportItem, "tocitem.html",
                    "%%report.tempid%% %%report.id%% %%report.title%%");
        addTemplate(gConfig().TIN_REPORT, "report.html", "%%report.title%% %%report.date%%");
        addTemplate(gConfig().TIN_REP_TOC, "reptoc.html", "<%%device.list%%>\n");
        addTemplate(gConfig().TIN_REP_DeviceItem, "devitem.html",
                    "%%mach.muid%% %%mach.unmuid%% %%mach.name%% %%mach.desc%%");
        addTemplate(gConfig().TIN_REP_Top, "top.html", "%%report.title%% %%report.id%%");
        addTemplate(gConfig().TIN_REP_Summary, "summary.html", "<%%state.detail%%>\n");
        addTemplate(gConfig().TIN_STATE_Detail, "state.html",
                    "%%sample.name%% %%sample.csv%% %%report.daterange%%(%%detail.items%%)\n");
        addTemplate(gConfig().TIN_STATE_DetailItem, "staterow.html",
                    "%%sample.label%% %%successcount%% %%criticalcount%% %%successrate%%");
        addTemplate(gConfig().TIN_COUNT_Detail, "count.html",
                    "%%sample.name%% %%sample.scale%%(%%detail.items%%)\n");
        addTemplate(gConfig().TIN_COUNT_DetailItem, "countrow.html",
                    "%%sample.label%% %%sample.value%%");
        addTemplate(gConfig().TIN_DEV_Rep, "device.html",
                    "%%mach.name%% %%report.date%% %%report.time%%<%%dev.varblist%%>\n");
        addTemplate(gConfig().TIN_VARB_Item, "item.html",
                    "%%varb.name%% %%dev.graph%%[%%detail.list%%]\n");
        box.write("statechart.html", "%%chart.series1%%;%%chart.series2%%");
        box.write("countchart.html", "%%chart.series1%%");
        box.write("style.css", "b{}");
        box.write("transdot.gif", "GIF89a");
        box.write("ChartSelection.XML", reportFile);
        box.write("ChartDefs.XML", chartFile);
        box.write("ChartSchedules.XML", scheduleFile);
        writeTables(database, monitoringTables());
        definitions().LoadReportDefs();
    }

    RunResult run(RunChoice choice, RunHost *host = nullptr)
    {
        return runReports({{"{R-1}", "{R-2}"}, choice, mode}, host);
    }
    /// A page or CSV file of the output tree, its lines joined by "|".
    QString output(const QString &name) const
    {
        return QString::fromUtf8(box.read("Out/" + name))
            .trimmed()
            .replace("\r\n", "|")
            .remove('\n');
    }
    bool isThere(const QString &name) const { return QFile::exists(box.path("Out/" + name)); }
    bool lastRunMoved() const
    {
        return !box.read("ChartSelection.XML").contains("2024-03-31T10:00:00");
    }

    RunMode mode = RunMode::Scheduled;
    Sandbox box;
    LocalZone zone{"Europe/Berlin"};
    FrozenClock clock{"2024-04-01T13:14:15"};
    const QString database = box.path("VTRGData.MDB");
    QStringList &events = box.events;
    static inline QStringList troubles;

private:
    void addTemplate(QString &name, const char *file, const QByteArray &text)
    {
        name = file;
        box.write(name, text);
    }
};

} // namespace

class TestReportRunner : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesTheWholeTree()
    {
        Site site;
        Progress progress;
        observer().progress = [&](const Progress &now) { progress = now; };
        const RunResult result = site.run(RunChoice::Due);
        observer().progress = {};
        QVERIFY2(!result.failed(), qPrintable(site.box.status.join(u'\n')));
        QCOMPARE(result.reports, 1);
        QCOMPARE(progress.done, 6); // items that the database does not know, too
        QCOMPARE(progress.all, 6);
        QCOMPARE(result.chartsWithoutImage, 0);

        QCOMPARE(site.output("REPORTS.HTM"), "<|1 R2 Never scheduled|2 R1 Night of the change|>");
        QCOMPARE(site.output("style.css"), "b{}");
        QCOMPARE(site.output("R1/TOP.HTM"), "Night of the change R1");
        QCOMPARE(site.output("R1/DEVLIST.HTM"), "<|{M-2} M2 beta about it|{M-3} M3 Gamma about it|"
                                                "{M-1} M1 Älpha about it|>");
        QCOMPARE(site.output("R1/REPORT.HTM"), "Night of the change 2024-Apr-01");
        // Devices in the reverse of the report's order; Gamma has no samples. The summary's period
        // begins a second behind midnight, so the sample of the first instant is not in it.
        QCOMPARE(site.output("R1/SUMMARY.HTM"),
                 "<|Night of the change repsum.csv 31-Mar-2024 00:00 to 31-Mar-2024 05:59(|"
                 "Älpha 2 1 66.67|Gamma 0 0 n/a|beta 1 0 100.00|"
                 "<b>Total</b> <b>3</b> <b>1</b> <b>75.00</b>|) |>");
        QCOMPARE(site.output("R1/repsum.csv"),
                 R"("Sample","Success","Critial","Total","SuccessRate"|)"
                 R"("Älpha",2,1,3,66.6667|"Gamma",0,0,0,|"beta",1,0,1,100)");
        // The hour that the clocks skip is no bucket.
        QCOMPARE(
            site.output("R1/M1/2_detail.csv"),
            R"("Entry Name","Sample Name","Sample","Success","Critial","Total","SuccessRate","Start"|)"
            R"("Ping","Probe","Mar 31 - 00:00",1,1,2,50,"2024-03-31T00:00:00+01:00"|)"
            R"("Ping","Probe","Mar 31 - 01:00",0,0,0,0,"2024-03-31T01:00:00+01:00"|)"
            R"("Ping","Probe","Mar 31 - 03:00",1,0,1,100,"2024-03-31T03:00:00+02:00"|)"
            R"("Ping","Probe","Mar 31 - 04:00",0,0,0,0,"2024-03-31T04:00:00+02:00"|)"
            R"("Ping","Probe","Mar 31 - 05:00",1,0,1,100,"2024-03-31T05:00:00+02:00")");
        QCOMPARE(
            site.output("R1/M1/3_detail.csv"),
            R"("Entry Name","Sample Name","Sample","Scale","Value","Start"|)"
            R"("Latency","Probe","Mar 31 - 00:00","Milliseconds","","2024-03-31T00:00:00+01:00"|)"
            R"("Latency","Probe","Mar 31 - 01:00","Milliseconds","2.5","2024-03-31T01:00:00+01:00"|)"
            R"("Latency","Probe","Mar 31 - 03:00","Milliseconds","-2.5","2024-03-31T03:00:00+02:00"|)"
            R"("Latency","Probe","Mar 31 - 04:00","Milliseconds","","2024-03-31T04:00:00+02:00"|)"
            R"("Latency","Probe","Mar 31 - 05:00","Milliseconds","","2024-03-31T05:00:00+02:00")");

        QString page = site.output("R1/M1/DEVREP.HTM");
        static const QRegularExpression imageName("G[0-9A-Z]+\\.PNG");
        QStringList images;
        for (const QRegularExpressionMatch &match : imageName.globalMatch(page))
            images.append(match.captured());
        QCOMPARE(images.size(), 2);
        QCOMPARE(page.replace(imageName, "IMAGE"),
                 "Älpha 2024-Apr-01 13:14:15<|Ping IMAGE[|Ping 2_detail.csv "
                 "31-Mar-2024 00:00 to 31-Mar-2024 05:59(|Mar 31 - 00:00 1 1 50.00|"
                 "Mar 31 - 01:00 0 0 n/a|Mar 31 - 03:00 1 0 100.00|"
                 "Mar 31 - 04:00 0 0 n/a|Mar 31 - 05:00 1 0 100.00|"
                 "<b>Total</b> <b>3</b> <b>1</b> <b>75.00</b>|) |] |"
                 "Latency IMAGE[|Latency Milliseconds(|Mar 31 - 00:00 |Mar 31 - 01:00 2.50|"
                 "Mar 31 - 03:00 -2.50|Mar 31 - 04:00 |Mar 31 - 05:00 |) |] |>");
        for (const QString &image : images)
            QCOMPARE(QImage(site.box.path("Out/R1/M1/" + image)).size(), QSize(640, 390));
        QCOMPARE(site.output("R1/M1/" + images[0].replace(".PNG", ".HTM")), "1, ,1, ,1;1, ,0, ,0");
        QVERIFY(!site.isThere("R1/M9"));
        for (const char *image : {"DEVSUM.PNG", "OVERALL.PNG"})
            QVERIFY(!QImage(site.box.path(QString("Out/R1/") + image)).isNull());

        QVERIFY(site.lastRunMoved());
        QVERIFY(site.box.status.contains("Total Values: 10"));

        gConfig().CopyFileList = {"missing.css", "ChartDefs.XML"};
        const RunResult lossy = site.run(RunChoice::All);
        QVERIFY(lossy.failed() && lossy.failedReports == 0);
        QVERIFY(!site.isThere("ChartDefs.XML")); // configurations are not published
        for (const QStringList &told : {site.events, site.troubles, site.box.status})
            QCOMPARE(told.filter("Error copying template 'missing.css' [").size(), 1);
        gConfig().CopyFileList.clear();

        // Once more: the charts of the last run are gone, so that they do not pile up.
        site.mode = RunMode::Window;
        RangeHost host;
        QVERIFY(!site.run(RunChoice::All, &host).failed());
        // A range that reports share is asked for once.
        QCOMPARE(host.asked, QStringList("Night:Night of the change,Never scheduled"));
        QCOMPARE(site.box.names("Out/R1/M1").filter(imageName).size(), 2);
    }

    /// Of Älpha the report charts one of two global state items and one that is not global.
    void countsAllGlobalStateItems()
    {
        Site site;
        std::vector<AccessTable> tables = monitoringTables();
        auto &fields = tables[1].rows;
        fields.insert(
            fields.end(),
            {{13, 1, "Web", "", 21, -1}, {14, 1, "Disk", "", 21, 0}, {15, 1, "Fan", "", 21, 1}});
        auto &samples = tables[3].rows;
        samples.insert(samples.end(),
                       {{13, utc("2024-03-31T01:30:00"), 0, 0},
                        {13, utc("2024-03-31T01:31:00"), 0, 0},
                        {14, utc("2024-03-31T01:30:00"), 0, 0},
                        {31, utc("2024-03-31T01:30:00"), QVariant(), 0}}); // the sum is NULL
        writeTables(site.database, tables);
        site.box.write(
            "ChartSelection.XML",
            QByteArray(reportFile).replace("\"12\"/>", "\"12\"/><DATUM DataIDent=\"14\"/>"));
        site.box.write("tocitem.html",
                       "<a%%report.href%%>%%report.title%%</a> %%total.rate%%%%summary.href%%");
        site.box.write("report.html", "%%total.rate%% %%total.failed%%/%%total.tests%% "
                                      "%%total.troubled%%/%%total.silent%%/%%total.devices%%; "
                                      "%%overall.alt%%\n%%report.worst%%");
        site.box.write("staterow.html", "<a%%sample.href%%>%%sample.label%%</a> %%criticalcount%%");
        site.box.write("device.html", "%%dev.items%%:|%%dev.counted%%<%%dev.varblist%%>\n");
        site.box.write("item.html",
                       "%%varb.name%% (%%item.failed%%): %%item.note%%[%%detail.list%%]\n");
        site.box.write("countchart.html", "%%varb.unit%%; %%img.alt%%");
        QVERIFY(!site.run(RunChoice::Due).failed());

        QCOMPARE(site.output("R1/repsum.csv").section('|', 1),
                 R"("Älpha",2,3,5,40|"Gamma",0,1,1,0|"beta",1,0,1,100)");
        // The chart over time has the sample of the first second, too.
        QCOMPARE(site.output("R1/REPORT.HTM"),
                 "42.86 4/7 2/0/3; All global state items by time: "
                 "success rate 50.00 %, 4 of 8 tests failed"
                 "<a href=\"M3/DEVREP.HTM\">Gamma</a> 1|<a href=\"M1/DEVREP.HTM\">Älpha</a> 3");
        // The report that never ran leads nowhere.
        QCOMPARE(site.output("REPORTS.HTM"),
                 "<|<a>Never scheduled</a> |<a href=\"R1/REPORT.HTM\">Night of the change</a> "
                 "42.86 href=\"R1/SUMMARY.HTM\"|>");
        const QString page = site.output("R1/M1/DEVREP.HTM");
        QCOMPARE(page.section(" <b>3</b>", 0, 0),
                 "3:|<a href=\"DEVREP.HTM#item2\">Ping</a> 1|"
                 "<a>Web (not charted in this report)</a> 2|"
                 "<a>Fan (not charted in this report)</a> 0|<a><b>Total</b></a>");
        for (const char *item : {"|Ping (1): [", "|Latency (): [",
                                 "|Disk (1): Does not count: ", "<a>Mar 31 - 00:00</a>"})
            QVERIFY2(page.contains(item), qPrintable(page));
        QStringList counters;
        for (const QString &name : site.box.names("Out/R1/M1").filter(".HTM"))
            counters.append(site.output("R1/M1/" + name));
        QCOMPARE(
            counters.filter("ms;"),
            QStringList("ms; Of single samples: least -2.5 ms, greatest 4 ms. Of interval means: "
                        "least -2.5 ms, greatest 2.5 ms, mean 0 ms, 95th percentile -2.5 ms"));
    }
    void failsWithoutATemplate()
    {
        // a page, a row, a chart and the contents, and the status line that names it
        for (const auto &[name, line] :
             {std::pair("device.html", "Error generating TOC [Night of the change] [53] Error "
                                       "loading template 'device.html'"),
              {"countrow.html", "Error generating TOC [Night of the change] [321] "},
              {"statechart.html", "Error reading chart template 'statechart.html'"},
              {"tocitem.html", "Error generating master TOC [53] "}}) {
            Site site;
            QVERIFY(!site.run(RunChoice::All).failed());
            const auto pages = [&site, isToc = name == QString("tocitem.html")] {
                return isToc ? site.output("REPORTS.HTM")
                             : site.output("R1/SUMMARY.HTM") + site.output("R1/M1/DEVREP.HTM");
            };
            const QString before = pages();
            site.clock.advance(60'000);
            if (name == QString("countrow.html"))
                site.box.write(name, "");
            else
                QVERIFY(QFile::remove(site.box.path(name)));
            QVERIFY(site.run(RunChoice::All).failed());
            QVERIFY2(site.box.status.join(u'\n').contains(line), name);
            QCOMPARE(pages(), before);
        }
    }

    void staysInTheOutputFolder()
    {
        Site site;
        QVERIFY(QDir().mkpath(site.box.path("elsewhere")) &&
                QDir().mkpath(site.box.path("Out/R1")));
        QVERIFY(QFile::link(site.box.path("elsewhere"), site.box.path("Out/R1/M1")));
        QVERIFY(site.run(RunChoice::Due).failed());
        QVERIFY(site.box.names("elsewhere").isEmpty() && !site.isThere("R1/DEVLIST.HTM"));
        QVERIFY(!site.box.status.filter("/R1/M1/': it is a symbolic link").isEmpty());
    }

    /// New devices join by themselves; ticked ones and their order stay.
    void findsDevicesByRuleAtEachRun()
    {
        Site site;
        const QByteArray rules =
            "<RULE Device=\"*a\" Item=\"P*\"/><EXCEPT Device=\"beta\"/></CUSTOMREPORT>";
        QByteArray text = reportFile;
        site.box.write("ChartSelection.XML",
                       text.replace("<DEVICE MUID=\"{M-1}\"/></CUSTOMREPORT>", rules));
        definitions().LoadReportDefs();
        QVERIFY(!site.run(RunChoice::All).failed());
        QVERIFY(site.isThere("R2/M1/DEVREP.HTM") && site.isThere("R2/M3/DEVREP.HTM"));
        QVERIFY(!site.isThere("R2/M2/DEVREP.HTM") && !site.isThere("R2/M4/DEVREP.HTM"));
        std::vector<AccessTable> tables = monitoringTables();
        tables[0].rows.push_back({4, "{M-4}", "delta", ""});
        tables[1].rows.push_back({41, 4, "Ping", "", 21, 1});
        writeTables(site.database, tables);
        QVERIFY(!site.run(RunChoice::All).failed());
        QVERIFY(site.isThere("R2/M4/DEVREP.HTM") && !site.isThere("R1/M4/DEVREP.HTM"));
        // Without an answer the report fails: it would lack devices.
        QFile::remove(site.database);
        QVERIFY(site.run(RunChoice::All).failed());
    }

    void speaksEnglishInFilesForPrograms()
    {
        QLocale::setDefault(QLocale(QLocale::German));
        Site site;
        QVERIFY(!site.run(RunChoice::Due).failed());
        QLocale::setDefault(QLocale::c());
        QVERIFY(site.output("R1/M1/DEVREP.HTM").contains("|März 31 - 03:00 1 0 100.00|"));
        const QString csv = site.output("R1/M1/2_detail.csv");
        QVERIFY2(csv.contains("\"Mar 31 - 03:00\"") && !csv.contains("März"), qPrintable(csv));
    }

    void namesABrokenReportAndGoesOn()
    {
        Site site;
        const QByteArray next = "<CUSTOMREPORT ReportID=\"{R-2}\"";
        const QByteArray broken =
            "<CUSTOMREPORT ReportID=\"{R-0}\" ReportTitle=\"A broken one\" ChartID=\"{X}\"/>"
            "<CUSTOMREPORT ReportID=\"{R-E}\" ReportTitle=\"Empty\" ChartID=\"{C-1}\"/>";
        site.box.write("ChartSelection.XML", QByteArray(reportFile).replace(next, broken + next));
        observer().status = [&](const QString &line) {
            site.box.status.append(line);
            if (line == "Generating Report: [Never scheduled]")
                throw std::bad_alloc();
        };
        const RunResult result =
            runReports({{"{R-0}", "{R-E}", "{R-2}", "{R-1}"}, RunChoice::All, RunMode::Scheduled});
        QCOMPARE(result.reports, 4);
        QCOMPARE(result.failedReports, 3);
        QCOMPARE(result.error, QString());
        QCOMPARE(site.box.status.filter("Error Generating Report [3001] ").size(), 1);
        const QString error = "There is no chart definition '{X}' - Setting Chart Def.";
        QCOMPARE(site.box.status.filter("Error Generating Report [3265] " + error).size(), 1);
        QVERIFY(site.lastRunMoved());
        QVERIFY(site.isThere("R1/SUMMARY.HTM"));
        const std::vector<RunRecord> runs = runHistory().runs();
        QCOMPARE(runs.size(), size_t(1));
        QVERIFY(lastRecord(runs, "{R-2}")->error.contains("[7] Out of memory"));
        QVERIFY(lastRecord(runs, "{R-0}")->error.contains("'{X}'"));
        QCOMPARE(lastRecord(runs, "{R-1}")->result, ReportResult::Ok);
        const QString failed = "Report 'A broken one' failed: ";
        QCOMPARE(site.events.filter("1 " + failed).size(), 1);
        QCOMPARE(site.troubles.filter(failed).size(), 1);

        // The log hears of the same error once a day, standard error and history each time.
        site.clock.advance(3'600'000);
        runReports({{"{R-0}"}, RunChoice::All, RunMode::Scheduled});
        QCOMPARE(site.events.filter(failed).size(), 1);
        QCOMPARE(site.troubles.filter(failed).size(), 2);
        QCOMPARE(runHistory().runs().size(), size_t(2));
        site.clock.advance(24 * qint64(3'600'000));
        runReports({{"{R-0}"}, RunChoice::All, RunMode::Scheduled});
        QCOMPARE(site.events.filter(failed).size(), 2);
    }

    void failsWithoutAHistory()
    {
        Site site;
        site.box.write("RunHistory", "in the way");
        const RunResult result = site.run(RunChoice::Due);
        QVERIFY(result.failed() && result.failedReports == 0);
        for (const QStringList &told : {site.events, site.troubles})
            QCOMPARE(told.filter("Error saving run history [").size(), 1);
    }

    void citesTheTransparentImage()
    {
        Site site;
        // Folders stand where the images go, whose numbers depend on the tests before this one.
        for (const char *folder : {"Out/R1/M1", "Out/R1/M2", "Out/R1/M3"}) {
            for (int number = 1; number < 300; ++number)
                QDir().mkpath(site.box.path(
                    QString("%1/G%2.PNG").arg(folder, QString::number(number, 36).toUpper())));
        }
        site.box.write("item.html", "%%varb.name%% %%dev.graph%%[%%detail.list%%]%%img.alt%%\n");
        site.box.write("report.html", "%%report.note%%");
        const RunResult result = site.run(RunChoice::Due);
        QVERIFY(result.failed());
        QCOMPARE(site.events.filter("1 Report 'Night of the change' has 4 charts ").size(), 1);
        QCOMPARE(site.troubles.filter("Report 'Night of the change': no chart ").size(), 4);
        QCOMPARE(result.chartsWithoutImage, 4);
        const QString page = site.output("R1/M2/DEVREP.HTM");
        QVERIFY(page.contains("Ping ../../transdot.gif["));
        QVERIFY(page.contains("]This chart could not be drawn: "));
        QVERIFY(site.output("R1/REPORT.HTM")
                    .endsWith("4 charts could not be drawn; their values are in the tables."));
        const ReportRecord record = runHistory().runs().at(0).reports.at(0);
        QCOMPARE(record.result, ReportResult::Partial);
        QCOMPARE(QString("%1 %2 %3")
                     .arg(record.charts)
                     .arg(record.samples)
                     .arg(record.chartsWithoutImage),
                 "4 8 4");
        QVERIFY(record.error.isEmpty() && record.chartErrors.first().contains("Cannot replace"));
        QVERIFY(site.lastRunMoved());
    }

    void cancelsBetweenDevices()
    {
        Site site;
        site.box.write("tocitem.html", "%%report.title%%: %%report.lastnote%%");
        site.box.write("Out/R1/REPORT.HTM", "of an earlier run");
        observer().status = [&](const QString &line) {
            site.box.status.append(line);
            if (line.startsWith("Summarizing Gamma"))
                program().CancelRequested = true;
        };
        QVERIFY(site.run(RunChoice::Due).cancelled);
        QVERIFY(site.isThere("R1/DEVLIST.HTM") && site.isThere("R1/M2/DEVREP.HTM"));
        QVERIFY(!site.isThere("R1/M1/DEVREP.HTM") && !site.isThere("R1/SUMMARY.HTM"));
        QVERIFY(!site.lastRunMoved());
        QVERIFY(site.events.contains("6 4 Report AutoGraph execution cancelled."));
        QCOMPARE(site.box.status.last(), "Report run cancelled by user.");
        QCOMPARE(runHistory().runs().at(0).reports.at(0).result, ReportResult::Cancelled);
        QCOMPARE(site.output("REPORTS.HTM"),
                 "<|Never scheduled: |Night of the change: The last run was cancelled: new and old "
                 "pages are mixed.|>");

        QVERIFY(QFile::remove(site.database)); // a run that makes no page leaves them mixed
        QVERIFY(site.run(RunChoice::Due).failed());
        QVERIFY(site.output("REPORTS.HTM").endsWith("failed: new and old pages are mixed.|>"));
        // A report that is removed goes from the list at once.
        definitions().removeReportDefs({"{R-1}"});
        refreshReportList();
        QCOMPARE(site.output("REPORTS.HTM"), "<|Never scheduled: |>");
    }

    void tellsInTheMasterListHowReportsEnded()
    {
        Site site;
        site.box.write("tocitem.html",
                       "%%report.title%%: %%total.rate%%, %%report.lastrun%%, "
                       "%%report.lastresult%%, %%report.nextdue%%%%report.lastnote%%");
        site.box.write("Out/R1/REPORT.HTM", "of an earlier run");
        QStringList before;
        observer().status = [&](const QString &line) {
            if (line.startsWith("Generating TOC: ["))
                before.append(site.output("REPORTS.HTM"));
        };
        QVERIFY(!site.run(RunChoice::Due).failed());
        const QString never = "<|Never scheduled: , , , |Night of the change: ";
        QCOMPARE(before, QStringList(never + ", 2024-Mar-31 12:00, , now|>"));
        QCOMPARE(site.output("REPORTS.HTM"),
                 never + "75.00, 2024-Apr-01 13:14, ok, 2024-Apr-01 14:00|>");
        QCOMPARE(runHistory().runs().at(0).reports.at(0).dueSince, at("2024-03-31T13:00:00"));
        site.clock.advance(60'000);
        QCOMPARE(site.run(RunChoice::Due).reports, 0); // ran a moment ago

        // Without a database its old pages still stand; the list says that they are old.
        const QByteArray definitions = site.box.read("ChartSelection.XML");
        site.clock.advance(3'600'000);
        QVERIFY(QFile::remove(site.database));
        QVERIFY(site.run(RunChoice::Due).failed());
        QCOMPARE(site.output("REPORTS.HTM"),
                 never + "75.00, 2024-Apr-01 14:15, failed, nowThe last run failed: the "
                         "pages are those of an earlier run.|>");
        QVERIFY(site.isThere("R1/SUMMARY.HTM"));
        QCOMPARE(site.box.read("ChartSelection.XML"), definitions); // no later last run
        QVERIFY(!site.events.filter("1 Error opening database 'Provider=").isEmpty());
    }
    void countsAFailedSaveAsTrouble()
    {
        // From which status line on a file cannot be written any more, and what is said of it.
        const char *const cases[][3] = {
            {"Generating Summary: [", "ChartSelection.XML",
             "The time of the last run was not saved: Error saving report selections ["},
            {"Saving chart definitions.", "ChartDefs.XML", "Error saving chart definitions ["}};
        for (const auto &[line, file, error] : cases) {
            Site site;
            observer().status = [&, from = QString(line),
                                 name = QString(file)](const QString &shown) {
                if (shown.startsWith(from) && QFile::remove(site.box.path(name)))
                    site.box.write(name + "/in the way", "x");
            };
            RangeHost host;
            const RunResult result = site.run(RunChoice::Due, &host);
            QCOMPARE(result.failedReports, 0);
            QCOMPARE(result.reports, 1);
            QVERIFY2(result.error.startsWith(error), qPrintable(result.error));
            QCOMPARE(runHistory().runs().front().error, result.error);
            QCOMPARE(site.events.filter(QLatin1String("1 ") + error).size(), 1);
        }
    }

    /// Of the definition files a run writes the dates: what it knows no more than it can read, and
    /// what somebody writes into them meanwhile, stays.
    void leavesDefinitionsAsTheyAre()
    {
        Site site;
        const QByteArray broken =
            "<CUSTOMREPORT ReportID='{B}' ReportTitle='Bad'><SCHEDULE/><SCHEDULE/>"
            "</CUSTOMREPORT><!-- why -->";
        const QByteArray future = "2099-03-31T10:00:00";
        QByteArray reports = reportFile;
        reports.replace("<CUSTOMREPORT ReportID=\"{R-2}",
                        broken + "<CUSTOMREPORT ReportID=\"{R-2}");
        reports.replace("2024-03-31T10:00:00", future);
        QByteArray charts = chartFile;
        charts.replace("</C", "<CHART ChartID='{C-0}' Include='0'/></C");
        const QByteArray added = "<!-- added -->\r\n";
        site.box.write("ChartSelection.XML", reports);
        site.box.write("ChartDefs.XML", charts);
        observer().status = [&](const QString &line) {
            site.box.status.append(line);
            if (line.startsWith("Generating Report: ["))
                site.box.write("ChartSelection.XML", added + site.box.read("ChartSelection.XML"));
        };
        RangeHost host;
        host.lastSecond = -1;
        const RunResult result = site.run(RunChoice::Due, &host);
        QCOMPARE(result.reports, 1);
        QCOMPARE(result.failedReports, 0);
        const QString error = "Error reading definitions: The key '' is in use already";
        QVERIFY2(result.error.startsWith(error) && result.error.contains("number 2 'Bad' of"),
                 qPrintable(result.error));
        QCOMPARE(runHistory().runs().front().error, result.error);
        QCOMPARE(site.box.status.filter(error).size(), 1);
        QCOMPARE(site.events.filter("1 " + error).size(), 1);
        QCOMPARE(site.events.filter("2 Warning: the report 'Night of the change'").size(), 1);
        QCOMPARE(site.box.read("ChartSelection.XML"),
                 added + reports.replace(future, "2024-04-01T11:14:15"));
        QCOMPARE(site.box.read("ChartDefs.XML"), charts.replace("03:59:59", "03:59:58"));
    }

    /// Beside the pages; an unwritable one is a loss, but not that of the pages.
    void makesAPdfBesideThePages()
    {
        Site site;
        RangeHost host;
        QByteArray reports = reportFile;
        site.box.write("ChartSelection.XML",
                       reports.replace("ReportID=\"{R-1}\"", "ReportID=\"{R-1}\" Pdf=\"1\""));
        QVERIFY(!site.run(RunChoice::All, &host).failed());
        QVERIFY(site.box.read("Out/R1/REPORT.PDF").startsWith("%PDF-1.4"));
        QVERIFY(!site.isThere("R2/REPORT.PDF"));
        gConfig().PdfReports = true;
        QFile::remove(site.box.path("Out/R1/REPORT.PDF"));
        QDir().mkdir(site.box.path("Out/R1/REPORT.PDF"));
        const RunResult result = site.run(RunChoice::All, &host);
        QCOMPARE(result.failedReports, 0);
        QCOMPARE(result.chartsWithoutImage, 1);
        QVERIFY(site.troubles.join('|').contains("REPORT.PDF"));
        QVERIFY(site.isThere("R2/REPORT.PDF"));
    }
    void makesAPdfAlone()
    {
        Site site;
        const QString path = site.box.path("a.pdf");
        const RunOrder order{{"{R-1}"}, RunChoice::All, RunMode::OnRequest, path};
        QCOMPARE(runReports(order).exitStatus(), 0);
        QVERIFY(site.box.read("a.pdf").startsWith("%PDF-1.4"));
        QVERIFY(!site.isThere("") && !site.lastRunMoved());
        QVERIFY(runHistory().runs().empty());
        QVERIFY(site.troubles.isEmpty());
        const RunOrder nowhere{{"{R-1}"}, RunChoice::All, RunMode::OnRequest, path + "/b.pdf"};
        QCOMPARE(runReports(nowhere).exitStatus(), 1);
        QVERIFY(site.troubles.join('|').contains("b.pdf"));
    }
    void beginsNoRunWithABrokenFile()
    {
        Site site;
        const QByteArray broken = "<CHARTDEFS>\n<CHART\n</CHARTDEFS>";
        site.box.write("ChartDefs.XML", broken);
        const RunResult result = site.run(RunChoice::Due);
        QCOMPARE(result.reports, 0);
        QVERIFY(result.failed());
        QVERIFY(!site.lastRunMoved());
        QCOMPARE(site.box.read("ChartDefs.XML"), broken);
        QVERIFY(!site.isThere(""));
        QVERIFY(runHistory().runs().front().error.contains("ChartDefs.XML:3:"));
        QVERIFY(site.events.last().contains("ChartDefs.XML:3:"));
    }
};

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    TestReportRunner test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_ReportRunner.moc"
