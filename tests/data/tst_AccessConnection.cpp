#include "data/Queries.h"
#include "data/sqlite/AccessConnection.h"
#include "data/sqlite/SqlText.h"
#include "support/AccessTables.h"
#include "support/Errors.h"
#include "support/Lines.h"
#include "support/Rows.h"
#include "support/Zones.h"

#include <QTemporaryDir>

using demo::Field;
using enum demo::FieldType;

namespace {

const QVariant null;

struct Sample
{
    qint64 item = 0;
    qint64 instant = 0;
    int state = 0;
};

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
    void initTestCase()
    {
        setZone("Europe/Berlin");
        const qint64 morning = utc("2024-03-01T06:00:00");
        const qint64 newYear = utc("1999-12-31T23:59:59.999");
        m_devices = {
            {3, "a1", "äpfel", "first", false, 125000, morning},
            {4, "B2", "Zebra", null, true, null, null},
            {5, "c3", "ÄPFEL b", "", false, 1, newYear},
            {6, "7", "apple", "x", false, -25000, null},
            {8, "{D-4}", "Öl", null, false, 0, null},
            {9, "É5", null, null, false, null, null},
        };
        for (int item = 1; item <= 12; ++item)
            m_items.push_back({item, 3 + item % 5, QString::number(item), item % 3 == 0 ? 5 : 21,
                               item % 4 == 1 ? 0 : 1});
        m_items.push_back({13, null, "nobody's", 21, 1});

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

        const std::vector<Field> devices{
            {"IDent", Long},          {"MUID", Text},      {"MachName", Text}, {"MachDesc", Memo},
            {"MachExclude", Boolean}, {"Price", Currency}, {"Since", DateTime}};
        const std::vector<Field> items{{"DataIDent", Long},
                                       {"IDent", Long},
                                       {"DataName", Text},
                                       {"iScale", Integer},
                                       {"IsGlobal", Byte}};
        const std::vector<Field> samples{
            {"DataIDent", Long}, {"iDate", DateTime}, {"iState", Long}, {"iValue", Double}};
        const std::vector<Field> scales{{"iScale", Long}, {"ScaleName", Text}, {"ScaleAbbr", Text}};
        writeTables(m_path, {{"Devices", devices, m_devices},
                             {"DataFields", items, m_items},
                             {"Scales", scales, {{21, "State", "s"}, {5, "Milliseconds", "ms"}}},
                             {"DataValues", samples, values}});
    }

    void texts_data()
    {
        const Rows<QString, QString> rows("sql", "expected");
        const auto row = [&](const char *sql, const char *expected) { rows(sql, sql, expected); };
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
        // Counts, joins and brackets.
        row("Select Count(1) as TCOUNT from DataValues", "6002");
        row("SELECT COUNT(1) AS TCOUNT FROM [DataValues] WHERE [iDate] IS NULL", "1");
        row("Select [Scales].[ScaleName] from [Scales] order by [Scales].[iScale]",
            "Milliseconds,State");
        row("Select [MUID], [DataIDent], [ScaleAbbr] from [Scales] INNER JOIN ([Devices] "
            "INNER JOIN [DataFields] ON [Devices].[IDent] = [DataFields].[IDent]) "
            "ON [Scales].[iScale]=[DataFields].[iScale] "
            "where [Scales].[iScale]=5 order by [DataIDent]",
            "7|3|ms,B2|6|ms,c3|12|ms");
        row("Select DISTINCTROW IsGlobal from DataFields where IDent=4", "0,1,1");
        row("Select 'DISTINCTROW' from Scales where iScale=5", "DISTINCTROW");
    }
    void texts()
    {
        QFETCH(QString, sql);
        QTEST(run(sql).join(u','), "expected");
    }

    void stateSummary_data()
    {
        const Rows<QByteArray, QByteArray, QString> row("start", "end", "devices");
        const char *early = "2024-03-01T00:00:00";
        const char *late = "2024-05-01T00:00:00";
        row("all devices, all samples", early, late, "");
        row("one device", early, late, "A1");
        row("two devices", early, late, "B2,c3");
        row("a device that is none", early, late, "none");
        // 10-second samples from 23:00 wall time on, over the change at 02:00.
        row("both bounds on a sample", "2024-03-30T23:30:00", "2024-03-31T04:00:00", "");
        row("from midnight, which is left out", "2024-03-31T00:00:00", "2024-03-31T01:59:59", "");
    }
    void stateSummary()
    {
        QFETCH(QByteArray, start);
        QFETCH(QByteArray, end);
        QFETCH(QString, devices);
        const qint64 from = instantOf(at(start)) + (at(start).time() == QTime(0, 0) ? 1000 : 0);
        const qint64 to = instantOf(at(end));
        QHash<qint64, int> counts;
        QHash<qint64, int> sums;
        for (const Sample &sample : std::as_const(m_samples)) {
            if (sample.instant >= from && sample.instant <= to) {
                ++counts[sample.item];
                sums[sample.item] += sample.state;
            }
        }
        const QStringList wanted = devices.split(u',', Qt::SkipEmptyParts);
        QStringList expected;
        for (const Row &device : m_devices) {
            for (const Row &item : m_items) {
                const int ident = item[0].toInt();
                const bool isWanted =
                    wanted.isEmpty() || wanted.contains(device[1].toString(), Qt::CaseInsensitive);
                if (isWanted && counts.contains(ident) && item[1] == device[0] && item[3] == 21 &&
                    item[4] != 0)
                    expected.append(QString("%1|%2|%3|%4")
                                        .arg(device[0].toInt())
                                        .arg(ident)
                                        .arg(sums[ident])
                                        .arg(counts[ident]));
            }
        }
        QCOMPARE(expected.isEmpty(), devices == u"none");
        QCOMPARE(sorted(run(GetStateSummarySQL(at(start), at(end), devices))), sorted(expected));
    }

    /// The cost of a join follows its result: done row by row, this one would take minutes.
    void largeJoin()
    {
        const QString path = m_folder.filePath("large.mdb");
        std::vector<Row> devices;
        std::vector<Row> items;
        for (int device = 0; device < 5000; ++device) {
            devices.push_back({device, QString("M%1").arg(device)});
            for (int item = 0; item < 20; ++item)
                items.push_back({device * 20 + item, device, item % 2 == 0 ? 21 : 5});
        }
        writeTables(
            path,
            {{"Devices", {{"IDent", Long}, {"MUID", Text}}, devices},
             {"DataFields", {{"DataIDent", Long}, {"IDent", Long}, {"iScale", Long}}, items}});
        AccessConnection connection(path);
        const QString join =
            "from Devices INNER JOIN DataFields ON Devices.IDent = DataFields.IDent where iScale=";
        QCOMPARE(lines(*connection.open("Select Count(1) " + join + "21")), QStringList("50000"));
        for (int device = 0; device < 5000; ++device) {
            const QString sql = "Select DataIDent " + join + "5 and MUID='m%1'";
            QCOMPARE(lines(*connection.open(sql.arg(device))).size(), 10);
        }
    }

    void refused_data()
    {
        const Rows<QString, QString> row("sql", "part");
        row.each({{"Select * from Nowhere", "no such table: Nowhere"}});
        row.each({{"Select Colour from Devices", "no such column: Colour"}});
        row.each({{"Selekt * from Devices", "syntax error"}, {"", "one statement"}});
        row.each({{"Select * from Devices where MUID='a", "unrecognized token"}});
        row.each({{"Select * from Devices where MUID In ( )", "is empty"}});
        row.each({{"Select CDATE('yesterday')", "CDATE"}});
        row.each({{"Select * from Scales; Select * from Devices", "one statement"}});
        row.each({{"Delete from Scales", "may not be modified"}});
    }
    void refused()
    {
        QFETCH(QString, sql);
        QFETCH(QString, part);
        const Error error = errorOf([&] { run(sql); });
        QCOMPARE(error.number, int(DatabaseError));
        QVERIFY2(error.description.contains(part) && error.description.contains(m_path),
                 qPrintable(error.description));
    }

    void onlyWantedColumns()
    {
        AccessConnection connection(m_path);
        const auto rows =
            connection.open("Select * from Devices where IDent=4", {"machname", "IDent"});
        QCOMPARE(rows->columns(), QStringList({"IDent", "MachName"}));
        QCOMPARE(lines(*rows), QStringList("4|Zebra"));
        QCOMPARE(errorOf([&] { static_cast<void>(rows->column("MUID")); }).number,
                 int(ItemNotFound));
    }

    void recordsetOutlivesConnection()
    {
        auto connection = std::make_unique<AccessConnection>(m_path);
        const auto rows = connection->open("Select MUID from Devices");
        const auto samples = connection->open(
            GetDataValuesSQL("2", at("2024-03-01T00:00:00"), at("2024-05-01T00:00:00")));
        connection.reset();
        QCOMPARE(lines(*rows).size(), qsizetype(m_devices.size()));
        QVERIFY(lines(*samples).size() > 400);
    }

    void warningsAndVerification()
    {
        const QString path = m_folder.filePath("wanting.mdb");
        demo::AccessWriter writer(path, 0);
        for (const QString name : {"Devices", "Scales"}) {
            demo::TableWriter &table = writer.addTable(name, {{"IDent"}});
            table.append();
            table.setStatedRows(3);
        }
        writer.addLink("Elsewhere", "x.mdb", "", "T");
        writer.finish();
        AccessConnection connection(path);
        const auto read = [&](const QString &sql) { StaticRecordset(*connection.open(sql)); };
        QCOMPARE(connection.warnings(), QStringList());
        read("Select IDent from Devices");
        read("Select Count(1) from Devices where IDent is null");
        QCOMPARE(connection.warnings().filter("'Devices'").size(), 1);
        QVERIFY(connection.warnings()[0].contains("states 3 rows, but 1 were found"));
        QCOMPARE(connection.verify().size(), 2);
        const Error error = errorOf([&] { read("Select A from Elsewhere"); });
        QVERIFY2(error.description.contains("linked to 'T' in 'x.mdb'"),
                 qPrintable(error.description));
    }

    void sqlText_data()
    {
        const Rows<QString, bool> row("sql", "recognised");
        const QString text =
            GetDataValuesSQL("17", at("2024-03-01T00:00:00"), at("2024-03-02T00:00:00"));
        const auto changed = [&text](const char *before, const char *after) {
            return QString(text).replace(before, after);
        };
        row("as built", text, true);
        row("negative item", changed("17", "-17"), true);
        row("item no number", changed("17", "x"), false);
        row("item a fraction", changed("17", "1.5"), false);
        row("further condition", changed("17", "17 OR 1=1"), false);
        row("other columns", changed("*", "iValue"), false);
        row("other bound", changed("<=", "<"), false);
        row("no order", changed(" ORDER BY iDate;", ""), false);
        row("more behind", text + u' ', false);
        row("cut", text.left(60), false);
        row("empty", "", false);
    }

    void sqlText()
    {
        QFETCH(QString, sql);
        const auto query = parsedSampleQuery(sql);
        QTEST(query.has_value(), "recognised");
        if (query && query->dataIdent == 17) {
            QCOMPARE(query->from, utc("2024-02-29T23:00:00"));
            QCOMPARE(query->to, utc("2024-03-01T23:00:00"));
        }
    }

private:
    QStringList run(const QString &sql) const
    {
        AccessConnection connection(m_path);
        return lines(*connection.open(sql));
    }

    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath("VTRGData.MDB");
    std::vector<Row> m_devices;
    std::vector<Row> m_items;
    QList<Sample> m_samples;
};

QTEST_GUILESS_MAIN(tst_AccessConnection)
#include "tst_AccessConnection.moc"
