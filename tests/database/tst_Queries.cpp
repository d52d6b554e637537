#include "base/DayNumbers.h"
#include "base/ProgramState.h"
#include "database/Queries.h"
#include "support/Zones.h"

#include <QRegularExpression>
#include <QTest>

class tst_Queries : public QObject
{
    Q_OBJECT

    const ProgramState m_state;

    static QString bounds(const QString &query)
    {
        QStringList found;
        static const QRegularExpression bound("CDATE\\([^)]*\\)|'[^']*'");
        for (const auto &match : bound.globalMatch(query))
            found.append(match.captured());
        return found.join(' ');
    }

private Q_SLOTS:
    /// The bounds are instants of UTC, by the zone's rules in force at each. Reports over ODBC,
    /// which are compared with those of the same Access file, show whether the rest of the texts is
    /// right.
    void periods()
    {
        SqlDialect dialect = SqlDialect::Access;
        const auto summary = [&dialect](const char *start, const char *end) {
            return bounds(GetStateSummarySQL(dialect, at(start), at(end), ""));
        };
        const auto values = [&dialect](const char *start, const char *end) {
            return bounds(GetDataValuesSQL(dialect, "17", at(start), at(end)));
        };
        setZone("UTC");
        QCOMPARE(summary("2024-02-29T12:00:00", "2024-03-01T00:00:00"),
                 "CDATE(45351.5) CDATE(45352)");
        // A summary that begins at midnight begins a second later.
        QCOMPARE(summary("2024-03-01T00:00:00", "2024-03-01T18:00:00"),
                 "CDATE(45352.00001157408) CDATE(45352.75)");
        QCOMPARE(values("2024-03-01T00:00:00", "2024-03-01T06:00:00"),
                 "CDATE(45352 ) CDATE(45352.25 )");
        QCOMPARE(values("1899-12-30T00:00:01", "1899-12-31T00:00:00"),
                 "CDATE(0.000011574074074074073 ) CDATE(1 )");
        // 7 April 2024: Lord Howe goes back from +11 to +10:30 at 15:00 UTC of the day before.
        setZone("Australia/Lord_Howe");
        QCOMPARE(values("2024-04-07T01:00:00", "2024-04-07T03:00:00"),
                 "CDATE(45388.583333333336 ) CDATE(45388.6875 )");
        setZone("America/New_York");
        QCOMPARE(summary("2024-03-01T19:00:00", "2024-03-01T23:59:59"),
                 "CDATE(45353) CDATE(45353.20832175926)");

        dialect = SqlDialect::SqlServer;
        setZone("Europe/Berlin"); // 31 March 2024: goes from +1 to +2 at 01:00 UTC
        QCOMPARE(summary("2024-03-31T01:30:00", "2024-03-31T04:30:00"),
                 "'2024-03-31T00:30:00.000' '2024-03-31T02:30:00.000'");
        QCOMPARE(summary("2024-03-01T00:00:00.700", "2024-03-01T18:00:00"),
                 "'2024-02-29T23:00:01.000' '2024-03-01T17:00:00.000'");
        QCOMPARE(values("2024-07-01T00:00:00.900", "2024-07-01T23:59:59"),
                 "'2024-06-30T22:00:00.000' '2024-07-01T21:59:59.000'");
    }
    void devices()
    {
        for (const auto &[list, condition] :
             {std::pair("", "  AND DataFields"),
              {"ABC", " AND Devices.MUID ='ABC'  AND"},
              {"A,B", " AND Devices.MUID in('A','B')  AND"},
              {"'A', 'B''s'", " AND Devices.MUID in('A', 'B''s')  AND"},
              {"'A'", " AND Devices.MUID ='A'  AND"}})
            QVERIFY2(GetStateSummarySQL(SqlDialect::Access, {}, {}, list)
                         .contains(QString("\r\n") + condition),
                     list);
    }

    void dayNumbers()
    {
        for (const char *time :
             {"1970-01-01T00:00:00", "1899-12-30T00:00:00", "1899-12-28T18:00:00.001",
              "2024-12-31T23:59:59.999", "2024-03-01T07:05:09.123", "9999-12-31T23:59:59.999"}) {
            QCOMPARE(instantOfDay(dayNumber(utc(time))), utc(time));
            QVERIFY(dayNumber(utc(time)) < dayNumber(utc(time) + 1));
        }
    }
};

QTEST_GUILESS_MAIN(tst_Queries)
#include "tst_Queries.moc"
