#include "../support/Sandbox.h"
#include "definitions/DefinitionStores.h"

#include <QTest>

namespace {

const QString chartsFile = QStringLiteral("ChartDefs.XML");
const QString schedulesFile = QStringLiteral("ChartSchedules.XML");
const QString reportsFile = QStringLiteral("ChartSelection.XML");

/// One of the three stores, so that what they have in common is tested on each.
struct Store
{
    QString file;
    QByteArray root;
    QByteArray child;
    QByteArray id;
    void (*load)();
    std::optional<Error> (*save)();
    QStringList (*ids)();
    QString loading;
    QString saving;
    QString loadError; ///< empty: silent
    QString saveError;
};

template <typename T, auto Id>
QStringList idsOf(const Collection<T> &definitions)
{
    QStringList ids;
    for (const auto &definition : definitions)
        ids.append((*definition).*Id);
    return ids;
}

const Store chartStore{chartsFile,
                       "CHARTDEFS",
                       "CHART",
                       "ChartID",
                       LoadChartDefs,
                       SaveChartDefs,
                       [] { return idsOf<clsGraphDef, &clsGraphDef::ChartID>(gChartDefs); },
                       QStringLiteral("Loading chart definitions."),
                       QStringLiteral("Saving chart definitions."),
                       QStringLiteral("Error loading chart definitions ["),
                       QStringLiteral("Error saving chart definitions [")};
const Store scheduleStore{
    schedulesFile,
    "SCHEDULES",
    "SCHEDULE",
    "ScheduleID",
    LoadScheduleDefs,
    SaveScheduleDefs,
    [] { return idsOf<clsScheduleDef, &clsScheduleDef::ScheduleID>(gScheduleDefs); },
    QStringLiteral("Loading schedule definitions."),
    QStringLiteral("Saving schedule definitions."),
    QString(),
    QStringLiteral("Error saving schedule definitions [")};
const Store reportStore{reportsFile,
                        "REPORTDEFINITIONS",
                        "CUSTOMREPORT",
                        "ReportID",
                        LoadReportDefs,
                        SaveReportDefs,
                        [] { return idsOf<clsReportDef, &clsReportDef::ReportID>(gReportDefs); },
                        QStringLiteral("Loading report selections."),
                        QStringLiteral("Saving report definition."),
                        QStringLiteral("Error loading report selections ["),
                        QStringLiteral("Error saving report selections [")};

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
        QTest::addColumn<const Store *>("store");
        QTest::newRow("charts") << &chartStore;
        QTest::newRow("schedules") << &scheduleStore;
        QTest::newRow("reports") << &reportStore;
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
        QCOMPARE(store->ids(), QStringList({QStringLiteral("c"), QStringLiteral("a"),
                                            QStringLiteral("b")})); // equal titles stay in order
        store->save();
        QCOMPARE(sandbox->status, QStringList({store->loading, store->saving}));
        const QByteArray saved = sandbox->read(store->file);
        store->load();
        store->save();
        QCOMPARE(sandbox->read(store->file), saved);
        QCOMPARE(sandbox->names(), QStringList(store->file));
    }

    void missingFileIsEmpty_data() { eachStore(); }
    void missingFileIsEmpty()
    {
        QFETCH(const Store *, store);
        sandbox->write(store->file, content(*store, "a"));
        store->load();
        QFile::remove(sandbox->path(store->file));
        store->load();
        QCOMPARE(store->ids(), QStringList());
        store->save();
        QCOMPARE(sandbox->status, QStringList({store->loading, store->loading, store->saving}));
        QCOMPARE(sandbox->read(store->file), '<' + store->root + " />\n");
        QCOMPARE(sandbox->names(), QStringList(store->file));
    }

    void malformedFileIsEmptyAndKept_data()
    {
        QTest::addColumn<const Store *>("store");
        QTest::addColumn<QByteArray>("bytes");
        for (const Store *store : {&chartStore, &scheduleStore, &reportStore}) {
            const QByteArray good = content(*store, "ab");
            QTest::addRow("%s cut", store->root.constData()) << store << good.chopped(9);
            QTest::addRow("%s empty", store->root.constData()) << store << QByteArray();
            QTest::addRow("%s no xml", store->root.constData()) << store << QByteArray("hello");
            QTest::addRow("%s zeros", store->root.constData()) << store << QByteArray(4096, '\0');
        }
    }
    void malformedFileIsEmptyAndKept()
    {
        QFETCH(const Store *, store);
        QFETCH(QByteArray, bytes);
        sandbox->write(store->file, bytes);
        store->load();
        QCOMPARE(store->ids(), QStringList());
        QCOMPARE(sandbox->status, QStringList(store->loading));
        QCOMPARE(sandbox->read(store->file), bytes);
        store->save();
        QCOMPARE(sandbox->read(store->file + QLatin1String(".bad")), bytes);
        QCOMPARE(sandbox->read(store->file), '<' + store->root + " />\n");
        // From then on the file is the program's own.
        store->save();
        QCOMPARE(sandbox->read(store->file + QLatin1String(".bad")), bytes);
    }

    void duplicateEndsTheLoad_data() { eachStore(); }
    void duplicateEndsTheLoad()
    {
        QFETCH(const Store *, store);
        const QByteArray bytes = content(*store, "caAb");
        sandbox->write(store->file, bytes);
        store->load();
        QCOMPARE(store->ids(), QStringList({QStringLiteral("c"), QStringLiteral("a")}));
        if (store->loadError.isEmpty()) {
            QCOMPARE(sandbox->status, QStringList(store->loading));
        } else {
            QCOMPARE(sandbox->status.size(), 2);
            const QString line = sandbox->status[1];
            QVERIFY2(line.startsWith(store->loadError + QLatin1String("457] ")), qPrintable(line));
            QVERIFY2(line.contains(u"'A'") && line.contains(u"number 3"), qPrintable(line));
        }
        store->save();
        QCOMPARE(sandbox->read(store->file + QLatin1String(".bad")), bytes);
    }

    void failedSaveIsShown_data() { eachStore(); }
    void failedSaveIsShown()
    {
        QFETCH(const Store *, store);
        sandbox->write(store->file + QLatin1String("/in the way"), "x");
        store->save();
        QCOMPARE(sandbox->status.size(), 2);
        QVERIFY2(sandbox->status[1].startsWith(store->saveError + QLatin1String("70] ")),
                 qPrintable(sandbox->status[1]));
        QCOMPARE(sandbox->names(), QStringList(store->file));
    }

    void unreadableFileIsNeverLost_data() { eachStore(); }
    void unreadableFileIsNeverLost()
    {
        QFETCH(const Store *, store);
        const QByteArray bytes = content(*store, "ab").chopped(5);
        sandbox->write(store->file, bytes);
        sandbox->write(store->file + QLatin1String(".bad/in the way"), "x");
        store->load();
        store->save();
        QVERIFY2(sandbox->status.constLast().startsWith(store->saveError),
                 qPrintable(sandbox->status.constLast()));
        QCOMPARE(sandbox->read(store->file), bytes);
    }

    void factoryFileIsCopiedOnce_data()
    {
        QTest::addColumn<const Store *>("store");
        QTest::addColumn<QString>("factory");
        QTest::newRow("charts") << &chartStore << QStringLiteral("ChartDefs.FAC");
        QTest::newRow("schedules") << &scheduleStore << QStringLiteral("ChartSchedules.FAC");
    }
    void factoryFileIsCopiedOnce()
    {
        QFETCH(const Store *, store);
        QFETCH(QString, factory);
        sandbox->write(factory, content(*store, "fg"));
        store->load();
        QCOMPARE(store->ids().size(), 2);
        QCOMPARE(sandbox->read(store->file), content(*store, "fg"));
        QFile::remove(sandbox->path(store->file));
        store->load();
        QCOMPARE(store->ids(), QStringList());
        QVERIFY(!fileExists(sandbox->path(store->file)));
        resetDefinitions();
        store->load();
        QCOMPARE(store->ids().size(), 2);
    }

    void factoryFileNeverReplaces()
    {
        sandbox->write(QStringLiteral("ChartDefs.FAC"), content(chartStore, "fg"));
        sandbox->write(chartsFile, content(chartStore, "a"));
        LoadChartDefs();
        QCOMPARE(chartStore.ids(), QStringList(QStringLiteral("a")));
    }

    void reportsHaveNoFactoryFile()
    {
        sandbox->write(QStringLiteral("ChartSelection.FAC"), content(reportStore, "fg"));
        LoadReportDefs();
        QCOMPARE(reportStore.ids(), QStringList());
        QVERIFY(!fileExists(sandbox->path(reportsFile)));
    }

    void titlesGiveTheOrder()
    {
        sandbox->write(chartsFile, "<CHARTDEFS><CHART ChartID='1' Title='b'/><GROUP><CHART "
                                   "ChartID='2' Title='A'/></GROUP><CHART ChartID='3' Title='c'/>"
                                   "</CHARTDEFS>");
        sandbox->write(reportsFile, "<R><CUSTOMREPORT ReportID='1' ReportTitle='b'/><CUSTOMREPORT "
                                    "ReportID='2' ReportTitle='A'/></R>");
        sandbox->write(schedulesFile, "<S><SCHEDULE ScheduleID='1' ScheduleName='b'/><SCHEDULE "
                                      "ScheduleID='2' ScheduleName='A'/></S>");
        LoadChartDefs();
        LoadReportDefs();
        LoadScheduleDefs();
        QCOMPARE(chartStore.ids().join(u','), u"2,1,3");
        QCOMPARE(reportStore.ids().join(u','), u"2,1");
        QCOMPARE(scheduleStore.ids().join(u','), u"1,2");
        QCOMPARE(gChartDefs.find(QStringLiteral("3"))->ChartTitle, u"c");
        SaveChartDefs();
        const QByteArray saved = sandbox->read(chartsFile);
        QVERIFY(saved.indexOf("\"A\"") < saved.indexOf("\"b\""));
        QVERIFY(saved.indexOf("\"b\"") < saved.indexOf("\"c\""));
    }

    void excludedChartsVanish()
    {
        sandbox->write(chartsFile, "<CHARTDEFS><CHART ChartID='1' Include='0'/><CHART ChartID='2' "
                                   "Include='1'/><CHART ChartID='3' Include='no'/></CHARTDEFS>");
        LoadChartDefs();
        QCOMPARE(chartStore.ids(), QStringList(QStringLiteral("2")));
        SaveChartDefs();
        QCOMPARE(sandbox->read(chartsFile).count("<CHART "), 1);
        QVERIFY(!fileExists(sandbox->path(chartsFile + QLatin1String(".bad"))));
    }

    void overflowKeepsTheFile()
    {
        sandbox->write(schedulesFile, content(scheduleStore, "a"));
        LoadScheduleDefs();
        gScheduleDefs.at(0)->RescheduleTime = 40000;
        SaveScheduleDefs();
        QVERIFY2(sandbox->status.constLast().startsWith(u"Error saving schedule definitions [6] "),
                 qPrintable(sandbox->status.constLast()));
        QCOMPARE(sandbox->read(schedulesFile), content(scheduleStore, "a"));
    }

    void filesAreFoundWithoutCase()
    {
        sandbox->write(QStringLiteral("chartdefs.xml"), content(chartStore, "a"));
        LoadChartDefs();
        SaveChartDefs();
        QCOMPARE(chartStore.ids().size(), 1);
        QCOMPARE(sandbox->names(), QStringList(QStringLiteral("chartdefs.xml")));
    }

    void otherEncodingsAreRead_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const QByteArray utf8 = "<C><CHART ChartID='1' Title='\xC3\xA4'/></C>";
        QTest::newRow("UTF-8 with mark") << QByteArray("\xEF\xBB\xBF") + utf8;
        QTest::newRow("Windows-1252")
            << QByteArray("<?xml version='1.0' encoding='windows-1252'?><C><CHART ChartID='1' "
                          "Title='\xE4'/></C>");
        QByteArray wide("\xFF\xFE", 2);
        for (const char16_t unit : QString::fromUtf8(utf8).toStdU16String()) {
            wide += char(unit & 0xFF);
            wide += char(unit >> 8);
        }
        QTest::newRow("UTF-16") << wide;
    }
    void otherEncodingsAreRead()
    {
        QFETCH(QByteArray, bytes);
        sandbox->write(chartsFile, bytes);
        LoadChartDefs();
        QCOMPARE(gChartDefs.size(), 1);
        QCOMPARE(gChartDefs.at(0)->ChartTitle, QStringLiteral("ä"));
    }

    void deepNestingDoesNoHarm()
    {
        const int depth = 300'000;
        QByteArray text;
        for (int i = 0; i < depth; ++i)
            text += "<a>";
        text += "<CHART ChartID='1'/>";
        for (int i = 0; i < depth; ++i)
            text += "</a>";
        sandbox->write(chartsFile, text);
        LoadChartDefs();
        QCOMPARE(chartStore.ids(), QStringList(QStringLiteral("1")));
    }
};

QTEST_GUILESS_MAIN(TestDefinitionStores)
#include "tst_definitionstores.moc"
