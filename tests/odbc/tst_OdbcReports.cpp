#include "FaultyProxy.h"
#include "MariaDb.h"
#include "MonitoringTables.h"
#include "base/Clock.h"
#include "base/ProgramState.h"
#include "config/StartUp.h"
#include "database/Connection.h"
#include "definitions/Definitions.h"
#include "demo/DemoReports.h"
#include "demo/MonitoringData.h"
#include "scheduling/ReportRunner.h"
#include "series/CalculatedSummary.h"
#include "support/Sandbox.h"
#include "support/Zones.h"

#include <QGuiApplication>
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
    program().gCommandLine = "/AUTO";
    InitGrapher();
    loadGrapherConfig();
    definitions().LoadReportDefs();
    observer().status = [](const QString &line) { std::puts(qPrintable(line)); };
    program().gStartupDone = true;
    QStringList ids;
    for (const auto &report : definitions().gReportDefs)
        ids.append(report->ReportID);
    return runReports({ids, RunChoice::All, RunMode::Scheduled}).failed() ? 1 : 0;
}

} // namespace

/// The same samples in an Access file, on a server that speaks SQL Server's dialect, and behind a
/// data source that takes the Access dialect: every query gives the same rows, and every report the
/// same pages.
class tst_OdbcReports : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        setZone("Europe/Berlin");
        qputenv("XDG_CONFIG_HOME", path("config").toLocal8Bit());
        qputenv("XDG_DATA_HOME", path("data").toLocal8Bit());
        demo::MonitoringOptions options;
        options.devices = 7; // each report has some
        options.items = 2;
        options.days = 3;
        options.interval = 600;
        options.until = until;
        m_plan = demo::planMonitoring(options);
        // Ids that must not end a text, or part a list.
        m_plan.devices[2].muid = "' or 1=1 -- ";
        m_plan.devices[3].muid = "x' or 'a'='a, b";
        m_plan.devices[4].muid = "with, comma";
        const QString file = path("VTRGData.MDB");
        demo::writeMonitoringData(file, m_plan);
        m_server = std::make_unique<MariaDb>(monitoringTables(file, m_folder.path()));
        m_proxy = std::make_unique<FaultyProxy>(m_server->port());
        saveFile(path("odbc.ini"), "[Monitoring]\nDriver=MariaDB Unicode\nSERVER=127.0.0.1\n"
                                   "DATABASE=monitoring\nINITSTMT=SET sql_mode='MSSQL'\nPORT=" +
                                       QByteArray::number(m_server->port()) + '\n');
        qputenv("ODBCINI", path("odbc.ini").toLocal8Bit());
    }
    void cleanupTestCase() { m_server.reset(); }

    /// Devices, items, scales, selection, samples and summaries, whichever way they are asked for.
    void sameAnswers()
    {
        Sandbox box;
        use(Access);
        const QStringList expected = answers();
        QVERIFY2(expected.size() > 14 * 4, qPrintable(expected.join(u'\n')));
        for (const Way way : {SqlServer, DataSource}) {
            for (const bool fetchesWhole : {false, true}) {
                program().gUseClientCursor = fetchesWhole;
                use(way);
                QCOMPARE(answers(), expected);
            }
        }
    }

    void sameTree()
    {
        const QByteArray text = m_server->connectionText(m_proxy->port()).toHtmlEscaped().toUtf8();
        makeHome("access", "");
        makeHome("server", "GraphDataSQL=\"1\" GraphDataCommandTimeout=\"2\" "
                           "GraphDataConnectionTimeout=\"2\" GraphDataSQLConnect=\"" +
                               text + '"');
        const Ended access = run("access");
        QVERIFY2(access.failed == 0, qPrintable(access.output));
        QCOMPARE(access.summaries(), reportCount());
        m_proxy->mend();
        const Ended server = run("server");
        QVERIFY2(server.failed == 0, qPrintable(server.output));
        m_answers = m_proxy->passed();
        QVERIFY(m_answers > 10'000); // it was the server that answered
        QCOMPARE(QString(server.output).replace(path("server"), path("access")), access.output);
        compareTrees();
    }

    /// One connection breaks in the middle of a run: one report fails, the others are made, and the
    /// next run makes all of them.
    void silentServer()
    {
        m_proxy->breakOnceAfter(m_answers / 2, FaultyProxy::Stall);
        const Ended broken = run("server");
        QVERIFY2(broken.failed == 1, qPrintable(broken.output));
        QVERIFY2(broken.output.contains("[3146] The database did not"), qPrintable(broken.output));
        QCOMPARE(broken.summaries(), reportCount() - 1);
        QVERIFY2(!broken.output.contains(MariaDb::password()), qPrintable(broken.output));

        m_proxy->mend();
        const Ended next = run("server");
        QVERIFY2(next.failed == 0, qPrintable(next.output));
        compareTrees();
    }

private:
    enum Way { Access, SqlServer, DataSource };
    struct Ended
    {
        int failed = -1;
        QString output;

        qsizetype summaries() const { return output.count("Generating Summary: ["); }
    };

    QString path(const QString &name) const { return m_folder.filePath(name); }

    void use(Way way)
    {
        program().gDataPath = m_folder.path() + u'/';
        program().gGraphDataSQL = way == SqlServer;
        program().gGraphDataDSN = way == DataSource;
        program().gSQLConnect = way == SqlServer ? m_server->connectionText()
                                                 : "DSN=Monitoring;UID=grapher;PWD={" +
                                                       MariaDb::password().replace("}", "}}") + "}";
    }
    static QStringList answers()
    {
        const auto database = databaseSource().connect();
        const auto inventory = database->inventory();
        QStringList lines{QString::number(database->sampleCount())};
        for (const ScaleRow &scale : inventory->scales())
            lines.append(QString("%1|%2|%3").arg(scale.scale).arg(scale.name, scale.abbreviation));
        database->readSelection([&](const SelectionRow &row) {
            const QString &unit = row.scale.abbreviation;
            lines.append(QString("%1|%2|%3|%4|%5|%6|%7|%8|%9")
                             .arg(row.device.ident)
                             .arg(row.device.muid, row.device.name, row.device.description)
                             .arg(row.device.isExcluded)
                             .arg(row.item.dataIdent)
                             .arg(row.item.name, row.item.description, unit));
            lines.last() += row.item.isGlobal ? "|global" : "|";
        });
        const QDateTime from = at("2025-06-10T00:00:00");
        const QDateTime to = at("2025-06-15T00:00:00");
        const auto axis =
            std::make_shared<const BucketAxis>(instantOf(from), instantOf(to), ByDay, 0);
        std::vector<CalculatedSummary> folds(inventory->items().size(),
                                             CalculatedSummary(axis, instantOf(to)));
        std::vector<ItemQuestion> items;
        for (const ItemRow &item : inventory->items())
            items.push_back({item.dataIdent, from, to, &folds[items.size()]});
        std::vector<SummaryQuestion> summaries;
        for (const DeviceRow &device : inventory->devices())
            summaries.push_back({device.muid, from, to, {}});
        database->answer(items, summaries);
        for (size_t i = 0; i < items.size(); ++i) {
            const DataSeries series = folds[i].series(5);
            for (const BucketValue &day : series.buckets)
                lines.append(QString("%1: %2 %3 %4 %5 %6")
                                 .arg(items[i].dataIdent)
                                 .arg(day.count)
                                 .arg(day.successes)
                                 .arg(day.mean)
                                 .arg(day.min)
                                 .arg(day.max));
        }
        for (const SummaryQuestion &summary : summaries) {
            for (const StateCount &count : summary.answer)
                lines.append(QString("%1 %2: %3 of %4")
                                 .arg(summary.muid)
                                 .arg(count.dataIdent)
                                 .arg(count.successes)
                                 .arg(count.tests));
        }
        lines.sort();
        return lines;
    }

    /// A home with the factory's files, the demonstration's reports, and the product's
    /// configuration.
    void makeHome(const QString &name, const QByteArray &attributes)
    {
        QVERIFY(QDir().mkpath(path(name)));
        saveFile(path(name) + "/VantrelV6.Config",
                 "<VANTREL " + attributes + " DataPath=\"" + m_folder.path().toUtf8() + "\"/>");
        run(name); // fills it
        saveFile(path(name) + "/Config/ChartSelection.XML", demo::demoReports(m_plan));
    }

    qsizetype reportCount() const { return demo::demoReports(m_plan).count("<CUSTOMREPORT "); }

    Ended run(const QString &name) const
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(QCoreApplication::applicationFilePath(), {"--run-home", path(name)});
        if (!process.waitForFinished(60'000) || process.exitStatus() != QProcess::NormalExit)
            return {-1, process.errorString() + process.readAll()};
        return {process.exitCode(), QString::fromUtf8(process.readAll())};
    }

    void compareTrees() const
    {
        // Only what allows a page its scripts differs from run to run.
        QCOMPARE(QProcess::execute("diff", {"-r", "-I", "nonce[-=]", path("access/Reports"),
                                            path("server/Reports")}),
                 0);
    }

    QTemporaryDir m_folder;
    demo::MonitoringPlan m_plan;
    std::unique_ptr<MariaDb> m_server;
    std::unique_ptr<FaultyProxy> m_proxy;
    qint64 m_answers = 0; ///< bytes that the server sends in a run
};

int main(int argc, char **argv)
{
    const ProgramState state;
    if (argc == 3 && qstrcmp(argv[1], "--run-home") == 0)
        return runHome(argc, argv);
    QCoreApplication application(argc, argv);
    tst_OdbcReports test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_OdbcReports.moc"
