#include "support/Rows.h"
#include "support/Sandbox.h"

#include <QTimeZone>

namespace {

QDateTime utc(const QString &text)
{
    return QDateTime::fromString(text + 'Z', Qt::ISODate);
}

} // namespace

class TestTimeZone : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wallTimesToInstants_data()
    {
        // The instant and the wall time of that instant, on the wall's day where none is named.
        const Rows<QByteArray, QString, QString, QString> row("zone", "wall", "instant", "back");
        row("UTC", "UTC", "2024-03-31T02:30", "02:30", "02:30");
        row("Berlin gap", "Europe/Berlin", "2024-03-31T02:30", "01:30", "03:30");
        row("Berlin gap begins", "Europe/Berlin", "2024-03-31T02:00", "01:00", "03:00");
        row("Berlin gap ends", "Europe/Berlin", "2024-03-31T03:00", "01:00", "03:00");
        row("Berlin overlap", "Europe/Berlin", "2024-10-27T02:30", "00:30", "02:30");
        row("Berlin overlap ends", "Europe/Berlin", "2024-10-27T03:00", "02:00", "03:00");
        row("New York gap", "America/New_York", "2024-03-10T02:15", "07:15", "03:15");
        row("New York overlap", "America/New_York", "2024-11-03T01:15", "05:15", "01:15");
        row("Lord Howe gap", "Australia/Lord_Howe", "2024-10-06T02:15", "2024-10-05T15:45",
            "02:45");
        row("Lord Howe overlap", "Australia/Lord_Howe", "2024-04-07T01:45", "2024-04-06T14:45",
            "01:45");
#ifndef Q_OS_WIN // has no rule of that year, and Kathmandu by its former name alone
        row("Apia skips a day", "Pacific/Apia", "2011-12-30T12:00", "22:00", "2011-12-31T12:00");
        row("Kathmandu", "Asia/Kathmandu", "2024-01-01T12:00", "06:15", "12:00");
#endif
    }
    void wallTimesToInstants()
    {
        QFETCH(QByteArray, zone);
        QFETCH(QString, wall);
        QFETCH(QString, instant);
        QFETCH(QString, back);
        for (QString *text : {&instant, &back}) {
            if (text->size() == 5)
                text->prepend(wall.left(11));
        }
        const LocalZone localZone(zone);
        const qint64 milliseconds = utc(instant).toMSecsSinceEpoch() + 999;
        const QDateTime within = utc(wall).addMSecs(999); // of a second
        QCOMPARE(LocalToUTC(within), utc(instant));
        QCOMPARE(UTCToLocal(utc(instant).addMSecs(999)), utc(back));
        QCOMPARE(instantOf(within), milliseconds);
        QCOMPARE(wallTime(milliseconds), utc(back).addMSecs(999));
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
            QVERIFY2(UTCToLocal(utc("2024-07-01T10:00")) == utc("2024-07-01T12:00") &&
                         UTCToLocal(utc("2024-01-01T10:00")) == utc("2024-01-01T11:00"),
                     qPrintable(name));
        }
    }
#endif

    void spansFollowEachOther_data()
    {
        const Rows<int> row("spans");
        row("Europe/Berlin", 6);
        row("America/New_York", 6);
        row("Australia/Lord_Howe", 6);
        row("Africa/Casablanca", 7); // turns the clock back for Ramadan
        row("Asia/Tokyo", 1);
    }
    void spansFollowEachOther()
    {
        QFETCH(int, spans);
        const QByteArray name = QTest::currentDataTag();
        const LocalZone localZone(name);
        const QTimeZone zone(name);
        const auto isOffsetAt = [&zone](qint64 offset, qint64 instant) {
            const QDateTime at = QDateTime::fromMSecsSinceEpoch(instant, Qt::UTC);
            return offset == qint64(zone.offsetFromUtc(at)) * 1000;
        };
        const qint64 end = utc("2025-06-01T00:00:00").toMSecsSinceEpoch();
        qint64 at = utc("2023-01-01T00:00:00").toMSecsSinceEpoch();
        int count = 0;
        for (; at < end; ++count) {
            const OffsetSpan span = offsetSpanAt(at);
            QVERIFY(span.contains(at) && !span.contains(span.to));
            QVERIFY(count == 0 || span.from == at);
            const qint64 last = qMin(span.to, end) - 1;
            for (const qint64 instant : {at, (at + last) / 2, last})
                QVERIFY(isOffsetAt(span.offset, instant));
            QVERIFY(span.to >= end || !isOffsetAt(span.offset, span.to));
            at = span.to;
        }
        QCOMPARE(count, spans);
    }

    void namesTheZone()
    {
        const auto text = [](const QByteArray &zone, const QString &from, const QString &to) {
            const LocalZone localZone(zone);
            return zoneText(utc(from + "T12:00").toMSecsSinceEpoch(),
                            utc(to + "T12:00").toMSecsSinceEpoch());
        };
        QCOMPARE(text("UTC", "2024-01-01", "2024-12-31"), "UTC");
        QCOMPARE(text("Europe/London", "2024-01-01", "2024-01-31"), "Europe/London, UTC+00:00");
        QCOMPARE(text("Europe/Berlin", "2024-01-01", "2024-01-31"), "Europe/Berlin, UTC+01:00");
        QCOMPARE(text("Europe/Berlin", "2024-03-01", "2024-04-30"),
                 "Europe/Berlin, UTC+01:00 to UTC+02:00");
        QCOMPARE(text("America/St_Johns", "2024-07-01", "2024-07-02"),
                 "America/St_Johns, UTC-02:30");
    }
};

QTEST_GUILESS_MAIN(TestTimeZone)
#include "tst_timezone.moc"
