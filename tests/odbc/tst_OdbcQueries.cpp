#include "MariaDb.h"
#include "MonitoringTables.h"
#include "core/HostSettings.h"
#include "data/Connection.h"
#include "data/Queries.h"
#include "demo/MonitoringData.h"
#include "support/Lines.h"
#include "support/Rows.h"
#include "support/Sandbox.h"
#include "support/Zones.h"

/// The same samples in an Access file, on a server that speaks SQL Server's dialect, and behind a
/// data source that takes the Access dialect: every query gives the same rows.
class tst_OdbcQueries : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
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

        const QString sources = m_folder.filePath("odbc.ini");
        saveFile(sources, "[Monitoring]\nDriver=MariaDB Unicode\nSERVER=127.0.0.1\n"
                          "DATABASE=monitoring\nINITSTMT=SET sql_mode='MSSQL'\nPORT=" +
                              QByteArray::number(m_server->port()) + '\n');
        qputenv("ODBCINI", sources.toLocal8Bit());
    }
    void cleanupTestCase() { m_server.reset(); }

    void sameRows_data()
    {
        const Rows<Sql, int> row("sql", "least");
        const QDateTime from = at("2025-06-10T00:00:00");
        const QDateTime to = at("2025-06-15T00:00:00");
        const QString muid = m_plan.devices[1].muid;
        const QString two = muid + ',' + m_plan.devices[0].muid;
        row("selection", GetDataSelectionSQL, 40);
        row(
            "all states", [=] { return GetStateSummarySQL(from, to, {}); }, 6);
        row(
            "one device's states", [=] { return GetStateSummarySQL(from, to, muid); }, 1);
        row(
            "two devices' states", [=] { return GetStateSummarySQL(from, to, two); }, 2);
        const auto samples = [](int ident, const QDateTime &begin, const QDateTime &end) {
            return [=] { return GetDataValuesSQL(QString::number(ident), begin, end); };
        };
        const auto &items = m_plan.devices[0].items;
        for (const demo::MonitoredItem &item : items)
            row(qPrintable(QString("samples of %1").arg(item.dataIdent)),
                samples(item.dataIdent, from, to), 500);
        row("no samples", samples(items[0].dataIdent, to.addDays(99), to.addDays(100)), 0);
        row(
            "devices, notes and all", [] { return "Select * from Devices"; }, 8);
        row(
            "data fields", [] { return "Select * from DataFields"; }, 40);
        row(
            "scales", [] { return "Select * from Scales"; }, 3);
    }
    void sameRows()
    {
        QFETCH(Sql, sql);
        QFETCH(int, least);
        const LocalZone zone("Europe/Berlin");
        Sandbox box;
        use(Access);
        const QStringList rows = rowsOf(sql());
        QVERIFY2(rows.size() >= least, qPrintable(QString::number(rows.size())));
        for (const Way way : {SqlServer, DataSource}) {
            for (const bool fetchesWhole : {false, true}) {
                gUseClientCursor = fetchesWhole;
                use(way);
                QCOMPARE(rowsOf(sql()), rows);
            }
        }
        CloseDatabase();
    }

    void settings()
    {
        // The product's configuration carries the connection text with its quotation marks escaped.
        Sandbox box;
        box.write(
            "VantrelV6.Config",
            "<VANTREL GraphDataSQL=\"1\" GraphDataCommandTimeout=\"7\" GraphDataSQLConnect=\"" +
                m_server->connectionText().toHtmlEscaped().toUtf8() + "\"/>");
        GetGraphDataPath();
        QVERIFY(gGraphDataSQL);
        QString message;
        QVERIFY2(OpenDatabase(message), qPrintable(message));
        const Connection *opened = gConnection.get();
        QVERIFY(OpenDatabase(message));
        QCOMPARE(gConnection.get(), opened);
        StaticRecordset count =
            openStatic(" SELECT rowcnt as TCOUNT  FROM sysindexes  WHERE "
                       "object_name(id) = 'DataValues'  AND name='DataValues_PK'");
        QVERIFY(count.integer(0) > 10'000);
        CloseDatabase();
    }

private:
    using Sql = std::function<QString()>;
    enum Way { Access, SqlServer, DataSource };

    void use(Way way)
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
    static QStringList rowsOf(const QString &sql)
    {
        QStringList rows = lines(*gConnection->open(sql));
        if (!sql.contains("ORDER BY"))
            rows.sort();
        return rows;
    }

    std::unique_ptr<MariaDb> m_server;
    QTemporaryDir m_folder;
    demo::MonitoringPlan m_plan;
};

QTEST_GUILESS_MAIN(tst_OdbcQueries)
#include "tst_OdbcQueries.moc"
