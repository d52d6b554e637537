#include "base/Clock.h"
#include "definitions/Dates.h"
#include "support/Sandbox.h"
#include "support/Zones.h"

#include <QRegularExpression>
#include <QTest>

class TestDates : public QObject
{
    Q_OBJECT

    const ProgramState m_state;

private Q_SLOTS:
    void writesInUtc()
    {
        const LocalZone berlin("Europe/Berlin");
        QCOMPARE(DateToXML(at("2024-07-05T00:30:00.999")), "2024-07-04T22:30:00-00:00");
        // 02:00 to 02:29 do not exist on that day; the clock goes on from 02:30.
        const LocalZone howe("Australia/Lord_Howe");
        QCOMPARE(DateToXML(at("2024-10-06T02:30:00")), "2024-10-05T15:30:00-00:00");
    }

    void readsTheFormAlone()
    {
        const LocalZone zone("Europe/Berlin");
        QCOMPARE(XMLToDate("2024-03-05T13x07 09-00/00"), at("2024-03-05T14:07:09"));
        QCOMPARE(XMLToDate("2023-14-31T00:00:00-00:00"), at("2024-03-02T01:00:00"));
        QCOMPARE(XMLToDate("2024-03-00T00:00:00-00:00"), at("2024-02-29T01:00:00"));
        QCOMPARE(XMLToDate("2024-03-05T25:61:61-00:00"), at("2024-03-06T03:02:01"));
        QCOMPARE(XMLToDate("2024-10-27T00:30:00-00:00"), at("2024-10-27T02:30:00"));
        QCOMPARE(XMLToDate("2024-10-27T01:30:00-00:00"), at("2024-10-27T02:30:00"));

        const FrozenClock clock("2024-07-01T12:00:00");
        for (const char *other :
             {"2024-3-5T13:07:09-00:00", "2024/03/05T13:07:09-00:00", "2024-03-05t13:07:09-00:00",
              "2024-03-05T13:07:09-01:00", "2024-03-05T13:07:09+00:00", "2024-03-05T13:07:09",
              "2024-03-05T13:07:09-00:00 ", "2O24-03-05T13:07:09-00:00", ""})
            QVERIFY2(XMLToDate(other) == at("2024-07-01T10:00:00"), other); // the present in UTC
    }
    void everyDateOutlivesTheFile()
    {
        // The half hours that the zone's clock does not show are read as others.
        for (const auto &[zone, skipped] :
             {std::pair("UTC", 0), {"Europe/Berlin", 2}, {"Australia/Lord_Howe", 1}}) {
            const LocalZone localZone(zone);
            for (const QDateTime &none : {zeroDate(), QDateTime()})
                QCOMPARE(XMLToDate(DateToXML(none)), zeroDate());
            int changed = 0;
            for (QDateTime date = at("2024-01-01T00:00:00"); date.date().year() == 2024;
                 date = date.addSecs(1800))
                changed += XMLToDate(DateToXML(date)) != date;
            QCOMPARE(changed, skipped);
        }
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
#include "tst_Dates.moc"
