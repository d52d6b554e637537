#include "base/ProgramState.h"
#include "series/Buckets.h"
#include "support/Rows.h"
#include "support/Zones.h"

#include <QTimeZone>

namespace {
constexpr qint64 minute = 60'000;

/// The key of an instant by the rule in words: the wall time written in the form of the frequency,
/// the minute cut to a multiple of the interval.
QString plainKey(const QTimeZone &zone, qint64 instant, ChartFrequencyCode frequency, int interval)
{
    static const QString forms[] = {"yyyyMMddHHmm", "yyyyMMddHH", "yyyyMMdd", "yyyyMM", "yyyy"};
    const QDateTime wall = QDateTime::fromMSecsSinceEpoch(instant, zone);
    if (frequency != ByMinute || interval < 2)
        return wall.toString(forms[frequency]);
    const int startMinute = wall.time().minute() / interval * interval;
    return wall.toString(forms[1]) + QString::number(startMinute).rightJustified(2, u'0');
}

} // namespace

class tst_Buckets : public QObject
{
    Q_OBJECT

    const ProgramState m_state;

private Q_SLOTS:
    void againstMinuteByMinute_data()
    {
        const Rows<QByteArray, ChartFrequencyCode, int> row("zone", "frequency", "interval");
        // Santiago changes at midnight, so that a day begins at 01:00 or has its last hour twice.
        for (const char *zone : {"UTC", "Europe/Berlin", "America/New_York", "Australia/Lord_Howe",
                                 "Asia/Kathmandu", "America/Santiago"}) {
            if (!QTimeZone::isTimeZoneIdAvailable(zone)) {
                qWarning("This system has no zone %s", zone); // Windows has it by its former name
                continue;
            }
            for (const int interval : {0, 1, 5, 7, 15, 25, 60, 90})
                row(qPrintable(QString("%1 minutes %2").arg(zone).arg(interval)), zone, ByMinute,
                    interval);
            for (const ChartFrequencyCode frequency : {ByHour, ByDay, ByMonth, ByYear})
                row(qPrintable(QString("%1 frequency %2").arg(zone).arg(frequency)), zone,
                    frequency, 0);
        }
    }
    void againstMinuteByMinute()
    {
        QFETCH(QByteArray, zone);
        QFETCH(ChartFrequencyCode, frequency);
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
    void keys()
    {
        for (const auto &[frequency, key, wall] :
             {std::tuple(ByMinute, "202403010705", "2024-03-01T07:05:00"),
              {ByHour, "2024123123", "2024-12-31T23:00:00"},
              {ByDay, "20240229", "2024-02-29T00:00:00"},
              {ByMonth, "202412", "2024-12-01T00:00:00"},
              {ByYear, "0987", "0987-01-01T00:00:00"}}) {
            QCOMPARE(BucketStartDate(key, frequency), at(wall));
            QCOMPARE(bucketKey(at(wall), frequency), key);
        }
        for (const auto &[frequency, key] : {std::pair(ByYear, ""),
                                             {ByMinute, "20240301070"},
                                             {ByDay, "2024O301"},
                                             {ByMonth, "202413"},
                                             {ByDay, "20240230"},
                                             {ByHour, "2024030124"}})
            QVERIFY2(!BucketStartDate(key, frequency).isValid(), key);
    }
};

QTEST_GUILESS_MAIN(tst_Buckets)
#include "tst_Buckets.moc"
