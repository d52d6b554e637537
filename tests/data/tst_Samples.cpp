#include "MonitoringFile.h"
#include "Zones.h"
#include "core/Error.h"
#include "core/Numbers.h"
#include "data/Queries.h"
#include "data/sqlite/AccessConnection.h"
#include "data/sqlite/SampleIndex.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>

namespace {

using demo::FieldType;
using Row = std::vector<QVariant>;

const qint64 start = 1'711'800'000'000; // 2024-03-30 12:00 UTC
const QStringList four{QStringLiteral("DataIDent"), QStringLiteral("iDate"),
                       QStringLiteral("iState"), QStringLiteral("iValue")};

struct Sample
{
    qint64 item = 0;
    qint64 instant = 0;
    QVariant state;
    QVariant value;
    int place = 0;
};

QString line(qint64 item, qint64 instant, const QVariant &state, const QVariant &value)
{
    const auto text = [](const QVariant &cell) {
        return cell.isNull() ? QStringLiteral("NULL") : plainNumber(cell.toDouble());
    };
    return QStringLiteral("%1 %2 %3 %4").arg(item).arg(instant).arg(text(state), text(value));
}

QStringList lines(Recordset &rows)
{
    const int item = rows.column(QStringLiteral("DataIDent"));
    const int date = rows.column(QStringLiteral("iDate"));
    const int state = rows.column(QStringLiteral("iState"));
    const int value = rows.column(QStringLiteral("iValue"));
    QStringList result;
    while (rows.next())
        result.append(
            line(rows.integer(item), rows.instant(date), rows.value(state), rows.value(value)));
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
    void initTestCase();

    void everyWay_data();
    void everyWay();
    void boundsAreInclusive();
    void scopeLimitsWhatIsKept();
    void memory();
    void otherColumns();
    void columnTypes_data();
    void columnTypes();
    void refusedColumns_data();
    void refusedColumns();

private:
    QStringList expected(qint64 item, qint64 from, qint64 to) const;
    QString write(const QString &name, const std::vector<demo::Field> &fields,
                  const std::vector<Row> &rows) const;

    QTemporaryDir m_folder;
    QString m_path;
    std::vector<Sample> m_samples;
};

QString tst_Samples::write(const QString &name, const std::vector<demo::Field> &fields,
                           const std::vector<Row> &rows) const
{
    const QString path = m_folder.filePath(name);
    MonitoringFile file(path);
    file.add(QStringLiteral("DataValues"), fields, rows);
    file.finish();
    return path;
}

void tst_Samples::initTestCase()
{
    setZone("UTC");
    QRandomGenerator random(1);
    std::vector<Row> rows;
    for (int i = 0; i < 20'000; ++i) {
        Sample sample;
        sample.item = random.bounded(8);
        sample.instant = start + random.bounded(3000); // many at one millisecond, in no order
        if (random.bounded(10) != 0)
            sample.state = random.bounded(-2, 3);
        if (random.bounded(10) != 0)
            sample.value = random.bounded(1000.0);
        sample.place = i;
        m_samples.push_back(sample);
        rows.push_back({QStringLiteral("note %1").arg(i), sample.value, sample.item, sample.instant,
                        sample.state});
    }
    std::stable_sort(m_samples.begin(), m_samples.end(),
                     [](const Sample &a, const Sample &b) { return a.instant < b.instant; });
    m_path = write(QStringLiteral("samples.mdb"),
                   {{QStringLiteral("Note"), FieldType::Text},
                    {QStringLiteral("IVALUE"), FieldType::Double},
                    {QStringLiteral("DataIDent"), FieldType::Long},
                    {QStringLiteral("iDate"), FieldType::DateTime},
                    {QStringLiteral("iState"), FieldType::Integer}},
                   rows);
}

QStringList tst_Samples::expected(qint64 item, qint64 from, qint64 to) const
{
    QStringList result;
    for (const Sample &sample : m_samples) {
        if (sample.item == item && sample.instant >= from && sample.instant <= to)
            result.append(line(item, sample.instant, sample.state, sample.value));
    }
    return result;
}

void tst_Samples::everyWay_data()
{
    QTest::addColumn<qint64>("item");
    QTest::addColumn<qint64>("from");
    QTest::addColumn<qint64>("to");
    QTest::newRow("all") << qint64(3) << start - 10 << start + 10'000;
    QTest::newRow("part") << qint64(0) << start + 500 << start + 2500;
    QTest::newRow("one millisecond") << qint64(7) << start + 1234 << start + 1234;
    QTest::newRow("upside down") << qint64(3) << start + 10 << start;
    QTest::newRow("before all") << qint64(3) << start - 5000 << start - 1;
    QTest::newRow("behind all") << qint64(3) << start + 3000 << start + 9000;
    QTest::newRow("no such item") << qint64(99) << start << start + 9000;
}

/// Straight from the index, through SQLite over the index, and by a walk over the file.
void tst_Samples::everyWay()
{
    QFETCH(qint64, item);
    QFETCH(qint64, from);
    QFETCH(qint64, to);
    const QStringList wanted = expected(item, from, to);
    const QString text = query(item, from, to);
    QString named = text;
    named.replace(u'*', QLatin1String("DataIDent, iDate, iState, iValue"));

    AccessConnection connection(m_path);
    QCOMPARE(lines(*connection.open(text, four)), wanted);
    QCOMPARE(lines(*connection.open(named, four)), wanted);

    AccessConnection walking(m_path);
    QStringList walked = lines(*walking.open(text));
    QVERIFY2(!walking.sampleIndex(), "further columns are not in the index");
    QStringList unordered = wanted; // samples of one time come in any order here
    walked.sort();
    unordered.sort();
    QCOMPARE(walked, unordered);
}

void tst_Samples::boundsAreInclusive()
{
    AccessConnection connection(m_path);
    const auto count = [&](const char *lower, qint64 from, const char *upper, qint64 to) {
        const auto rows = connection.open(
            QStringLiteral("Select iState from DataValues where DataIDent=5 and iDate %1 CDATE(%2) "
                           "and iDate %3 CDATE(%4)")
                .arg(QLatin1String(lower), plainNumber(dayNumber(from)), QLatin1String(upper),
                     plainNumber(dayNumber(to))));
        int found = 0;
        while (rows->next())
            ++found;
        return found;
    };
    // Each millisecond of a second by itself: no sample is lost to the rounding of day numbers.
    for (qint64 instant = start; instant < start + 1000; ++instant) {
        const auto wanted = expected(5, instant, instant).size();
        QCOMPARE(count(">=", instant, "<=", instant), wanted);
        QCOMPARE(count(">", instant - 1, "<", instant + 1), wanted);
        QCOMPARE(count(">", instant, "<=", instant), 0);
    }
}

void tst_Samples::scopeLimitsWhatIsKept()
{
    AccessConnection connection(m_path);
    const auto check = [&](qint64 item, qint64 from, qint64 to) {
        QCOMPARE(lines(*connection.open(query(item, from, to), four)), expected(item, from, to));
    };
    connection.expectSamples({{1, 2}, start + 1000, start + 1999});
    check(1, start + 1000, start + 1999);
    const auto kept = expected(1, start + 1000, start + 1999).size() +
                      expected(2, start + 1000, start + 1999).size();
    const SampleIndex *index = connection.sampleIndex();
    QCOMPARE(index->sampleCount(), kept);
    QCOMPARE(index->rowCount(), qint64(20'000));
    check(2, start + 1500, start + 1600);
    QCOMPARE(connection.sampleIndex(), index); // covered: no other pass

    check(2, start, start + 1600); // earlier than announced
    QVERIFY(connection.sampleIndex()->sampleCount() > kept);
    check(1, start + 1000, start + 1999);
    check(4, start, start + 9000); // an item that was not announced
    QVERIFY(connection.sampleIndex()->sampleCount() < 20'000);
    check(5, start, start + 9000); // the third one: better to keep all
    QCOMPARE(connection.sampleIndex()->sampleCount(), qint64(20'000));

    // A report that ends "now" announces no end, and fractions of seconds are dropped by queries.
    connection.releaseSamples();
    QVERIFY(!connection.sampleIndex());
    connection.expectSamples({{3}, start + 1700, std::numeric_limits<qint64>::max()});
    check(3, start + 1000, start + 9000);
    QCOMPARE(connection.sampleIndex()->sampleCount(),
             expected(3, start + 1000, start + 9000).size());

    connection.releaseSamples();
    connection.expectSamples({{6}, start, start + 10});
    QCOMPARE(connection.open(QStringLiteral("Select Count(1) as TCOUNT from DataValues"))->next(),
             true);
    QCOMPARE(connection.sampleIndex()->sampleCount(), expected(6, start, start + 10).size());
}

void tst_Samples::memory()
{
    AccessConnection connection(m_path);
    QVERIFY(!lines(*connection.open(query(1, start, start + 9000), four)).isEmpty());
    const SampleIndex *index = connection.sampleIndex();
    const double bytes =
        static_cast<double>(index->bytes()) / static_cast<double>(index->sampleCount());
    QVERIFY2(bytes >= 20 && bytes <= 24, qPrintable(QString::number(bytes)));
}

void tst_Samples::otherColumns()
{
    AccessConnection connection(m_path);
    const auto rows = connection.open(query(2, start + 100, start + 200));
    const int note = rows->column(QStringLiteral("note"));
    const int date = rows->column(QStringLiteral("iDate"));
    qint64 last = 0;
    int count = 0;
    for (; rows->next(); ++count) {
        QVERIFY(rows->instant(date) >= last);
        last = rows->instant(date);
        const int place = rows->text(note).mid(5).toInt();
        const auto sample = std::find_if(m_samples.begin(), m_samples.end(),
                                         [&](const Sample &s) { return s.place == place; });
        QVERIFY(sample != m_samples.end());
        QCOMPARE(sample->item, qint64(2));
        QCOMPARE(sample->instant, last);
    }
    QCOMPARE(count, expected(2, start + 100, start + 200).size());
}

void tst_Samples::columnTypes_data()
{
    QTest::addColumn<int>("identType");
    QTest::addColumn<int>("stateType");
    QTest::addColumn<int>("valueType");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, FieldType ident, FieldType state, FieldType value,
                        const QVariant &stored, const char *expected) {
        QTest::newRow(name) << int(ident) << int(state) << int(value) << stored
                            << QString::fromLatin1(expected);
    };
    row("booleans", FieldType::Long, FieldType::Boolean, FieldType::Double, 0.5, "-1 0.5");
    row("bytes", FieldType::Byte, FieldType::Byte, FieldType::Byte, 200, "1 200");
    row("doubles", FieldType::Double, FieldType::Double, FieldType::Single, 0.25, "1 0.25");
    row("currency", FieldType::Currency, FieldType::Long, FieldType::Currency, 125'001,
        "1 12.5001");
    row("numeric", FieldType::Long, FieldType::Long, FieldType::Numeric, QStringLiteral("-7.5"),
        "1 -7.5");
}

void tst_Samples::columnTypes()
{
    QFETCH(int, identType);
    QFETCH(int, stateType);
    QFETCH(int, valueType);
    QFETCH(QVariant, value);
    const auto type = [](int number) { return static_cast<FieldType>(number); };
    const QVariant ident = type(identType) == FieldType::Currency ? 30'000 : 3;
    demo::Field valueField{QStringLiteral("iValue"), type(valueType)};
    valueField.scale = 1;
    const QString path = write(QStringLiteral("types.mdb"),
                               {{QStringLiteral("DataIDent"), type(identType)},
                                {QStringLiteral("iDate"), FieldType::DateTime},
                                {QStringLiteral("iState"), type(stateType)},
                                valueField},
                               {{ident, start, 1, value}});
    AccessConnection connection(path);
    QFETCH(QString, expected);
    QCOMPARE(lines(*connection.open(query(3, start, start), four)),
             QStringList(QStringLiteral("3 %1 %2").arg(start).arg(expected)));
}

void tst_Samples::refusedColumns_data()
{
    QTest::addColumn<QString>("missing");
    QTest::addColumn<int>("number");
    for (const QString &name : four) {
        QTest::addRow("no %s", qPrintable(name)) << name << int(ItemNotFound);
        QTest::addRow("%s is a text", qPrintable(name)) << name << int(TypeMismatch);
    }
}

void tst_Samples::refusedColumns()
{
    QFETCH(QString, missing);
    QFETCH(int, number);
    std::vector<demo::Field> fields;
    Row row;
    for (const QString &name : four) {
        const bool isDate = name == u"iDate";
        demo::Field field{name, isDate ? FieldType::DateTime : FieldType::Long};
        QVariant value = isDate ? QVariant(start) : QVariant(3);
        if (name == missing) {
            if (number == ItemNotFound)
                field.name = QStringLiteral("Other");
            field.type = FieldType::Text;
            value = QStringLiteral("text");
        }
        fields.push_back(field);
        row.push_back(value);
    }
    const QString path = write(QStringLiteral("refused.mdb"), fields, {row});
    AccessConnection connection(path);
    try {
        connection.open(query(3, start, start), four);
        QFAIL("the table was taken");
    } catch (const Error &error) {
        QCOMPARE(error.number, number);
        QVERIFY2(error.description.contains(path) && error.description.contains(u"DataValues") &&
                     error.description.contains(missing),
                 qPrintable(error.description));
    }
}

QTEST_GUILESS_MAIN(tst_Samples)
#include "tst_Samples.moc"
