#include "FaultyProxy.h"
#include "MariaDb.h"
#include "TdsServer.h"
#include "core/platform/EventLog.h"
#include "data/Connection.h"
#include "data/odbc/DriverThread.h"
#include "definitions/GraphDef.h"
#include "support/Errors.h"
#include "support/Rows.h"
#include "support/Sandbox.h"
#include "support/Zones.h"

#include <QElapsedTimer>

#include <future>

namespace {

constexpr int sampleCount = 20'000;

QStringList events;

/// Reads all samples; what is wrong with them, or the error.
QString readSamples()
{
    try {
        const qint64 start = utc("2024-01-01T00:00:00");
        CalculatedSummary seconds(std::make_shared<const BucketAxis>(
                                      start, start + sampleCount * qint64(1000), ByMinute, 1),
                                  start);
        std::array<ItemQuestion, 1> questions{ItemQuestion{
            1, wallTime(start), wallTime(start + sampleCount * qint64(1000)), &seconds}};
        gConnection->answer(questions, {});
        const DataSeries minutes = seconds.series(5);
        for (size_t i = 1; i + 1 < minutes.buckets.size(); ++i) { // values rise by a half a second
            if (minutes.buckets[i].mean != double(i) * 30 + 14.75)
                return QString("minute %1 is wrong").arg(i);
        }
        const qint64 n = seconds.sampleCount();
        return n == sampleCount ? QString() : QString("only %1 rows").arg(n);
    } catch (const Error &error) {
        return "Error " + errorTail(error);
    }
}

/// Opens the database and reads all samples; the error message if there is one.
QString openAndRead()
{
    QString message;
    return OpenDatabase(message) ? readSamples() : message;
}

} // namespace

/// What becomes of a run when a server is not there, goes away or falls silent.
class tst_OdbcFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const QString table =
            "CREATE TABLE DataValues SELECT 1 AS DataIDent, TIMESTAMPADD(SECOND, seq, "
            "'2024-01-01') "
            "AS iDate, 1 AS iState, CAST(seq * 0.5 AS DOUBLE) AS iValue FROM seq_1_to_%1;";
        m_server = std::make_unique<MariaDb>(QStringList{
            table.arg(sampleCount), "CREATE TABLE sysindexes (id INT, name TEXT, rowcnt BIGINT);",
            "INSERT INTO sysindexes VALUES (1, 'DataValues_PK', 1);",
            "CREATE DEFINER='root'@'localhost' FUNCTION object_name(id INT) RETURNS VARCHAR(100) "
            "RETURN SLEEP(60);"});
    }
    void cleanupTestCase() { m_server.reset(); }
    void init()
    {
        m_box = std::make_unique<Sandbox>();
        m_proxy = std::make_unique<FaultyProxy>(m_server->port());
        events.clear();
        setEventObserver([](int, EventType, const QString &message) { events.append(message); });
        gGraphDataSQL = true;
        gConnectionTimeout = gCommandTimeout = 1;
        gSQLConnect = m_server->connectionText(m_proxy->port());
    }
    void cleanup()
    {
        CloseDatabase();
        setEventObserver(nullptr);
        m_proxy.reset();
        m_box.reset();
    }

    void cutAnywhere()
    {
        gConnectionTimeout = gCommandTimeout = 10;
        sweep(FaultyProxy::Cut, 60);
    }

    void stalledAnywhere() { sweep(FaultyProxy::Stall, 6); }

    void serverStopsWhileIdle()
    {
        QCOMPARE(openAndRead(), "");
        const MonitoringDatabase *opened = gConnection.get();
        QCOMPARE(openAndRead(), "");
        QCOMPARE(gConnection.get(), opened);
        m_proxy = std::make_unique<FaultyProxy>(m_server->port()); // the old one's connections end
        gSQLConnect = m_server->connectionText(m_proxy->port());
        QCOMPARE(openAndRead(), "");
    }

    void slowQueryEnds()
    {
        QCOMPARE(openAndRead(), "");
        QElapsedTimer timer;
        timer.start();
        const Error error = errorOf([] { gConnection->sampleCount(); });
        QVERIFY(error.number != 0);
        QVERIFY2(timer.elapsed() < 15'000, error.what());
        QCOMPARE(openAndRead(), "");
    }

    void noServer_data()
    {
        const Rows<QString, QString> row("text", "shown");
        const QString tds =
            "DRIVER={FreeTDS};TDS_Version=7.4;DATABASE=x;UID=sa;PWD=%1;SERVER=%2;PORT=%3";
        const QString maria = "DRIVER={MariaDB Unicode};UID=sa;PWD=%1;SERVER=%2;PORT=%3";
        static const ListeningSocket silent;
        for (const QString &text : {tds, maria}) {
            for (const int port : {freePort(), silent.port()})
                row(qPrintable(text.mid(8, 7) + (port == silent.port() ? ", silent" : ", refused")),
                    text.arg("top-secret", "127.0.0.1").arg(port),
                    text.arg("***", "127.0.0.1").arg(port));
        }
        row("no data source", "DSN=NoSuchSource;PWD=a", "DSN=NoSuchSource;PWD=***");
        const QString oleDb = "Provider=SQLOLEDB;Data Source=no-such-host.invalid;Password=%1";
        row("OLE DB text", oleDb.arg("top-secret"), oleDb.arg("***"));
    }
    void noServer()
    {
        QFETCH(QString, text);
        gConnectionTimeout = 3;
        gSQLConnect = text;
        QElapsedTimer timer;
        timer.start();
        QString message;
        QVERIFY(!OpenDatabase(message));
        QVERIFY2(timer.elapsed() < 20'000, qPrintable(QString::number(timer.elapsed())));
        static const QRegularExpression form("^Error opening database '(.*)' \\[(-?\\d+)\\] (.+)$");
        const QRegularExpressionMatch match = form.match(message);
        QTEST(match.captured(1), "shown");
        QVERIFY2(match.captured(2).toInt() == DatabaseTimeout ||
                     match.captured(3).contains("(SQL state "),
                 qPrintable(message));
        QCOMPARE(m_box->status, QStringList({"Opening database connection.", message}));
        QCOMPARE(events, QStringList(message));
        QVERIFY(!message.contains("top-secret"));
    }

    void encryptsOrFails_data()
    {
        const QString server = "Data Source=127.0.0.1,%1;User ID=sa;Password=%2;";
        const QString driver = "SERVER=127.0.0.1;PORT=%1;UID=sa;PWD=%2;TDS_Version=7.4;";
        const Rows<QString, bool> row("text", "goesOut");
        row("not asked", "Provider=SQLOLEDB;" + server, true);
        row("OLE DB", "Provider=SQLOLEDB;Encrypt=yes;" + server, false);
        row("driver", "DRIVER={FreeTDS};Encrypt=Yes;" + driver, false);
        row("wrapped",
            "Provider=MSDASQL;Extended Properties=\"DRIVER={FreeTDS};" + driver + "\";Encrypt=Yes",
            false);
        row("data source", "DSN=Tds;Encrypt=Yes;UID=sa;PWD=%2;X=%1", false);
    }
    /// A server that cannot encrypt gets no password from whoever asked for encryption.
    void encryptsOrFails()
    {
        QFETCH(QString, text);
        TdsServer server;
        m_box->write("odbc.ini", "[Tds]\nDriver=FreeTDS\nServer=127.0.0.1\nTDS_Version=7.4\nPort=" +
                                     QByteArray::number(server.port()) + '\n');
        qputenv("ODBCINI", m_box->path("odbc.ini").toLocal8Bit());
        gConnectionTimeout = 5;
        gSQLConnect = text.arg(server.port()).arg("top-secret");
        QString message;
        QVERIFY(!OpenDatabase(message));
        qunsetenv("ODBCINI");
        const QByteArray received = server.stop();
        QVERIFY2(received.startsWith('\x12'), qPrintable(message)); // it was there, and asked
        QTEST(received.contains(TdsServer::disguised("top-secret")), "goesOut");
    }

    /// Nor does one that speaks MariaDB's language.
    void asksMariaDbForEncryption()
    {
        QCOMPARE(openAndRead(), "");
        CloseDatabase();
        gSQLConnect += ";Encrypt=Yes";
        QVERIFY2(openAndRead().contains("SSL"), qPrintable(openAndRead()));
    }

    void secretsStayHidden()
    {
        gSQLConnect = QString(m_server->connectionText()).replace("r=et", "r=e");
        const QString message = openAndRead();
        QVERIFY2(message.contains("[1045]") && message.contains("(SQL state 28000)"),
                 qPrintable(message));
        // What is quoted as the driver's name happens to be the password.
        gSQLConnect = "DRIVER={top-secret};Password=top-secret";
        const QString why = openAndRead().section("' [", 1);
        QVERIFY2(why.contains("***") && !why.contains("top-secret"), qPrintable(why));
        for (const QString &line : m_box->status + events)
            QVERIFY2(!line.contains(MariaDb::password().chopped(1)) &&
                         !line.contains("=top-secret"),
                     qPrintable(line));
    }

    /// Work that does not end is left behind with all that it owns, and frees it when it ends.
    void driverThread()
    {
        using std::chrono::seconds;
        const auto release = std::make_shared<std::promise<void>>();
        auto owned = std::make_shared<int>();
        const std::weak_ptr<int> left = owned;
        auto stuck = std::make_unique<DriverThread>();
        QVERIFY(!stuck->run([release, owned] { release->get_future().wait(); }, seconds(1)));
        QVERIFY(stuck->isGivenUp());
        stuck.reset();
        owned.reset();
        QVERIFY(!left.expired());
        release->set_value();
        QTRY_VERIFY_WITH_TIMEOUT(left.expired(), 30'000);
    }

private:
    /// Breaks the connection at places spread over all that the server answers, from its first byte
    /// on.
    void sweep(FaultyProxy::Fault fault, int places)
    {
        m_proxy->mend();
        QCOMPARE(openAndRead(), "");
        const qint64 all = m_proxy->passed();
        QVERIFY(all > 10 * sampleCount);

        QSet<QString> ends;
        for (int i = 0; i < places; ++i) {
            // Closer together at the beginning, where connecting and the statement's own answers
            // lie.
            const double share = double(i) / places;
            const auto place = qint64(share * share * share * double(all));
            CloseDatabase();
            m_proxy->breakAfter(place, fault);
            QElapsedTimer timer;
            timer.start();
            const QString error = openAndRead();
            QVERIFY2(error.startsWith(gConnection ? "Error [" : "Error opening database 'DRIVER="),
                     qPrintable(QString("%1: %2").arg(place).arg(error)));
            ends.insert(gConnection ? "query" : "connect");
            if (gConnection) // the report's other queries fail at once
                QVERIFY(readSamples().contains("connection is broken"));
            // Both time-outs, and room for a busy machine.
            QVERIFY2(timer.elapsed() < 15'000, qPrintable(QString::number(timer.elapsed())));

            m_proxy->mend();
            QCOMPARE(openAndRead(), "");
        }
        QCOMPARE(ends, QSet<QString>({"connect", "query"}));
    }

    std::unique_ptr<MariaDb> m_server;
    std::unique_ptr<FaultyProxy> m_proxy;
    std::unique_ptr<Sandbox> m_box;
};

QTEST_GUILESS_MAIN(tst_OdbcFaults)
#include "tst_OdbcFaults.moc"
