#include "base/OneLine.h"
#include "config/HostSettings.h"
#include "config/StartUp.h"
#include "support/Errors.h"
#include "support/Sandbox.h"

#include <QSettings>
#include <QTest>

namespace {
const QString presentFile = "VantrelV6.Config";
const QString defaults = "cursor 0 dsn 0 sql 0 60/30 groups 0 ";

} // namespace

/// What the tool takes from the monitoring product, its own configuration, and the command line.
class TestSettings : public QObject
{
    Q_OBJECT

    std::unique_ptr<Sandbox> sandbox;
    QTemporaryDir settingsStore;

    QString defaultFolder() const { return sandbox->path("VTRDataRoot"); }

    void writeProduct(const QByteArray &attributes)
    {
        sandbox->write(presentFile, "<Product " + attributes + "/>");
    }
    static QString connection()
    {
        return QString::asprintf("cursor %d dsn %d sql %d %d/%d groups %d ",
                                 program().gUseClientCursor, program().gGraphDataDSN,
                                 program().gGraphDataSQL, program().gCommandTimeout,
                                 program().gConnectionTimeout, program().gGraphDataGroups) +
               program().gSQLConnect;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settingsStore.path());
    }
    void init() { sandbox = std::make_unique<Sandbox>(); }
    void cleanup() { sandbox.reset(); }

    void productFileOfAnotherNameIsCarriedOver()
    {
        sandbox->write("VantrelV6.Config.FAC", "<New DataPath=\"/factory\"/>");
        QCOMPARE(GetDataPath(), "/factory");
        QVERIFY(sandbox->read(presentFile).contains("DataPath=\"/factory\""));

        // An older version's file goes before the factory's, and is left as it is.
        QFile::remove(sandbox->path(presentFile));
        const QByteArray older = "<Old DataPath=\"/older\"><!-- kept --><Other x=\"1\"/></Old>";
        sandbox->write("VantrelV5.Config", older);
        sandbox->restart();
        QCOMPARE(GetDataPath(), "/older");
        QCOMPARE(sandbox->read("VantrelV5.Config"), older);
        const QByteArray carried = sandbox->read(presentFile);
        QVERIFY(carried.contains("<!-- kept -->") && carried.contains("<Other x=\"1\""));
#ifndef Q_OS_WIN // it may hold a password
        QVERIFY(!(QFile::permissions(sandbox->path(presentFile)) &
                  (QFile::ReadGroup | QFile::ReadOther)));
#endif

        // From then on the present file counts.
        sandbox->write("VantrelV5.Config", "<Old DataPath=\"/changed\"/>");
        sandbox->restart();
        QCOMPARE(GetDataPath(), "/older");
    }

    void missingProductFileGivesDefaults()
    {
        program().gUseClientCursor = program().gGraphDataGroups = true;
        program().gCommandTimeout = 1;
        QCOMPARE(GetDataPath(), defaultFolder());
        QCOMPARE(GetGraphDataPath(), defaultFolder());
        QCOMPARE(connection(), defaults);
        QCOMPARE(sandbox->events.size(), 2);
        QVERIFY2(sandbox->events[0].startsWith("6 2 Error reading the product configuration"),
                 qPrintable(sandbox->events[0]));
    }

    void productFileThatCannotBeReadIsAnError()
    {
        for (const QString &name :
             {presentFile, QString("VantrelV5.Config"), presentFile + ".FAC"}) {
            sandbox->write(name, "<P DataPath='/x'\n<");
            const Error error = errorOf([] { GetDataPath(); });
            QVERIFY2(error.description.startsWith(sandbox->path(name) + ":2:"), error.what());
            QCOMPARE(errorOf([] { GetGraphDataPath(); }).number, int(InvalidFileFormat));
            QFile::remove(sandbox->path(name));
            QVERIFY(!fileExists(sandbox->path(presentFile)));
        }
        QVERIFY(QDir().mkpath(sandbox->path(presentFile)));
        QVERIFY(errorOf([] { GetDataPath(); }).description.contains(presentFile));
    }

    void connectionSettings()
    {
        const auto read = [this](const QByteArray &attributes) {
            writeProduct(attributes);
            sandbox->restart();
            program().gSQLConnect = "stale";
            GetGraphDataPath();
            return connection();
        };
        QCOMPARE(read("UseClientCursor='-1' GraphDataSQL='1' GraphDataDSN='2x' "
                      "GraphDataCommandTimeout='90' GraphDataConnectionTimeout='7.5' "
                      "GraphDataGroups='1' GraphDataSQLConnect='Server=x'"),
                 "cursor 1 dsn 1 sql 1 90/8 groups 1 Server=x");
        QCOMPARE(read("UseClientCursor='yes' GraphDataCommandTimeout='abc' "
                      "GraphDataConnectionTimeout=''"),
                 "cursor 0 dsn 0 sql 0 0/0 groups 0 ");
        for (const char *useless :
             {"", "GraphDataSQL='1'", "GraphDataDSN='1' GraphDataSQLConnect='  '",
              "GraphDataSQLConnect='Server=x'", "GraphDataCommandTimeout='1e10'"})
            QCOMPARE(read(useless), defaults);
    }

    /// In a file of any encoding, and nothing else changes.
    void databaseSettingsAreSavedInPlace()
    {
        const QByteArray file =
            "<!-- \xe4 --><P  x='1' GraphDataSQL = '0'\n DataPath='/one'><Q y=\"\xfc\"/>"
            "</P>\r\n";
        sandbox->write(presentFile, file);
        sandbox->restart();
        InitGrapher();
        DatabaseSettings wanted = databaseSettings();
        QCOMPARE(wanted.dataPath, "/one" + QString(pathSeparator));
        wanted.isSqlServer = true;
        wanted.connectionText = QString::fromUtf8("PWD={\xc3\xa4\xf0\x9f\x94\x91<&'\"};SERVER=s");
        saveDatabaseSettings(wanted);
        QCOMPARE(program().gSQLConnect, wanted.connectionText);
        QByteArray saved = sandbox->read(presentFile);
        QCOMPARE(
            saved.replace("GraphDataSQL = '1'", "GraphDataSQL = '0'")
                .replace(
                    " GraphDataSQLConnect=\"PWD={&#228;&#128273;&#60;&#38;&#39;&#34;};SERVER=s\"",
                    ""),
            file);
        sandbox->restart();
        InitGrapher();
        QVERIFY(databaseSettings() == wanted);
        // Back to the file: the text is kept for the next time.
        DatabaseSettings back = wanted;
        back.isSqlServer = false;
        back.dataPath = "/two/";
        saveDatabaseSettings(back);
        QCOMPARE(program().gDataPath, "/two/");
        QVERIFY(databaseSettings() == back);
        // A file that cannot be read is not replaced.
        sandbox->write(presentFile, "<P");
        errorOf([&] { saveDatabaseSettings(wanted); });
        QCOMPARE(sandbox->read(presentFile), "<P");
        QVERIFY(!program().gGraphDataSQL);
    }

    void foldersAreReadOnce()
    {
        writeProduct("DataPath='   ' GraphDataPath=''");
        QCOMPARE(GetDataPath(), defaultFolder());
        QCOMPARE(GetGraphDataPath(), defaultFolder());
        QVERIFY(!folderExists(defaultFolder()));
        writeProduct("DataPath='/two'");
        SetDataPath("");
        QCOMPARE(GetDataPath(), defaultFolder());
        QVERIFY(folderExists(defaultFolder()));
        SetDataPath(sandbox->path("given"));
        QCOMPARE(GetDataPath(), sandbox->path("given"));
        QVERIFY(folderExists(sandbox->path("given")));
    }

#ifndef Q_OS_WIN // tests/windows has the registry
    void productFolderComesFromItsSettings()
    {
        const QString installed = sandbox->path("installed");
        {
            QSettings store(QSettings::NativeFormat, QSettings::UserScope, "Orlek INC", "Product");
            store.setValue("AppPath", installed);
        }
        sandbox->write("installed/" + presentFile, "<P DataPath='/installed'/>");
        QCOMPARE(GetProductKey(), "VantrelV6");
        SetProductKey("Product");
        QCOMPARE(GetAppPath(), installed);
        QCOMPARE(GetDataPath(), "/installed");
    }
#endif

    void configurationOutlivesItsText()
    {
        clsGrapherConfig config;
        config.SetXMLConfig(
            "<VTRGRAPHER PTH_Output='%%app.path%%\\Reports' PTH_Config='%%APP.PATH%%\\x' "
            "TIN_TOC='Ä &amp; \"b\"' TOU_DEV_SUM_IMAGE='DEVSUM.PNG' MetricsFile='%%app.path%%/m' "
            "PdfReports='1' "
            "IMG_Width='800.5' Unknown='1'>"
            "<COPYFILE Name='a.css'/><GROUP><COPYFILE/></GROUP><OTHER/></VTRGRAPHER>");
        const QString text = config.XMLConfig();
        QVERIFY(text.contains("PTH_Output=\"%%app.path%%\\Reports\" PTH_Config="));
        config.SetXMLConfig(text); // twice into the same object
        QCOMPARE(config.XMLConfig(), text);
        QCOMPARE(config.PTH_Output(), sandbox->path() + "\\Reports");
        QCOMPARE(config.metricsPath(), sandbox->path() + "/m");
        QCOMPARE(config.IMG_Width, 800);
        QVERIFY(config.PdfReports);
        QCOMPARE(config.CopyFileList, QStringList({"a.css", ""}));

        config.SetXMLConfig("<VTRGRAPHER TIN_REPORT='r'/>");
        QCOMPARE(config.TIN_REPORT, "r");
        QCOMPARE(config.PTH_Config(), "%%APP.PATH%%\\x"); // missing attributes keep theirs,
        QCOMPARE(config.IMG_Width, 640);                  // but for these
        QCOMPARE(config.CopyFileList, QStringList());
        QVERIFY(!config.XMLConfig().contains("Pdf"));
    }
    void commandLine()
    {
        const QString data = sandbox->path("data");
        const QString graphs = sandbox->path("graphs");
        writeProduct(QString("DataPath='%1' GraphDataPath='%2'").arg(data, graphs).toUtf8());
        const std::tuple<const char *, bool, QString> lines[] = {
            {"", false, data},
            {"AUTO", false, data},
            {"  \"/AUTO\"  ", true, data},
            {"/auto/AUTO", true, data},
            {"/OTHER=a /=b /DBPATH", false, data},
            {"/DBPATH = c:\\data", false, "C:\\DATA"},
            {"/AUTO /DBPATH=\"D:\\Monitor Data\"", true, "D:\\MONITOR DATA"},
            {"/DBPATH=a /DBPATH=b", false, "B"},
            {"/DBPATH=a=b", false, "A=B"},
            {"/DBPATHX=a", false, data},
            {"/DBPATH=", false, sandbox->path()}};
        for (const auto &[line, unattended, folder] : lines) {
            sandbox->events.clear();
            program().gCommandLine = line;
            program().gAutoMode = !unattended;
            InitGrapher();
            QCOMPARE(program().gAutoMode, unattended);
            QCOMPARE(program().gDataPath, WithBackslash(folder));
            QCOMPARE(program().gGraphDataPath, graphs + pathSeparator);
            QCOMPARE(sandbox->events.size(), unattended ? 1 : 0); // says that it started
        }
        QVERIFY(folderExists(data) && folderExists(graphs));
    }

#ifndef Q_OS_WIN
#endif

    void statusWaitsForTheStart()
    {
        program().gStartupDone = false;
        ShowStatus("early");
        program().gStartupDone = true;
        ShowStatus("late\x1b]0;x\x07\u009b\u202e\n");
        QCOMPARE(sandbox->status, QStringList("late ]0;x    ")); // nothing steers a terminal
        LogEvent(1, EventError, "a\nb\tc\x7f");
        QCOMPARE(sandbox->events, QStringList("1 1 a b c "));
        QCOMPARE(printable("a\tb\r\n"), "a\tb \n");
    }
};

QTEST_GUILESS_MAIN(TestSettings)
#include "tst_Settings.moc"
