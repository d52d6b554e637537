#include "../support/Sandbox.h"
#include "core/Clock.h"
#include "definitions/Dates.h"

#include <QRegularExpression>
#include <QTest>

namespace {

QDateTime wall(const QString &text)
{
    QDateTime date = QDateTime::fromString(text, Qt::ISODate);
    date.setTimeSpec(Qt::UTC);
    return date;
}

} // namespace

class TestDates : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesInUtc_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<QString>("local");
        QTest::addColumn<QString>("written");
        const auto row = [](const char *zone, const char *local, const char *written) {
            QTest::addRow("%s %s", zone, local)
                << QByteArray(zone) << QString::fromLatin1(local) << QString::fromLatin1(written);
        };
        row("UTC", "2024-03-05T14:07:09", "2024-03-05T14:07:09-00:00");
        row("Europe/Berlin", "2024-03-05T14:07:09", "2024-03-05T13:07:09-00:00");
        row("Europe/Berlin", "2024-07-05T00:30:00", "2024-07-04T22:30:00-00:00");
        row("Europe/Berlin", "2024-03-31T01:59:59", "2024-03-31T00:59:59-00:00");
        row("Europe/Berlin", "2024-03-31T03:00:00", "2024-03-31T01:00:00-00:00");
        row("America/New_York", "2024-12-31T23:30:00", "2025-01-01T04:30:00-00:00");
        row("America/New_York", "2024-03-10T03:00:00", "2024-03-10T07:00:00-00:00");
        row("Australia/Lord_Howe", "2024-01-15T12:00:00", "2024-01-15T01:00:00-00:00");
        row("Australia/Lord_Howe", "2024-06-15T12:00:00", "2024-06-15T01:30:00-00:00");
        // 02:00 to 02:29 do not exist on that day; the clock goes on from 02:30.
        row("Australia/Lord_Howe", "2024-10-06T02:30:00", "2024-10-05T15:30:00-00:00");
    }
    void writesInUtc()
    {
        QFETCH(QByteArray, zone);
        QFETCH(QString, local);
        QFETCH(QString, written);
        const LocalZone localZone(zone);
        const QDateTime date = wall(local);
        QCOMPARE(DateToXML(date), written);
        QCOMPARE(XMLToDate(written), date);
        QCOMPARE(DateToXML(date.addMSecs(999)), written);
    }

    void readsLikeTheFirstOfRepeatedHours()
    {
        const LocalZone zone("Europe/Berlin");
        QCOMPARE(DateToXML(wall(QStringLiteral("2024-10-27T02:30:00"))),
                 u"2024-10-27T00:30:00-00:00");
        QCOMPARE(XMLToDate(QStringLiteral("2024-10-27T01:30:00-00:00")),
                 wall(QStringLiteral("2024-10-27T02:30:00")));
    }

    void readsTheFormAlone_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected"); // empty: of another form
        const auto row = [](const char *name, const char *text, const char *expected) {
            QTest::newRow(name) << QString::fromLatin1(text) << QString::fromLatin1(expected);
        };
        row("plain", "2024-03-05T13:07:09-00:00", "2024-03-05T14:07:09");
        row("other separators", "2024-03-05T13.07.09-00.00", "2024-03-05T14:07:09");
        row("other characters", "2024-03-05T13x07 09-00/00", "2024-03-05T14:07:09");
        row("month and day roll over", "2023-14-31T00:00:00-00:00", "2024-03-02T01:00:00");
        row("day 0", "2024-03-00T00:00:00-00:00", "2024-02-29T01:00:00");
        row("hours roll over", "2024-03-05T25:61:61-00:00", "2024-03-06T03:02:01");
        row("one digit", "2024-3-5T13:07:09-00:00", "");
        row("date separators count", "2024/03/05T13:07:09-00:00", "");
        row("lower-case t", "2024-03-05t13:07:09-00:00", "");
        row("another offset", "2024-03-05T13:07:09-01:00", "");
        row("plus sign", "2024-03-05T13:07:09+00:00", "");
        row("no offset", "2024-03-05T13:07:09", "");
        row("blank behind", "2024-03-05T13:07:09-00:00 ", "");
        row("letter among digits", "2O24-03-05T13:07:09-00:00", "");
        row("empty", "", "");
    }
    void readsTheFormAlone()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        const LocalZone zone("Europe/Berlin");
        const FrozenClock clock(QStringLiteral("2024-07-01T12:00:00"));
        const QDateTime presentInUtc = wall(QStringLiteral("2024-07-01T10:00:00"));
        QCOMPARE(XMLToDate(text), expected.isEmpty() ? presentInUtc : wall(expected));
    }

    void everyDateOutlivesTheFile()
    {
        for (const char *zone :
             {"UTC", "Europe/Berlin", "America/New_York", "Australia/Lord_Howe"}) {
            const LocalZone localZone(zone);
            QCOMPARE(XMLToDate(DateToXML(zeroDate())), zeroDate());
            QCOMPARE(XMLToDate(DateToXML(QDateTime())), zeroDate());
            // Half-hour steps through a year: only skipped times may come back changed.
            int changed = 0;
            for (QDateTime date = wall(QStringLiteral("2024-01-01T00:00:00"));
                 date.date().year() == 2024; date = date.addSecs(1800)) {
                if (XMLToDate(DateToXML(date)) != date)
                    ++changed;
            }
            const QByteArray name(zone);
            QCOMPARE(changed, name == "UTC" ? 0 : name == "Australia/Lord_Howe" ? 1 : 2);
        }
    }

    void rollsDatesOver_data()
    {
        QTest::addColumn<int>("year");
        QTest::addColumn<int>("month");
        QTest::addColumn<int>("day");
        QTest::addColumn<QDate>("expected");
        QTest::newRow("plain") << 2024 << 2 << 29 << QDate(2024, 2, 29);
        QTest::newRow("30 February") << 2023 << 2 << 30 << QDate(2023, 3, 2);
        QTest::newRow("30 February, leap year") << 2024 << 2 << 30 << QDate(2024, 3, 1);
        QTest::newRow("day 31 of 30") << 2024 << 11 << 31 << QDate(2024, 12, 1);
        QTest::newRow("month 0") << 2024 << 0 << 15 << QDate(2023, 12, 15);
        QTest::newRow("month -12") << 2024 << -12 << 1 << QDate(2022, 12, 1);
        QTest::newRow("month 13") << 2024 << 13 << 1 << QDate(2025, 1, 1);
        QTest::newRow("day 0") << 2024 << 1 << 0 << QDate(2023, 12, 31);
        QTest::newRow("year 0") << 0 << 1 << 1 << QDate(100, 1, 1);
    }
    void rollsDatesOver()
    {
        QFETCH(int, year);
        QFETCH(int, month);
        QFETCH(int, day);
        QTEST(dateSerial(year, month, day), "expected");
    }

    void makesNewIdentifiers()
    {
        const QRegularExpression form(
            QStringLiteral("^\\{[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}\\}$"));
        const QString id = NewID();
        QVERIFY2(form.match(id).hasMatch(), qPrintable(id));
        QVERIFY(NewID() != id);
        QCOMPARE(folderSafe(id).size(), 32);
        QCOMPARE(folderSafe(QStringLiteral("{A-1}, b.c_ü")), QStringLiteral("A1 bc_ü"));
    }
};

QTEST_GUILESS_MAIN(TestDates)
#include "tst_dates.moc"
