#include "../support/Sandbox.h"
#include "core/Clock.h"
#include "core/Error.h"
#include "core/HostSettings.h"
#include "core/StartUp.h"
#include "core/platform/EventLog.h"
#include "core/platform/Processes.h"

#include <QProcess>
#include <QSettings>
#include <QTest>

namespace {

const QString presentFile = QStringLiteral("VantrelV6.Config");
const QString olderFile = QStringLiteral("VantrelV5.Config");
const QString factoryFile = QStringLiteral("VantrelV6.Config.FAC");

QStringList events;

} // namespace

/// What the tool takes from the monitoring product, its own configuration, and the command line.
class TestSettings : public QObject
{
    Q_OBJECT

    std::unique_ptr<Sandbox> sandbox;
    QTemporaryDir settingsStore;

    QString defaultFolder() const { return sandbox->path(QStringLiteral("VTRDataRoot")); }

    void writeProduct(const QByteArray &attributes)
    {
        sandbox->write(presentFile, "<Product " + attributes + "/>");
    }

private Q_SLOTS:
    void initTestCase()
    {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settingsStore.path());
        setEventObserver([](int eventId, EventType type, const QString &message) {
            events.append(QStringLiteral("%1/%2 %3").arg(eventId).arg(int(type)).arg(message));
        });
    }
    void init()
    {
        sandbox = std::make_unique<Sandbox>();
        events.clear();
    }
    void cleanup() { sandbox.reset(); }

    void olderProductFileIsCarriedOver()
    {
        const QByteArray older = "<Old DataPath=\"/older\"><!-- kept --><Other x=\"1\"/></Old>";
        sandbox->write(olderFile, older);
        sandbox->write(factoryFile, "<New DataPath=\"/factory\"/>");
        QCOMPARE(GetDataPath(), u"/older");
        QCOMPARE(sandbox->read(olderFile), older);
        const QByteArray carried = sandbox->read(presentFile);
        QVERIFY(carried.contains("<!-- kept -->") && carried.contains("<Other x=\"1\""));

        // From then on the present file counts.
        sandbox->write(olderFile, "<Old DataPath=\"/changed\"/>");
        resetHostSettings();
        QCOMPARE(GetDataPath(), u"/older");
    }

    void factoryProductFileIsCarriedOver()
    {
        sandbox->write(factoryFile, "<New DataPath=\"/factory\"/>");
        QCOMPARE(GetDataPath(), u"/factory");
        QVERIFY(sandbox->read(presentFile).contains("DataPath=\"/factory\""));
    }

    void productFileThatCannotBeReadGivesDefaults_data()
    {
        QTest::addColumn<QByteArray>("bytes"); // null: no file
        QTest::newRow("missing") << QByteArray();
        QTest::newRow("malformed") << QByteArray("<Product DataPath=\"/x\"");
    }
    void productFileThatCannotBeReadGivesDefaults()
    {
        QFETCH(QByteArray, bytes);
        if (!bytes.isNull())
            sandbox->write(presentFile, bytes);
        gUseClientCursor = gGraphDataGroups = true;
        gCommandTimeout = 1;
        QCOMPARE(GetDataPath(), defaultFolder());
        QCOMPARE(GetGraphDataPath(), defaultFolder());
        QCOMPARE(gCommandTimeout, 60);
        QCOMPARE(gConnectionTimeout, 30);
        QVERIFY(!gUseClientCursor && !gGraphDataDSN && !gGraphDataSQL && !gGraphDataGroups);
        QCOMPARE(events.size(), 2);
        QVERIFY2(events[0].startsWith(u"6/2 Error reading the product configuration"),
                 qPrintable(events[0]));
    }

    void connectionSettings_data()
    {
        QTest::addColumn<QByteArray>("attributes");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const char *attributes, const char *expected) {
            QTest::newRow(name) << QByteArray(attributes) << QString::fromLatin1(expected);
        };
        row("none", "", "cursor 0 dsn 0 sql 0 60/30 groups 0 ''");
        row("all",
            "UseClientCursor='-1' GraphDataSQL='1' GraphDataDSN='2x' GraphDataCommandTimeout='90' "
            "GraphDataConnectionTimeout='7.5' GraphDataGroups='1' GraphDataSQLConnect='Server=x'",
            "cursor 1 dsn 1 sql 1 90/8 groups 1 'Server=x'");
        row("no numbers",
            "UseClientCursor='yes' GraphDataCommandTimeout='abc' "
            "GraphDataConnectionTimeout=''",
            "cursor 0 dsn 0 sql 0 0/0 groups 0 ''");
        row("SQL without text", "GraphDataSQL='1'", "cursor 0 dsn 0 sql 0 60/30 groups 0 ''");
        row("DSN with blanks", "GraphDataDSN='1' GraphDataSQL='1' GraphDataSQLConnect='  '",
            "cursor 0 dsn 0 sql 0 60/30 groups 0 ''");
        row("text without a flag", "GraphDataSQLConnect='Server=x'",
            "cursor 0 dsn 0 sql 0 60/30 groups 0 ''");
        row("beyond 32 bits", "GraphDataCommandTimeout='1e10' UseClientCursor='1'",
            "cursor 1 dsn 0 sql 0 60/30 groups 0 ''");
    }
    void connectionSettings()
    {
        QFETCH(QByteArray, attributes);
        writeProduct(attributes);
        gSQLConnect = QStringLiteral("stale");
        GetGraphDataPath();
        const QString actual = QStringLiteral("cursor %1 dsn %2 sql %3 %4/%5 groups %6 '%7'")
                                   .arg(int(gUseClientCursor))
                                   .arg(int(gGraphDataDSN))
                                   .arg(int(gGraphDataSQL))
                                   .arg(gCommandTimeout)
                                   .arg(gConnectionTimeout)
                                   .arg(int(gGraphDataGroups))
                                   .arg(gSQLConnect);
        QTEST(actual, "expected");
    }

    void blankFoldersMeanTheDefault()
    {
        writeProduct("DataPath='   ' GraphDataPath=''");
        QCOMPARE(GetDataPath(), defaultFolder());
        QCOMPARE(GetGraphDataPath(), defaultFolder());
        QVERIFY(!folderExists(defaultFolder()));
        SetDataPath(QString());
        QVERIFY(folderExists(defaultFolder()));
    }

    void foldersAreReadOnce()
    {
        writeProduct("DataPath='/one'");
        QCOMPARE(GetDataPath(), u"/one");
        writeProduct("DataPath='/two'");
        QCOMPARE(GetDataPath(), u"/one");
        const QString given = sandbox->path(QStringLiteral("given"));
        SetDataPath(given);
        QCOMPARE(GetDataPath(), given);
        QVERIFY(folderExists(given));
    }

    void folderThatCannotBeCreatedIsLogged()
    {
        sandbox->write(QStringLiteral("file"), "x");
        const QString path = sandbox->path(QStringLiteral("file/data"));
        SetGraphDataPath(path);
        QCOMPARE(GetGraphDataPath(), path);
        QCOMPARE(events.size(), 1);
        QVERIFY2(events[0].startsWith(QStringLiteral("6/2 Error creating folder '%1' [").arg(path)),
                 qPrintable(events[0]));
    }

#ifndef Q_OS_WIN // tests/windows has the registry
    void productFolderComesFromItsSettings()
    {
        const QString installed = sandbox->path(QStringLiteral("installed"));
        {
            QSettings store(QSettings::NativeFormat, QSettings::UserScope,
                            QStringLiteral("Orlek INC"), QStringLiteral("TestProduct"));
            store.setValue(QStringLiteral("AppPath"), installed);
        }
        sandbox->write(QStringLiteral("installed/") + presentFile, "<P DataPath='/installed'/>");
        QCOMPARE(GetProductKey(), u"VantrelV6");
        SetProductKey(QStringLiteral("TestProduct"));
        QCOMPARE(GetAppPath(), installed);
        QCOMPARE(GetDataPath(), u"/installed");
    }
#endif

    void configurationOutlivesItsText()
    {
        clsGrapherConfig config;
        config.SetXMLConfig(QStringLiteral(
            "<VTRGRAPHER PTH_Output='%%app.path%%\\Reports' PTH_Config='%%APP.PATH%%\\x' "
            "TIN_TOC='Ä &amp; \"b\"' TOU_DEV_SUM_IMAGE='DEVSUM.PNG' IMG_Width='800.5' Unknown='1'>"
            "<COPYFILE Name='a.css'/><GROUP><COPYFILE/></GROUP><OTHER/></VTRGRAPHER>"));
        QCOMPARE(config.PTH_Output(), sandbox->path() + QLatin1String("\\Reports"));
        QCOMPARE(config.PTH_Config(), u"%%APP.PATH%%\\x");
        QCOMPARE(config.IMG_Width, 800);
        QCOMPARE(config.IMG_Height, 390);
        QCOMPARE(config.CopyFileList, QStringList({QStringLiteral("a.css"), QString()}));

        const QString text = config.XMLConfig();
        QVERIFY(text.startsWith(u"<?xml version='1.0' encoding='UTF-8'?>\n<VTRGRAPHER "));
        QVERIFY(text.contains(u"PTH_Output=\"%%app.path%%\\Reports\" PTH_Config="));
        QStringList names;
        for (const QString &word : text.section(u'>', 1, 1).split(u' ')) {
            if (word.contains(u"=\""))
                names.append(word.section(u'=', 0, 0));
        }
        QCOMPARE(names.join(u' '),
                 u"PTH_Output PTH_Config PTH_Template TIN_TOC TIN_TOC_ReportItem TIN_REPORT "
                 u"TIN_REP_TOC TIN_REP_DeviceItem TIN_REP_Top TIN_REP_Summary TIN_STATE_Detail "
                 u"TIN_STATE_DetailItem TIN_COUNT_Detail TIN_COUNT_DetailItem TIN_DEV_Rep "
                 u"TIN_VARB_Item TOU_TOC TOU_REPORT TOU_REP_Top TOU_REP_TOC TOU_REP_Summary "
                 u"TOU_DEV_SUM_IMAGE IMG_Format IMG_Width IMG_Height");
        config.SetXMLConfig(text); // twice into the same object
        QCOMPARE(config.XMLConfig(), text);
    }

    void missingAttributesKeepTheirProperties()
    {
        clsGrapherConfig config;
        config.TIN_TOC = QStringLiteral("toc");
        config.IMG_Width = 1000;
        config.CopyFileList = QStringList(QStringLiteral("old"));
        config.SetXMLConfig(QStringLiteral("<VTRGRAPHER TIN_REPORT='r'/>"));
        QCOMPARE(config.TIN_TOC, u"toc");
        QCOMPARE(config.TIN_REPORT, u"r");
        QCOMPARE(config.IMG_Width, 640);
        QCOMPARE(config.CopyFileList, QStringList());
    }

    void firstStartMakesTheConfiguration()
    {
        const QString working = QStringLiteral("VTRGConfigV6.XML");
        sandbox->write(QStringLiteral("VTRGConfigV6.FAC"), "<VTRGRAPHER TIN_TOC='factory'/>");
        loadGrapherConfig();
        QCOMPARE(gConfig->TIN_TOC, u"factory");
        QVERIFY(sandbox->read(working).contains("TIN_TOC=\"factory\""));
        gConfig->TIN_TOC = QStringLiteral("mine");
        saveGrapherConfig();
        loadGrapherConfig();
        QCOMPARE(gConfig->TIN_TOC, u"mine");
        QCOMPARE(configurationFolder(), NormalizeFolder(QString()));
    }

    void brokenConfigurationIsAnError_data()
    {
        QTest::addColumn<QByteArray>("bytes"); // null: no file
        QTest::addColumn<int>("number");
        QTest::addColumn<QString>("place");
        QTest::newRow("missing") << QByteArray() << int(FileNotFound) << QStringLiteral(".FAC");
        QTest::newRow("malformed") << QByteArray("<VTRGRAPHER>\n<") << int(InvalidFileFormat)
                                   << QStringLiteral("VTRGConfigV6.XML:2:");
        QTest::newRow("number") << QByteArray("<VTRGRAPHER IMG_Width='1e10'/>") << int(Overflow)
                                << QStringLiteral("VTRGConfigV6.XML:IMG_Width");
    }
    void brokenConfigurationIsAnError()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, place);
        if (!bytes.isNull())
            sandbox->write(QStringLiteral("VTRGConfigV6.XML"), bytes);
        try {
            loadGrapherConfig();
            QFAIL("no error");
        } catch (const Error &error) {
            QTEST(error.number, "number");
            QVERIFY2(error.description.contains(place), error.what());
        }
    }

    void commandLine_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<bool>("unattended");
        QTest::addColumn<QString>("folder"); // null: the product's; "/" for the separator
        const QString none;
        const auto row = [](const char *line, bool unattended, const QString &folder) {
            QTest::newRow(line) << QString::fromLatin1(line) << unattended << folder;
        };
        const auto text = [](const char *folder) { return QString::fromLatin1(folder); };
        row("", false, none);
        row("/AUTO", true, none);
        row("/auto", true, none);
        row("/AUTO/AUTO", true, none);
        row("  \"/AUTO\"  ", true, none);
        row("AUTO", false, none);
        row("/DBPATH = c:\\data", false, text("C:\\DATA") + pathSeparator);
        row("/AUTO /DBPATH=\"D:\\Monitor Data\"", true, text("D:\\MONITOR DATA") + pathSeparator);
        row("/DBPATH=c:\\data\\ /auto", true, text("C:\\DATA\\"));
        row("/dbpath=x/y", false, text("X") + pathSeparator);
        row("/DBPATH=a /DBPATH=b", false, text("B") + pathSeparator);
        row("DBPATH=a", false, text("A") + pathSeparator);
        row("/DBPATH=a=b", false, text("A=B") + pathSeparator);
        row("/OTHER=a /=b /DBPATH", false, none);
        row("/DBPATHX=a", false, none);
        row("/DBPATH=", false, text("program"));
    }
    void commandLine()
    {
        QFETCH(QString, line);
        QFETCH(bool, unattended);
        QFETCH(QString, folder);
        const QString data = sandbox->path(QStringLiteral("data"));
        const QString graphs = sandbox->path(QStringLiteral("graphs"));
        writeProduct(QStringLiteral("DataPath='%1' GraphDataPath='%2'").arg(data, graphs).toUtf8());
        gCommandLine = line;
        gAutoMode = !unattended;
        InitGrapher();
        QCOMPARE(gAutoMode, unattended);
        if (folder.isNull())
            folder = data + pathSeparator;
        else if (folder == u"program")
            folder = sandbox->path() + pathSeparator;
        QCOMPARE(gDataPath, folder);
        QCOMPARE(gGraphDataPath, graphs + pathSeparator);
        QVERIFY(folderExists(data) && folderExists(graphs));
        QVERIFY(gCmdParams.empty());
        QCOMPARE(events, unattended ? QStringList(QStringLiteral(
                                          "6/4 Vantrel Automated Graphing Report started..."))
                                    : QStringList());
    }

    void finishIsLoggedOnce()
    {
        logRunFinished();
        logRunFinished();
        QCOMPARE(events,
                 QStringList(QStringLiteral("6/4 Vantrel Automated Graphing Report finished...")));
    }

#ifndef Q_OS_WIN
    void countsProcessesByTheirImage()
    {
        const QString name = QStringLiteral("tst%1").arg(QCoreApplication::applicationPid());
        QVERIFY(QFile::copy(QStringLiteral("/bin/sleep"), sandbox->path(name)));
        QCOMPARE(platform::countProcesses(name), 0);
        QProcess one;
        QProcess two;
        one.start(sandbox->path(name), {QStringLiteral("60")});
        two.start(sandbox->path(name), {QStringLiteral("60")});
        QVERIFY(one.waitForStarted() && two.waitForStarted());
        QCOMPARE(platform::countProcesses(name), 2);
        QVERIFY(QFile::remove(sandbox->path(name))); // as when a program is rebuilt while it runs
        QCOMPARE(platform::countProcesses(name), 2);
        for (QProcess *process : {&one, &two}) {
            process->kill();
            QVERIFY(process->waitForFinished());
        }
        QCOMPARE(platform::countProcesses(name), 0);
        QVERIFY(platform::countProcesses(platform::ownImageName()) >= 1);
    }
#endif

    void statusWaitsForTheStart()
    {
        gStartupDone = false;
        ShowStatus(QStringLiteral("early"));
        gStartupDone = true;
        ShowStatus(QStringLiteral("late"));
        QCOMPARE(sandbox->status, QStringList(QStringLiteral("late")));
    }
};

QTEST_GUILESS_MAIN(TestSettings)
#include "tst_settings.moc"
