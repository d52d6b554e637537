#include "data/odbc/OdbcConnection.h"
#include "support/Errors.h"
#include "support/Rows.h"
#include "support/Zones.h"

#include <QElapsedTimer>

/// What other drivers do, by a driver of the tests' own.
class tst_OdbcHabits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void blocks_data()
    {
        const Rows<QString> row("habit");
        row.each({{"none"}, {"refuses-size"}, {"changes-size"}});
        row.each({{"refuses-count"}, {"refuses-fetch"}});
    }
    void blocks()
    {
        QFETCH(QString, habit);
        const auto connection = connect(habit);
        const auto rows = connection->open("x", {"id", "at", "flag"});
        constexpr int milliseconds[] = {0, 3, 7, 997};
        const qint64 evening = utc("2024-02-29T23:00:59");
        for (int id = 1; id <= 5000; ++id) {
            QVERIFY(rows->next());
            QCOMPARE(rows->integer(0), id);
            QCOMPARE(rows->isNull(1), id == 7);
            QCOMPARE(rows->isNull(2), id == 7);
            if (id == 7)
                continue;
            QCOMPARE(rows->instant(1), evening + (id % 60) * 60'000 + milliseconds[id % 4]);
            QCOMPARE(rows->integer(2), -(id % 2));
        }
        QVERIFY(!rows->next());
    }

    void bytesForTexts()
    {
        const auto connection = connect("none");
        for (int round = 0; round < 2; ++round) {
            const auto rows = connection->open("x", {"id", "name"});
            for (int id = 1; id <= 5000; ++id) {
                QVERIFY(rows->next());
                QCOMPARE(rows->integer(0), id);
                QCOMPARE(rows->isNull(1), id == 7);
                QCOMPARE(rows->text(1), id == 7 ? QString() : QString("Zürich %1").arg(id));
            }
            QVERIFY(!rows->next());
        }
    }

    void rowInError()
    {
        const auto connection = connect("breaks-row");
        const auto rows = firstBlock(*connection);
        const Error error = errorOf([&] { rows->next(); });
        QCOMPARE(error.number, 4711);
        QCOMPARE(error.description, "[Awkward]Numeric value out of range (SQL state 22003)");
        QVERIFY(connection->isOpen());
    }

    void stalls_data()
    {
        const Rows<QString> row("habit");
        row("obeys a cancel", "stalls");
        row("obeys nothing", "deaf");
    }
    void stalls()
    {
        QFETCH(QString, habit);
        const auto connection = connect(habit);
        auto rows = firstBlock(*connection);
        QElapsedTimer timer;
        timer.start();
        const Error error = errorOf([&] { rows->next(); });
        QCOMPARE(error.number, int(DatabaseTimeout));
        QCOMPARE(error.description, "The database did not answer within 1 s");
        QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
        QVERIFY(!connection->isOpen());
        QVERIFY_EXCEPTION_THROWN(rows->next(), Error);
        QVERIFY_EXCEPTION_THROWN(connection->open("x"), Error);
        rows.reset();
        firstBlock(*connect("none"));
    }

private:
    static std::unique_ptr<OdbcConnection> connect(const QString &habit)
    {
        return std::make_unique<OdbcConnection>(
            QString("DRIVER=" AWKWARD_DRIVER ";HABIT=%1;").arg(habit), 10, 1, false);
    }
    /// A recordset read up to the end of its first block.
    static std::unique_ptr<Recordset> firstBlock(OdbcConnection &connection)
    {
        auto rows = connection.open("x", {"id"});
        for (int id = 1; id <= 4096; ++id) {
            if (!rows->next())
                throw std::runtime_error("rows are missing");
        }
        return rows;
    }
};

QTEST_GUILESS_MAIN(tst_OdbcHabits)
#include "tst_OdbcHabits.moc"
