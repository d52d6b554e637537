#include "base/ProgramState.h"
#include "database/AccessDatabase.h"
#include "series/CalculatedSummary.h"
#include "support/AccessTables.h"
#include "support/Errors.h"
#include "support/Rows.h"
#include "support/Zones.h"

#include <QRandomGenerator>
#include <QTemporaryDir>

using enum demo::FieldType;
using demo::Field;
using demo::FieldType;

namespace {
const QVariant null;

struct Sample
{
    qint64 item = 0;
    qint64 instant = 0;
    QVariant state;
    QVariant value;
};

/// An hour of one bucket a minute.
SharedAxis minutesOf(const char *hour)
{
    return std::make_shared<const BucketAxis>(utc(hour), utc(hour) + 3'599'999, ByMinute, 1);
}

} // namespace

class tst_AccessDatabase : public QObject
{
    Q_OBJECT

    const ProgramState m_state;

private Q_SLOTS:
    void initTestCase()
    {
        setZone("Europe/Berlin");
        for (int item = 1; item <= 12; ++item)
            m_items.push_back({item, 3 + item % 3, QString("item %1").arg(item), null,
                               item % 3 == 0 ? 5 : 21, item % 4 == 1 ? 0 : -1});
        m_items.push_back({13, null, "nobody's", null, 21, 1});
        // Over an hour that holds the change to summer time, in no order, with NULLs.
        QRandomGenerator random(1);
        for (int i = 0; i < 20'000; ++i) {
            Sample sample{random.bounded(1, 14), m_start + random.bounded(7200) * 1000, {}, {}};
            if (random.bounded(10) != 0)
                sample.state = random.bounded(-1, 2);
            if (random.bounded(10) != 0)
                sample.value = random.bounded(1000);
            m_samples.push_back(sample);
        }
        std::vector<Row> rows{{null, m_start, 1, 1.0}, {1, null, 1, 1.0}};
        for (const Sample &sample : m_samples)
            rows.push_back({sample.item, sample.instant, sample.state, sample.value});
        const std::vector<Row> devices{{3, "a1", "äpfel", "first", false},
                                       {4, "B2", null, null, true},
                                       {5, "A1", "second of its key", "", false}};
        writeTables(m_path, {{"devices",
                              {{"IDent", Long},
                               {"MUID", Text},
                               {"MachName", Text},
                               {"MachDesc", Memo},
                               {"MachExclude", Boolean}},
                              devices},
                             {"DataFields",
                              {{"DataIDent", Long},
                               {"IDent", Long},
                               {"DataName", Text},
                               {"DataDesc", Text},
                               {"iScale", Integer},
                               {"IsGlobal", Integer}},
                              m_items},
                             {"Scales",
                              {{"iScale", Long}, {"ScaleName", Text}, {"ScaleAbbr", Text}},
                              {{21, "State", "s"}, {5, "Milliseconds", "ms"}}},
                             {"DataValues", sampleFields(Long, Long, Double), rows}});
    }

    void inventory()
    {
        AccessDatabase database(m_path);
        const auto rows = database.inventory();
        QCOMPARE(rows->devices().size(), size_t(3));
        QCOMPARE(rows->device("A1")->ident, qint64(3)); // the first row of the key
        QCOMPARE(rows->device("b2")->name, "");
        QVERIFY(rows->device("b2")->isExcluded);
        QVERIFY(!rows->device("none"));
        QCOMPARE(rows->item(3)->name, "item 3");
        QCOMPARE(rows->scale(rows->item(3)->scale)->abbreviation, "ms");
        QStringList counted;
        for (const ItemRow *item : rows->countedItems(4))
            counted.append(QString::number(item->dataIdent));
        QCOMPARE(counted.join(u' '), "4 7 10");
        int selected = 0;
        database.readSelection([&](const SelectionRow &row) {
            QCOMPARE(row.item.deviceIdent, row.device.ident);
            QCOMPARE(row.scale.scale, row.item.scale);
            ++selected;
        });
        QCOMPARE(selected, 12);
        QCOMPARE(database.sampleCount(), qint64(20'002));
    }

    void samples_data()
    {
        const Rows<qint64, QByteArray, QByteArray> row("item", "start", "end"); // wall times
        row("all", 3, "2024-03-31T01:00:00", "2024-03-31T04:00:00");
        row("within a bucket", 2, "2024-03-31T01:10:10", "2024-03-31T01:10:40");
        row("one second", 7, "2024-03-31T01:20:00", "2024-03-31T01:20:00");
        row("from the skipped hour on", 4, "2024-03-31T02:30:00", "2024-03-31T03:59:59");
        row("upside down", 3, "2024-03-31T01:30:00", "2024-03-31T01:20:00");
        row("no such item", 99, "2024-03-31T01:00:00", "2024-03-31T04:00:00");
        row("from midnight", 4, "2024-03-31T00:00:00", "2024-03-31T04:00:00");
    }
    /// Two questions for one item and a summary in one pass, against a walk over the list.
    void samples()
    {
        QFETCH(qint64, item);
        QFETCH(QByteArray, start);
        QFETCH(QByteArray, end);
        AccessDatabase database(m_path);
        CalculatedSummary first(minutesOf("2024-03-31T00:00:00"), utc("2024-03-31T00:59:59"));
        CalculatedSummary second(minutesOf("2024-03-31T01:00:00"), utc("2024-03-31T01:59:59"));
        std::array<ItemQuestion, 2> questions{ItemQuestion{item, at(start), at(end), &first},
                                              ItemQuestion{item, at(start), at(end), &second}};
        std::array<SummaryQuestion, 1> summaries{SummaryQuestion{"b2", at(start), at(end), {}}};
        database.answer(questions, summaries);

        const qint64 from = instantOf(at(start));
        const qint64 to = instantOf(at(end));
        const bool isMidnight = at(start).time() == QTime(0, 0);
        std::array<QMap<qint64, std::array<qint64, 4>>, 2> buckets; // count, states, values, sum
        QMap<qint64, std::array<qint64, 2>> counts;
        for (const Sample &sample : m_samples) {
            if (sample.instant < from || sample.instant > to)
                continue;
            if (sample.instant >= from + (isMidnight ? 1000 : 0)) {
                counts[sample.item][0] += sample.state.toInt();
                ++counts[sample.item][1];
            }
            if (sample.item != item)
                continue;
            const qint64 minute = (sample.instant - m_start) / 60'000;
            auto &bucket = buckets[static_cast<size_t>(minute / 60)][minute % 60];
            ++bucket[0];
            bucket[1] += sample.state.toInt();
            bucket[2] += sample.value.isNull() ? 0 : 1;
            bucket[3] += sample.value.toInt();
        }
        for (const size_t half : {0u, 1u}) {
            const CalculatedSummary &summary = half == 0 ? first : second;
            const DataSeries state = summary.series(stateScale);
            const DataSeries counter = summary.series(5);
            QCOMPARE(state.buckets.size(), size_t(60));
            for (qint64 minute = 0; minute < 60; ++minute) {
                const auto wanted = buckets[half].value(minute);
                const BucketValue &tests = state.buckets[static_cast<size_t>(minute)];
                const BucketValue &values = counter.buckets[static_cast<size_t>(minute)];
                QCOMPARE(tests.count, wanted[0]);
                QCOMPARE(tests.successes, wanted[1]);
                QCOMPARE(values.count, wanted[2]);
                if (wanted[2] > 0)
                    QVERIFY(std::abs(values.mean - double(wanted[3]) / double(wanted[2])) < 1e-6);
            }
        }
        QStringList found;
        for (const StateCount &count : summaries[0].answer)
            found.append(
                QString("%1 %2 %3").arg(count.dataIdent).arg(count.successes).arg(count.tests));
        QStringList expected;
        for (const qint64 counted : {4, 7, 10}) {
            if (counts.contains(counted))
                expected.append(QString("%1 %2 %3")
                                    .arg(counted)
                                    .arg(counts[counted][0])
                                    .arg(counts[counted][1]));
        }
        QCOMPARE(found, expected);
    }
    void columnTypes()
    {
        const std::tuple<FieldType, FieldType, FieldType, QVariant, QString> cases[] = {
            {Byte, Byte, Byte, 200, "1 200"},
            {Double, Double, Single, 0.25, "1 0.25"},
            {Currency, Boolean, Currency, 125'001, "-1 12.5001"},
            {Long, Long, Numeric, "-7.5", "1 -7.5"}};
        for (const auto &[ident, state, valueType, value, expected] : cases) {
            std::vector<Field> fields = sampleFields(ident, state, valueType);
            fields[3].scale = 1;
            writeTables(
                m_otherPath,
                {{"DataValues", fields, {{ident == Currency ? 30'000 : 3, m_start, 1, value}}}});
            const BucketValue bucket = seriesOf(3).buckets[0];
            QCOMPARE(QString("%1 %2").arg(bucket.successes).arg(bucket.mean), expected);
        }
    }
    void refusedColumns()
    {
        for (const int number : {ItemNotFound, TypeMismatch}) {
            for (const size_t bad : {0u, 1u, 2u, 3u}) {
                std::vector<Field> fields = sampleFields(Long, Long, Long);
                const QString name = fields[bad].name;
                fields[bad] = {number == ItemNotFound ? "Other" : name, Text};
                Row row{3, m_start, 3, 3};
                row[bad] = "text";
                writeTables(m_otherPath, {{"DataValues", fields, {row}}});
                const Error error = errorOf([&] { seriesOf(3); });
                QCOMPARE(error.number, number);
                for (const QString &part : {m_otherPath, QString("DataValues"), name})
                    QVERIFY2(error.description.contains(part), error.what());
            }
        }
    }

    void refusesAFractionAsItem()
    {
        writeTables(m_otherPath, {{"DataValues",
                                   sampleFields(Double, Long, Long),
                                   {{3.0, m_start, 1, 1}, {3.4, m_start, 1, 1}}}});
        const Error error = errorOf([&] { seriesOf(3); });
        QVERIFY2(error.description.contains("3.4 is not a whole number"), error.what());
    }

private:
    static std::vector<Field> sampleFields(FieldType ident, FieldType state, FieldType value)
    {
        return {{"DataIDent", ident}, {"iDate", DateTime}, {"iState", state}, {"iValue", value}};
    }

    DataSeries seriesOf(qint64 item) const
    {
        AccessDatabase database(m_otherPath);
        CalculatedSummary summary(minutesOf("2024-03-31T00:00:00"), m_start);
        std::array<ItemQuestion, 1> questions{
            ItemQuestion{item, wallTime(m_start), wallTime(m_start + 3'600'000), &summary}};
        database.answer(questions, {});
        return summary.series(5);
    }

    const qint64 m_start = utc("2024-03-31T00:00:00");
    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath("VTRGData.MDB");
    QString m_otherPath = m_folder.filePath("other.mdb");
    std::vector<Row> m_items;
    std::vector<Sample> m_samples;
};

QTEST_GUILESS_MAIN(tst_AccessDatabase)
#include "tst_AccessDatabase.moc"
