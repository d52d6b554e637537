#include "../support/Sandbox.h"
#include "core/Clock.h"
#include "core/TimeZone.h"

#include <QTest>
#include <QTimeZone>

namespace {

QDateTime utc(const QString &text)
{
    QDateTime date = QDateTime::fromString(text, Qt::ISODate);
    date.setTimeSpec(Qt::UTC);
    return date;
}

} // namespace

class TestTimeZone : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wallTimesToInstants_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<QString>("wall");
        QTest::addColumn<QString>("instant");
        QTest::addColumn<QString>("back"); // the wall time of that instant
        const auto row = [](const char *name, const char *zone, const char *wall,
                            const char *instant, const char *back) {
            QTest::newRow(name) << QByteArray(zone) << QString::fromLatin1(wall)
                                << QString::fromLatin1(instant) << QString::fromLatin1(back);
        };
        row("UTC", "UTC", "2024-03-31T02:30:00", "2024-03-31T02:30:00", "2024-03-31T02:30:00");
        row("Berlin gap", "Europe/Berlin", "2024-03-31T02:30:00", "2024-03-31T01:30:00",
            "2024-03-31T03:30:00");
        row("Berlin gap begins", "Europe/Berlin", "2024-03-31T02:00:00", "2024-03-31T01:00:00",
            "2024-03-31T03:00:00");
        row("Berlin gap ends", "Europe/Berlin", "2024-03-31T03:00:00", "2024-03-31T01:00:00",
            "2024-03-31T03:00:00");
        row("Berlin overlap", "Europe/Berlin", "2024-10-27T02:30:00", "2024-10-27T00:30:00",
            "2024-10-27T02:30:00");
        row("Berlin overlap ends", "Europe/Berlin", "2024-10-27T03:00:00", "2024-10-27T02:00:00",
            "2024-10-27T03:00:00");
        row("New York gap", "America/New_York", "2024-03-10T02:15:00", "2024-03-10T07:15:00",
            "2024-03-10T03:15:00");
        row("New York overlap", "America/New_York", "2024-11-03T01:15:00", "2024-11-03T05:15:00",
            "2024-11-03T01:15:00");
        row("Lord Howe gap", "Australia/Lord_Howe", "2024-10-06T02:15:00", "2024-10-05T15:45:00",
            "2024-10-06T02:45:00");
        row("Lord Howe overlap", "Australia/Lord_Howe", "2024-04-07T01:45:00",
            "2024-04-06T14:45:00", "2024-04-07T01:45:00");
#ifndef Q_OS_WIN // has no rule of that year, and Kathmandu by its former name alone
        row("Apia skips a day", "Pacific/Apia", "2011-12-30T12:00:00", "2011-12-30T22:00:00",
            "2011-12-31T12:00:00");
        row("Kathmandu", "Asia/Kathmandu", "2024-01-01T00:00:00", "2023-12-31T18:15:00",
            "2024-01-01T00:00:00");
#endif
    }
    void wallTimesToInstants()
    {
        QFETCH(QByteArray, zone);
        QFETCH(QString, wall);
        QFETCH(QString, instant);
        QFETCH(QString, back);
        const LocalZone localZone(zone);
        QCOMPARE(LocalToUTC(utc(wall)), utc(instant));
        QCOMPARE(UTCToLocal(utc(instant)), utc(back));
        QCOMPARE(instantOf(utc(wall)), utc(instant).toMSecsSinceEpoch());
        QCOMPARE(wallTime(utc(instant).toMSecsSinceEpoch()), utc(back));
    }

    void fractionsAreDropped()
    {
        const LocalZone zone("Europe/Berlin");
        const QDateTime wall = utc(QStringLiteral("2024-07-01T12:00:00")).addMSecs(999);
        QCOMPARE(LocalToUTC(wall), utc(QStringLiteral("2024-07-01T10:00:00")));
        QCOMPARE(UTCToLocal(wall), utc(QStringLiteral("2024-07-01T14:00:00")));
        QCOMPARE(wallTime(instantOf(wall)), wall);
    }

    void spansFollowEachOther_data()
    {
        QTest::addColumn<int>("spans");
        QTest::newRow("Europe/Berlin") << 6;
        QTest::newRow("America/New_York") << 6;
        QTest::newRow("Australia/Lord_Howe") << 6;
        QTest::newRow("Africa/Casablanca") << 7; // turns the clock back for Ramadan
        QTest::newRow("Asia/Tokyo") << 1;
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
        const qint64 end = utc(QStringLiteral("2025-06-01T00:00:00")).toMSecsSinceEpoch();
        qint64 at = utc(QStringLiteral("2023-01-01T00:00:00")).toMSecsSinceEpoch();
        int count = 0;
        for (; at < end; ++count) {
            const OffsetSpan span = offsetSpanAt(at);
            QVERIFY(span.contains(at) && !span.contains(span.to));
            QVERIFY(count == 0 || span.from == at);
            const qint64 last = qMin(span.to, end) - 1;
            QVERIFY(isOffsetAt(span.offset, at));
            QVERIFY(isOffsetAt(span.offset, (at + last) / 2));
            QVERIFY(isOffsetAt(span.offset, last));
            QVERIFY(span.to >= end || !isOffsetAt(span.offset, span.to));
            at = span.to;
        }
        QCOMPARE(count, spans);
    }

    void oneSpanWithoutChanges()
    {
        const LocalZone zone("UTC");
        const OffsetSpan span = offsetSpanAt(0);
        QCOMPARE(span.offset, qint64(0));
        QVERIFY(span.contains(std::numeric_limits<qint64>::min()));
        QVERIFY(span.contains(std::numeric_limits<qint64>::max() - 1));
    }

    void clockIsFrozen()
    {
        const LocalZone zone("America/New_York");
        {
            FrozenClock clock(QStringLiteral("2024-07-01T12:00:00"));
            QCOMPARE(now(), utc(QStringLiteral("2024-07-01T12:00:00")));
            QCOMPARE(currentInstant(),
                     utc(QStringLiteral("2024-07-01T16:00:00")).toMSecsSinceEpoch());
            clock.advance(1500);
            QCOMPARE(now(), utc(QStringLiteral("2024-07-01T12:00:01")).addMSecs(500));
        }
        QVERIFY(now() > utc(QStringLiteral("2025-01-01T00:00:00")));
    }

    void namesTheZone_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        QTest::addColumn<QString>("text");
        const auto row = [](const char *zone, const char *from, const char *to, const char *text) {
            QTest::addRow("%s %s", zone, from)
                << QByteArray(zone) << QString::fromLatin1(from) << QString::fromLatin1(to)
                << QString::fromLatin1(text);
        };
        row("UTC", "2024-01-01", "2024-12-31", "UTC");
        row("Europe/Berlin", "2024-01-01", "2024-01-31", "Europe/Berlin, UTC+01:00");
        row("Europe/Berlin", "2024-03-01", "2024-04-30", "Europe/Berlin, UTC+01:00 to UTC+02:00");
        row("America/St_Johns", "2024-07-01", "2024-07-02", "America/St_Johns, UTC-02:30");
        row("Europe/London", "2024-01-01", "2024-01-31", "Europe/London, UTC+00:00");
    }
    void namesTheZone()
    {
        QFETCH(QByteArray, zone);
        QFETCH(QString, from);
        QFETCH(QString, to);
        const LocalZone localZone(zone);
        const auto instant = [](const QString &date) {
            return utc(date + QLatin1String("T12:00:00")).toMSecsSinceEpoch();
        };
        QTEST(zoneText(instant(from), instant(to)), "text");
    }
};

QTEST_GUILESS_MAIN(TestTimeZone)
#include "tst_timezone.moc"
