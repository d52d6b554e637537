#include "core/Clock.h"
#include "definitions/Dates.h"
#include "support/Rows.h"
#include "support/Sandbox.h"

#include <QRegularExpression>

namespace {

QDateTime wall(const QString &text)
{
    return QDateTime::fromString(text + 'Z', Qt::ISODate);
}

} // namespace

class TestDates : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesInUtc_data()
    {
        const Rows<QString, QString> row("local", "written"); // named by the zone
        row("UTC", "2024-03-05T14:07:09", "2024-03-05T14:07:09-00:00");
        row("Europe/Berlin", "2024-07-05T00:30:00", "2024-07-04T22:30:00-00:00");
        row("America/New_York", "2024-12-31T23:30:00", "2025-01-01T04:30:00-00:00");
        // 02:00 to 02:29 do not exist on that day; the clock goes on from 02:30.
        row("Australia/Lord_Howe", "2024-10-06T02:30:00", "2024-10-05T15:30:00-00:00");
    }
    void writesInUtc()
    {
        QFETCH(QString, local);
        QFETCH(QString, written);
        const LocalZone localZone(QTest::currentDataTag());
        QCOMPARE(DateToXML(wall(local)), written);
        QCOMPARE(XMLToDate(written), wall(local));
        QCOMPARE(DateToXML(wall(local).addMSecs(999)), written);
    }

    void readsTheFormAlone()
    {
        const LocalZone zone("Europe/Berlin");
        QCOMPARE(XMLToDate("2024-03-05T13:07:09-00:00"), wall("2024-03-05T14:07:09"));
        QCOMPARE(XMLToDate("2024-03-05T13x07 09-00/00"), wall("2024-03-05T14:07:09"));
        QCOMPARE(XMLToDate("2023-14-31T00:00:00-00:00"), wall("2024-03-02T01:00:00"));
        QCOMPARE(XMLToDate("2024-03-00T00:00:00-00:00"), wall("2024-02-29T01:00:00"));
        QCOMPARE(XMLToDate("2024-03-05T25:61:61-00:00"), wall("2024-03-06T03:02:01"));
        QCOMPARE(XMLToDate("2024-10-27T00:30:00-00:00"), wall("2024-10-27T02:30:00"));
        QCOMPARE(XMLToDate("2024-10-27T01:30:00-00:00"), wall("2024-10-27T02:30:00"));

        const FrozenClock clock("2024-07-01T12:00:00");
        for (const char *other :
             {"2024-3-5T13:07:09-00:00", "2024/03/05T13:07:09-00:00", "2024-03-05t13:07:09-00:00",
              "2024-03-05T13:07:09-01:00", "2024-03-05T13:07:09+00:00", "2024-03-05T13:07:09",
              "2024-03-05T13:07:09-00:00 ", "2O24-03-05T13:07:09-00:00", ""})
            QVERIFY2(XMLToDate(other) == wall("2024-07-01T10:00:00"), other); // the present in UTC
    }

    void everyDateOutlivesTheFile_data()
    {
        const Rows<int> row("skipped"); // half hours that the zone's clock does not show
        row("UTC", 0);
        row("Europe/Berlin", 2);
        row("America/New_York", 2);
        row("Australia/Lord_Howe", 1);
    }
    void everyDateOutlivesTheFile()
    {
        const LocalZone localZone(QTest::currentDataTag());
        QCOMPARE(XMLToDate(DateToXML(zeroDate())), zeroDate());
        QCOMPARE(XMLToDate(DateToXML(QDateTime())), zeroDate());
        int changed = 0;
        for (QDateTime date = wall("2024-01-01T00:00:00"); date.date().year() == 2024;
             date = date.addSecs(1800))
            changed += XMLToDate(DateToXML(date)) != date;
        QTEST(changed, "skipped");
    }

    void rollsDatesOver()
    {
        QCOMPARE(dateSerial(2024, 2, 29), QDate(2024, 2, 29));
        QCOMPARE(dateSerial(2023, 2, 30), QDate(2023, 3, 2));
        QCOMPARE(dateSerial(2024, 11, 31), QDate(2024, 12, 1));
        QCOMPARE(dateSerial(2024, 0, 15), QDate(2023, 12, 15));
        QCOMPARE(dateSerial(2024, -12, 1), QDate(2022, 12, 1));
        QCOMPARE(dateSerial(2024, 13, 1), QDate(2025, 1, 1));
        QCOMPARE(dateSerial(2024, 1, 0), QDate(2023, 12, 31));
        QCOMPARE(dateSerial(0, 1, 1), QDate(100, 1, 1));
    }

    void makesNewIdentifiers()
    {
        const QRegularExpression form("^\\{[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\\}$");
        const QString id = NewID();
        QVERIFY2(form.match(id).hasMatch(), qPrintable(id));
        QVERIFY(NewID() != id);
        QCOMPARE(folderSafe(id).size(), 32);
        QCOMPARE(folderSafe("{A-1}, b.c_ü"), "A1 bc_ü");
    }
};

QTEST_GUILESS_MAIN(TestDates)
#include "tst_dates.moc"
