#include "FaultyProxy.h"
#include "Lines.h"
#include "MariaDb.h"
#include "core/Error.h"
#include "core/platform/EventLog.h"
#include "data/Connection.h"
#include "data/odbc/DriverThread.h"
#include "support/Sandbox.h"

#include <QElapsedTimer>
#include <QTest>

#include <future>

namespace {

constexpr int sampleCount = 20'000;
const QString sampleQuery = "SELECT n, v FROM samples ORDER BY n";

QStringList events;

/// Reads all samples; the description of the error if there is one.
QString readSamples()
{
    try {
        const auto rows = gConnection->open(sampleQuery);
        qint64 n = 0;
        while (rows->next()) {
            ++n;
            if (rows->integer(0) != n || rows->number(1) != double(n) * 0.5)
                return QString("row %1 is wrong").arg(n);
        }
        return n == sampleCount ? QString() : QString("only %1 rows").arg(n);
    } catch (const Error &error) {
        return "Error " + errorTail(error);
    }
}

} // namespace

/// What becomes of a run when a server is not there, goes away or falls silent.
class tst_OdbcFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase() { m_server.reset(); }

    void cutAnywhere();
    void stalledAnywhere();
    void serverStopsWhileIdle();
    void slowQueryEnds();
    void noServer_data();
    void noServer();
    void secretsStayHidden();
    void driverThread();

private:
    void sweep(FaultyProxy::Fault fault, int places);

    std::unique_ptr<MariaDb> m_server;
    std::unique_ptr<FaultyProxy> m_proxy;
    std::unique_ptr<Sandbox> m_box;
};

void tst_OdbcFaults::initTestCase()
{
    m_server = std::make_unique<MariaDb>(
        QStringList{QString("CREATE TABLE samples SELECT seq AS n, CAST(seq * 0.5 AS DOUBLE) AS v "
                            "FROM seq_1_to_%1;")
                        .arg(sampleCount)});
}

void tst_OdbcFaults::init()
{
    m_box = std::make_unique<Sandbox>();
    m_proxy = std::make_unique<FaultyProxy>(m_server->port());
    events.clear();
    setEventObserver([](int, EventType, const QString &message) { events.append(message); });
    gGraphDataSQL = true;
    gConnectionTimeout = 1;
    gCommandTimeout = 1;
    gSQLConnect = m_server->connectionText(m_proxy->port());
}

void tst_OdbcFaults::cleanup()
{
    CloseDatabase();
    setEventObserver(nullptr);
    m_proxy.reset();
    m_box.reset();
}

/// Breaks the connection at places spread over all that the server answers, from its first byte on.
void tst_OdbcFaults::sweep(FaultyProxy::Fault fault, int places)
{
    QString message;
    m_proxy->mend();
    QVERIFY2(OpenDatabase(message), qPrintable(message));
    QCOMPARE(readSamples(), QString());
    const qint64 all = m_proxy->passed();
    QVERIFY(all > 10 * sampleCount);

    QSet<QString> ends;
    for (int i = 0; i < places; ++i) {
        // Closer together at the beginning, where connecting and the statement's own answers lie.
        const double share = double(i) / places;
        const auto place = qint64(share * share * share * double(all));
        CloseDatabase();
        m_proxy->breakAfter(place, fault);
        QElapsedTimer timer;
        timer.start();
        message.clear();
        QString error;
        if (OpenDatabase(message)) {
            error = readSamples();
            QVERIFY2(error.startsWith("Error ["),
                     qPrintable(QString("%1: %2").arg(place).arg(error)));
            ends.insert("query");
            // The report's other queries fail at once.
            QVERIFY(readSamples().contains("connection is broken"));
        } else {
            QVERIFY2(message.startsWith("Error opening database 'DRIVER="), qPrintable(message));
            ends.insert("connect");
        }
        // Both time-outs, and room for a busy machine.
        QVERIFY2(timer.elapsed() < 15'000, qPrintable(QString::number(timer.elapsed())));

        m_proxy->mend();
        QVERIFY2(OpenDatabase(message), qPrintable(QString("%1: %2").arg(place).arg(message)));
        QCOMPARE(readSamples(), QString());
    }
    QCOMPARE(ends, QSet<QString>({"connect", "query"}));
}

void tst_OdbcFaults::cutAnywhere()
{
    gConnectionTimeout = gCommandTimeout = 10;
    sweep(FaultyProxy::Cut, 60);
}

void tst_OdbcFaults::stalledAnywhere()
{
    sweep(FaultyProxy::Stall, 6);
}

void tst_OdbcFaults::serverStopsWhileIdle()
{
    QString message;
    QVERIFY2(OpenDatabase(message), qPrintable(message));
    QCOMPARE(readSamples(), QString());
    m_proxy = std::make_unique<FaultyProxy>(m_server->port()); // the old one's connections end
    gSQLConnect = m_server->connectionText(m_proxy->port());
    QVERIFY2(OpenDatabase(message), qPrintable(message));
    QCOMPARE(readSamples(), QString());
}

void tst_OdbcFaults::slowQueryEnds()
{
    QString message;
    QVERIFY2(OpenDatabase(message), qPrintable(message));
    QElapsedTimer timer;
    timer.start();
    try {
        const auto rows = gConnection->open("SELECT n, SLEEP(60) AS s FROM samples");
        lines(*rows);
        QFAIL("no error");
    } catch (const Error &error) {
        QVERIFY2(timer.elapsed() < 15'000, error.what());
    }
    QVERIFY2(OpenDatabase(message), qPrintable(message));
    QCOMPARE(readSamples(), QString());
}

void tst_OdbcFaults::noServer_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");

    const QString tds =
        "DRIVER={FreeTDS};TDS_Version=7.4;DATABASE=x;UID=sa;PWD=%1;SERVER=%2;PORT=%3";
    const QString maria = "DRIVER={MariaDB Unicode};UID=sa;PWD=%1;SERVER=%2;PORT=%3";
    const auto row = [](const char *name, const QString &text, const QString &host, int port) {
        QTest::newRow(name) << text.arg("top-secret", host, QString::number(port))
                            << text.arg("***", host, QString::number(port));
    };
    static const ListeningSocket silent;
    row("FreeTDS, refused", tds, "127.0.0.1", freePort());
    row("FreeTDS, wrong host", tds, "no-such-host.invalid", 1433);
    row("FreeTDS, silent", tds, "127.0.0.1", silent.port());
    row("MariaDB, refused", maria, "127.0.0.1", freePort());
    row("MariaDB, wrong host", maria, "no-such-host.invalid", 3306);
    row("MariaDB, silent", maria, "127.0.0.1", silent.port());
    QTest::newRow("no driver") << "DRIVER={No Such};PWD=a"
                               << "DRIVER={No Such};PWD=***";
    QTest::newRow("no data source") << "DSN=NoSuchSource;PWD=a"
                                    << "DSN=NoSuchSource;PWD=***";
    QTest::newRow("OLE DB text")
        << QString("Provider=SQLOLEDB;Data Source=127.0.0.1,%1;Password=a").arg(freePort()) << "";
}

void tst_OdbcFaults::noServer()
{
    QFETCH(QString, text);
    QFETCH(QString, shown);
    gConnectionTimeout = 3;
    gSQLConnect = text;
    QElapsedTimer timer;
    timer.start();
    QString message;
    QVERIFY(!OpenDatabase(message));
    QVERIFY2(timer.elapsed() < 20'000, qPrintable(QString::number(timer.elapsed())));
    static const QRegularExpression form("^Error opening database '(.*)' \\[(-?\\d+)\\] (.+)$");
    const QRegularExpressionMatch match = form.match(message);
    QVERIFY2(match.hasMatch(), qPrintable(message));
    if (!shown.isEmpty())
        QCOMPARE(match.captured(1), shown);
    QVERIFY2(match.captured(2).toInt() == DatabaseTimeout ||
                 match.captured(3).contains("(SQL state "),
             qPrintable(message));
    QCOMPARE(m_box->status, QStringList({"Opening database connection.", message}));
    QCOMPARE(events, QStringList(message));
    QVERIFY(!message.contains("top-secret"));
}

void tst_OdbcFaults::secretsStayHidden()
{
    // A wrong password, and a driver that quotes the statement in which it was sent.
    const QString secret = MariaDb::password().chopped(1);
    gSQLConnect = QString(m_server->connectionText()).replace("r=et", "r=e");
    QString message;
    QVERIFY(!OpenDatabase(message));
    QVERIFY2(message.contains("[1045]") && message.contains("(SQL state 28000)"),
             qPrintable(message));
    gSQLConnect = "DRIVER={" + secret + "};Password='" + secret + "'";
    QVERIFY(!OpenDatabase(message));
    for (const QString &line : m_box->status + events)
        QVERIFY2(!line.section("' [", 1).contains(secret), qPrintable(line));
}

void tst_OdbcFaults::driverThread()
{
    using std::chrono::seconds;
    DriverThread patient;
    QVERIFY(patient.run([] {}, seconds(1)));
    QVERIFY_EXCEPTION_THROWN(patient.run([] { throw Error(1, "x"); }, seconds(0)), Error);

    // Work that obeys a cancel ends in time for the thread to be of use again.
    std::promise<void> cancelled;
    QVERIFY(!patient.run([&] { cancelled.get_future().wait(); }, seconds(1),
                         [&] { cancelled.set_value(); }));
    QVERIFY(!patient.isGivenUp());
    QVERIFY(patient.run([] {}, seconds(10)));

    // Work that does not is left behind with all that it owns, and frees it when it ends.
    const auto owned = std::make_shared<std::promise<void>>();
    std::promise<void> freed;
    struct Guard
    {
        std::promise<void> &freed;
        ~Guard() { freed.set_value(); }
    };
    {
        DriverThread stuck;
        const auto guard = std::make_shared<Guard>(freed);
        QVERIFY(!stuck.run([owned, guard] { owned->get_future().wait(); }, seconds(1)));
        QVERIFY(stuck.isGivenUp());
    }
    std::future<void> isFreed = freed.get_future();
    QCOMPARE(isFreed.wait_for(seconds(0)), std::future_status::timeout);
    owned->set_value();
    QCOMPARE(isFreed.wait_for(seconds(30)), std::future_status::ready);
}

QTEST_GUILESS_MAIN(tst_OdbcFaults)
#include "tst_OdbcFaults.moc"
