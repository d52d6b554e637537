#include "AccessFiles.h"
#include "base/Files.h"
#include "support/AccessTables.h"
#include "support/MdbTools.h"
#include "support/Rows.h"
#include "support/Zones.h"

#include <QTemporaryDir>

#include <climits>

using namespace demo;
using enum FieldType;

namespace {

constexpr qint64 created = 1'750'000'000'000;
const QVariant null;
using Texts = QList<QStringList>;

/// Cells as far as mdbtools show them, which have their own ways with digits, GUIDs and empty
/// texts.
Texts plain(Texts rows)
{
    for (QStringList &row : rows) {
        for (QString &cell : row) {
            if (cell.startsWith("7B")) // a GUID's text
                cell = QByteArray::fromHex(cell.toLatin1());
            bool isNumber = false;
            const double number = cell.toDouble(&isNumber);
            if (isNumber)
                cell = QString::number(number, 'g', 7);
            cell = cell.isEmpty() ? "null" : cell.remove(u'-').toLower();
        }
    }
    return rows;
}

} // namespace

/// Files that the writer makes, read whole; where mdbtools understand them too, as they do.
class tst_AccessFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_path = m_folder.filePath("test.mdb");
        m_writer = std::make_unique<AccessWriter>(m_path, created);
    }

    void headerOfTheFile()
    {
        m_writer->finish();
        // The fixed bytes under which every file of this format hides its fields.
        const QByteArray bytes = readFile(m_path);
        const auto *header = reinterpret_cast<const std::uint8_t *>(bytes.constData());
        QCOMPARE(bytes.mid(0x18, 4).toHex(), "b56f0362");
        QCOMPARE(get<quint16>(header + 0x3C) ^ 0x427Bu, 1252u);      // code page
        QCOMPARE(get<quint32>(header + 0x3E), 0x4EBC8AFBu);          // no encryption
        QCOMPARE(get<quint32>(header + 0x42) ^ 0x37ECFB86u, 45823u); // no password; the day

        // The map of free pages begins where the file ends.
        const std::uint8_t *map = header + pageSize;
        map += get<quint16>(map + 14) + 5;
        for (int i = 0; i < 512; ++i)
            QCOMPARE((map[i / 8] >> i % 8 & 1) != 0, i >= bytes.size() / pageSize);
    }

    void namesOfTablesAndColumns()
    {
        m_writer->addTable("Geräte", {{"IDent"}});
        m_writer->addTable("Second", {{"A"}});
        m_writer->finish();
        mdb::AccessFile file(m_path);
        QCOMPARE(file.tableNames(), std::vector<QString>({"Geräte", "Second"}));
#ifndef Q_OS_WIN
        QCOMPARE(mdbTables(m_path), QStringList({"Geräte", "Second"}));
#endif
        const mdb::Table &table = file.table("GERÄTE");
        QCOMPARE(table.name, "Geräte");
        QCOMPARE(table.column("IDENT"), 0);
        QCOMPARE(table.column("ID"), -1);

        const Error error = errorOf(m_path, "Devices");
        QCOMPARE(error.number, int(ItemNotFound));
        QVERIFY(error.description.contains("Devices") && error.description.contains(m_path));
    }

    void valuesOfAllTypes()
    {
        const std::vector<Field> fields{{"Boolean", Boolean},   {"Byte", Byte},
                                        {"Integer", Integer},   {"Long", Long},
                                        {"Currency", Currency}, {"Single", Single},
                                        {"Double", Double},     {"DateTime", DateTime},
                                        {"Binary", Binary},     {"Text", Text},
                                        {"Ole", Ole},           {"Memo", Memo},
                                        {"Guid", Guid},         {"Numeric", Numeric, 0, 28, 10}};
        const qint64 time = utc("2024-03-01T07:05:09");
        const QUuid guid("{00112233-4455-6677-8899-AABBCCDDEEFF}");
        const QByteArray binary("\xAB\x01", 2);
        const QString number = "-999999999999999999.9999999999";
        const Row row{true, 255,    -32768,          INT_MIN, -12'345'678,  0.1,  -1.0 / 3,
                      time, binary, "Kraków, \"ż\"", binary,  "two\nlines", guid, number};
        Row withText(9);
        withText.push_back("");
        add(fields, {row, {}, withText});
        const QString full =
            "1|255|-32768|-2147483648|-1234.5678|0.1|-0.3333333333333333|2024-03-01T07:05:09|ab01|"
            "Kraków, \"ż\"|ab01|two\nlines|{00112233-4455-6677-8899-AABBCCDDEEFF}|" +
            number;
        QStringList empty(14, "NULL");
        empty[0] = "0";
        QStringList emptyText = empty;
        emptyText[9].clear();
        QCOMPARE(witnessedRows(), Texts({full.split(u'|'), empty, emptyText}));
    }

    void calculatedColumns()
    {
        const auto calculated = [](const char *name, FieldType envelope, FieldType result) {
            return Field{name, envelope, 255, 18, 0, false, result};
        };
        const std::vector<Field> fields{{"Id", Long},
                                        calculated("Price", Double, Currency),
                                        calculated("Share", Double, Numeric),
                                        calculated("IsRich", Integer, Boolean),
                                        calculated("Float", Numeric, Single),
                                        calculated("When", Double, DateTime),
                                        calculated("Short", Text, Text),
                                        calculated("Long", Text, Memo)};
        const QString memo(3000, u'ż');
        const QByteArray longText(reinterpret_cast<const char *>(memo.utf16()), 6000);
        const QList<QByteArray> values = {QByteArray::fromHex("87D6120000000000"),
                                          QByteArray::fromHex("0E00020000000000D204000000000000"),
                                          QByteArray::fromHex("FF"),
                                          QByteArray::fromHex("0000203F"),
                                          QByteArray::fromHex("000000000000F03F"),
                                          QByteArray("A\0b\0", 4),
                                          longText};
        m_table = &m_writer->addTable("T", fields);
        for (int i = 0; i < 3; ++i) {
            m_table->setInteger(0, i);
            for (int column = 0; column < 7 && i < 2; ++column)
                m_table->setResult(column + 1, i == 0 ? values[column] : QByteArray());
            m_table->append();
        }
        const QString none = "NULL|NULL|NULL|NULL|NULL|NULL|NULL";
        QCOMPARE(rows(),
                 Texts({("0|123.4567|12.34|1|0.625|1899-12-31T00:00:00|Ab|" + memo).split(u'|'),
                        ("1|" + none).split(u'|'), ("2|" + none).split(u'|')}));
        mdb::AccessFile file(m_path);
        mdb::RowCursor row(file, file.table("T"));
        QVERIFY(row.next() && row.number(1) == 123.4567 && row.integer(3) == 1);
        QVERIFY(row.next() && row.number(1) == 0 && row.integer(3) == 0 && row.instant(5) == 0);
    }

    void brokenPropertiesAreAnError_data()
    {
        const Rows<int, char, QString> row("offset", "byte", "words");
        row("unknown form", 0, 'X', "unknown form");
        row("block longer than all", 6, '\1', "are broken");
        row("unknown type", -1, 99, "unknown type 99");
    }
    void brokenPropertiesAreAnError()
    {
        QFETCH(int, offset);
        QFETCH(char, byte);
        QFETCH(QString, words);
        add({{"A", Double, 255, 18, 0, false, Currency}});
        m_writer->finish();
        QByteArray bytes = readFile(m_path);
        const qsizetype start = bytes.indexOf(QByteArray("MR2\0", 4));
        const QByteArray end("\2\0\0\1\0", 5); // in front of the value
        bytes[offset < 0 ? bytes.indexOf(end, start) + end.size() : start + offset] = byte;
        writeQuickly(m_path, bytes);
        const Error error = errorOf(m_path, "T");
        QCOMPARE(error.number, int(InvalidFileFormat));
        for (const QString &part : {m_path, QString("table 'T', page "), words})
            QVERIFY2(error.description.contains(part), qPrintable(error.description));
    }

    void tablesOfBooleansOnly()
    {
        add({{"A", Boolean}, {"B", Boolean}}, {{true, false}, {false, true}, {}});
        const Texts expected({{"1", "0"}, {"0", "1"}, {"0", "0"}});
        QCOMPARE(witnessedRows(), expected);
        // The count of variable values may also stand behind the null mask.
        QByteArray bytes = readFile(m_path);
        const qsizetype row = (m_table->dataPages().front() + 1) * pageSize - 5;
        QCOMPARE(bytes.mid(row, 5), QByteArray("\2\0\0\0\1", 5));
        writeQuickly(m_path, bytes.replace(row + 2, 3, QByteArray("\1\0\0", 3)));
        QCOMPARE(readTable(m_path, "T"), expected);
        writeQuickly(m_path, bytes.replace(row + 2, 3, QByteArray("\1\1\1", 3)));
        QVERIFY(errorOf(m_path, "T").description.contains("longer"));
    }

    /// What our reader and mdbtools make of a table: one row of texts for each row.
    void features_data()
    {
        const Rows<std::vector<Field>, std::vector<Row>, Texts> table("fields", "rows", "expected");
        // Within the row, in a row of their own, in a chain; compressed and not.
        std::vector<Row> values;
        Texts expected;
        for (const int length :
             {1, 64, 65, 1024, 1025, 2038, 2039, 4076, 4077, 8144, 8145, 30'000}) {
            QByteArray value(length, 'x');
            for (int i = 0; i < length; ++i)
                value[i] = static_cast<char>(i * 7 + i / 256);
            const QString text =
                QString(length / 2, u'\u017C') + QString(length - length / 2, u'a');
            values.push_back({value, text});
            expected.append({value.toHex().constData(), text});
        }
        table("long values of all lengths", {{"Ole", Ole}, {"Memo", Memo}}, values, expected);
        table("compressed texts", {{"A", Text}, {"B", Text}, {"C", Text}, {"D", Text}},
              {{"a", "ab", "Zürich", "東京"},
               {"edge-東京-Kreis", "Station 東", "Łódź, Nowa", "letter Āā and more"}},
              {{"a", "ab", "Zürich", "東京"},
               {"edge-東京-Kreis", "Station 東", "Łódź, Nowa", "letter Āā and more"}});
        std::vector<Field> fields;
        Row row;
        QStringList numbers;
        for (int i = 0; i < 250; ++i) {
            fields.push_back({QString("A column with quite a long name, number %1").arg(i),
                              i % 2 == 0 ? Byte : Text, 20});
            row.push_back(QString::number(i));
            numbers.append(QString::number(i));
        }
        table("definition of several pages", fields, {row}, {numbers});
        // Each row has the columns that there were when it was written.
        table("rows older than columns",
              {{"A", Long}, {"B", Text}, {"C", Double}, {"D", Text}, {"E", Boolean}},
              {{1}, {2, "b"}, {3, null, null, "d", true}},
              {{"1", "NULL", "NULL", "NULL", "0"},
               {"2", "b", "NULL", "NULL", "0"},
               {"3", "NULL", "NULL", "d", "1"}});
    }
    void features()
    {
        QFETCH(std::vector<Field>, fields);
        QFETCH(std::vector<Row>, rows);
        add(fields);
        for (const Row &row : rows) {
            m_table->setRowFields(static_cast<int>(row.size()));
            append(*m_table, fields, row);
        }
        QTEST(witnessedRows(), "expected");
        mdb::AccessFile file(m_path);
        QCOMPARE(file.table("T").column(fields.back().name), int(fields.size()) - 1);
    }

    void reorderedAndDroppedColumns()
    {
        Field dropped{"Gone", Double};
        dropped.dropped = true;
        Field droppedText{"Gone too", Text};
        droppedText.dropped = true;
        const std::vector<Field> fields{{"A", Long},    dropped,     {"B", Text},   droppedText,
                                        {"C", Integer}, {"D", Text}, {"E", Boolean}};
        add(fields, {{1, 99, "b", "gone", 3, "d", true}}, {.definitionOrder = {5, 4, 6, 0, 2}});
        QCOMPARE(rows(), Texts({{"d", "3", "1", "1", "b"}}));
        mdb::AccessFile file(m_path);
        QCOMPARE(file.table("T").columns.front().name, "D");
    }

    void movedRowsStandWhereTheyWere()
    {
        const auto places =
            add({{"A", Long}, {"B", Text}}, {{0, ""}, {1, "x"}, {2, "xx"}, {3, "xxx"}});
        m_table->moveRow(places[0]);
        m_table->moveRow(places[2]);
        m_table->deleteRow(places[2]); // the pointer of a moved row
        QCOMPARE(rows(), Texts({{"0", ""}, {"1", "x"}, {"3", "xxx"}}));
    }

    /// More pages than one page of the map tells of, another table's pages and deleted rows among
    /// them.
    void manyPages()
    {
        add({{"A", Long}}, {}, {.maxRowsOnPage = 1});
        TableWriter &sparse = m_writer->addTable("Sparse", {{"A", Long}}, {.maxRowsOnPage = 3});
        Texts expected;
        Texts few;
        for (int i = 0; i < 33'000; ++i) {
            m_table->setInteger(0, i);
            m_table->append();
            expected.append({QString::number(i)});
            if (i % 100 != 0)
                continue;
            sparse.setInteger(0, i);
            const RowAddress place = sparse.append();
            if (i % 400 == 0)
                sparse.deleteRow(place);
            else
                few.append({QString::number(i)});
        }
        QCOMPARE(witnessedRows(), expected);
        QCOMPARE(readTable(m_path, "Sparse"), few);
#ifndef Q_OS_WIN
        QCOMPARE(mdbRows(m_path, "Sparse"), few);
#endif
    }

    void rowsAppendedMeanwhileAreReadNextTime()
    {
        const std::vector<Row> many(1000, {QString(200, u'x')});
        writeTables(m_path, {{"T", {{"A", Text}}, many}});
        const QByteArray larger = readFile(m_path);
        writeTables(m_path, {{"T", {{"A", Text}}, {{"x"}}}});
        mdb::AccessFile file(m_path);
        QCOMPARE(readTable(file, "T").size(), 1);

        QFile growing(m_path);
        QVERIFY(growing.open(QIODevice::ReadWrite));
        QCOMPARE(growing.write(larger), larger.size());
        growing.close();
        QCOMPARE(readTable(file, "T").size(), 1000);
        file.checkSize();

        QVERIFY(growing.resize(growing.size() - pageSize));
        QVERIFY_EXCEPTION_THROWN(file.checkSize(), Error);
    }

    void encodedPages()
    {
        const QString text(10'000, u'ż');
        add({{"A", Memo}}, {{text}});
        m_writer->finish();
        QByteArray bytes = readFile(m_path);
        applyHeaderKey(bytes);
        const QByteArray key("\x12\x34\x56\x78", 4);
        bytes.replace(0x3E, 4, key);
        applyHeaderKey(bytes);
        for (qsizetype page = 1; page < bytes.size() / pageSize; ++page) {
            QByteArray pageKey = key;
            for (qsizetype i = 0; i < 4; ++i)
                pageKey[i] = static_cast<char>(pageKey[i] ^ static_cast<char>(page >> (8 * i)));
            applyRc4(pageKey, bytes.data() + page * pageSize, pageSize);
        }
        writeQuickly(m_path, bytes);
        QCOMPARE(readTable(m_path, "T"), Texts({{text}}));
    }

    void newEncryptionIsRefused()
    {
        m_writer->finish();
        QByteArray bytes = readFile(m_path);
        bytes[0x14] = 3; // a version that encrypts otherwise
        applyHeaderKey(bytes);
        bytes[0x3E] = 1;
        applyHeaderKey(bytes);
        writeQuickly(m_path, bytes);
        const Error error = errorOf(m_path, "T");
        QCOMPARE(error.number, int(PermissionDenied));
        QVERIFY(error.description.contains("encrypted"));
    }

    void notOpened()
    {
        const QString path = m_folder.filePath("other.mdb");
        QCOMPARE(errorOf(path, "T").number, int(FileNotFound));
        const QByteArray start("\0\1\0\0Standard Jet DB\0", 20);
        for (const auto &[content, number] :
             {std::pair(QByteArray("no database"), UnrecognizedFormat),
              std::pair(start + '\x40', UnrecognizedFormat), // an unknown version
              std::pair(start + '\1', InvalidFileFormat),
              std::pair(start + '\1' + QByteArray(8 * pageSize - 21, '\0'), InvalidFileFormat)}) {
            writeQuickly(path, content);
            const Error error = errorOf(path, "T");
            QCOMPARE(error.number, int(number));
            QVERIFY(error.description.contains(path));
        }
    }

private:
    /// Adds the table "T" and its rows.
    std::vector<RowAddress> add(const std::vector<Field> &fields, const std::vector<Row> &rows = {},
                                const TableOptions &options = {})
    {
        m_table = &m_writer->addTable("T", fields, options);
        std::vector<RowAddress> places;
        for (const Row &row : rows)
            places.push_back(append(*m_table, fields, row));
        return places;
    }
    /// The rows of "T" and, behind them, the warnings.
    Texts rows()
    {
        m_writer->finish();
        mdb::AccessFile file(m_path);
        Texts rows = readTable(file, "T");
        if (!file.warnings().isEmpty())
            rows.append(file.warnings());
        return rows;
    }
    Texts witnessedRows()
    {
        const Texts ours = rows();
#ifndef Q_OS_WIN
        const Texts theirs = mdbRows(m_path, "T");
        return plain(ours) == plain(theirs) ? ours : theirs;
#else
        return ours;
#endif
    }

    QTemporaryDir m_folder;
    QString m_path;
    std::unique_ptr<AccessWriter> m_writer;
    TableWriter *m_table = nullptr;
};

QTEST_APPLESS_MAIN(tst_AccessFile)
#include "tst_AccessFile.moc"
