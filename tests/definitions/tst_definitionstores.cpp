#include "definitions/DefinitionStores.h"
#include "support/Rows.h"
#include "support/Sandbox.h"

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
    std::optional<Error> (*save)();
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

const Store charts = {
    "ChartDefs.XML", "CHARTDEFS",         "CHART",
    "ChartID",       "chart definitions", "chart definitions",
    LoadChartDefs,   SaveChartDefs,       [] { return idsOf(gChartDefs, &clsGraphDef::ChartID); }};
const Store schedules = {"ChartSchedules.XML",
                         "SCHEDULES",
                         "SCHEDULE",
                         "ScheduleID",
                         "schedule definitions",
                         "schedule definitions",
                         LoadScheduleDefs,
                         SaveScheduleDefs,
                         [] { return idsOf(gScheduleDefs, &clsScheduleDef::ScheduleID); }};
const Store reports = {"ChartSelection.XML",
                       "REPORTDEFINITIONS",
                       "CUSTOMREPORT",
                       "ReportID",
                       "report selections",
                       "report definition",
                       LoadReportDefs,
                       SaveReportDefs,
                       [] { return idsOf(gReportDefs, &clsReportDef::ReportID); }};

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

class TestDefinitionStores : public QObject
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
    void cleanup()
    {
        resetDefinitions();
        sandbox.reset();
    }

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
        QCOMPARE(sandbox->names(), QStringList(store->file));

        QFile::remove(sandbox->path(store->file));
        store->load();
        QCOMPARE(store->ids(), "");
        store->save();
        QCOMPARE(sandbox->read(store->file), '<' + store->root + " />\n");
        QCOMPARE(sandbox->names(), QStringList(store->file));
    }

    void malformedFileIsEmptyAndKept_data() { eachStore(); }
    void malformedFileIsEmptyAndKept()
    {
        QFETCH(const Store *, store);
        const QByteArray cut = content(*store, "ab").chopped(9);
        for (const QByteArray &bytes : {cut, QByteArray(), QByteArray(4096, '\0')}) {
            sandbox->write(store->file, bytes);
            sandbox->status.clear();
            resetDefinitions();
            store->load();
            QCOMPARE(store->ids(), "");
            QCOMPARE(sandbox->status, QStringList("Loading " + store->what + "."));
            QCOMPARE(sandbox->read(store->file), bytes);
            store->save();
            QCOMPARE(sandbox->read(store->file + ".bad"), bytes);
            QCOMPARE(sandbox->read(store->file), '<' + store->root + " />\n");
            store->save(); // from then on the file is the program's own
            QCOMPARE(sandbox->read(store->file + ".bad"), bytes);
        }
    }

    void duplicateEndsTheLoad_data() { eachStore(); }
    void duplicateEndsTheLoad()
    {
        QFETCH(const Store *, store);
        const QByteArray bytes = content(*store, "caAb");
        sandbox->write(store->file, bytes);
        store->load();
        QCOMPARE(store->ids(), "ca");
        const bool silent = store == &schedules;
        QCOMPARE(sandbox->status.size(), silent ? 1 : 2);
        const QString error = "Error loading " + store->what + " [457] The key 'A'";
        const QString line = sandbox->status.last();
        QVERIFY2(silent || (line.startsWith(error) && line.contains("number 3")), qPrintable(line));
        QVERIFY(definitionFileErrors().value(0).contains("number 3"));
        store->save();
        QCOMPARE(sandbox->read(store->file + ".bad"), bytes);
    }

    void failedSaveIsShown_data() { eachStore(); }
    void failedSaveIsShown()
    {
        QFETCH(const Store *, store);
        sandbox->write(store->file + "/in the way", "x");
        store->save();
        QCOMPARE(sandbox->status.size(), 2);
        QVERIFY2(sandbox->status[1].startsWith("Error saving " + store->what + " [70] "),
                 qPrintable(sandbox->status[1]));
        QCOMPARE(sandbox->names(), QStringList(store->file));
    }

    void unreadableFileIsNeverLost_data() { eachStore(); }
    void unreadableFileIsNeverLost()
    {
        QFETCH(const Store *, store);
        const QByteArray bytes = content(*store, "ab").chopped(5);
        sandbox->write(store->file, bytes);
        sandbox->write(store->file + ".bad/in the way", "x");
        store->load();
        store->save();
        QVERIFY2(sandbox->status.last().startsWith("Error saving " + store->what),
                 qPrintable(sandbox->status.last()));
        QCOMPARE(sandbox->read(store->file), bytes);
    }

    void factoryFileIsCopiedOnce_data() { eachStore(); }
    void factoryFileIsCopiedOnce()
    {
        QFETCH(const Store *, store);
        const QString expected = store == &reports ? "" : "fg"; // reports have none
        const QByteArray factory = content(*store, "fg");
        sandbox->write(store->file.chopped(3) + "FAC", factory);
        store->load();
        QCOMPARE(store->ids(), expected);
        QCOMPARE(fileExists(sandbox->path(store->file)), !expected.isEmpty());
        QFile::remove(sandbox->path(store->file));
        store->load();
        QCOMPARE(store->ids(), "");
        QVERIFY(!fileExists(sandbox->path(store->file)));
        resetDefinitions();
        store->load();
        QCOMPARE(store->ids(), expected);
        sandbox->write(store->file, content(*store, "a"));
        resetDefinitions();
        store->load();
        QCOMPARE(store->ids(), "a");
    }

    void titlesGiveTheOrder()
    {
        sandbox->write(charts.file, "<C><CHART ChartID='1' Title='b'/><GROUP><CHART ChartID='2' "
                                    "Title='A'/></GROUP><CHART ChartID='3' Title='c'/></C>");
        sandbox->write(reports.file, "<R><CUSTOMREPORT ReportID='1' ReportTitle='b'/>"
                                     "<CUSTOMREPORT ReportID='2' ReportTitle='A'/></R>");
        sandbox->write(schedules.file, "<S><SCHEDULE ScheduleID='1' ScheduleName='b'/>"
                                       "<SCHEDULE ScheduleID='2' ScheduleName='A'/></S>");
        LoadChartDefs();
        LoadReportDefs();
        LoadScheduleDefs();
        QCOMPARE(charts.ids(), "213");
        QCOMPARE(reports.ids(), "21");
        QCOMPARE(schedules.ids(), "12");
        SaveChartDefs();
        const QByteArray saved = sandbox->read(charts.file);
        QVERIFY(saved.indexOf("\"A\"") < saved.indexOf("\"b\""));
    }

    void excludedChartsVanish()
    {
        sandbox->write(charts.file, "<C><CHART ChartID='1' Include='0'/><CHART ChartID='2' "
                                    "Include='1'/><CHART ChartID='3' Include='no'/></C>");
        LoadChartDefs();
        QCOMPARE(charts.ids(), "2");
        SaveChartDefs();
        QCOMPARE(sandbox->read(charts.file).count("<CHART "), 1);
        QVERIFY(!fileExists(sandbox->path(charts.file + ".bad")));
    }

    void overflowKeepsTheFile()
    {
        sandbox->write(schedules.file, content(schedules, "a"));
        LoadScheduleDefs();
        gScheduleDefs.at(0)->RescheduleTime = 40000;
        SaveScheduleDefs();
        QVERIFY2(sandbox->status.last().startsWith("Error saving schedule definitions [6] "),
                 qPrintable(sandbox->status.last()));
        QCOMPARE(sandbox->read(schedules.file), content(schedules, "a"));
    }
};

QTEST_GUILESS_MAIN(TestDefinitionStores)
#include "tst_definitionstores.moc"
