#include "data/Buckets.h"
#include "support/Rows.h"
#include "support/Zones.h"

#include <QTimeZone>

namespace {

constexpr qint64 minute = 60'000;

/// The key of an instant by the rule in words: the wall time written in the form of the frequency,
/// the minute cut to a multiple of the interval.
QString plainKey(const QTimeZone &zone, qint64 instant, int frequency, int interval)
{
    static const QString forms[] = {"yyyyMMddHHmm", "yyyyMMddHH", "yyyyMMdd", "yyyyMM", "yyyy"};
    const QDateTime wall = QDateTime::fromMSecsSinceEpoch(instant, zone);
    if (frequency != 0 || interval < 2)
        return wall.toString(forms[frequency]);
    const int startMinute = wall.time().minute() / interval * interval;
    return wall.toString(forms[1]) + QString::number(startMinute).rightJustified(2, u'0');
}

} // namespace

class tst_Buckets : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void againstMinuteByMinute_data()
    {
        const Rows<QByteArray, int, int> row("zone", "frequency", "interval");
        // Santiago changes at midnight, so that a day begins at 01:00 or has its last hour twice.
        for (const char *zone : {"UTC", "Europe/Berlin", "America/New_York", "Australia/Lord_Howe",
                                 "Asia/Kathmandu", "America/Santiago"}) {
            if (!QTimeZone::isTimeZoneIdAvailable(zone)) {
                qWarning("This system has no zone %s", zone); // Windows has it by its former name
                continue;
            }
            for (const int interval : {0, 1, 5, 7, 15, 25, 60, 90})
                row(qPrintable(QString("%1 minutes %2").arg(zone).arg(interval)), zone, 0,
                    interval);
            for (const int frequency : {1, 2, 3, 4})
                row(qPrintable(QString("%1 frequency %2").arg(zone).arg(frequency)), zone,
                    frequency, 0);
        }
    }
    void againstMinuteByMinute()
    {
        QFETCH(QByteArray, zone);
        QFETCH(int, frequency);
        QFETCH(int, interval);
        setZone(zone);
        const QTimeZone rules(zone);

        // Three days around every change of the years 2024 to 2026, and around New Year.
        QList<qint64> centres{utc("2024-12-31T12:00:00")};
        for (const auto &change :
             rules.transitions(at("2024-01-01T00:00:00"), at("2026-12-31T00:00:00")))
            centres.append(change.atUtc.toMSecsSinceEpoch());
        QCOMPARE(centres.size(), rules.hasDaylightTime() && rules.id() != "Asia/Kathmandu" ? 7 : 1);

        for (const qint64 centre : centres) {
            const qint64 first = centre - 36 * 60 * minute;
            const qint64 last = centre + 36 * 60 * minute;
            Bucket bucket{first, first, {}};
            QString key;
            for (qint64 instant = first; instant < last; instant += minute) {
                const QString expected = plainKey(rules, instant, frequency, interval);
                if (expected != key) { // a new stretch has to begin right here
                    if (!key.isEmpty())
                        QCOMPARE(bucket.end, instant);
                    bucket = bucketAt(instant, frequency, interval);
                    QCOMPARE(bucketKey(bucket.wallStart, frequency), expected);
                    if (!key.isEmpty())
                        QCOMPARE(bucket.start, instant);
                    QVERIFY(bucket.start <= instant);
                    key = expected;
                }
                QVERIFY2(instant < bucket.end, qPrintable(expected));
                const Bucket again = bucketAt(instant + minute - 1, frequency, interval);
                QCOMPARE(again.start, bucket.start);
                QCOMPARE(again.end, bucket.end);
            }
        }
    }

    void lengths_data()
    {
        const Rows<QByteArray, int, QByteArray, QByteArray, int, QString> row(
            "zone", "frequency", "instant", "start", "minutes", "key");
        const char *berlin = "Europe/Berlin";
        row("day of 23 hours", berlin, 2, "2024-03-31T12:00:00", "2024-03-30T23:00:00", 23 * 60,
            "20240331");
        row("hour shown twice", berlin, 1, "2024-10-27T01:10:00", "2024-10-27T00:00:00", 120,
            "2024102702");
        row("month with a change", berlin, 3, "2024-03-05T00:00:00", "2024-02-29T23:00:00",
            31 * 1440 - 60, "202403");
        row("leap year", berlin, 4, "2024-07-01T00:00:00", "2023-12-31T23:00:00", 366 * 1440,
            "2024");
        const char *howe = "Australia/Lord_Howe";
        row("day of 24.5 hours", howe, 2, "2024-04-07T00:00:00", "2024-04-06T13:00:00",
            24 * 60 + 30, "20240407");
    }
    void lengths()
    {
        QFETCH(QByteArray, zone);
        QFETCH(int, frequency);
        QFETCH(QByteArray, instant);
        QFETCH(QByteArray, start);
        QFETCH(int, minutes);
        setZone(zone);
        const Bucket bucket = bucketAt(utc(instant), frequency, 0);
        QCOMPARE(bucket.start, utc(start));
        QCOMPARE(bucket.end - bucket.start, minutes * minute);
        QTEST(bucketKey(bucket.wallStart, frequency), "key");
    }

    void keys_data()
    {
        const Rows<int, QString, QDateTime> row("frequency", "key", "wall");
        row("minute", 0, "202403010705", at("2024-03-01T07:05:00"));
        row("hour", 1, "2024123123", at("2024-12-31T23:00:00"));
        row("day", 2, "20240229", at("2024-02-29T00:00:00"));
        row("month", 3, "202412", at("2024-12-01T00:00:00"));
        row("year", 4, "0987", at("0987-01-01T00:00:00"));
        row("empty", 4, "", {});
        row("too short", 0, "20240301070", {});
        row("no digits", 2, "2024O301", {});
        row("month 13", 3, "202413", {});
        row("30 February", 2, "20240230", {});
        row("hour 24", 1, "2024030124", {});
    }
    void keys()
    {
        QFETCH(int, frequency);
        QFETCH(QString, key);
        QFETCH(QDateTime, wall);
        QCOMPARE(BucketStartDate(key, frequency), wall);
        if (wall.isValid())
            QCOMPARE(bucketKey(wall, frequency), key);
    }
};

QTEST_GUILESS_MAIN(tst_Buckets)
#include "tst_Buckets.moc"
