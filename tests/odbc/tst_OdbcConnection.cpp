#include "MariaDb.h"
#include "data/DayNumbers.h"
#include "data/odbc/OdbcConnection.h"
#include "support/Errors.h"
#include "support/Lines.h"
#include "support/Rows.h"
#include "support/Zones.h"

namespace {

const QString longText =
    QString(300, u'x') + "東京🗼" + QString(5000, u'é') + QString(2047, u'y') + "🗼";

QStringList typeTables()
{
    return {
        "CREATE TABLE types (n INT, t1 TINYINT, t2 TINYINT UNSIGNED, s SMALLINT, i INT, b BIGINT, "
        "flag BIT(1), price DECIMAL(19,4), whole DECIMAL(12,0), sum DECIMAL(38,0), single FLOAT, "
        "number DOUBLE, at DATETIME(3), fine DATETIME(6), day DATE, name VARCHAR(100), note "
        "LONGTEXT);",
        "INSERT INTO types VALUES (1, -128, 255, -32768, -2147483648, -9223372036854775808, b'1', "
        "-922337203685.4775, 999999999999, 12345678901234567890, 0.1, 0.1, '2024-02-29 "
        "23:59:59.997', '1899-12-30 00:00:00.003333', '2024-03-31', 'Zürich 東京 🗼', '" +
            longText + "');",
        "INSERT INTO types VALUES (2, 127, 0, 32767, 2147483647, 9223372036854775807, b'0', "
        "0.0001, 0, 0, -1.5, 1e300, '9999-12-31 23:59:59.999', '1969-12-31 23:59:59.999666', "
        "'0100-01-01', '', '');",
        "INSERT INTO types (n) VALUES (3);",
        "CREATE TABLE samples (n INT, v DOUBLE, gap INT, flag BIT(1), single FLOAT, at "
        "DATETIME(3)) SELECT seq AS n, seq * 0.5 AS v, IF(seq % 7 = 0, NULL, seq) AS gap, seq % 3 "
        "= 0 AS flag, seq * 0.25 AS single, TIMESTAMPADD(SECOND, seq, '2024-01-01') AS at FROM "
        "seq_1_to_10001;",
    };
}

} // namespace

class tst_OdbcConnection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { m_server = std::make_unique<MariaDb>(typeTables()); }
    void cleanupTestCase() { m_server.reset(); }

    void types_data()
    {
        const Rows<QString, QVariant, QVariant> rows("column", "first", "second");
        const auto row = [&](const char *column, const QVariant &first, const QVariant &second) {
            rows(column, column, first, second);
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
        row("day", 45382.0, dayNumber(utc("0100-01-01T00:00:00"))); // as in an Access file
        row("name", "Zürich 東京 🗼", "");
        row("note", longText, "");
    }
    void types()
    {
        QFETCH(QString, column);
        QFETCH(QVariant, first);
        QFETCH(QVariant, second);
        const auto connection = connect();
        // Bound in blocks when it stands alone, read cell by cell beside a text.
        for (const QString columns : {"%1", "%1, name", "note, %1"}) {
            const auto rows = connection->open("SELECT " + columns.arg(column) +
                                               " FROM types WHERE n<3 ORDER BY n");
            const int at = rows->column(column);
            for (const QVariant &expected : {first, second}) {
                QVERIFY(rows->next());
                QVERIFY(!rows->isNull(at));
                QCOMPARE(rows->value(at), expected);
            }
            QVERIFY(!rows->next());
        }
    }

    /// As drivers hand out types that they do not know.
    void datesThatComeAsText()
    {
        setZone("Europe/Berlin"); // where this wall time does not exist
        const auto connection = connect();
        const auto rows = connection->open("SELECT '2024-03-31 02:05:09.1230000' AS at, "
                                           "'2024-03-31T02:05:09' AS iso, 'soon' AS word");
        QVERIFY(rows->next());
        QCOMPARE(rows->instant(0), utc("2024-03-31T02:05:09.123"));
        QCOMPARE(rows->instant(1), utc("2024-03-31T02:05:09"));
        const Error error = errorOf([&] { rows->instant(2); });
        QVERIFY2(error.description.contains("'word' holds 'soon'"), error.what());
    }

    void nullsOfEveryType()
    {
        const auto connection = connect();
        for (const QString columns : {"*", "t1, b, flag, price, whole, single, number, at, day"}) {
            const auto rows = connection->open("SELECT " + columns + " FROM types WHERE n=3");
            QVERIFY(rows->next());
            for (int i = columns == "*" ? 1 : 0; i < rows->columns().size(); ++i) {
                QVERIFY2(rows->isNull(i), qPrintable(rows->columns()[i]));
                QVERIFY(rows->value(i).isNull());
                QCOMPARE(rows->integer(i), 0);
                QCOMPARE(rows->number(i), 0.0);
                QCOMPARE(rows->instant(i), 0);
                QCOMPARE(rows->text(i), "");
            }
        }
    }

    void blocks_data()
    {
        const Rows<bool, QString, int> row("fetchesWhole", "columns", "count");
        for (const bool whole : {false, true}) {
            for (const int count : {0, 1, 4095, 4096, 4097, 8192, 10001}) {
                for (const QString columns : {"*", "samples.*, CONCAT(n) AS name"})
                    row(qPrintable(QString("%1 of %2, %3").arg(count).arg(columns).arg(whole)),
                        whole, columns, count);
            }
        }
    }
    void blocks()
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
            QCOMPARE(rows->instant(5), utc("2024-01-01T00:00:00") + n * 1000);
        }
        QVERIFY(!rows->next());
        QVERIFY(!rows->next());
        QVERIFY_EXCEPTION_THROWN(rows->integer(0), Error);
    }

    void wantedColumns()
    {
        const auto connection = connect();
        const auto rows = connection->open("SELECT * FROM types WHERE n<3 ORDER BY n",
                                           {"AT", "fine", "day", "i"});
        QCOMPARE(rows->columns(), QStringList({"i", "at", "fine", "day"}));
        QVERIFY_EXCEPTION_THROWN(rows->column("name"), Error);
        QVERIFY(rows->next());
        QCOMPARE(rows->integer(rows->column("I")), -2147483648ll);
        QCOMPARE(rows->instant(1), utc("2024-02-29T23:59:59.997"));
        QCOMPARE(rows->instant(2), utc("1899-12-30T00:00:00.003"));
        QCOMPARE(rows->instant(3), utc("2024-03-31T00:00:00"));
        QVERIFY(rows->next());
        QCOMPARE(rows->instant(1), utc("9999-12-31T23:59:59.999"));
        QCOMPARE(rows->instant(2), 0); // rounded up into the next day
        QCOMPARE(rows->instant(3), utc("0100-01-01T00:00:00"));
    }

    void twoRecordsetsAtATime()
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

    void failures_data()
    {
        const Rows<QString, int, QString> row("sql", "number", "state");
        row("syntax", "SELECT FROM WHERE", 1064, "42000");
        row("no table", "SELECT * FROM Nowhere", 1146, "42S02");
        row("not allowed", "DELETE FROM samples", 1142, "42000");
        row("in the middle of the rows",
            "SELECT n, IF(n=5000, (SELECT 1 UNION SELECT 2), 0) FROM samples", 1242, "21000");
    }
    void failures()
    {
        QFETCH(QString, sql);
        QFETCH(QString, state);
        const auto connection = connect();
        const Error error = errorOf([&] { lines(*connection->open(sql)); });
        QTEST(error.number, "number");
        QVERIFY2(error.description.contains("(SQL state " + state + ')'),
                 qPrintable(error.description));
        QVERIFY(connection->isOpen());
        QCOMPARE(lines(*connection->open("SELECT 7 AS n")), QStringList("7"));
    }

private:
    std::unique_ptr<OdbcConnection> connect(bool fetchesWhole = false)
    {
        return std::make_unique<OdbcConnection>(m_server->connectionText(), 10, 10, fetchesWhole);
    }

    std::unique_ptr<MariaDb> m_server;
};

QTEST_GUILESS_MAIN(tst_OdbcConnection)
#include "tst_OdbcConnection.moc"
