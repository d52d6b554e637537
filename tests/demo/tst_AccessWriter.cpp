#include "MdbTools.h"
#include "core/Files.h"
#include "demo/AccessWriter.h"
#include "support/Errors.h"

#include <QTemporaryDir>
#include <QTest>

using namespace demo;
using enum FieldType;

/// mdbtools is the witness: what it reads has to be what was written.
class tst_AccessWriter : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath("test.mdb");
    std::unique_ptr<AccessWriter> m_writer;

    Page page(int number) const
    {
        QFile file(m_path);
        Page bytes{};
        if (!file.open(QIODevice::ReadOnly) || !file.seek(qint64(number) * pageSize) ||
            file.read(reinterpret_cast<char *>(bytes.data()), pageSize) != pageSize)
            qFatal("No page %d", number);
        return bytes;
    }
    qint32 statedRows(const TableWriter &table) const
    {
        return get<qint32>(&page(table.definitionPage())[16]);
    }
    /// The rows of table "T", each as one text.
    QStringList finishedRows()
    {
        m_writer->finish();
        QStringList rows;
        for (const QStringList &row : mdbRows(m_path, "T"))
            rows.append(row.join(u'|'));
        return rows;
    }

private Q_SLOTS:
    void init()
    {
        m_writer = std::make_unique<AccessWriter>(m_path, 1'750'000'000'000); // 2025-06-15
    }
    void cleanup() { m_writer.reset(); }

    void headerIsJet4WithoutPassword()
    {
        m_writer->finish();
        QCOMPARE(mdbTool("mdb-ver", {m_path}).trimmed(), "JET4");

        // The fixed bytes under which every file of this format hides its fields.
        const Page header = page(0);
        QCOMPARE(QByteArray(reinterpret_cast<const char *>(&header[0x18]), 4).toHex(), "b56f0362");
        QCOMPARE(get<quint16>(&header[0x3C]) ^ 0x427Bu, 1252u); // code page
        QCOMPARE(get<quint32>(&header[0x3E]), 0x4EBC8AFBu);     // no encryption
        QCOMPARE(get<quint32>(&header[0x42]) ^ 0x37ECFB86u,
                 45823u); // no password, hidden under the day

        // The map of free pages begins where the file ends.
        const int pages = int(QFileInfo(m_path).size() / pageSize);
        const Page map = page(1);
        const int row = get<quint16>(&map[14]);
        for (int i = 0; i < 512; ++i)
            QCOMPARE((map[std::size_t(row + 5 + i / 8)] >> i % 8 & 1) != 0, i >= pages);
    }

    void datesCountFromTheEndOf1899()
    {
        QCOMPARE(accessDays(1'750'010'400'000), 45823.75); // 2025-06-15 18:00
        QCOMPARE(accessDays(-2'209'226'400'000), -1.25);   // 1899-12-29 06:00
    }

    void tablesAreListed()
    {
        m_writer->addTable("Größen", {{"a", Long}});
        m_writer->addTable("T", {{"東", Text, 12}});
        QCOMPARE(finishedRows(), QStringList());
        QCOMPARE(mdbTables(m_path), QStringList({"Größen", "T"}));
        const QString schema = mdbTool("mdb-schema", {m_path});
        QVERIFY2(schema.contains("[東]") && schema.contains("Text (12)"), qPrintable(schema));
    }

    void valuesOfAllTypes()
    {
        std::vector<Field> fields;
        for (const FieldType type : {Boolean, Byte, Integer, Long, Currency, Single, Double,
                                     DateTime, Guid, Numeric, Binary, Ole, Memo})
            fields.push_back({QString::number(fields.size()), type, 255, 18, 4});
        TableWriter &table = m_writer->addTable("T", fields);
        table.setBoolean(0, true);
        table.setInteger(1, 255);
        table.setInteger(2, -32768);
        table.setInteger(3, -2147483647);
        table.setCurrency(4, -12345678901);
        table.setNumber(5, 0.15625);
        table.setNumber(6, -1.0e100);
        table.setNumber(7, 45823.75);
        table.setGuid(8, QUuid("{00112233-4455-6677-8899-aabbccddeeff}"));
        table.setNumeric(9, "-98765432109876.5");
        table.setBytes(10, "abc");
        table.setBytes(11, "object");
        table.setText(12, u"memo");
        table.append();
        table.append(); // shows that the first row left nothing behind
        QCOMPARE(finishedRows(),
                 QStringList({"1|255|-32768|-2147483647|-1234567.8901|0.15625|-1e+100|"
                              "2025-06-15 18:00:00|{00112233-4455-6677-8899AABBCCDDEEFF}|"
                              "-98765432109876.5000|abc|object|memo",
                              "0" + QString("|NULL").repeated(12)}));
    }

    void textsAreCompressedWhereThatIsShorter()
    {
        const QMap<QString, size_t> texts = {{"a", 2},
                                             {"ab", 4},
                                             {"Zürich", 8},
                                             {"東京", 4},
                                             {"edge-東京-Kreis", 19},
                                             {"Station 東", 2 + 8 + 1 + 2},
                                             {"Łódź, Nowa", 18},
                                             {"letter Āā and more", 36}};
        TableWriter &table = m_writer->addTable("T", {{"t", Text}});
        QStringList expected;
        for (const QString &text : texts.keys()) {
            std::vector<std::uint8_t> encoded;
            encodeText(text, encoded);
            QCOMPARE(encoded.size(), texts[text]);
            table.setText(0, text);
            table.append();
            expected.append(text);
        }
        QCOMPARE(finishedRows(), expected);
    }

    /// Within the row, in a row of their own, in a chain; compressed and not; each side of the
    /// bounds.
    void memosOfAllLengths()
    {
        TableWriter &table = m_writer->addTable("T", {{"m", Memo}, {"o", Ole}});
        QStringList expected;
        for (const int length :
             {1, 62, 63, 64, 1024, 1025, 2037, 2038, 2039, 4072, 4073, 8144, 8145, 30'000}) {
            QString text;
            while (text.size() < length)
                text += QString("äb%1").arg(text.size());
            text.truncate(length);
            const QByteArray bytes(length, char('a' + length % 26));
            table.setText(0, text);
            table.setBytes(1, bytes);
            table.append();
            expected.append(text + u'|' + QString::fromLatin1(bytes));
        }
        QCOMPARE(finishedRows(), expected);
    }

    void numberOfRowsIsTrueOrAsStated()
    {
        TableWriter &right = m_writer->addTable("Right", {{"a", Long}});
        TableWriter &wrong = m_writer->addTable("T", {{"a", Long}});
        for (int i = 0; i < 5; ++i) {
            right.append();
            wrong.append();
        }
        wrong.setStatedRows(0);
        QCOMPARE(finishedRows().size(), 5);
        QCOMPARE(statedRows(right), 5);
        QCOMPARE(statedRows(wrong), 0);
    }

    /// More pages than one map page tells of, and another table's pages among them.
    void manyPages()
    {
        constexpr int rows = 33'000;
        TableWriter &big = m_writer->addTable("T", {{"a", Long}}, {{}, 1});
        TableWriter &sparse = m_writer->addTable("Sparse", {{"a", Long}}, {{}, 1});
        QStringList expected;
        for (int i = 0; i < rows; ++i) {
            big.setInteger(0, i);
            big.append();
            expected.append(QString::number(i));
            if (i % 1000 == 0) {
                sparse.setInteger(0, i);
                sparse.append();
            }
        }
        QCOMPARE(finishedRows(), expected);
        QCOMPARE(int(big.dataPages().size()), rows);
        const QList<QStringList> few = mdbRows(m_path, "Sparse");
        QCOMPARE(few.size(), 33);
        QCOMPARE(few.last().first(), "32000");
    }

    void manyColumns()
    {
        std::vector<Field> fields;
        QStringList expected;
        for (int i = 0; i < 240; ++i) {
            const QString name = QString("A rather long column name %1").arg(i);
            fields.push_back({name, i % 2 ? Text : Long, 9});
            expected.append(QString::number(i));
        }
        TableWriter &table = m_writer->addTable("T", fields);
        for (int i = 0; i < 240; i += 2) {
            table.setInteger(i, i);
            table.setText(i + 1, expected[i + 1]);
        }
        table.append();
        QCOMPARE(finishedRows(), QStringList(expected.join(u'|')));
    }

    void columnOrderDroppedColumnsAndShortRows()
    {
        TableWriter &table = m_writer->addTable("T",
                                                {{"a", Long},
                                                 {"gone", Text, 20, 0, 0, true},
                                                 {"b", Text},
                                                 {"gone too", Long, 0, 0, 0, true},
                                                 {"c", Integer},
                                                 {"d", Text}},
                                                {{5, 2, 0, 4}});
        for (const int count : {4, 6}) {
            table.setRowFields(count);
            table.setInteger(0, count * 10);
            table.setText(1, u"dropped");
            table.setText(2, u"b");
            table.setInteger(3, 99);
            if (count > 4) {
                table.setInteger(4, 21);
                table.setText(5, u"d");
            }
            table.append();
        }
        // mdbtools shows columns by number, whatever their order in the definition.
        QCOMPARE(finishedRows(), QStringList({"40|b|NULL|NULL", "60|b|21|d"}));
        QCOMPARE(get<quint16>(&page(table.definitionPage())[63 + 5]), quint16(5));
    }

    void deletedRowIsGone()
    {
        TableWriter &table = m_writer->addTable("T", {{"a", Long}}, {{}, 2});
        std::vector<RowPlace> places;
        for (int i = 0; i < 5; ++i) {
            table.setInteger(0, i);
            places.push_back(table.append());
        }
        table.deleteRow(places[1]); // on a page that has been written
        table.deleteRow(places[4]); // on the one that has not
        QCOMPARE(finishedRows(), QStringList({"0", "2", "3"}));
        QCOMPARE(statedRows(table), 3);
    }

    void movedRowIsFoundThroughItsPointer()
    {
        TableWriter &table = m_writer->addTable("T", {{"a", Double}});
        std::vector<RowPlace> places;
        for (int i = 0; i < 3; ++i) {
            table.setNumber(0, i + 0.5);
            places.push_back(table.append());
        }
        table.moveRow(places[1]);
        QCOMPARE(finishedRows().size(), 3); // mdbtools shows such a row once, where it now stands
        QCOMPARE(statedRows(table), 3);

        const Page from = page(places[1].page);
        const int entry = get<quint16>(&from[14 + 2]);
        QCOMPARE(entry & ~0x1FFF, 0x4000);
        const auto pointer = get<quint32>(&from[std::size_t(entry & 0x1FFF)]);
        QVERIFY(int(pointer >> 8) != places[1].page);
        QCOMPARE(int(pointer & 0xFF), 0);

        const Page to = page(int(pointer >> 8));
        const int target = get<quint16>(&to[14]);
        QCOMPARE(target & ~0x1FFF, 0x8000);
        QCOMPARE(get<double>(&to[std::size_t(target & 0x1FFF) + 2]), 1.5);
    }

    void rejectsWhatDoesNotFit()
    {
        TableWriter &table =
            m_writer->addTable("T", {{"i", Integer}, {"t", Text, 3}, {"n", Numeric, 0, 18, 2}});
        QCOMPARE(errorOf([&] { table.setInteger(0, 32768); }).number, int(Overflow));
        QCOMPARE(errorOf([&] { table.setText(1, u"four"); }).number, int(Overflow));
        QCOMPARE(errorOf([&] { table.setText(0, u"text"); }).number, int(TypeMismatch));
        QCOMPARE(errorOf([&] { table.setNumeric(2, "1.234"); }).number, int(TypeMismatch));
        QCOMPARE(errorOf([&] { table.setNumeric(2, QString(40, u'9')); }).number, int(Overflow));
        QCOMPARE(errorOf([&] { table.setInteger(0, 32767); }).number, 0);
    }

    void unfinishedFileLeavesNothing()
    {
        m_writer->addTable("T", {{"a", Long}}).append();
        m_writer->finish();
        const QByteArray before = readFile(m_path);
        m_writer = std::make_unique<AccessWriter>(m_path, 0);
        m_writer->addTable("Other", {{"a", Long}}).append();
        m_writer.reset();
        QCOMPARE(readFile(m_path), before);
        QCOMPARE(QDir(m_folder.path()).entryList(QDir::Files), QStringList("test.mdb"));
    }
};

QTEST_GUILESS_MAIN(tst_AccessWriter)
#include "tst_AccessWriter.moc"
