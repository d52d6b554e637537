#include "base/Clock.h"
#include "base/Error.h"
#include "definitions/Definitions.h"
#include "definitions/Usage.h"
#include "support/Rows.h"
#include "support/Sandbox.h"

#include <QRegularExpression>
#include <QStringEncoder>

namespace {
/// One of the three stores, so that what they have in common is tested on each.
struct Store
{
    QString file;
    QByteArray root;
    QByteArray child;
    QByteArray id;
    QString what;   ///< in the status lines
    QString saving; ///< the same in that of a save
    void (*load)();
    void (*save)();
    QString (*ids)();
};

template <typename T>
QString idsOf(const Collection<T> &definitions, QString T::*id)
{
    QString ids;
    for (const auto &definition : definitions)
        ids += (*definition).*id;
    return ids;
}

const Store charts = {"ChartDefs.XML",
                      "CHARTDEFS",
                      "CHART",
                      "ChartID",
                      "chart definitions",
                      "chart definitions",
                      [] { definitions().LoadChartDefs(); },
                      [] { definitions().SaveChartDefs(); },
                      [] { return idsOf(definitions().gChartDefs, &clsGraphDef::ChartID); }};
const Store schedules = {
    "ChartSchedules.XML",
    "SCHEDULES",
    "SCHEDULE",
    "ScheduleID",
    "schedule definitions",
    "schedule definitions",
    [] { definitions().LoadScheduleDefs(); },
    [] { definitions().SaveScheduleDefs(); },
    [] { return idsOf(definitions().gScheduleDefs, &clsScheduleDef::ScheduleID); }};
const Store reports = {"ChartSelection.XML",
                       "REPORTDEFINITIONS",
                       "CUSTOMREPORT",
                       "ReportID",
                       "report selections",
                       "report definition",
                       [] { definitions().LoadReportDefs(); },
                       [] { definitions().SaveReportDefs(); },
                       [] { return idsOf(definitions().gReportDefs, &clsReportDef::ReportID); }};

/// A file with one element for each letter, named by it.
QByteArray content(const Store &store, const QByteArray &letters)
{
    QByteArray text = '<' + store.root + ">\n";
    for (const char letter : letters)
        text += "  <" + store.child + ' ' + store.id + "=\"" + letter +
                "\" StateFile=\"\" CountFile=\"\"/>\n";
    return text + "</" + store.root + '>';
}

} // namespace

class TestDefinitions : public QObject
{
    Q_OBJECT

    std::unique_ptr<Sandbox> sandbox;

    void eachStore()
    {
        const Rows<const Store *> row("store");
        row("charts", &charts);
        row("schedules", &schedules);
        row("reports", &reports);
    }

private Q_SLOTS:
    void init() { sandbox = std::make_unique<Sandbox>(); }
    void cleanup() { sandbox.reset(); }

    void loadsAndSaves_data() { eachStore(); }
    void loadsAndSaves()
    {
        QFETCH(const Store *, store);
        sandbox->write(store->file, content(*store, "cab"));
        store->load();
        QCOMPARE(store->ids(), "cab"); // equal titles stay in order
        store->save();
        QCOMPARE(sandbox->status,
                 QStringList({"Loading " + store->what + ".", "Saving " + store->saving + "."}));
        const QByteArray saved = sandbox->read(store->file);
        store->load();
        store->save();
        QCOMPARE(sandbox->read(store->file), saved);

        QFile::remove(sandbox->path(store->file));
        store->load();
        QCOMPARE(store->ids(), "");
        store->save();
        QCOMPARE(sandbox->read(store->file), '<' + store->root + " />\n");
        QCOMPARE(sandbox->names(), QStringList({"Backup", store->file}));
    }

    void fileThatCannotBeReadIsNeverReplaced_data() { eachStore(); }
    void fileThatCannotBeReadIsNeverReplaced()
    {
        QFETCH(const Store *, store);
        const QByteArray good = content(*store, "ab");
        for (const QByteArray &bytes : {good.chopped(9), QByteArray(), QByteArray(4096, '\0'),
                                        QByteArray(good).replace(store->root, "OTHER")}) {
            sandbox->write(store->file, bytes);
            sandbox->status.clear();
            sandbox->restart();
            store->load();
            QCOMPARE(store->ids(), "");
            QCOMPARE(sandbox->status, QStringList("Loading " + store->what + "."));
            QVERIFY(
                definitions().fileErrors().value(0).startsWith(sandbox->path(store->file) + ":"));
            QVERIFY_EXCEPTION_THROWN(store->save(), Error);
            QVERIFY2(sandbox->status.last().startsWith("Error saving " + store->what + " [321] "),
                     qPrintable(sandbox->status.last()));
            QCOMPARE(sandbox->read(store->file), bytes);
            QCOMPARE(sandbox->names(), QStringList(store->file));
        }
    }

    void editorsAndRunsLeaveItAlone()
    {
        sandbox->write(charts.file, "<OTHER/>");
        sandbox->write(reports.file, "<OTHER/>");
        QVERIFY_EXCEPTION_THROWN(definitions().store(std::make_shared<clsGraphDef>()), Error);
        QVERIFY_EXCEPTION_THROWN(definitions().removeReportDefs({"a"}), Error);
        QVERIFY_EXCEPTION_THROWN(definitions().saveLastRunDates("a", {"s"}, QDateTime()), Error);
        QVERIFY_EXCEPTION_THROWN(definitions().saveChartPeriods({std::make_shared<clsGraphDef>()}),
                                 Error);
        QCOMPARE(sandbox->read(charts.file) + sandbox->read(reports.file), "<OTHER/><OTHER/>");
    }

    void brokenDefinitionIsPassedOverAndKept_data() { eachStore(); }
    void brokenDefinitionIsPassedOverAndKept()
    {
        QFETCH(const Store *, store);
        sandbox->write(store->file, content(*store, "caAb"));
        store->load();
        QCOMPARE(store->ids(), "cab");
        const bool silent = store == &schedules;
        QCOMPARE(sandbox->status.size(), silent ? 1 : 2);
        const QString error = "Error loading " + store->what + " [457] The key 'A'";
        const QString line = sandbox->status.last();
        QVERIFY2(silent || (line.startsWith(error) && line.contains("number 3")), qPrintable(line));
        QVERIFY(definitions().errors().value(0).contains("number 3"));
        QCOMPARE(definitions().fileErrors(), QStringList());
        store->save();
        QCOMPARE(sandbox->read(store->file).count('<' + store->child + ' '), 4);
        QVERIFY(sandbox->read(store->file).contains(store->id + "=\"A\""));
    }

    void factoryFileIsCopiedOnce_data() { eachStore(); }
    void factoryFileIsCopiedOnce()
    {
        QFETCH(const Store *, store);
        const QString expected = store == &reports ? "" : "fg"; // reports have none
        sandbox->write(store->file.chopped(3) + "FAC", content(*store, "fg"));
        store->load();
        QCOMPARE(store->ids(), expected);
        QCOMPARE(fileExists(sandbox->path(store->file)), !expected.isEmpty());
        QFile::remove(sandbox->path(store->file));
        store->load();
        QCOMPARE(store->ids(), "");
        QVERIFY(!fileExists(sandbox->path(store->file)));
        sandbox->write(store->file, content(*store, "a"));
        sandbox->restart();
        store->load();
        QCOMPARE(store->ids(), "a");
    }

    void savesKeepWhatTheyDoNotKnow()
    {
        const QByteArray kept = "<CHART ChartID='1' Include='0' Note='x'/>";
        sandbox->write(charts.file,
                       "<?xml version='1.0' encoding='windows-1252'?><!-- head -->\n"
                       "<CHARTDEFS><!-- b -->\n<CHART ChartID='2' Title='b' Own='\xE4'/>" +
                           kept +
                           "<CHART ChartID='4' Frequency='9e9'/><CHART Title='c'/>"
                           "<!-- a --><CHART ChartID='3' Title='a'/>\n"
                           "</CHARTDEFS>");
        const auto shape = [this] { // ids and comments in order
            QByteArray text;
            static const QRegularExpression part("ChartID=\"([^\"]*)|<!-- (\\w+)");
            for (const auto &match : part.globalMatch(sandbox->read(charts.file)))
                text += (match.captured(1) + match.captured(2)).left(4).toUtf8() + ' ';
            return text;
        };
        definitions().LoadChartDefs();
        QCOMPARE(definitions().gChartDefs.size(), 3);
        const QByteArray given = definitions().gChartDefs.at(2)->ChartID.left(4).toUtf8();
        auto changed = std::make_shared<clsGraphDef>(*definitions().gChartDefs.find("2"));
        changed->ChartTitle = "B";
        definitions().store(changed);
        QCOMPARE(shape(), "head b 2 1 4 a 3 ");
        definitions().SaveChartDefs(); // in the order of titles, and with the id that was given
        QCOMPARE(shape(), "head a 3 b 2 1 4 " + given + ' ');
        const QByteArray saved = sandbox->read(charts.file);
        QVERIFY(saved.contains("Title=\"B\" Own=\"\xC3\xA4\""));
        QVERIFY(saved.contains("Include=\"0\" Note=\"x\"") && saved.contains("encoding=\"UTF-8\""));

        // What somebody adds by hand stays, what is removed here goes.
        sandbox->write(charts.file, QByteArray(saved).replace("</CHARTDEFS>",
                                                              "<CHART ChartID='5'/></CHARTDEFS>"));
        definitions().gChartDefs.remove("3");
        definitions().SaveChartDefs();
        QCOMPARE(shape(), "head a b 2 1 4 " + given + " 5 ");
    }

    void storesAReportPartByPart()
    {
        sandbox->write(reports.file,
                       "<REPORTDEFINITIONS>\n<CUSTOMREPORT ReportID='R' Own='1'>"
                       "<SCHEDULE ScheduleID='S' Own='2' LastRunDate='2024-03-01T06:00:00-"
                       "00:00'/><!-- c --><DEVICE MUID='M'>"
                       "<DATUM DataIDent='1' Own='3'/><DATUM DataIDent='2'/></DEVICE>"
                       "<RULE Own='4' Item='I'/><RULE Item='J'/>"
                       "<DEVICE MUID='N'/><Other/></CUSTOMREPORT>\n"
                       "<CUSTOMREPORT ReportID='Q'/></REPORTDEFINITIONS>");
        definitions().LoadReportDefs();
        auto changed = std::make_shared<clsReportDef>(); // loaded before S ran
        changed->ReportID = "r";
        for (const char *id : {"T", "s"}) {
            changed->ReportSchedules.add(id, std::make_shared<clsReportSchedule>());
            changed->ReportSchedules.find(id)->ScheduleID = id;
        }
        changed->ReportDevices.add("n", std::make_shared<clsReportDeviceDef>());
        changed->ReportDevices.find("n")->MUID = "n";
        changed->ReportDevices.add(
            "M", std::make_shared<clsReportDeviceDef>(
                     *definitions().gReportDefs.find("R")->ReportDevices.find("M")));
        changed->ReportDevices.find("M")->DataItems.remove("k2");
        changed->Rules.resize(2);
        changed->Rules[0] = {true, "D"};
        changed->Rules[1].item = "I";
        definitions().store(changed);
        definitions().removeReportDefs({"q"});
        const QByteArray date = " LastRunDate=\"1899-12-30T00:00:00-00:00\"";
        const LocalZone zone("UTC");
        QCOMPARE(
            sandbox->read(reports.file).simplified(),
            "<REPORTDEFINITIONS> <CUSTOMREPORT ReportID=\"r\" Own=\"1\" ReportTitle=\"New Report "
            "Definition\" ChartID=\"\" OutputFile=\"\" OutputTemplate=\"\"> <SCHEDULE "
            "ScheduleID=\"T\"" +
                date +
                " /> <SCHEDULE ScheduleID=\"s\" Own=\"2\" "
                "LastRunDate=\"2024-03-01T06:00:00-00:00\" /> <DEVICE MUID=\"n\" /> <!-- c --> "
                "<DEVICE MUID=\"M\"> <DATUM DataIDent=\"1\" "
                "Own=\"3\" /> </DEVICE> <EXCEPT Device=\"D\" /> <RULE Own=\"4\" Item=\"I\" /> "
                "<Other /> </CUSTOMREPORT> </REPORTDEFINITIONS>");
    }

    void datesAreWrittenAndNothingElse_data()
    {
        const QString text =
            "<?xml version='1.0'?>\r\n<REPORTDEFINITIONS><!-- ä -->\n"
            "<CUSTOMREPORT  ReportTitle='ä' ReportID=\"r\" Own='>'>\n"
            "<SCHEDULE ScheduleID='S'\n\tLastRunDate = '%1'/>%3<SCHEDULE%2"
            " ScheduleID='T'/></CUSTOMREPORT>\n<CUSTOMREPORT ReportID='R'><SCHEDULE "
            "ScheduleID='S'/></CUSTOMREPORT></REPORTDEFINITIONS>\n";
        const QString old = text.arg("2001-01-01T00:00:00-00:00", "");
        const QString date = "2024-03-01T06:00:00-00:00";
        const QString now = text.arg(date, " LastRunDate=\"" + date + '"');
        // Somebody adds a schedule and a remark while the run works.
        const QString added = "<SCHEDULE ScheduleID='U' LastRunDate=''/><!-- ü -->";
        const Rows<QByteArray, QByteArray, QByteArray> row("before", "meanwhile", "after");
        const auto add = [&](const char *name, auto encoded) {
            row(name, encoded(old.arg("")), encoded(old.arg(added)), encoded(now.arg(added)));
        };
        add("UTF-8", [](const QString &each) { return each.toUtf8(); });
        add("byte-order mark", [](const QString &each) { return "\xEF\xBB\xBF" + each.toUtf8(); });
        add("Windows-1252", [](const QString &each) { return each.toLatin1(); });
        for (const auto encoding : {QStringConverter::Utf16LE, QStringConverter::Utf16BE}) {
            add(encoding == QStringConverter::Utf16LE ? "UTF-16" : "UTF-16, big end first",
                [&](const QString &each) {
                    return QByteArray(QStringEncoder(encoding)(QChar(QChar::ByteOrderMark) + each));
                });
        }
    }
    void datesAreWrittenAndNothingElse()
    {
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, meanwhile);
        const LocalZone zone("UTC");
        sandbox->write(reports.file, before);
        definitions().LoadReportDefs();
        sandbox->write(reports.file, meanwhile);
        definitions().saveLastRunDates("R", {"s", "T"},
                                       wallDateTime(QDate(2024, 3, 1), QTime(6, 0)));
        QTEST(sandbox->read(reports.file), "after");
    }

    void takesChangesBack()
    {
        const LocalZone zone("UTC");
        const QByteArray before =
            "<REPORTDEFINITIONS>\n"
            "  <!-- of the night --><CUSTOMREPORT ReportID=\"a\" Own=\"x\" ChartID=\"c\">"
            "<SCHEDULE ScheduleID=\"s\" LastRunDate=\"2024-01-01T00:00:00-00:00\"/><OTHER/>"
            "</CUSTOMREPORT>\n"
            "  <CUSTOMREPORT ReportID=\"b\"/>\n</REPORTDEFINITIONS>";
        sandbox->write("ChartSelection.XML", before);
        sandbox->write("ChartDefs.XML", "<CHARTDEFS><CHART ChartID=\"c\" Own=\"1\"/></CHARTDEFS>");
        definitions().LoadReportDefs();
        definitions().LoadChartDefs();
        const auto text = [this] {
            QString all = QString::fromUtf8(sandbox->read("ChartSelection.XML") +
                                            sandbox->read("ChartDefs.XML"));
            return all.remove(QRegularExpression("[\\s]+"));
        };
        QString wanted = text();
        const Reports users = reportsWithChart(definitions().gReportDefs, "C");
        QCOMPARE(usageText(users), "used by 1 report: No Title");
        definitions().store(withChart(users, "d"));
        definitions().removeChartDef("c");
        const qsizetype mark = definitions().changeCount();
        definitions().store(std::make_shared<clsReportDef>(
            duplicate(*definitions().gReportDefs.find("a"), definitions().gReportDefs)));
        definitions().removeReportDefs({"a", "b"});
        QCOMPARE(definitions().gReportDefs.size(), 1);
        definitions().takeBack(mark);
        QCOMPARE(reports.ids(), "ab");
        QVERIFY(definitions().gChartDefs.isEmpty());
        definitions().saveLastRunDates("a", {"s"}, QDateTime({2024, 5, 1}, {}, Qt::UTC));
        definitions().takeBack(0);
        QVERIFY(text().contains("2024-05-01"));
        QCOMPARE(text(), wanted.replace("2024-01-01", "2024-05-01")); // a run is nobody's change
        QCOMPARE(definitions().gReportDefs.find("a")->ChartID, "c");
    }

    void keepsAndRestoresVersions()
    {
        const LocalZone zone("UTC");
        FrozenClock clock(QStringLiteral("2024-05-01T12:00:00"));
        const QString file = definitions().files().value(0);
        sandbox->write("ChartSelection.XML",
                       "<REPORTDEFINITIONS><CUSTOMREPORT ReportID=\"a\"><SCHEDULE ScheduleID=\"s\" "
                       "LastRunDate=\"2024-01-01T00:00:00-00:00\"/></CUSTOMREPORT>"
                       "</REPORTDEFINITIONS>");
        definitions().LoadReportDefs();
        const auto rename = [](const QString &title) {
            const auto changed =
                std::make_shared<clsReportDef>(*definitions().gReportDefs.find("a"));
            changed->ReportTitle = title;
            definitions().store(changed);
        };
        for (int i = 1; i <= 7; ++i) {
            clock.advance(i < 3 ? 0 : 60'000); // also within a millisecond
            rename(QString("title %1").arg(i));
        }
        const auto day = QDateTime({2024, 4, 1}, {}, Qt::UTC);
        definitions().saveLastRunDates("a", {"s"}, day);
        const std::vector<FileVersion> versions = versionsOf(file);
        QCOMPARE(versions.size(), size_t(versionsKept));
        QCOMPARE(versions.front().replaced, now());
        QVERIFY(readFile(versions.front().path).contains("title 6"));
        QCOMPARE(definitions().whatRestoring(file, versions.back().path),
                 QStringList("changes “title 2”"));
        definitions().restoreVersion(file, versions.back().path);
        QCOMPARE(definitions().gReportDefs.find("a")->ReportTitle, "title 2");
        QCOMPARE(definitions().gReportDefs.find("a")->ReportSchedules.at(0)->LastRunDate, day);
        QVERIFY(readFile(versionsOf(file).front().path).contains("title 7"));

        sandbox->write("ChartSelection.XML", "<REPORTDEFINITIONS"); // a hand has damaged it
        definitions().restoreVersion(file, versionsOf(file).front().path);
        QCOMPARE(reports.ids(), "a");
        sandbox->write("Backup/bad.XML", "<OTHER/>");
        const QByteArray before = sandbox->read("ChartSelection.XML");
        QVERIFY_EXCEPTION_THROWN(
            definitions().restoreVersion(file, sandbox->path("Backup/bad.XML")), Error);
        QCOMPARE(sandbox->read("ChartSelection.XML"), before);
    }
};

QTEST_GUILESS_MAIN(TestDefinitions)
#include "tst_Definitions.moc"
