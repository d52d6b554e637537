#include "FaultyProxy.h"
#include "MariaDb.h"
#include "MonitoringTables.h"
#include "core/Clock.h"
#include "core/GrapherConfig.h"
#include "core/Paths.h"
#include "core/StartUp.h"
#include "core/State.h"
#include "core/Status.h"
#include "definitions/DefinitionStores.h"
#include "demo/DemoReports.h"
#include "demo/MonitoringData.h"
#include "scheduling/ReportRunner.h"
#include "support/Rows.h"

#include <QGuiApplication>

#include <cstdio>

namespace {

constexpr qint64 until = 1'750'000'000; // seconds, 2025-06-15

/// Runs every report of a home unattended at a fixed time; this program starts itself for it, since
/// a process numbers its images. Prints the status lines. Returns how many reports failed.
int runHome(int argc, char **argv)
{
    const QGuiApplication application(argc, argv);
    const FrozenClock clock((until + 30) * 1000);
    locateProgramFolder(QString::fromLocal8Bit(argv[2]));
    gCommandLine = "/AUTO";
    InitGrapher();
    loadGrapherConfig();
    LoadReportDefs();
    setStatusSink([](const QString &line) { std::puts(qPrintable(line)); });
    gStartupDone = true;
    QStringList ids;
    for (const auto &report : gReportDefs)
        ids.append(report->ReportID);
    return runReports(ids, RunChoice::All).failed;
}

} // namespace

class tst_OdbcReports : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("TZ", "Europe/Berlin");
        qputenv("XDG_CONFIG_HOME", m_folder.filePath("config").toLocal8Bit());
        qputenv("XDG_DATA_HOME", m_folder.filePath("data").toLocal8Bit());
        demo::MonitoringOptions options;
        options.devices = 7; // each report has some
        options.items = 2;
        options.days = 3;
        options.interval = 600;
        options.until = until;
        const demo::MonitoringPlan plan = demo::planMonitoring(options);
        const QString file = m_folder.filePath("VTRGData.MDB");
        demo::writeMonitoringData(file, plan);
        m_reports = demo::demoReports(plan);
        m_server = std::make_unique<MariaDb>(monitoringTables(file, m_folder.path()));
        m_proxy = std::make_unique<FaultyProxy>(m_server->port());
    }
    void cleanupTestCase() { m_server.reset(); }

    void sameTree()
    {
        const QByteArray text = m_server->connectionText(m_proxy->port()).toHtmlEscaped().toUtf8();
        makeHome("access", "");
        makeHome("server", "GraphDataSQL=\"1\" GraphDataCommandTimeout=\"2\" "
                           "GraphDataConnectionTimeout=\"2\" GraphDataSQLConnect=\"" +
                               text + '"');
        const Ended access = run("access");
        QVERIFY2(access.failed == 0, qPrintable(access.output));
        QCOMPARE(access.summaries(), m_reports.count("<CUSTOMREPORT "));
        m_proxy->mend();
        const Ended server = run("server");
        QVERIFY2(server.failed == 0, qPrintable(server.output));
        m_answers = m_proxy->passed();
        QVERIFY(m_answers > 10'000); // it was the server that answered
        QCOMPARE(QString(server.output).replace(home("server"), home("access")), access.output);
        compareTrees();
    }

    void silentServer_data()
    {
        const Rows<int, bool> row("share", "cuts"); // of the bytes that the server sends in a run
        row("stalls early", 20, false);
        row("ends half-way", 55, true);
        row("stalls late", 90, false);
    }
    /// One connection breaks in the middle of a run: one report fails, the others are made, and the
    /// next run makes all of them.
    void silentServer()
    {
        QFETCH(int, share);
        QFETCH(bool, cuts);
        QVERIFY(m_answers > 0);
        m_proxy->breakOnceAfter(m_answers * share / 100,
                                cuts ? FaultyProxy::Cut : FaultyProxy::Stall);
        const Ended broken = run("server");
        QVERIFY2(broken.failed == 1, qPrintable(broken.output));
        QVERIFY2(broken.output.contains(cuts ? "Lost connection" : "[3146] The database did not"),
                 qPrintable(broken.output));
        QCOMPARE(broken.summaries(), m_reports.count("<CUSTOMREPORT ") - 1);
        QVERIFY2(!broken.output.contains(MariaDb::password()), qPrintable(broken.output));

        m_proxy->mend();
        const Ended next = run("server");
        QVERIFY2(next.failed == 0, qPrintable(next.output));
        compareTrees();
    }

private:
    struct Ended
    {
        int failed = -1;
        QString output;

        qsizetype summaries() const { return output.count("Generating Summary: ["); }
    };

    QString home(const QString &name) const { return m_folder.filePath(name); }

    /// A home with the factory's files, the demonstration's reports, and the product's
    /// configuration.
    void makeHome(const QString &name, const QByteArray &attributes)
    {
        QVERIFY(QDir().mkpath(home(name)));
        saveFile(home(name) + "/VantrelV6.Config",
                 "<VANTREL " + attributes + " DataPath=\"" + m_folder.path().toUtf8() + "\"/>");
        run(name); // fills it
        saveFile(home(name) + "/Config/ChartSelection.XML", m_reports);
    }

    Ended run(const QString &name) const
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(QCoreApplication::applicationFilePath(), {"--run-home", home(name)});
        if (!process.waitForFinished(60'000) || process.exitStatus() != QProcess::NormalExit)
            return {-1, process.errorString() + process.readAll()};
        return {process.exitCode(), QString::fromUtf8(process.readAll())};
    }

    void compareTrees() const
    {
        QCOMPARE(QProcess::execute("diff", {"-r", home("access/Reports"), home("server/Reports")}),
                 0);
    }

    QTemporaryDir m_folder;
    QByteArray m_reports;
    std::unique_ptr<MariaDb> m_server;
    std::unique_ptr<FaultyProxy> m_proxy;
    qint64 m_answers = 0; ///< bytes that the server sends in a run
};

int main(int argc, char **argv)
{
    if (argc == 3 && qstrcmp(argv[1], "--run-home") == 0)
        return runHome(argc, argv);
    QCoreApplication application(argc, argv);
    tst_OdbcReports test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_OdbcReports.moc"
