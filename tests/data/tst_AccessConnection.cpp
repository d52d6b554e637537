#include "MonitoringFile.h"
#include "Zones.h"
#include "core/Error.h"
#include "data/Queries.h"
#include "data/sqlite/AccessConnection.h"
#include "data/sqlite/SqlText.h"

#include <QTest>

#include <map>

namespace {

using demo::FieldType;
using Row = std::vector<QVariant>;

const QVariant null;

struct Sample
{
    qint64 item = 0;
    qint64 instant = 0;
    int state = 0;
};

/// Rows as lines of texts, in the order in which they come.
QStringList lines(Recordset &rows)
{
    QStringList result;
    while (rows.next()) {
        QStringList cells;
        for (int i = 0; i < rows.columns().size(); ++i)
            cells.append(rows.isNull(i) ? QStringLiteral("NULL") : rows.text(i));
        result.append(cells.join(u'|'));
    }
    return result;
}

QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

} // namespace

class tst_AccessConnection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void texts_data();
    void texts();
    void dataSelection();
    void stateSummary_data();
    void stateSummary();
    void largeJoin();
    void refused_data();
    void refused();
    void onlyWantedColumns();
    void recordsetOutlivesConnection();
    void sqlText_data();
    void sqlText();

private:
    QStringList run(const QString &sql) const
    {
        AccessConnection connection(m_path);
        return lines(*connection.open(sql));
    }

    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath(QStringLiteral("VTRGData.MDB"));
    std::vector<Row> m_devices;
    std::vector<Row> m_items;
    std::vector<Row> m_scales;
    QList<Sample> m_samples;
};

void tst_AccessConnection::initTestCase()
{
    setZone("Europe/Berlin");
    const auto text = [](const char *utf8) { return QVariant(QString::fromUtf8(utf8)); };
    // IDent, MUID, MachName, MachDesc, MachExclude, Price, Since
    m_devices = {
        {3, text("a1"), text("äpfel"), text("first"), false, 125000, utc("2024-03-01T06:00:00")},
        {4, text("B2"), text("Zebra"), null, true, null, null},
        {5, text("c3"), text("ÄPFEL b"), text(""), false, 1, utc("1999-12-31T23:59:59.999")},
        {6, text("7"), text("apple"), text("x"), false, -25000, null},
        {8, text("{D-4}"), text("Öl"), null, false, 0, null},
        {9, text("É5"), null, null, false, null, null},
    };
    // DataIDent, IDent, DataName, iScale, IsGlobal
    for (int item = 1; item <= 12; ++item)
        m_items.push_back({item, 3 + item % 5, text(qPrintable(QString::number(item))),
                           item % 3 == 0 ? 5 : 21, item % 4 == 1 ? 0 : 1});
    m_items.push_back({13, null, text("nobody's"), 21, 1});
    m_scales = {{21, text("State"), text("s")}, {5, text("Milliseconds"), text("ms")}};

    // Out of order, with a NULL item and a NULL time among them.
    std::vector<Row> values;
    const qint64 start = utc("2024-03-30T22:00:00");
    for (int i = 0; i < 6000; ++i) {
        const Sample sample{1 + i * 7 % 13, start + i * 37 % 6000 * 10'000, i % 5 == 0 ? 0 : 1};
        m_samples.append(sample);
        values.push_back({sample.item, sample.instant, sample.state, 0.25 * i});
    }
    values.push_back({null, start, 1, 1.0});
    values.push_back({1, null, 1, 1.0});

    MonitoringFile file(m_path);
    file.add(QStringLiteral("Devices"),
             {{QStringLiteral("IDent"), FieldType::Long},
              {QStringLiteral("MUID"), FieldType::Text},
              {QStringLiteral("MachName"), FieldType::Text},
              {QStringLiteral("MachDesc"), FieldType::Memo},
              {QStringLiteral("MachExclude"), FieldType::Boolean},
              {QStringLiteral("Price"), FieldType::Currency},
              {QStringLiteral("Since"), FieldType::DateTime}},
             m_devices);
    file.add(QStringLiteral("DataFields"),
             {{QStringLiteral("DataIDent"), FieldType::Long},
              {QStringLiteral("IDent"), FieldType::Long},
              {QStringLiteral("DataName"), FieldType::Text},
              {QStringLiteral("iScale"), FieldType::Integer},
              {QStringLiteral("IsGlobal"), FieldType::Byte}},
             m_items);
    file.add(QStringLiteral("Scales"),
             {{QStringLiteral("iScale"), FieldType::Long},
              {QStringLiteral("ScaleName"), FieldType::Text},
              {QStringLiteral("ScaleAbbr"), FieldType::Text}},
             m_scales);
    file.add(QStringLiteral("DataValues"),
             {{QStringLiteral("DataIDent"), FieldType::Long},
              {QStringLiteral("iDate"), FieldType::DateTime},
              {QStringLiteral("iState"), FieldType::Long},
              {QStringLiteral("iValue"), FieldType::Double}},
             values);
    file.finish();
}

void tst_AccessConnection::texts_data()
{
    QTest::addColumn<QString>("sql");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *sql, const char *expected) {
        QTest::newRow(sql) << QString::fromUtf8(sql)
                           << QString::fromUtf8(expected).split(u',', Qt::SkipEmptyParts);
    };
    // Order and equality without regard to case, of whatever letters.
    row("Select MUID from Devices order by MachName", "É5,7,B2,a1,c3,{D-4}");
    row("Select IDent from Devices where MachName='ÄPFEL'", "3");
    row("Select IDent from Devices where MUID='é5'", "9");
    row("Select IDent from Devices where Devices.MUID in ('A1','b2','none')", "3,4");
    row("Select IDent from devices where muid = 'A1' or MUID = 'B2' or MUID = 'a1'", "3,4");
    row("Select IDent from Devices where MUID <> 'A1' and MUID<>'{d-4}'", "4,5,6,9");
    row("Select Count(*) from (Select MUID from Devices where MUID>='b')", "4");
    // Numbers and texts that look like numbers.
    row("Select MUID from Devices where IDent=3", "a1");
    row("Select MUID from Devices where IDent='3'", "a1");
    row("Select MUID from Devices where IDent=3.0", "a1");
    row("Select MUID from Devices where IDent=3.5", "");
    row("Select MUID from Devices where IDent='x'", "");
    row("Select MUID from Devices where IDent=NULL", "");
    row("Select IDent from Devices where MUID=7", "6");
    row("Select IDent from Devices where Price=12.5", "3");
    row("Select Price from Devices order by IDent", "12.5,NULL,0.0001,-2.5,0,NULL");
    row("Select Sum(Price) from Devices where Price<0", "-2.5");
    // True is -1.
    row("Select IDent from Devices where MachExclude=-1", "4");
    row("Select IDent from Devices where MachExclude<>0", "4");
    row("Select Sum(MachExclude) from Devices", "-1");
    // NULL and empty texts.
    row("Select IDent from Devices where MachDesc is null order by IDent", "4,8,9");
    row("Select IDent from Devices where MachDesc=''", "5");
    // Date-times.
    row("Select IDent from Devices where Since=CDATE(45352.25)", "3");
    row("Select IDent from Devices where Since < CDATE(36526)", "5");
    row("Select CDATE(45352.4166666666)", "45352.416666666664");
    // Counts, and brackets.
    row("Select Count(1) as TCOUNT from DataValues", "6002");
    row("SELECT COUNT(1) AS TCOUNT FROM [DataValues] WHERE [iDate] IS NULL", "1");
    row("Select [Scales].[ScaleName] from [Scales] order by [Scales].[iScale]",
        "Milliseconds,State");
    row("Select DISTINCTROW IsGlobal from DataFields where IDent=4", "0,1,1");
    row("Select 'DISTINCTROW' from Scales where iScale=5", "DISTINCTROW");
}

void tst_AccessConnection::texts()
{
    QFETCH(QString, sql);
    QTEST(run(sql), "expected");
}

void tst_AccessConnection::dataSelection()
{
    QStringList expected;
    for (const Row &device : m_devices) {
        for (const Row &item : m_items) {
            for (const Row &scale : m_scales) {
                if (device[0] == item[1] && item[3] == scale[0])
                    expected.append(device[1].toString() + u'|' + item[0].toString() + u'|' +
                                    scale[1].toString());
            }
        }
    }
    QVERIFY(expected.size() > 5);

    QString sql = GetDataSelectionSQL();
    const auto reduced = [&sql](const char *column) {
        sql.remove(QStringLiteral("[DataFields].[%1],  ").arg(QLatin1String(column)));
        sql.remove(QStringLiteral("[Devices].[%1], ").arg(QLatin1String(column)));
    };
    reduced("DataDesc"); // the one column that this file does not have
    AccessConnection connection(m_path);
    const auto rows = connection.open(sql);
    QStringList found;
    while (rows->next())
        found.append(rows->text(rows->column(QStringLiteral("MUID"))) + u'|' +
                     rows->text(rows->column(QStringLiteral("DataIDent"))) + u'|' +
                     rows->text(rows->column(QStringLiteral("ScaleName"))));
    QCOMPARE(sorted(found), sorted(expected));
}

void tst_AccessConnection::stateSummary_data()
{
    QTest::addColumn<QDateTime>("start");
    QTest::addColumn<QDateTime>("end");
    QTest::addColumn<QString>("devices");
    const QDateTime early = at("2024-03-01T00:00:00");
    const QDateTime late = at("2024-05-01T00:00:00");
    QTest::newRow("all devices, all samples") << early << late << QString();
    QTest::newRow("one device") << early << late << QStringLiteral("A1");
    QTest::newRow("two devices") << early << late << QStringLiteral("B2,c3");
    QTest::newRow("a device that is none") << early << late << QStringLiteral("none");
    // 10-second samples from 23:00 wall time on, over the change at 02:00.
    QTest::newRow("both bounds on a sample")
        << at("2024-03-30T23:30:00") << at("2024-03-31T04:00:00") << QString();
    QTest::newRow("from midnight, which is left out")
        << at("2024-03-31T00:00:00") << at("2024-03-31T01:59:59") << QString();
}

void tst_AccessConnection::stateSummary()
{
    QFETCH(QDateTime, start);
    QFETCH(QDateTime, end);
    QFETCH(QString, devices);

    const qint64 from = instantOf(start) + (start.time() == QTime(0, 0) ? 1000 : 0);
    const qint64 to = instantOf(end);
    const QStringList wanted = devices.toLower().split(u',', Qt::SkipEmptyParts);
    QStringList expected;
    for (const Row &device : m_devices) {
        for (const Row &item : m_items) {
            if (item[1] != device[0] || item[3] != 21 || item[4] == 0 ||
                (!wanted.isEmpty() && !wanted.contains(device[1].toString().toLower())))
                continue;
            int count = 0;
            int sum = 0;
            for (const Sample &sample : std::as_const(m_samples)) {
                if (sample.item == item[0].toInt() && sample.instant >= from &&
                    sample.instant <= to) {
                    ++count;
                    sum += sample.state;
                }
            }
            if (count > 0)
                expected.append(QStringLiteral("%1|%2|%3|%4")
                                    .arg(device[0].toInt())
                                    .arg(item[0].toInt())
                                    .arg(sum)
                                    .arg(count));
        }
    }
    QCOMPARE(expected.isEmpty(), devices == u"none");
    QCOMPARE(sorted(run(GetStateSummarySQL(start, end, devices))), sorted(expected));
}

/// The cost of a join follows its result: done row by row, this one would take minutes.
void tst_AccessConnection::largeJoin()
{
    const QString path = m_folder.filePath(QStringLiteral("large.mdb"));
    std::vector<Row> devices;
    std::vector<Row> items;
    for (int device = 0; device < 5000; ++device) {
        devices.push_back({device, QStringLiteral("M%1").arg(device)});
        for (int item = 0; item < 20; ++item)
            items.push_back({device * 20 + item, device, item % 2 == 0 ? 21 : 5});
    }
    MonitoringFile file(path);
    file.add(
        QStringLiteral("Devices"),
        {{QStringLiteral("IDent"), FieldType::Long}, {QStringLiteral("MUID"), FieldType::Text}},
        devices);
    file.add(QStringLiteral("DataFields"),
             {{QStringLiteral("DataIDent"), FieldType::Long},
              {QStringLiteral("IDent"), FieldType::Long},
              {QStringLiteral("iScale"), FieldType::Long}},
             items);
    file.finish();

    AccessConnection connection(path);
    QCOMPARE(lines(*connection.open(QStringLiteral(
                 "Select Count(1) from [Devices] INNER JOIN [DataFields] ON [Devices].[IDent] = "
                 "[DataFields].[IDent] where iScale=21"))),
             QStringList(QStringLiteral("50000")));
    for (int device = 0; device < 5000; ++device) {
        const auto rows = connection.open(
            QStringLiteral("Select DataIDent from Devices INNER JOIN DataFields ON Devices.IDent = "
                           "DataFields.IDent where MUID='m%1' and iScale=5")
                .arg(device));
        QCOMPARE(lines(*rows).size(), 10);
    }
}

void tst_AccessConnection::refused_data()
{
    QTest::addColumn<QString>("sql");
    QTest::addColumn<QString>("part");
    const auto row = [](const char *sql, const char *part) {
        QTest::newRow(sql) << QString::fromLatin1(sql) << QString::fromLatin1(part);
    };
    row("Select * from Nowhere", "no such table: Nowhere");
    row("Select Colour from Devices", "no such column: Colour");
    row("Selekt * from Devices", "syntax error");
    row("Select * from Devices where MUID='a", "unrecognized token");
    row("Select CDATE('yesterday')", "CDATE");
    row("Select * from Scales; Select * from Devices", "one statement");
    row("", "one statement");
    row("Delete from Scales", "may not be modified");
}

void tst_AccessConnection::refused()
{
    QFETCH(QString, sql);
    QFETCH(QString, part);
    try {
        run(sql);
        QFAIL("the statement ran");
    } catch (const Error &error) {
        QCOMPARE(error.number, int(DatabaseError));
        QVERIFY2(error.description.contains(part), qPrintable(error.description));
        QVERIFY2(error.description.contains(m_path), qPrintable(error.description));
    }
}

void tst_AccessConnection::onlyWantedColumns()
{
    AccessConnection connection(m_path);
    const auto rows = connection.open(QStringLiteral("Select * from Devices where IDent=4"),
                                      {QStringLiteral("machname"), QStringLiteral("IDent")});
    QCOMPARE(rows->columns(), (QStringList{QStringLiteral("IDent"), QStringLiteral("MachName")}));
    QCOMPARE(lines(*rows), QStringList(QStringLiteral("4|Zebra")));
    QVERIFY_EXCEPTION_THROWN(static_cast<void>(rows->column(QStringLiteral("MUID"))), Error);
}

void tst_AccessConnection::recordsetOutlivesConnection()
{
    auto connection = std::make_unique<AccessConnection>(m_path);
    const auto rows = connection->open(QStringLiteral("Select MUID from Devices"));
    const auto samples = connection->open(GetDataValuesSQL(
        QStringLiteral("2"), at("2024-03-01T00:00:00"), at("2024-05-01T00:00:00")));
    connection.reset();
    QCOMPARE(lines(*rows).size(), qsizetype(m_devices.size()));
    QVERIFY(lines(*samples).size() > 400);
}

void tst_AccessConnection::sqlText_data()
{
    QTest::addColumn<QString>("sql");
    QTest::addColumn<bool>("recognised");
    const QString text = GetDataValuesSQL(QStringLiteral("17"), at("2024-03-01T00:00:00"),
                                          at("2024-03-02T00:00:00"));
    const auto changed = [&text](const char *before, const char *after) {
        QString other = text;
        other.replace(QLatin1String(before), QLatin1String(after));
        return other;
    };
    QTest::newRow("as built") << text << true;
    QTest::newRow("negative item") << changed("17", "-17") << true;
    QTest::newRow("item no number") << changed("17", "x") << false;
    QTest::newRow("item a fraction") << changed("17", "1.5") << false;
    QTest::newRow("further condition") << changed("17", "17 OR 1=1") << false;
    QTest::newRow("other columns") << changed("*", "iValue") << false;
    QTest::newRow("other bound") << changed("<=", "<") << false;
    QTest::newRow("no order") << changed(" ORDER BY iDate;", "") << false;
    QTest::newRow("more behind") << text + u' ' << false;
    QTest::newRow("cut") << text.left(60) << false;
    QTest::newRow("empty") << QString() << false;
}

void tst_AccessConnection::sqlText()
{
    QFETCH(QString, sql);
    QTEST(parsedSampleQuery(sql).has_value(), "recognised");
    const auto query = parsedSampleQuery(sql);
    if (query && query->dataIdent == 17) {
        QCOMPARE(query->from, utc("2024-02-29T23:00:00"));
        QCOMPARE(query->to, utc("2024-03-01T23:00:00"));
    }
}

QTEST_GUILESS_MAIN(tst_AccessConnection)
#include "tst_AccessConnection.moc"
