#include "core/State.h"
#include "data/DayNumbers.h"
#include "data/Queries.h"
#include "support/Rows.h"
#include "support/Zones.h"

class tst_Queries : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { resetState(); }

    void dataSelection()
    {
        const QString expected =
            "SELECT [Devices].[MUID], [Devices].[IDent], [Devices].[MachName], "
            "[Devices].[MachDesc], "
            "[DataFields].[DataIDent], [DataFields].[DataName], [DataFields].[DataDesc],  "
            "[DataFields].[iScale],  [Scales].[ScaleName],  [Scales].[ScaleAbbr],  "
            "[Devices].[MachExclude],  [DataFields].[IsGlobal] FROM [Scales]      INNER JOIN "
            "([Devices] INNER JOIN [DataFields] ON [Devices].[IDent] = [DataFields].[IDent]) "
            "ON [Scales].[iScale] = [DataFields].[iScale]";
        QCOMPARE(GetDataSelectionSQL(), expected);
        gGraphDataSQL = true;
        QCOMPARE(GetDataSelectionSQL(), expected);
    }

    void stateSummary_data()
    {
        const Rows<QByteArray, bool, QByteArray, QByteArray, QString, QString, QString> row(
            "zone", "sqlServer", "start", "end", "devices", "period", "filter");
        const auto access = [](const char *from, const char *to) {
            return QString("  [DataValues].[iDate] >= CDATE(%1)\r\n"
                           "  AND [DataValues].[iDate] <= CDATE(%2)\r\n")
                .arg(from, to);
        };
        const auto server = [](const char *from, const char *to) {
            return QString("  [DataValues].[iDate] > CAST ('%1' as DateTime)\r\n"
                           "  AND [DataValues].[iDate] <= CAST('%2'  as DateTime)\r\n")
                .arg(from, to);
        };
        const QString all = "  AND DataFields.iScale=21 ";
        const char *noon = "2024-03-01T12:00:00";
        const char *midnight = "2024-03-01T00:00:00";
        const char *evening = "2024-03-01T18:00:00";
        const QString afternoon = access("45352.5", "45352.75");
        row("all devices", "UTC", false, noon, evening, "", afternoon, all);
        row("a midnight start is one second later", "UTC", false, midnight, evening, "",
            access("45352.00001157408", "45352.75"), all);
        row("on SQL Server too", "UTC", true, midnight, evening, "",
            server("2024-03-01T00:00:01.000", "2024-03-01T18:00:00.000"), all);
        row("a midnight end stays", "UTC", false, "2024-02-29T12:00:00", midnight, "",
            access("45351.5", "45352"), all);
        row("part of a second after midnight is midnight", "UTC", true, "2024-03-01T00:00:00.700",
            evening, "", server("2024-03-01T00:00:01.000", "2024-03-01T18:00:00.000"), all);
        row("one device", "UTC", false, noon, evening, "ABC", afternoon,
            " AND Devices.MUID ='ABC'  AND DataFields.iScale=21 ");
        row("two devices", "UTC", false, noon, evening, "A,B", afternoon,
            " AND Devices.MUID in('A','B')  AND DataFields.iScale=21 ");
        row("a quoted list is used as it is", "UTC", true, noon, evening, "'A', 'B''s'",
            server("2024-03-01T12:00:00.000", "2024-03-01T18:00:00.000"),
            " AND Devices.MUID in('A', 'B''s')  AND DataFields.iScale=21 ");
        row("one quoted device", "UTC", false, noon, evening, "'A'", afternoon,
            " AND Devices.MUID ='A'  AND DataFields.iScale=21 ");
        // 31 March 2024: Berlin goes from +1 to +2 at 01:00 UTC.
        row("rules in force at each bound", "Europe/Berlin", true, "2024-03-31T01:30:00",
            "2024-03-31T04:30:00", "", server("2024-03-31T00:30:00.000", "2024-03-31T02:30:00.000"),
            all);
        row("west of UTC", "America/New_York", false, "2024-03-01T19:00:00", "2024-03-01T23:59:59",
            "", access("45353", "45353.20832175926"), all);
    }
    void stateSummary()
    {
        QFETCH(QByteArray, zone);
        QFETCH(bool, sqlServer);
        QFETCH(QByteArray, start);
        QFETCH(QByteArray, end);
        QFETCH(QString, devices);
        QFETCH(QString, period);
        QFETCH(QString, filter);

        setZone(zone);
        gGraphDataSQL = sqlServer;
        gGraphDataDSN = true; // of no influence
        const QString expected =
            (sqlServer ? "SELECT DISTINCT " : "SELECT DISTINCTROW") +
            QString("   Devices.IDent AS [IDent],    DataFields.DataIDent AS [DataIDent],    "
                    "Sum(DataValues.iState) AS [sumiState],    Count(1) AS [QCount] \r\n FROM "
                    "   Devices INNER JOIN    (DataFields       INNER JOIN       DataValues ON "
                    "DataFields.DataIDent = DataValues.DataIDent)    ON Devices.IDent = "
                    "DataFields.IDent \r\n WHERE \r\n") +
            period + filter +
            "  AND DataFields.IsGlobal<>0  GROUP BY    Devices.IDent,    DataFields.DataIDent\r\n";
        QCOMPARE(GetStateSummarySQL(at(start), at(end), devices), expected);
    }

    void dataValues_data()
    {
        const Rows<QByteArray, bool, QByteArray, QByteArray, QString> row(
            "zone", "sqlServer", "start", "end", "expected");
        const auto access = [](const char *from, const char *to) {
            return QString(" SELECT * from DataValues Where  [DataValues].[DataIDent] = 17     AND "
                           "[DataValues].[iDate] >= CDATE(%1 )\r\n     AND [DataValues].[iDate] "
                           "<= CDATE(%2 )\r\n ORDER BY iDate;")
                .arg(from, to);
        };
        row("Access, midnight stays", "UTC", false, "2024-03-01T00:00:00", "2024-03-01T06:00:00",
            access("45352", "45352.25"));
        row("SQL Server", "Europe/Berlin", true, "2024-07-01T00:00:00.900", "2024-07-01T23:59:59",
            "SELECT * from DataValues where  DataValues.DataIDent = 17  AND "
            "[DataValues].[iDate] >= CAST('2024-06-30T22:00:00.000' as  DateTime)\r\n"
            "  AND [DataValues].[iDate] <= CAST('2024-07-01T21:59:59.000' as DateTime)\r\n\r\n"
            " ORDER BY IDate ");
        // 7 April 2024: Lord Howe goes back from +11 to +10:30 at 15:00 UTC of the day before.
        row("half-hour change", "Australia/Lord_Howe", false, "2024-04-07T01:00:00",
            "2024-04-07T03:00:00", access("45388.583333333336", "45388.6875"));
        row("never an exponent", "UTC", false, "1899-12-30T00:00:01", "1899-12-31T00:00:00",
            access("0.000011574074074074073", "1"));
    }
    void dataValues()
    {
        QFETCH(QByteArray, zone);
        QFETCH(bool, sqlServer);
        QFETCH(QByteArray, start);
        QFETCH(QByteArray, end);
        setZone(zone);
        gGraphDataSQL = sqlServer;
        QTEST(GetDataValuesSQL("17", at(start), at(end)), "expected");
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
