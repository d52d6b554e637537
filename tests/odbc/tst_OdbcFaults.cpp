#include "FaultyProxy.h"
#include "MariaDb.h"
#include "database/Connection.h"
#include "definitions/clsGraphDef.h"
#include "odbc/DriverThread.h"
#include "platform/EventLog.h"
#include "series/CalculatedSummary.h"
#include "support/Errors.h"
#include "support/Rows.h"
#include "support/Sandbox.h"
#include "support/Zones.h"

#include <QElapsedTimer>

#include <future>

namespace {

constexpr int sampleCount = 20'000;

std::unique_ptr<DatabaseConnection> connection;

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
        connection->get()->answer(questions, {});
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

/// Opens the database, that of the present settings where there is no connection; the error message
/// if there is one.
QString open()
{
    RunLog log(observer());
    if (!connection)
        connection = std::make_unique<DatabaseConnection>(databaseSource());
    try {
        connection->open(log);
        return QString();
    } catch (const ShownError &error) {
        return error.description;
    }
}

/// Opens the database and reads all samples; the error message if there is one.
QString openAndRead()
{
    const QString message = open();
    return message.isEmpty() ? readSamples() : message;
}

} // namespace

/// What becomes of a run when a server is not there, goes away or falls silent.
class tst_OdbcFaults : public QObject
{
    Q_OBJECT

    const ProgramState m_state;

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
        program().gGraphDataSQL = true;
        program().gConnectionTimeout = program().gCommandTimeout = 1;
        program().gSQLConnect = m_server->connectionText(m_proxy->port());
    }
    void cleanup()
    {
        connection.reset();
        m_proxy.reset();
        m_box.reset();
    }

    void cutAnywhere()
    {
        program().gConnectionTimeout = program().gCommandTimeout = 10;
        sweep(FaultyProxy::Cut, 60);
    }

    void stalledAnywhere() { sweep(FaultyProxy::Stall, 6); }

    void serverStopsWhileIdle()
    {
        QCOMPARE(openAndRead(), "");
        const MonitoringDatabase *opened = connection->get();
        QCOMPARE(openAndRead(), "");
        QCOMPARE(connection->get(), opened);
        m_proxy->hangUp();
        QTRY_VERIFY(!connection->get()->isOpen());
        QCOMPARE(openAndRead(), "");
    }

    void slowQueryEnds()
    {
        QCOMPARE(openAndRead(), "");
        QElapsedTimer timer;
        timer.start();
        const Error error = errorOf([] { connection->get()->sampleCount(); });
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
        program().gConnectionTimeout = 3;
        program().gSQLConnect = text;
        QElapsedTimer timer;
        timer.start();
        const QString message = open();
        QVERIFY(!message.isEmpty());
        QVERIFY2(timer.elapsed() < 20'000, qPrintable(QString::number(timer.elapsed())));
        static const QRegularExpression form("^Error opening database '(.*)' \\[(-?\\d+)\\] (.+)$");
        const QRegularExpressionMatch match = form.match(message);
        QTEST(match.captured(1), "shown");
        QVERIFY2(match.captured(2).toInt() == DatabaseTimeout ||
                     match.captured(3).contains("(SQL state "),
                 qPrintable(message));
        QCOMPARE(m_box->status, QStringList({"Opening database connection.", message}));
        QCOMPARE(m_box->events, QStringList("6 1 " + message));
        QVERIFY(!message.contains("top-secret"));
    }

    /// A server that cannot encrypt gets no password from whoever asked for encryption.
    void asksMariaDbForEncryption()
    {
        QCOMPARE(openAndRead(), "");
        connection.reset();
        program().gSQLConnect += ";Encrypt=Yes";
        QVERIFY2(openAndRead().contains("SSL"), qPrintable(openAndRead()));
    }

    void secretsStayHidden()
    {
        program().gSQLConnect = QString(m_server->connectionText()).replace("r=et", "r=e");
        const QString message = openAndRead();
        QVERIFY2(message.contains("[1045]") && message.contains("(SQL state 28000)"),
                 qPrintable(message));
        // What is quoted as the driver's name happens to be the password.
        connection.reset();
        program().gSQLConnect = "DRIVER={top-secret};Password=top-secret";
        const QString why = openAndRead().section("' [", 1);
        QVERIFY2(why.contains("***") && !why.contains("top-secret"), qPrintable(why));
        for (const QString &line : m_box->status + m_box->events)
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
            connection.reset();
            m_proxy->breakAfter(place, fault);
            QElapsedTimer timer;
            timer.start();
            const QString error = openAndRead();
            QVERIFY2(
                error.startsWith(connection->get() ? "Error [" : "Error opening database 'DRIVER="),
                qPrintable(QString("%1: %2").arg(place).arg(error)));
            ends.insert(connection->get() ? "query" : "connect");
            if (connection->get()) // the report's other queries fail at once
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
