#include "Lines.h"
#include "MariaDb.h"
#include "MonitoringTables.h"
#include "core/HostSettings.h"
#include "data/Connection.h"
#include "data/Queries.h"
#include "demo/MonitoringData.h"
#include "support/Sandbox.h"

#include <QTest>

/// The same samples in an Access file, on a server that speaks SQL Server's dialect, and behind a
/// data source that takes the Access dialect: every query gives the same rows.
class tst_OdbcQueries : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase() { m_server.reset(); }

    void sameRows_data();
    void sameRows();
    void settings();

private:
    enum Way { Access, SqlServer, DataSource };
    void use(Way way);
    QStringList rowsOf(const std::function<QString()> &sql);

    std::unique_ptr<MariaDb> m_server;
    QTemporaryDir m_folder;
    demo::MonitoringPlan m_plan;
};

void tst_OdbcQueries::initTestCase()
{
    demo::MonitoringOptions options;
    options.devices = 8;
    options.items = 5;
    options.days = 6;
    options.interval = 600;
    options.until = 1'750'000'000;
    m_plan = demo::planMonitoring(options);
    const QString file = m_folder.filePath("VTRGData.MDB");
    demo::writeMonitoringData(file, m_plan);
    m_server = std::make_unique<MariaDb>(monitoringTables(file, m_folder.path()));

    QFile sources(m_folder.filePath("odbc.ini"));
    QVERIFY(sources.open(QIODevice::WriteOnly));
    sources.write("[Monitoring]\nDriver=MariaDB Unicode\nSERVER=127.0.0.1\nDATABASE=monitoring\n"
                  "INITSTMT=SET sql_mode='MSSQL'\nPORT=" +
                  QByteArray::number(m_server->port()) + '\n');
    sources.close();
    qputenv("ODBCINI", sources.fileName().toLocal8Bit());
}

void tst_OdbcQueries::use(Way way)
{
    CloseDatabase();
    gDataPath = m_folder.path() + '/';
    gGraphDataSQL = way == SqlServer;
    gGraphDataDSN = way == DataSource;
    gSQLConnect = way == SqlServer ? m_server->connectionText()
                                   : "DSN=Monitoring;UID=grapher;PWD={" +
                                         MariaDb::password().replace("}", "}}") + "}";
    QString message;
    QVERIFY2(OpenDatabase(message), qPrintable(message));
}

void tst_OdbcQueries::sameRows_data()
{
    QTest::addColumn<std::function<QString()>>("sql");
    QTest::addColumn<int>("least");

    using Sql = std::function<QString()>;
    const auto at = [](const char *iso) { return QDateTime::fromString(iso, Qt::ISODate); };
    const QDateTime from = at("2025-06-10T00:00:00Z");
    const QDateTime to = at("2025-06-15T00:00:00Z");
    QTest::newRow("selection") << Sql(GetDataSelectionSQL) << 40;
    QTest::newRow("all states") << Sql([=] { return GetStateSummarySQL(from, to, {}); }) << 6;
    const QString muid = m_plan.devices[1].muid;
    QTest::newRow("one device's states")
        << Sql([=] { return GetStateSummarySQL(from, to, muid); }) << 1;
    QTest::newRow("two devices' states") << Sql([=, this] {
        return GetStateSummarySQL(from, to, muid + ',' + m_plan.devices[0].muid);
    }) << 2;
    const auto samples = [](int ident, const QDateTime &begin, const QDateTime &end) {
        return Sql([=] { return GetDataValuesSQL(QString::number(ident), begin, end); });
    };
    for (const demo::MonitoredItem &item : m_plan.devices[0].items)
        QTest::addRow("samples of %d", item.dataIdent) << samples(item.dataIdent, from, to) << 500;
    QTest::newRow("no samples") << samples(m_plan.devices[0].items[0].dataIdent, to.addDays(99),
                                           to.addDays(100))
                                << 0;
    QTest::newRow("devices, notes and all")
        << Sql([] { return QString("Select * from Devices"); }) << 8;
    QTest::newRow("data fields") << Sql([] { return QString("Select * from DataFields"); }) << 40;
    QTest::newRow("scales") << Sql([] { return QString("Select * from Scales"); }) << 3;
}

QStringList tst_OdbcQueries::rowsOf(const std::function<QString()> &sql)
{
    const auto rows = gConnection->open(sql());
    QStringList result = lines(*rows);
    if (!sql().contains("ORDER BY"))
        result.sort();
    return result;
}

void tst_OdbcQueries::sameRows()
{
    using Sql = std::function<QString()>;
    QFETCH(Sql, sql);
    QFETCH(int, least);
    const LocalZone zone("Europe/Berlin");
    Sandbox box;
    use(Access);
    const QStringList rows = rowsOf(sql);
    QVERIFY2(rows.size() >= least, qPrintable(QString::number(rows.size())));
    for (const Way way : {SqlServer, DataSource}) {
        for (const bool fetchesWhole : {false, true}) {
            gUseClientCursor = fetchesWhole;
            use(way);
            QCOMPARE(rowsOf(sql), rows);
        }
    }
    CloseDatabase();
}

void tst_OdbcQueries::settings()
{
    // The product's configuration carries the connection text with its quotation marks escaped.
    Sandbox box;
    box.write("VantrelV6.Config",
              "<VANTREL GraphDataSQL=\"1\" GraphDataCommandTimeout=\"7\" GraphDataSQLConnect=\"" +
                  m_server->connectionText().toHtmlEscaped().toUtf8() + "\"/>");
    GetGraphDataPath();
    QVERIFY(gGraphDataSQL);
    QString message;
    QVERIFY2(OpenDatabase(message), qPrintable(message));
    const Connection *opened = gConnection.get();
    QVERIFY(OpenDatabase(message));
    QCOMPARE(gConnection.get(), opened);
    QCOMPARE(box.status, QStringList({"Opening database connection.", "Database Opened.",
                                      "Opening database connection.", "Database Opened."}));
    StaticRecordset count = openStatic(" SELECT rowcnt as TCOUNT  FROM sysindexes  WHERE "
                                       "object_name(id) = 'DataValues'  AND name='DataValues_PK'");
    QVERIFY(count.integer(0) > 10'000);
    CloseDatabase();
}

QTEST_GUILESS_MAIN(tst_OdbcQueries)
#include "tst_OdbcQueries.moc"
