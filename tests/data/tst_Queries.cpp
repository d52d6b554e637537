#include "Zones.h"
#include "core/State.h"
#include "data/DayNumbers.h"
#include "data/Queries.h"

#include <QTest>

class tst_Queries : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { resetState(); }

    void dataSelection();
    void stateSummary_data();
    void stateSummary();
    void dataValues_data();
    void dataValues();
    void dayNumbers_data();
    void dayNumbers();
};

void tst_Queries::dataSelection()
{
    const QString expected = QStringLiteral(
        "SELECT [Devices].[MUID], [Devices].[IDent], [Devices].[MachName], [Devices].[MachDesc], "
        "[DataFields].[DataIDent], [DataFields].[DataName], [DataFields].[DataDesc],  "
        "[DataFields].[iScale],  [Scales].[ScaleName],  [Scales].[ScaleAbbr],  "
        "[Devices].[MachExclude],  [DataFields].[IsGlobal] FROM [Scales]      INNER JOIN "
        "([Devices] INNER JOIN [DataFields] ON [Devices].[IDent] = [DataFields].[IDent]) "
        "ON [Scales].[iScale] = [DataFields].[iScale]");
    QCOMPARE(GetDataSelectionSQL(), expected);
    gGraphDataSQL = true;
    QCOMPARE(GetDataSelectionSQL(), expected);
}

void tst_Queries::stateSummary_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<bool>("sqlServer");
    QTest::addColumn<QDateTime>("start");
    QTest::addColumn<QDateTime>("end");
    QTest::addColumn<QString>("devices");
    QTest::addColumn<QString>("period");
    QTest::addColumn<QString>("filter");

    const auto access = [](const char *from, const char *to) {
        return QStringLiteral("  [DataValues].[iDate] >= CDATE(%1)\r\n"
                              "  AND [DataValues].[iDate] <= CDATE(%2)\r\n")
            .arg(QLatin1String(from), QLatin1String(to));
    };
    const auto server = [](const char *from, const char *to) {
        return QStringLiteral("  [DataValues].[iDate] > CAST ('%1' as DateTime)\r\n"
                              "  AND [DataValues].[iDate] <= CAST('%2'  as DateTime)\r\n")
            .arg(QLatin1String(from), QLatin1String(to));
    };
    const QString all = QStringLiteral("  AND DataFields.iScale=21 ");
    const QDateTime noon = at("2024-03-01T12:00:00");
    const QDateTime midnight = at("2024-03-01T00:00:00");
    const QDateTime evening = at("2024-03-01T18:00:00");

    QTest::newRow("all devices") << QByteArray("UTC") << false << noon << evening << QString()
                                 << access("45352.5", "45352.75") << all;
    QTest::newRow("a midnight start is one second later")
        << QByteArray("UTC") << false << midnight << evening << QString()
        << access("45352.00001157408", "45352.75") << all;
    QTest::newRow("on SQL Server too")
        << QByteArray("UTC") << true << midnight << evening << QString()
        << server("2024-03-01T00:00:01.000", "2024-03-01T18:00:00.000") << all;
    QTest::newRow("a midnight end stays")
        << QByteArray("UTC") << false << at("2024-02-29T12:00:00") << midnight << QString()
        << access("45351.5", "45352") << all;
    QTest::newRow("part of a second after midnight is midnight")
        << QByteArray("UTC") << true << at("2024-03-01T00:00:00.700") << evening << QString()
        << server("2024-03-01T00:00:01.000", "2024-03-01T18:00:00.000") << all;
    QTest::newRow("one device") << QByteArray("UTC") << false << noon << evening
                                << QStringLiteral("ABC") << access("45352.5", "45352.75")
                                << QStringLiteral(
                                       " AND Devices.MUID ='ABC'  AND DataFields.iScale=21 ");
    QTest::newRow("two devices") << QByteArray("UTC") << false << noon << evening
                                 << QStringLiteral("A,B") << access("45352.5", "45352.75")
                                 << QStringLiteral(
                                        " AND Devices.MUID in('A','B')  AND DataFields.iScale=21 ");
    QTest::newRow("a quoted list is used as it is")
        << QByteArray("UTC") << true << noon << evening << QStringLiteral("'A', 'B''s'")
        << server("2024-03-01T12:00:00.000", "2024-03-01T18:00:00.000")
        << QStringLiteral(" AND Devices.MUID in('A', 'B''s')  AND DataFields.iScale=21 ");
    QTest::newRow("one quoted device")
        << QByteArray("UTC") << false << noon << evening << QStringLiteral("'A'")
        << access("45352.5", "45352.75")
        << QStringLiteral(" AND Devices.MUID ='A'  AND DataFields.iScale=21 ");
    // 31 March 2024: Berlin goes from +1 to +2 at 01:00 UTC.
    QTest::newRow("rules in force at each bound")
        << QByteArray("Europe/Berlin") << true << at("2024-03-31T01:30:00")
        << at("2024-03-31T04:30:00") << QString()
        << server("2024-03-31T00:30:00.000", "2024-03-31T02:30:00.000") << all;
    QTest::newRow("west of UTC") << QByteArray("America/New_York") << false
                                 << at("2024-03-01T19:00:00") << at("2024-03-01T23:59:59")
                                 << QString() << access("45353", "45353.20832175926") << all;
}

void tst_Queries::stateSummary()
{
    QFETCH(QByteArray, zone);
    QFETCH(bool, sqlServer);
    QFETCH(QDateTime, start);
    QFETCH(QDateTime, end);
    QFETCH(QString, devices);
    QFETCH(QString, period);
    QFETCH(QString, filter);

    setZone(zone.constData());
    gGraphDataSQL = sqlServer;
    gGraphDataDSN = true; // of no influence
    const QString expected =
        QLatin1String(sqlServer ? "SELECT DISTINCT " : "SELECT DISTINCTROW") +
        QLatin1String("   Devices.IDent AS [IDent],    DataFields.DataIDent AS [DataIDent],    "
                      "Sum(DataValues.iState) AS [sumiState],    Count(1) AS [QCount] \r\n FROM "
                      "   Devices INNER JOIN    (DataFields       INNER JOIN       DataValues ON "
                      "DataFields.DataIDent = DataValues.DataIDent)    ON Devices.IDent = "
                      "DataFields.IDent \r\n WHERE \r\n") +
        period + filter +
        QLatin1String("  AND DataFields.IsGlobal<>0  GROUP BY    Devices.IDent,    "
                      "DataFields.DataIDent\r\n");
    QCOMPARE(GetStateSummarySQL(start, end, devices), expected);
}

void tst_Queries::dataValues_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<bool>("sqlServer");
    QTest::addColumn<QDateTime>("start");
    QTest::addColumn<QDateTime>("end");
    QTest::addColumn<QString>("expected");

    QTest::newRow("Access, midnight stays")
        << QByteArray("UTC") << false << at("2024-03-01T00:00:00") << at("2024-03-01T06:00:00")
        << QStringLiteral(" SELECT * from DataValues Where  [DataValues].[DataIDent] = 17     AND "
                          "[DataValues].[iDate] >= CDATE(45352 )\r\n     AND [DataValues].[iDate] "
                          "<= CDATE(45352.25 )\r\n ORDER BY iDate;");
    QTest::newRow("SQL Server")
        << QByteArray("Europe/Berlin") << true << at("2024-07-01T00:00:00.900")
        << at("2024-07-01T23:59:59")
        << QStringLiteral("SELECT * from DataValues where  DataValues.DataIDent = 17  AND "
                          "[DataValues].[iDate] >= CAST('2024-06-30T22:00:00.000' as  DateTime)\r\n"
                          "  AND [DataValues].[iDate] <= CAST('2024-07-01T21:59:59.000' as "
                          "DateTime)\r\n\r\n ORDER BY IDate ");
    // 7 April 2024: Lord Howe goes back from +11 to +10:30 at 15:00 UTC of the day before.
    QTest::newRow("half-hour change")
        << QByteArray("Australia/Lord_Howe") << false << at("2024-04-07T01:00:00")
        << at("2024-04-07T03:00:00")
        << QStringLiteral(" SELECT * from DataValues Where  [DataValues].[DataIDent] = 17     AND "
                          "[DataValues].[iDate] >= CDATE(45388.583333333336 )\r\n     AND "
                          "[DataValues].[iDate] <= CDATE(45388.6875 )\r\n ORDER BY iDate;");
    QTest::newRow("never an exponent")
        << QByteArray("UTC") << false << at("1899-12-30T00:00:01") << at("1899-12-31T00:00:00")
        << QStringLiteral(" SELECT * from DataValues Where  [DataValues].[DataIDent] = 17     AND "
                          "[DataValues].[iDate] >= CDATE(0.000011574074074074073 )\r\n     AND "
                          "[DataValues].[iDate] <= CDATE(1 )\r\n ORDER BY iDate;");
}

void tst_Queries::dataValues()
{
    QFETCH(QByteArray, zone);
    QFETCH(bool, sqlServer);
    QFETCH(QDateTime, start);
    QFETCH(QDateTime, end);

    setZone(zone.constData());
    gGraphDataSQL = sqlServer;
    QTEST(GetDataValuesSQL(QStringLiteral("17"), start, end), "expected");
}

void tst_Queries::dayNumbers_data()
{
    QTest::addColumn<qint64>("instant");
    QTest::newRow("epoch") << qint64(0);
    QTest::newRow("first day") << utc("1899-12-30T00:00:00");
    QTest::newRow("before it") << utc("1899-12-28T18:00:00.001");
    QTest::newRow("last millisecond") << utc("2024-12-31T23:59:59.999");
    QTest::newRow("an odd one") << utc("2024-03-01T07:05:09.123");
    QTest::newRow("far ahead") << utc("9999-12-31T23:59:59.999");
}

void tst_Queries::dayNumbers()
{
    QFETCH(qint64, instant);
    QCOMPARE(instantOfDay(dayNumber(instant)), instant);
    QVERIFY(dayNumber(instant) < dayNumber(instant + 1));
}

QTEST_GUILESS_MAIN(tst_Queries)
#include "tst_Queries.moc"
