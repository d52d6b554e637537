#include "Lines.h"
#include "MariaDb.h"
#include "core/Error.h"
#include "data/odbc/OdbcConnection.h"

#include <QDateTime>
#include <QTest>

namespace {

qint64 instant(const char *iso)
{
    QDateTime time = QDateTime::fromString(QString::fromLatin1(iso), Qt::ISODateWithMs);
    time.setTimeSpec(Qt::UTC);
    return time.toMSecsSinceEpoch();
}

const QString longText = QString(300, u'x') + QString::fromUtf8("東京🗼") + QString(5000, u'é') +
                         QString(2047, u'y') + QString::fromUtf8("🗼");

QStringList typeTables()
{
    return {
        "CREATE TABLE types (n INT, t1 TINYINT, t2 TINYINT UNSIGNED, s SMALLINT, i INT, b BIGINT, "
        "flag BIT(1), price DECIMAL(19,4), whole DECIMAL(12,0), sum DECIMAL(38,0), single FLOAT, "
        "number DOUBLE, at DATETIME(3), fine DATETIME(6), day DATE, name VARCHAR(100), note "
        "LONGTEXT);",
        "INSERT INTO types VALUES (1, -128, 255, -32768, -2147483648, -9223372036854775808, b'1', "
        "-922337203685.4775, 999999999999, 12345678901234567890, 0.1, 0.1, '2024-02-29 "
        "23:59:59.997', "
        "'1899-12-30 00:00:00.003333', '2024-03-31', 'Zürich 東京 🗼', '" +
            longText + "');",
        "INSERT INTO types VALUES (2, 127, 0, 32767, 2147483647, 9223372036854775807, b'0', "
        "0.0001, 0, 0, -1.5, 1e300, '9999-12-31 23:59:59.999', '1969-12-31 23:59:59.999666', "
        "'0100-01-01', '', '');",
        "INSERT INTO types (n) VALUES (3);",
        "CREATE TABLE samples (n INT, v DOUBLE, gap INT, flag BIT(1), single FLOAT, at "
        "DATETIME(3)) "
        "SELECT seq AS n, seq * 0.5 AS v, IF(seq % 7 = 0, NULL, seq) AS gap, seq % 3 = 0 AS flag, "
        "seq * 0.25 AS single, TIMESTAMPADD(SECOND, seq, '2024-01-01') AS at FROM seq_1_to_10001;",
    };
}

} // namespace

class tst_OdbcConnection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase() { m_server.reset(); }

    void types_data();
    void types();
    void nullsOfEveryType();
    void longTexts();
    void blocks_data();
    void blocks();
    void wantedColumns();
    void twoRecordsetsAtATime();
    void failures_data();
    void failures();

private:
    std::unique_ptr<Connection> connect(bool fetchesWhole = false)
    {
        return std::make_unique<OdbcConnection>(m_server->connectionText(), 10, 10, fetchesWhole);
    }
    std::unique_ptr<MariaDb> m_server;
};

void tst_OdbcConnection::initTestCase()
{
    m_server = std::make_unique<MariaDb>(typeTables());
}

void tst_OdbcConnection::types_data()
{
    QTest::addColumn<QString>("column");
    QTest::addColumn<QVariant>("first");
    QTest::addColumn<QVariant>("second");
    const auto row = [](const char *column, const QVariant &first, const QVariant &second) {
        QTest::newRow(column) << QString(column) << first << second;
    };
    row("t1", -128ll, 127ll);
    row("t2", 255ll, 0ll);
    row("s", -32768ll, 32767ll);
    row("i", -2147483648ll, 2147483647ll);
    row("b", std::numeric_limits<qint64>::min(), std::numeric_limits<qint64>::max());
    row("flag", -1ll, 0ll);
    row("price", -922337203685.4775, 0.0001);
    row("whole", 999999999999ll, 0ll);
    row("sum", 12345678901234567890.0, 0.0);
    row("single", double(0.1f), -1.5);
    row("number", 0.1, 1e300);
    row("name", QString::fromUtf8("Zürich 東京 🗼"), QString(""));
}

void tst_OdbcConnection::types()
{
    QFETCH(QString, column);
    const auto connection = connect();
    // Bound in blocks when it stands alone, read cell by cell beside a text.
    for (const char *columns : {"%1", "%1, name", "note, %1"}) {
        const auto rows = connection->open(
            QString("SELECT %1 FROM types WHERE n<3 ORDER BY n").arg(QString(columns).arg(column)));
        const int at = rows->column(column);
        for (const char *expected : {"first", "second"}) {
            QVERIFY(rows->next());
            QVERIFY(!rows->isNull(at));
            QCOMPARE(rows->value(at), *static_cast<QVariant *>(QTest::qData(
                                          expected, QMetaType::fromType<QVariant>().id())));
        }
        QVERIFY(!rows->next());
    }
}

void tst_OdbcConnection::nullsOfEveryType()
{
    const auto connection = connect();
    for (const char *columns : {"*", "t1, s, i, b, flag, price, whole, single, number, at, day"}) {
        const auto rows = connection->open(QString("SELECT %1 FROM types WHERE n=3").arg(columns));
        QVERIFY(rows->next());
        for (int i = rows->columns().first() == "n" ? 1 : 0; i < rows->columns().size(); ++i) {
            QVERIFY2(rows->isNull(i), qPrintable(rows->columns()[i]));
            QVERIFY(rows->value(i).isNull());
            QCOMPARE(rows->integer(i), 0);
            QCOMPARE(rows->number(i), 0.0);
            QCOMPARE(rows->instant(i), 0);
            QCOMPARE(rows->text(i), QString());
        }
    }
}

void tst_OdbcConnection::longTexts()
{
    const auto connection = connect();
    const auto rows = connection->open("SELECT n, note FROM types WHERE n<3 ORDER BY n");
    QVERIFY(rows->next());
    QCOMPARE(rows->text(1), longText);
    QVERIFY(rows->next());
    QVERIFY(!rows->isNull(1));
    QCOMPARE(rows->text(1), QString());
}

void tst_OdbcConnection::blocks_data()
{
    QTest::addColumn<bool>("fetchesWhole");
    QTest::addColumn<QString>("columns");
    QTest::addColumn<int>("count");
    for (const bool whole : {false, true}) {
        for (const int count : {0, 1, 4095, 4096, 4097, 8192, 10001}) {
            for (const char *columns : {"*", "samples.*, CONCAT(n) AS name"})
                QTest::addRow("%d of %s, %d", count, columns, whole)
                    << whole << QString(columns) << count;
        }
    }
}

void tst_OdbcConnection::blocks()
{
    QFETCH(bool, fetchesWhole);
    QFETCH(QString, columns);
    QFETCH(int, count);
    const auto connection = connect(fetchesWhole);
    const auto rows = connection->open(
        QString("SELECT %1 FROM samples WHERE n<=%2 ORDER BY n").arg(columns).arg(count));
    for (int n = 1; n <= count; ++n) {
        QVERIFY(rows->next());
        QCOMPARE(rows->integer(0), n);
        QCOMPARE(rows->number(1), n * 0.5);
        QCOMPARE(rows->isNull(2), n % 7 == 0);
        QCOMPARE(rows->integer(2), n % 7 == 0 ? 0 : n);
        QCOMPARE(rows->integer(3), n % 3 == 0 ? -1 : 0);
        QCOMPARE(rows->number(4), n * 0.25);
        QCOMPARE(rows->instant(5), instant("2024-01-01T00:00:00") + n * 1000);
    }
    QVERIFY(!rows->next());
    QVERIFY(!rows->next());
    QVERIFY_EXCEPTION_THROWN(rows->integer(0), Error);
}

void tst_OdbcConnection::wantedColumns()
{
    const auto connection = connect();
    const auto rows = connection->open("SELECT * FROM types WHERE n=1", {"AT", "fine", "day", "i"});
    QCOMPARE(rows->columns(), QStringList({"i", "at", "fine", "day"}));
    QVERIFY_EXCEPTION_THROWN(rows->column("name"), Error);
    QVERIFY(rows->next());
    QCOMPARE(rows->integer(rows->column("I")), -2147483648ll);
    QCOMPARE(rows->instant(1), instant("2024-02-29T23:59:59.997"));
    QCOMPARE(rows->instant(2), instant("1899-12-30T00:00:00.003"));
    QCOMPARE(rows->instant(3), instant("2024-03-31T00:00:00.000"));
    QCOMPARE(rows->value(3), QVariant(45382.0)); // as in an Access file
    QVERIFY(!rows->next());

    const auto others = connection->open("SELECT * FROM types WHERE n=2", {"at", "fine", "day"});
    QVERIFY(others->next());
    QCOMPARE(others->instant(0), instant("9999-12-31T23:59:59.999"));
    QCOMPARE(others->instant(1), 0); // rounded up into the next day
    QCOMPARE(others->instant(2), instant("0100-01-01T00:00:00.000"));
}

void tst_OdbcConnection::twoRecordsetsAtATime()
{
    auto connection = connect();
    const auto first = connection->open("SELECT n FROM samples ORDER BY n");
    QVERIFY(first->next());
    const auto second = connection->open("SELECT n FROM samples ORDER BY n DESC");
    connection.reset();
    for (int n = 2; n <= 10001; ++n) {
        QVERIFY(first->next());
        QCOMPARE(first->integer(0), n);
        QVERIFY(second->next());
        QCOMPARE(second->integer(0), 10003 - n);
    }
    QVERIFY(!first->next());
    QVERIFY(second->next());
    QVERIFY(!second->next());
}

void tst_OdbcConnection::failures_data()
{
    QTest::addColumn<QString>("sql");
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("state");
    QTest::newRow("syntax") << "SELECT FROM WHERE" << 1064 << "42000";
    QTest::newRow("no table") << "SELECT * FROM Nowhere" << 1146 << "42S02";
    QTest::newRow("not allowed") << "DELETE FROM samples" << 1142 << "42000";
    QTest::newRow("in the middle of the rows")
        << "SELECT n, IF(n=5000, (SELECT 1 UNION SELECT 2), 0) FROM samples" << 1242 << "21000";
}

void tst_OdbcConnection::failures()
{
    QFETCH(QString, sql);
    QFETCH(QString, state);
    const auto connection = connect();
    try {
        const auto rows = connection->open(sql);
        lines(*rows);
        QFAIL("no error");
    } catch (const Error &error) {
        QTEST(error.number, "number");
        QVERIFY2(error.description.contains("(SQL state " + state + ')'),
                 qPrintable(error.description));
    }
    QVERIFY(connection->isOpen());
    const auto rows = connection->open("SELECT 7 AS n");
    QCOMPARE(lines(*rows), QStringList("7"));
}

QTEST_GUILESS_MAIN(tst_OdbcConnection)
#include "tst_OdbcConnection.moc"
