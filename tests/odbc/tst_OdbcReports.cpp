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

#include <QDirIterator>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QMap>
#include <QTest>

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
    void initTestCase();
    void cleanupTestCase() { m_server.reset(); }

    void sameTree();
    void silentServer_data();
    void silentServer();

private:
    struct Ended
    {
        int failed = -1;
        QString output;

        QString errors() const
        {
            const QStringList lines = output.split('\n');
            return QString::number(failed) + " failed: " + lines.filter("rror ").join(' ');
        }
    };
    QString home(const QString &name) const { return m_folder.filePath(name); }
    void makeHome(const QString &name, const QByteArray &attributes);
    Ended run(const QString &name) const;
    QMap<QString, QByteArray> tree(const QString &name) const;

    QTemporaryDir m_folder;
    demo::MonitoringPlan m_plan;
    std::unique_ptr<MariaDb> m_server;
    std::unique_ptr<FaultyProxy> m_proxy;
    qint64 m_answers = 0; ///< bytes that the server sends in a run
};

void tst_OdbcReports::initTestCase()
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
    m_plan = demo::planMonitoring(options);
    const QString file = m_folder.filePath("VTRGData.MDB");
    demo::writeMonitoringData(file, m_plan);
    m_server = std::make_unique<MariaDb>(monitoringTables(file, m_folder.path()));
    m_proxy = std::make_unique<FaultyProxy>(m_server->port());
}

/// A home with the factory's files, the demonstration's reports, and the product's configuration.
void tst_OdbcReports::makeHome(const QString &name, const QByteArray &attributes)
{
    QVERIFY(QDir().mkpath(home(name)));
    QFile product(home(name) + "/VantrelV6.Config");
    QVERIFY(product.open(QIODevice::WriteOnly));
    product.write("<VANTREL " + attributes + " DataPath=\"" + m_folder.path().toUtf8() + "\"/>");
    product.close();
    run(name); // fills it
    QFile reports(home(name) + "/Config/ChartSelection.XML");
    QVERIFY(reports.open(QIODevice::WriteOnly));
    reports.write(demo::demoReports(m_plan));
}

tst_OdbcReports::Ended tst_OdbcReports::run(const QString &name) const
{
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(), {"--run-home", home(name)});
    if (!process.waitForFinished(120'000) || process.exitStatus() != QProcess::NormalExit)
        return {-1, process.errorString() + process.readAll()};
    return {process.exitCode(),
            QString::fromUtf8(process.readAllStandardOutput() + process.readAllStandardError())};
}

QMap<QString, QByteArray> tst_OdbcReports::tree(const QString &name) const
{
    QMap<QString, QByteArray> files;
    const QDir folder(home(name) + "/Reports");
    QDirIterator walk(folder.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        QFile file(walk.next());
        files[folder.relativeFilePath(file.fileName())] =
            file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
    }
    return files;
}

void tst_OdbcReports::sameTree()
{
    makeHome("access", "");
    const QByteArray text = m_server->connectionText(m_proxy->port()).toHtmlEscaped().toUtf8();
    makeHome("server", "GraphDataSQL=\"1\" GraphDataCommandTimeout=\"2\" "
                       "GraphDataConnectionTimeout=\"2\" GraphDataSQLConnect=\"" +
                           text + '"');
    const Ended access = run("access");
    QVERIFY2(access.failed == 0, qPrintable(access.errors()));
    m_proxy->mend();
    const Ended server = run("server");
    QVERIFY2(server.failed == 0, qPrintable(server.errors()));
    m_answers = m_proxy->passed();
    QVERIFY(m_answers > 10'000); // it was the server that answered
    QCOMPARE(QString(server.output).replace(home("server"), home("access")), access.output);

    const QMap<QString, QByteArray> files = tree("access");
    QCOMPARE(tree("server").keys(), files.keys());
    QVERIFY(files.size() > 50);
    const QMap<QString, QByteArray> others = tree("server");
    for (auto file = files.begin(); file != files.end(); ++file)
        QVERIFY2(others[file.key()] == file.value(), qPrintable(file.key()));
}

void tst_OdbcReports::silentServer_data()
{
    QTest::addColumn<int>("share"); // of the bytes that the server sends in a run
    QTest::addColumn<bool>("cuts");
    QTest::newRow("stalls early") << 20 << false;
    QTest::newRow("ends half-way") << 55 << true;
    QTest::newRow("stalls late") << 90 << false;
}

/// One connection breaks in the middle of a run: one report fails, the others are made, and the
/// next run makes all of them.
void tst_OdbcReports::silentServer()
{
    QFETCH(int, share);
    QFETCH(bool, cuts);
    QVERIFY(m_answers > 0);
    m_proxy->breakOnceAfter(m_answers * share / 100, cuts ? FaultyProxy::Cut : FaultyProxy::Stall);
    QElapsedTimer timer;
    timer.start();
    const Ended broken = run("server");
    QVERIFY2(broken.failed == 1, qPrintable(broken.errors()));
    QVERIFY(timer.elapsed() < 60'000);
    const QString why = cuts ? QString("Lost connection") : QString("[3146] The database did not");
    QVERIFY2(broken.errors().contains(why), qPrintable(broken.errors()));
    QCOMPARE(broken.output.count("Generating Summary: ["),
             demo::demoReports(m_plan).count("<CUSTOMREPORT ") - 1);
    QVERIFY2(!broken.output.contains(MariaDb::password()), qPrintable(broken.output));

    m_proxy->mend();
    const Ended next = run("server");
    QVERIFY2(next.failed == 0, qPrintable(next.errors()));
    QCOMPARE(tree("server"), tree("access"));
}

int main(int argc, char **argv)
{
    if (argc == 3 && qstrcmp(argv[1], "--run-home") == 0)
        return runHome(argc, argv);
    QCoreApplication application(argc, argv);
    tst_OdbcReports test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_OdbcReports.moc"
