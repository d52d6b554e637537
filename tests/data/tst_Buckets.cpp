#include "Zones.h"
#include "data/Buckets.h"

#include <QTest>
#include <QTimeZone>

namespace {

constexpr qint64 minute = 60'000;

/// The key of an instant by the rule in words: the wall time written in the form of the frequency,
/// the minute cut to a multiple of the interval.
QString plainKey(const QTimeZone &zone, qint64 instant, int frequency, int interval)
{
    static const QString forms[] = {QStringLiteral("yyyyMMddHHmm"), QStringLiteral("yyyyMMddHH"),
                                    QStringLiteral("yyyyMMdd"), QStringLiteral("yyyyMM"),
                                    QStringLiteral("yyyy")};
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
    void againstMinuteByMinute_data();
    void againstMinuteByMinute();
    void lengths_data();
    void lengths();
    void keyAndBack_data();
    void keyAndBack();
    void malformedKeys_data();
    void malformedKeys();
};

void tst_Buckets::againstMinuteByMinute_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<int>("frequency");
    QTest::addColumn<int>("interval");

    // Santiago changes at midnight, so that a day begins at 01:00 or has its last hour twice.
    for (const char *zone : {"UTC", "Europe/Berlin", "America/New_York", "Australia/Lord_Howe",
                             "Asia/Kathmandu", "America/Santiago"}) {
        if (!QTimeZone::isTimeZoneIdAvailable(zone)) {
            qWarning("This system has no zone %s", zone); // Windows has it by its former name
            continue;
        }
        for (const int interval : {0, 1, 5, 7, 15, 25, 60, 90})
            QTest::addRow("%s minutes %d", zone, interval) << QByteArray(zone) << 0 << interval;
        for (const int frequency : {1, 2, 3, 4})
            QTest::addRow("%s frequency %d", zone, frequency) << QByteArray(zone) << frequency << 0;
    }
}

void tst_Buckets::againstMinuteByMinute()
{
    QFETCH(QByteArray, zone);
    QFETCH(int, frequency);
    QFETCH(int, interval);
    setZone(zone.constData());
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

void tst_Buckets::lengths_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<int>("frequency");
    QTest::addColumn<qint64>("instant");
    QTest::addColumn<qint64>("start");
    QTest::addColumn<qint64>("minutes");
    QTest::addColumn<QString>("key");

    const QByteArray berlin("Europe/Berlin");
    QTest::newRow("day of 23 hours")
        << berlin << 2 << utc("2024-03-31T12:00:00") << utc("2024-03-30T23:00:00")
        << qint64(23 * 60) << QStringLiteral("20240331");
    QTest::newRow("day of 25 hours")
        << berlin << 2 << utc("2024-10-27T00:30:00") << utc("2024-10-26T22:00:00")
        << qint64(25 * 60) << QStringLiteral("20241027");
    QTest::newRow("hour shown twice")
        << berlin << 1 << utc("2024-10-27T01:10:00") << utc("2024-10-27T00:00:00") << qint64(120)
        << QStringLiteral("2024102702");
    QTest::newRow("hour after the skipped one")
        << berlin << 1 << utc("2024-03-31T01:00:00") << utc("2024-03-31T01:00:00") << qint64(60)
        << QStringLiteral("2024033103");
    QTest::newRow("month with a change")
        << berlin << 3 << utc("2024-03-05T00:00:00") << utc("2024-02-29T23:00:00")
        << qint64(31 * 1440 - 60) << QStringLiteral("202403");
    QTest::newRow("leap year") << berlin << 4 << utc("2024-07-01T00:00:00")
                               << utc("2023-12-31T23:00:00") << qint64(366 * 1440)
                               << QStringLiteral("2024");
    const QByteArray howe("Australia/Lord_Howe");
    QTest::newRow("day of 24.5 hours")
        << howe << 2 << utc("2024-04-07T00:00:00") << utc("2024-04-06T13:00:00")
        << qint64(24 * 60 + 30) << QStringLiteral("20240407");
    QTest::newRow("hour shown one and a half times")
        << howe << 1 << utc("2024-04-06T15:05:00") << utc("2024-04-06T14:00:00") << qint64(90)
        << QStringLiteral("2024040701");
    QTest::newRow("half hour skipped")
        << howe << 1 << utc("2024-10-05T15:45:00") << utc("2024-10-05T15:30:00") << qint64(30)
        << QStringLiteral("2024100602");
}

void tst_Buckets::lengths()
{
    QFETCH(QByteArray, zone);
    QFETCH(int, frequency);
    QFETCH(qint64, instant);
    QFETCH(qint64, start);
    QFETCH(qint64, minutes);

    setZone(zone.constData());
    const Bucket bucket = bucketAt(instant, frequency, 0);
    QCOMPARE(bucket.start, start);
    QCOMPARE(bucket.end - bucket.start, minutes * minute);
    QTEST(bucketKey(bucket.wallStart, frequency), "key");
}

void tst_Buckets::keyAndBack_data()
{
    QTest::addColumn<int>("frequency");
    QTest::addColumn<QDateTime>("wall");
    QTest::addColumn<QString>("key");
    QTest::newRow("minute") << 0 << at("2024-03-01T07:05:00") << QStringLiteral("202403010705");
    QTest::newRow("hour") << 1 << at("2024-12-31T23:00:00") << QStringLiteral("2024123123");
    QTest::newRow("day") << 2 << at("2024-02-29T00:00:00") << QStringLiteral("20240229");
    QTest::newRow("month") << 3 << at("2024-12-01T00:00:00") << QStringLiteral("202412");
    QTest::newRow("year") << 4 << at("0987-01-01T00:00:00") << QStringLiteral("0987");
}

void tst_Buckets::keyAndBack()
{
    QFETCH(int, frequency);
    QFETCH(QDateTime, wall);
    QFETCH(QString, key);
    QCOMPARE(bucketKey(wall, frequency), key);
    QCOMPARE(BucketStartDate(key, frequency), wall);
}

void tst_Buckets::malformedKeys_data()
{
    QTest::addColumn<int>("frequency");
    QTest::addColumn<QString>("key");
    QTest::newRow("empty") << 4 << QString();
    QTest::newRow("too short") << 0 << QStringLiteral("20240301070");
    QTest::newRow("no digits") << 2 << QStringLiteral("2024O301");
    QTest::newRow("month 13") << 3 << QStringLiteral("202413");
    QTest::newRow("30 February") << 2 << QStringLiteral("20240230");
    QTest::newRow("hour 24") << 1 << QStringLiteral("2024030124");
}

void tst_Buckets::malformedKeys()
{
    QFETCH(int, frequency);
    QFETCH(QString, key);
    QVERIFY(!BucketStartDate(key, frequency).isValid());
}

QTEST_GUILESS_MAIN(tst_Buckets)
#include "tst_Buckets.moc"
