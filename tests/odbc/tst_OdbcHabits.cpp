#include "core/Error.h"
#include "data/odbc/OdbcConnection.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QTest>

/// What other drivers do, by a driver of the tests' own.
class tst_OdbcHabits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void blocks_data();
    void blocks();
    void bytesForTexts();
    void rowInError();
    void stalls_data();
    void stalls();

private:
    static std::unique_ptr<Connection> connect(const QString &habit)
    {
        return std::make_unique<OdbcConnection>(
            QString("DRIVER=" AWKWARD_DRIVER ";HABIT=%1;").arg(habit), 10, 1, false);
    }
};

void tst_OdbcHabits::blocks_data()
{
    QTest::addColumn<QString>("habit");
    for (const char *habit :
         {"none", "refuses-size", "changes-size", "refuses-count", "refuses-fetch"})
        QTest::newRow(habit) << QString(habit);
}

void tst_OdbcHabits::blocks()
{
    QFETCH(QString, habit);
    const auto connection = connect(habit);
    const auto rows = connection->open("x", {"id", "at", "flag"});
    constexpr int milliseconds[] = {0, 3, 7, 997};
    const qint64 day = QDateTime(QDate(2024, 2, 29), QTime(23, 0), Qt::UTC).toMSecsSinceEpoch();
    for (int id = 1; id <= 5000; ++id) {
        QVERIFY(rows->next());
        QCOMPARE(rows->integer(0), id);
        QCOMPARE(rows->isNull(1), id == 7);
        QCOMPARE(rows->isNull(2), id == 7);
        if (id == 7)
            continue;
        QCOMPARE(rows->instant(1), day + (id % 60) * 60'000 + 59'000 + milliseconds[id % 4]);
        QCOMPARE(rows->integer(2), -(id % 2));
    }
    QVERIFY(!rows->next());
}

void tst_OdbcHabits::bytesForTexts()
{
    const auto connection = connect("none");
    for (int round = 0; round < 2; ++round) {
        const auto rows = connection->open("x", {"id", "name"});
        for (int id = 1; id <= 5000; ++id) {
            QVERIFY(rows->next());
            QCOMPARE(rows->integer(0), id);
            QCOMPARE(rows->isNull(1), id == 7);
            QCOMPARE(rows->text(1), id == 7 ? QString() : QString::fromUtf8("Zürich %1").arg(id));
        }
        QVERIFY(!rows->next());
    }
}

void tst_OdbcHabits::rowInError()
{
    const auto connection = connect("breaks-row");
    const auto rows = connection->open("x", {"id"});
    for (int id = 1; id <= 4096; ++id)
        QVERIFY(rows->next());
    try {
        rows->next();
        QFAIL("a row in error passes");
    } catch (const Error &error) {
        QCOMPARE(error.number, 4711);
        QCOMPARE(error.description,
                 QString("[Awkward]Numeric value out of range (SQL state 22003)"));
    }
    QVERIFY(connection->isOpen());
}

void tst_OdbcHabits::stalls_data()
{
    QTest::addColumn<QString>("habit");
    QTest::newRow("obeys a cancel") << "stalls";
    QTest::newRow("obeys nothing") << "deaf";
}

void tst_OdbcHabits::stalls()
{
    QFETCH(QString, habit);
    const auto connection = connect(habit);
    auto rows = connection->open("x", {"id"});
    for (int id = 1; id <= 4096; ++id)
        QVERIFY(rows->next());
    QElapsedTimer timer;
    timer.start();
    try {
        rows->next();
        QFAIL("no error");
    } catch (const Error &error) {
        QCOMPARE(error.number, int(DatabaseTimeout));
        QCOMPARE(error.description, QString("The database did not answer within 1 s"));
    }
    QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(!connection->isOpen());
    QVERIFY_EXCEPTION_THROWN(rows->next(), Error);
    QVERIFY_EXCEPTION_THROWN(connection->open("x"), Error);
    rows.reset();

    const auto next = connect("none");
    QVERIFY(next->open("x", {"id"})->next());
}

QTEST_GUILESS_MAIN(tst_OdbcHabits)
#include "tst_OdbcHabits.moc"
