#include "MariaDb.h"
#include "base/DayNumbers.h"
#include "base/ProgramState.h"
#include "odbc/OdbcConnection.h"
#include "odbc/OdbcRecordset.h"
#include "support/Errors.h"
#include "support/Lines.h"
#include "support/Rows.h"
#include "support/Zones.h"

#include <QElapsedTimer>

#include <cstring>
#include <dlfcn.h>
#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>
#include <thread>

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

/// What other drivers do: the functions below stand between the program and the driver manager.
enum Habit { None, ChangesSize, RefusesCount, RefusesFetch, RefusesUtf16, BreaksRow, Deaf };
std::atomic<Habit> habit = None;
std::atomic<int> shownHabits = 0;
int fetches = 0; ///< since the statement was bound
SQLULEN arraySize = 1;
SQLUSMALLINT *rowStatus = nullptr;
const char16_t *madeState = nullptr; ///< of a failure that a habit made, until it has been read

bool shows(Habit wanted)
{
    shownHabits += habit == wanted;
    return habit == wanted;
}

SQLRETURN fails(const char16_t *state)
{
    madeState = state;
    return SQL_ERROR;
}

template <typename Function, typename... Arguments>
SQLRETURN managers(const char *name, Arguments... arguments)
{
    return reinterpret_cast<Function *>(::dlsym(RTLD_NEXT, name))(arguments...);
}

} // namespace

extern "C" {

SQLRETURN SQLSetStmtAttrW(SQLHSTMT statement, SQLINTEGER attribute, SQLPOINTER value,
                          SQLINTEGER length)
{
    if (attribute == SQL_ATTR_ROWS_FETCHED_PTR && shows(RefusesCount))
        return SQL_ERROR;
    if (attribute == SQL_ATTR_ROW_ARRAY_SIZE) {
        arraySize = reinterpret_cast<SQLULEN>(value);
        if (arraySize > 1 && shows(ChangesSize))
            value = reinterpret_cast<SQLPOINTER>(SQLULEN(10));
    }
    if (attribute == SQL_ATTR_ROW_STATUS_PTR)
        rowStatus = static_cast<SQLUSMALLINT *>(value);
    fetches = 0;
    return managers<decltype(SQLSetStmtAttrW)>("SQLSetStmtAttrW", statement, attribute, value,
                                               length);
}

SQLRETURN SQLFetch(SQLHSTMT statement)
{
    if (arraySize > 1 && shows(RefusesFetch))
        return fails(u"HYC00");
    const bool isFirst = ++fetches == 1;
    if (!isFirst && shows(Deaf)) {
        std::this_thread::sleep_for(std::chrono::seconds(6));
        return SQL_ERROR;
    }
    const SQLRETURN result = managers<decltype(SQLFetch)>("SQLFetch", statement);
    if (isFirst || !shows(BreaksRow))
        return result;
    rowStatus[1] = SQL_ROW_ERROR;
    fails(u"22003");
    return SQL_SUCCESS_WITH_INFO;
}

SQLRETURN SQLGetData(SQLHSTMT statement, SQLUSMALLINT number, SQLSMALLINT type, SQLPOINTER value,
                     SQLLEN size, SQLLEN *indicator)
{
    if (type == SQL_C_WCHAR && shows(RefusesUtf16))
        return fails(u"07006");
    return managers<decltype(SQLGetData)>("SQLGetData", statement, number, type, value, size,
                                          indicator);
}

SQLRETURN SQLGetDiagRecW(SQLSMALLINT type, SQLHANDLE handle, SQLSMALLINT number, SQLWCHAR *state,
                         SQLINTEGER *native, SQLWCHAR *message, SQLSMALLINT size,
                         SQLSMALLINT *length)
{
    if (!madeState)
        return managers<decltype(SQLGetDiagRecW)>("SQLGetDiagRecW", type, handle, number, state,
                                                  native, message, size, length);
    if (number > 1) {
        madeState = nullptr;
        return SQL_NO_DATA;
    }
    std::memcpy(state, madeState, 12);
    std::memcpy(message, u"made", 10);
    *native = 4711;
    *length = 4;
    return SQL_SUCCESS;
}
}

class tst_OdbcConnection : public QObject
{
    Q_OBJECT

    const ProgramState m_state;

private Q_SLOTS:
    void initTestCase() { m_server = std::make_unique<MariaDb>(typeTables()); }
    void cleanupTestCase() { m_server.reset(); }
    void init() { shownHabits = 0; }
    void cleanup() { habit = None; }

    void types_data()
    {
        const Rows<QString, QVariant, QVariant> rows("column", "first", "second");
        const auto row = [&](const char *column, const QVariant &first, const QVariant &second) {
            rows(column, column, first, second);
        };
        row("t2", 255ll, 0ll);
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
            const int at = columns.startsWith("note") ? 1 : 0;
            for (const QVariant &expected : {first, second}) {
                QVERIFY(rows->next());
                QVERIFY(!rows->isNull(at));
                if (expected.typeId() == QMetaType::QString)
                    QCOMPARE(rows->text(at), expected.toString());
                else if (expected.typeId() == QMetaType::Double)
                    QCOMPARE(rows->number(at), expected.toDouble());
                else
                    QCOMPARE(rows->integer(at), expected.toLongLong());
            }
            QVERIFY(!rows->next());
        }
    }

    /// As drivers hand out types that they do not know.
    void datesThatComeAsText()
    {
        setZone("Europe/Berlin"); // where this wall time does not exist
        const auto connection = connect();
        const auto rows =
            connection->open("SELECT '2024-03-31 02:05:09.1230000' AS at, 'soon' AS word");
        QVERIFY(rows->next());
        QCOMPARE(rows->instant(0), utc("2024-03-31T02:05:09.123"));
        const Error error = errorOf([&] { rows->instant(1); });
        QVERIFY2(error.description.contains("'word' holds 'soon'"), error.what());
    }

    void nullsOfEveryType()
    {
        const auto connection = connect();
        for (const QString columns : {"*", "t1, b, flag, price, whole, single, number, at, day"}) {
            const auto rows = connection->open("SELECT " + columns + " FROM types WHERE n=3");
            QVERIFY(rows->next());
            for (int i = columns == "*" ? 1 : 0; i < rows->columnCount(); ++i) {
                QVERIFY2(rows->isNull(i), qPrintable(QString::number(i)));
                QCOMPARE(rows->integer(i), 0);
                QCOMPARE(rows->number(i), 0.0);
                QCOMPARE(rows->instant(i), 0);
                QCOMPARE(rows->text(i), "");
            }
        }
    }

    void blocks_data()
    {
        const Rows<bool, QString> row("fetchesWhole", "columns");
        for (const QString columns : {"*", "samples.*, CONCAT(n) AS name"}) {
            row(qPrintable(columns + ", by blocks"), false, columns);
            row(qPrintable(columns + ", whole"), true, columns);
        }
    }
    void blocks()
    {
        QFETCH(bool, fetchesWhole);
        QFETCH(QString, columns);
        const auto connection = connect(fetchesWhole);
        const QString sql = QString("SELECT %1 FROM samples WHERE n<=%2 ORDER BY n").arg(columns);
        for (const int count : {0, 1, 4096, 4097, 8192}) {
            const auto rows = connection->open(sql.arg(count));
            for (int n = 1; n <= count; ++n) {
                QVERIFY(rows->next());
                QCOMPARE(rows->integer(0), n);
                QCOMPARE(rows->number(1), n * 0.5);
                QCOMPARE(rows->isNull(2), n % 7 == 0);
                QCOMPARE(rows->integer(3), n % 3 == 0 ? -1 : 0);
                QCOMPARE(rows->number(4), n * 0.25);
                QCOMPARE(rows->instant(5), utc("2024-01-01T00:00:00") + n * 1000);
            }
            QVERIFY(!rows->next());
            QVERIFY_EXCEPTION_THROWN(rows->integer(0), Error);
        }
    }

    void wantedColumns()
    {
        const auto connection = connect();
        const auto rows = connection->open("SELECT * FROM types WHERE n<3 ORDER BY n",
                                           {"AT", "fine", "day", "i"});
        QCOMPARE(rows->columnCount(), 4);
        QVERIFY(rows->next());
        QCOMPARE(rows->instant(0), utc("2024-02-29T23:59:59.997"));
        QCOMPARE(rows->instant(1), utc("1899-12-30T00:00:00.003"));
        QCOMPARE(rows->instant(2), utc("2024-03-31T00:00:00"));
        QCOMPARE(rows->integer(3), -2147483648ll);
        QVERIFY(rows->next());
        QCOMPARE(rows->instant(0), utc("9999-12-31T23:59:59.999"));
        QCOMPARE(rows->instant(1), 0); // rounded up into the next day
        QCOMPARE(rows->instant(2), utc("0100-01-01T00:00:00"));
        const Error error = errorOf([&] {
            connection->open("SELECT * FROM types", {"i", "nowhere"});
        });
        QCOMPARE(error.number, int(ItemNotFound));
        QCOMPARE(lines(*connection->open("SELECT 7 AS n")), QStringList("7"));
    }

    void failures()
    {
        const auto connection = connect();
        for (const auto &[sql, number, state] :
             {std::tuple("SELECT * FROM Nowhere", 1146, "(SQL state 42S02)"),
              std::tuple("DELETE FROM samples", 1142, "(SQL state 42000)"),
              // In the middle of the rows.
              std::tuple("SELECT n, IF(n=5000, (SELECT 1 UNION SELECT 2), 0) FROM samples", 1242,
                         "(SQL state 21000)")}) {
            const Error error = errorOf([&] { lines(*connection->open(sql)); });
            QCOMPARE(error.number, number);
            QVERIFY2(error.description.contains(state), error.what());
            QCOMPARE(lines(*connection->open("SELECT 7 AS n")), QStringList("7"));
        }
    }

    void toleratedHabits_data()
    {
        const Rows<int, QString> row("chosen", "columns");
        row("takes another size", ChangesSize, "n, gap");
        row("counts no rows", RefusesCount, "n, gap");
        row("fetches no blocks", RefusesFetch, "n, gap");
        row("has no UTF-16", RefusesUtf16, "n, gap, CONCAT('Station ', n) AS name");
    }
    void toleratedHabits()
    {
        QFETCH(int, chosen);
        QFETCH(QString, columns);
        habit = Habit(chosen);
        const auto connection = connect();
        const auto rows =
            connection->open("SELECT " + columns + " FROM samples WHERE n<=5000 ORDER BY n");
        for (int n = 1; n <= 5000; ++n) {
            QVERIFY(rows->next());
            QCOMPARE(rows->integer(0), n);
            QCOMPARE(rows->isNull(1), n % 7 == 0);
            if (chosen == RefusesUtf16)
                QCOMPARE(rows->text(2), QString("Station %1").arg(n));
        }
        QVERIFY(!rows->next());
        QVERIFY(shownHabits > 0);
    }

    void rowInError()
    {
        const auto connection = connect();
        habit = BreaksRow;
        const Error error = errorOf([&] { lines(*connection->open("SELECT n FROM samples")); });
        QCOMPARE(error.number, 4711);
        QCOMPARE(error.description, "made (SQL state 22003)");
        QVERIFY(connection->isOpen());
    }

    void obeysNoCancel()
    {
        const auto connection = connect(false, 1);
        habit = Deaf;
        auto rows = connection->open("SELECT n FROM samples");
        QElapsedTimer timer;
        timer.start();
        const Error error = errorOf([&] { lines(*rows); });
        QCOMPARE(error.number, int(DatabaseTimeout));
        QCOMPARE(error.description, "The database did not answer within 1 s");
        QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
        QVERIFY(!connection->isOpen());
        QVERIFY_EXCEPTION_THROWN(rows->next(), Error);
        QVERIFY_EXCEPTION_THROWN(connection->open("SELECT 1"), Error);
        habit = None;
        rows.reset();
        QCOMPARE(lines(*connect()->open("SELECT 7 AS n")), QStringList("7"));
    }

private:
    std::shared_ptr<OdbcConnection> connect(bool fetchesWhole = false, int commandTimeout = 10)
    {
        return std::make_shared<OdbcConnection>(m_server->connectionText(), 10, commandTimeout,
                                                fetchesWhole);
    }

    std::unique_ptr<MariaDb> m_server;
};

QTEST_GUILESS_MAIN(tst_OdbcConnection)
#include "tst_OdbcConnection.moc"
