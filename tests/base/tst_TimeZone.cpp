#include "support/Sandbox.h"
#include "support/Zones.h"

#include <QTest>

class TestTimeZone : public QObject
{
    Q_OBJECT

    const ProgramState m_state;

private Q_SLOTS:
    void wallTimesToInstants()
    {
        // A wall time, its instant and the wall time of that instant.
        const char *const cases[][4] = {
            {"UTC", "2024-03-31T02:30", "2024-03-31T02:30", "2024-03-31T02:30"},
            {"Europe/Berlin", "2024-03-31T02:30", "2024-03-31T01:30", "2024-03-31T03:30"},
            {"Europe/Berlin", "2024-03-31T03:00", "2024-03-31T01:00", "2024-03-31T03:00"},
            {"Europe/Berlin", "2024-10-27T02:30", "2024-10-27T00:30", "2024-10-27T02:30"},
            {"Europe/Berlin", "2024-10-27T03:00", "2024-10-27T02:00", "2024-10-27T03:00"},
            {"Australia/Lord_Howe", "2024-10-06T02:15", "2024-10-05T15:45", "2024-10-06T02:45"},
            {"Australia/Lord_Howe", "2024-04-07T01:45", "2024-04-06T14:45", "2024-04-07T01:45"},
#ifndef Q_OS_WIN // has no rule of that year, and Kathmandu by its former name alone
            {"Pacific/Apia", "2011-12-30T12:00", "2011-12-30T22:00", "2011-12-31T12:00"},
            {"Asia/Kathmandu", "2024-01-01T12:00", "2024-01-01T06:15", "2024-01-01T12:00"},
#endif
        };
        for (const auto &[zone, wall, instant, back] : cases) {
            const LocalZone localZone(zone);
            const QDateTime within = at(wall).addMSecs(999); // of a second
            QCOMPARE(LocalToUTC(within), at(instant));
            QCOMPARE(UTCToLocal(at(instant).addMSecs(999)), at(back));
            QCOMPARE(instantOf(within), utc(instant) + 999);
            QCOMPARE(wallTime(utc(instant) + 999), at(back).addMSecs(999));
        }
    }

#ifndef Q_OS_WIN
    void takesTheFileOfAZone()
    {
        const Sandbox sandbox;
        const QString berlin = "/usr/share/zoneinfo/Europe/Berlin";
        QVERIFY(QFile::link(berlin, sandbox.path("link")));
        QVERIFY(QFile::copy(berlin, sandbox.path("copy")));
        for (const QString &name : {berlin, ':' + berlin, QString(berlin).insert(20, "posix/"),
                                    sandbox.path("link"), sandbox.path("copy")}) {
            const LocalZone zone(name.toUtf8());
            QVERIFY2(UTCToLocal(at("2024-07-01T10:00")) == at("2024-07-01T12:00") &&
                         UTCToLocal(at("2024-01-01T10:00")) == at("2024-01-01T11:00"),
                     qPrintable(name));
        }
    }
#endif

    void namesTheZone()
    {
        const auto text = [](const QByteArray &zone, const QByteArray &from, const QByteArray &to) {
            const LocalZone localZone(zone);
            return zoneText(utc(from + "T12:00"), utc(to + "T12:00"));
        };
        QCOMPARE(text("UTC", "2024-01-01", "2024-12-31"), "UTC");
        QCOMPARE(text("Europe/Berlin", "2024-01-01", "2024-01-31"), "Europe/Berlin, UTC+01:00");
        QCOMPARE(text("Europe/Berlin", "2024-03-01", "2024-04-30"),
                 "Europe/Berlin, UTC+01:00 to UTC+02:00");
        QCOMPARE(text("America/St_Johns", "2024-07-01", "2024-07-02"),
                 "America/St_Johns, UTC-02:30");
    }
};

QTEST_GUILESS_MAIN(TestTimeZone)
#include "tst_TimeZone.moc"
