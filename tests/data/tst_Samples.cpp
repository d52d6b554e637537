#include "core/Numbers.h"
#include "data/DayNumbers.h"
#include "data/Queries.h"
#include "data/sqlite/AccessConnection.h"
#include "data/sqlite/SampleIndex.h"
#include "support/AccessTables.h"
#include "support/Errors.h"
#include "support/Rows.h"
#include "support/Zones.h"

#include <QRandomGenerator>
#include <QTemporaryDir>

#include <algorithm>

using enum demo::FieldType;
using demo::Field;
using demo::FieldType;

namespace {

const qint64 start = 1'711'800'000'000; // 2024-03-30 12:00 UTC
const QStringList four{"DataIDent", "iDate", "iState", "iValue"};

struct Sample
{
    qint64 item = 0;
    qint64 instant = 0;
    QVariant state;
    QVariant value;
};

QString line(const Sample &sample)
{
    const auto text = [](const QVariant &cell) {
        return cell.isNull() ? QString("NULL") : plainNumber(cell.toDouble());
    };
    return QString("%1 %2 %3 %4")
        .arg(sample.item)
        .arg(sample.instant)
        .arg(text(sample.state), text(sample.value));
}

QString line(const Recordset &rows)
{
    return line({rows.integer(rows.column("DataIDent")), rows.instant(rows.column("iDate")),
                 rows.value(rows.column("iState")), rows.value(rows.column("iValue"))});
}

QStringList lines(Recordset &rows)
{
    QStringList result;
    while (rows.next())
        result.append(line(rows));
    return result;
}

/// A query in the tool's form whose bounds are milliseconds.
QString query(qint64 item, qint64 from, qint64 to)
{
    return accessSampleQuery(QString::number(item), plainNumber(dayNumber(from)),
                             plainNumber(dayNumber(to)));
}

} // namespace

class tst_Samples : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        setZone("UTC");
        QRandomGenerator random(1);
        std::vector<Row> rows;
        for (int i = 0; i < 20'000; ++i) {
            // Many at one millisecond, in no order.
            Sample sample{random.bounded(8), start + random.bounded(3000), {}, {}};
            if (random.bounded(10) != 0)
                sample.state = random.bounded(-2, 3);
            if (random.bounded(10) != 0)
                sample.value = random.bounded(1000.0);
            m_stored.push_back(sample);
            rows.push_back(
                {QString::number(i), sample.value, sample.item, sample.instant, sample.state});
        }
        m_samples = m_stored;
        std::stable_sort(m_samples.begin(), m_samples.end(),
                         [](const Sample &a, const Sample &b) { return a.instant < b.instant; });
        const std::vector<Field> fields{{"Place", Text},
                                        {"IVALUE", Double},
                                        {"DataIDent", Long},
                                        {"iDate", DateTime},
                                        {"iState", Integer}};
        writeTables(m_path, {{"DataValues", fields, rows}});
    }

    void everyWay_data()
    {
        const Rows<qint64, qint64, qint64> row("item", "from", "to");
        row("all", 3, start - 10, start + 10'000);
        row("part", 0, start + 500, start + 2500);
        row("one millisecond", 7, start + 1234, start + 1234);
        row("upside down", 3, start + 10, start);
        row("before all", 3, start - 5000, start - 1);
        row("behind all", 3, start + 3000, start + 9000);
        row("no such item", 99, start, start + 9000);
    }

    /// Straight from the index, through SQLite over the index, and by a walk over the file.
    void everyWay()
    {
        QFETCH(qint64, item);
        QFETCH(qint64, from);
        QFETCH(qint64, to);
        const QStringList wanted = expected(item, from, to);
        const QString text = query(item, from, to);
        const QString named = QString(text).replace("*", four.join(", "));

        AccessConnection connection(m_path);
        QCOMPARE(lines(*connection.open(text, four)), wanted);
        QCOMPARE(lines(*connection.open(named, four)), wanted);

        AccessConnection walking(m_path);
        const auto rows = walking.open(text);
        qint64 last = 0;
        qsizetype count = 0;
        for (; rows->next(); ++count) { // samples of one time come in any order here
            const qint64 place = rows->integer(rows->column("place"));
            QCOMPARE(line(*rows), line(m_stored.at(static_cast<size_t>(place))));
            const qint64 instant = rows->instant(rows->column("iDate"));
            QVERIFY(instant >= last);
            last = instant;
        }
        QCOMPARE(count, wanted.size());
        QVERIFY2(!walking.sampleIndex(), "further columns are not in the index");
    }

    void boundsAreInclusive()
    {
        AccessConnection connection(m_path);
        const auto count = [&](const char *lower, qint64 from, const char *upper, qint64 to) {
            const QString sql = "Select Count(1) from DataValues where DataIDent=5 and "
                                "iDate %1 CDATE(%2) and iDate %3 CDATE(%4)";
            const auto rows = connection.open(
                sql.arg(lower, plainNumber(dayNumber(from)), upper, plainNumber(dayNumber(to))));
            return rows->next() ? rows->integer(0) : -1;
        };
        // Each millisecond of a second by itself: no sample is lost to the rounding of day numbers.
        for (qint64 instant = start; instant < start + 1000; ++instant) {
            const qint64 wanted = expected(5, instant, instant).size();
            QCOMPARE(count(">=", instant, "<=", instant), wanted);
            QCOMPARE(count(">", instant - 1, "<", instant + 1), wanted);
            QCOMPARE(count(">", instant, "<=", instant), 0);
        }
    }

    void scopeLimitsWhatIsKept()
    {
        AccessConnection connection(m_path);
        const auto check = [&](qint64 item, qint64 from, qint64 to) {
            QCOMPARE(lines(*connection.open(query(item, from, to), four)),
                     expected(item, from, to));
        };
        const auto kept = [&] { return connection.sampleIndex()->sampleCount(); };
        connection.expectSamples({{1, 2}, start + 1000, start + 1999});
        check(1, start + 1000, start + 1999);
        const auto announced = expected(1, start + 1000, start + 1999).size() +
                               expected(2, start + 1000, start + 1999).size();
        const SampleIndex *index = connection.sampleIndex();
        QCOMPARE(kept(), announced);
        QCOMPARE(index->rowCount(), qint64(20'000));
        check(2, start + 1500, start + 1600);
        QCOMPARE(connection.sampleIndex(), index); // covered: no other pass

        check(2, start, start + 1600); // earlier than announced
        QVERIFY(kept() > announced);
        check(1, start + 1000, start + 1999);
        check(4, start, start + 9000); // an item that was not announced
        QVERIFY(kept() < 20'000);
        check(5, start, start + 9000); // the third one: better to keep all
        QCOMPARE(kept(), qint64(20'000));
        QVERIFY(connection.sampleIndex()->bytes() <= 24 * 20'000);

        // A report that ends "now" announces no end, and fractions of seconds are dropped by
        // queries.
        connection.releaseSamples();
        QVERIFY(!connection.sampleIndex());
        connection.expectSamples({{3}, start + 1700, std::numeric_limits<qint64>::max()});
        check(3, start + 1000, start + 9000);
        QCOMPARE(kept(), expected(3, start + 1000, start + 9000).size());

        connection.releaseSamples();
        connection.expectSamples({{6}, start, start + 10});
        QVERIFY(connection.open("Select Count(1) as TCOUNT from DataValues")->next());
        QCOMPARE(kept(), expected(6, start, start + 10).size());
    }

    void columnTypes_data()
    {
        const Rows<FieldType, FieldType, FieldType, QVariant, QString> row(
            "identType", "stateType", "valueType", "value", "expected");
        row("booleans", Long, Boolean, Double, 0.5, "-1 0.5");
        row("bytes", Byte, Byte, Byte, 200, "1 200");
        row("doubles", Double, Double, Single, 0.25, "1 0.25");
        row("currency", Currency, Long, Currency, 125'001, "1 12.5001");
        row("numeric", Long, Long, Numeric, "-7.5", "1 -7.5");
    }

    void columnTypes()
    {
        QFETCH(FieldType, identType);
        QFETCH(FieldType, stateType);
        QFETCH(FieldType, valueType);
        QFETCH(QVariant, value);
        QFETCH(QString, expected);
        const int ident = identType == Currency ? 30'000 : 3;
        Field valueField{"iValue", valueType};
        valueField.scale = 1;
        writeTables(
            m_otherPath,
            {{"DataValues",
              {{"DataIDent", identType}, {"iDate", DateTime}, {"iState", stateType}, valueField},
              {{ident, start, 1, value}}}});
        AccessConnection connection(m_otherPath);
        QCOMPARE(lines(*connection.open(query(3, start, start), four)),
                 QStringList(QString("3 %1 %2").arg(start).arg(expected)));
    }

    void refusedColumns_data()
    {
        const Rows<QString, int> row("bad", "number");
        for (const QString &name : four) {
            row(qPrintable("no " + name), name, ItemNotFound);
            row(qPrintable(name + " is a text"), name, TypeMismatch);
        }
    }

    void refusedColumns()
    {
        QFETCH(QString, bad);
        QFETCH(int, number);
        std::vector<Field> fields{
            {"DataIDent", Long}, {"iDate", DateTime}, {"iState", Long}, {"iValue", Long}};
        Row row{3, start, 3, 3};
        const auto at = static_cast<size_t>(four.indexOf(bad));
        fields[at] = {number == ItemNotFound ? "Other" : bad, Text};
        row[at] = "text";
        writeTables(m_otherPath, {{"DataValues", fields, {row}}});
        AccessConnection connection(m_otherPath);
        const Error error = errorOf([&] { connection.open(query(3, start, start), four); });
        QCOMPARE(error.number, number);
        QVERIFY2(error.description.contains(m_otherPath) &&
                     error.description.contains("DataValues") && error.description.contains(bad),
                 qPrintable(error.description));
    }

private:
    QStringList expected(qint64 item, qint64 from, qint64 to) const
    {
        QStringList result;
        for (const Sample &sample : m_samples) {
            if (sample.item == item && sample.instant >= from && sample.instant <= to)
                result.append(line(sample));
        }
        return result;
    }

    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath("samples.mdb");
    QString m_otherPath = m_folder.filePath("other.mdb");
    std::vector<Sample> m_stored;
    std::vector<Sample> m_samples; ///< ordered by time
};

QTEST_GUILESS_MAIN(tst_Samples)
#include "tst_Samples.moc"
