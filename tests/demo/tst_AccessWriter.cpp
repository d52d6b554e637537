#include "MdbTools.h"
#include "core/Error.h"
#include "demo/AccessWriter.h"

#include <QTemporaryDir>
#include <QTest>

using namespace demo;
using enum FieldType;

namespace {

constexpr qint64 created = 1'750'000'000'000; // 2025-06-15, day 45823

Field field(const QString &name, FieldType type, int size = 255)
{
    return {name, type, size};
}

} // namespace

/// mdbtools is the witness: what it reads has to be what was written.
class tst_AccessWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QVERIFY(m_folder.isValid());
        m_path = m_folder.filePath(QStringLiteral("test.mdb"));
        m_writer = std::make_unique<AccessWriter>(m_path, created);
    }

    void cleanup() { m_writer.reset(); }

    void headerIsJet4WithoutPassword();
    void datesCountFromTheEndOf1899_data();
    void datesCountFromTheEndOf1899();
    void tablesAreListed();
    void valuesOfAllTypes_data();
    void valuesOfAllTypes();
    void texts_data();
    void texts();
    void memosOfAllLengths();
    void numberOfRowsIsTrueOrAsStated();
    void manyPages();
    void manyColumns();
    void columnOrderDroppedColumnsAndShortRows();
    void deletedRowIsGone();
    void movedRowIsFoundThroughItsPointer();
    void rejectsWhatDoesNotFit();
    void unfinishedFileLeavesNothing();

private:
    Page page(int number) const;

    QTemporaryDir m_folder;
    QString m_path;
    std::unique_ptr<AccessWriter> m_writer;
};

Page tst_AccessWriter::page(int number) const
{
    QFile file(m_path);
    Page bytes{};
    if (!file.open(QIODevice::ReadOnly) || !file.seek(qint64(number) * pageSize) ||
        file.read(reinterpret_cast<char *>(bytes.data()), pageSize) != pageSize)
        qFatal("No page %d", number);
    return bytes;
}

void tst_AccessWriter::headerIsJet4WithoutPassword()
{
    m_writer->finish();
    QCOMPARE(mdbTool(QStringLiteral("mdb-ver"), {m_path}).trimmed(), QStringLiteral("JET4"));

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

void tst_AccessWriter::datesCountFromTheEndOf1899_data()
{
    QTest::addColumn<QString>("time");
    QTest::addColumn<double>("days");
    QTest::newRow("recent") << QStringLiteral("2025-06-15T18:00:00Z") << 45823.75;
    QTest::newRow("start") << QStringLiteral("1899-12-30T00:00:00Z") << 0.0;
    QTest::newRow("before") << QStringLiteral("1899-12-29T06:00:00Z") << -1.25;
}

void tst_AccessWriter::datesCountFromTheEndOf1899()
{
    QFETCH(QString, time);
    QFETCH(double, days);
    QCOMPARE(accessDays(QDateTime::fromString(time, Qt::ISODate).toMSecsSinceEpoch()), days);
}

void tst_AccessWriter::tablesAreListed()
{
    m_writer->addTable(QStringLiteral("Größen"), {field(QStringLiteral("a"), Long)});
    m_writer->addTable(QStringLiteral("Empty"), {field(QStringLiteral("東"), Text, 12)});
    m_writer->finish();
    QCOMPARE(mdbTables(m_path), (QStringList{QStringLiteral("Größen"), QStringLiteral("Empty")}));
    QCOMPARE(mdbRows(m_path, QStringLiteral("Empty")), QList<QStringList>());
    const QString schema = mdbTool(QStringLiteral("mdb-schema"), {m_path});
    QVERIFY2(schema.contains(QStringLiteral("[東]")), qPrintable(schema));
    QVERIFY2(schema.contains(QStringLiteral("Text (12)")), qPrintable(schema));
}

using Setter = void (*)(TableWriter &);

void tst_AccessWriter::valuesOfAllTypes_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<Setter>("set");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, FieldType type, Setter set, const char *expected) {
        QTest::newRow(name) << int(type) << set << QString::fromUtf8(expected);
    };
    row(
        "true", Boolean, [](TableWriter &t) { t.setBoolean(0, true); }, "1");
    row(
        "false", Boolean, [](TableWriter &t) { t.setBoolean(0, false); }, "0");
    row(
        "byte", Byte, [](TableWriter &t) { t.setInteger(0, 255); }, "255");
    row(
        "integer", Integer, [](TableWriter &t) { t.setInteger(0, -32768); }, "-32768");
    row(
        "long", Long, [](TableWriter &t) { t.setInteger(0, -2147483647); }, "-2147483647");
    row(
        "currency", Currency, [](TableWriter &t) { t.setCurrency(0, -12345678901); },
        "-1234567.8901");
    row(
        "single", Single, [](TableWriter &t) { t.setNumber(0, 0.15625); }, "0.15625");
    row(
        "double", Double, [](TableWriter &t) { t.setNumber(0, -1.0e100); }, "-1e+100");
    row(
        "date", DateTime, [](TableWriter &t) { t.setNumber(0, 45823.75); }, "2025-06-15 18:00:00");
    row(
        "guid", Guid,
        [](TableWriter &t) {
            t.setGuid(0, QUuid(QStringLiteral("{00112233-4455-6677-8899-aabbccddeeff}")));
        },
        "{00112233-4455-6677-8899AABBCCDDEEFF}");
    row(
        "numeric", Numeric,
        [](TableWriter &t) { t.setNumeric(0, QStringLiteral("-98765432109876.5")); },
        "-98765432109876.5000");
    row(
        "binary", Binary, [](TableWriter &t) { t.setBytes(0, "abc"); }, "abc");
    row(
        "ole", Ole, [](TableWriter &t) { t.setBytes(0, "object"); }, "object");
    row(
        "null byte", Byte, [](TableWriter &) {}, "NULL");
    row(
        "null date", DateTime, [](TableWriter &) {}, "NULL");
    row(
        "null text", Text, [](TableWriter &) {}, "NULL");
    row(
        "null memo", Memo, [](TableWriter &) {}, "NULL");
    row(
        "null guid", Guid, [](TableWriter &) {}, "NULL");
}

void tst_AccessWriter::valuesOfAllTypes()
{
    QFETCH(int, type);
    QFETCH(Setter, set);
    QFETCH(QString, expected);
    TableWriter &table =
        m_writer->addTable(QStringLiteral("T"), {{QStringLiteral("v"), FieldType(type), 255, 18, 4},
                                                 {QStringLiteral("after"), Long}});
    for (int i = 0; i < 2; ++i) { // the second row shows that the first left nothing behind
        if (i == 0)
            set(table);
        table.setInteger(1, 7 + i);
        table.append();
    }
    m_writer->finish();
    const QString null = type == int(Boolean) ? QStringLiteral("0") : QStringLiteral("NULL");
    QCOMPARE(mdbRows(m_path, QStringLiteral("T")),
             (QList<QStringList>{{expected, QStringLiteral("7")}, {null, QStringLiteral("8")}}));
}

void tst_AccessWriter::texts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("bytes");
    QTest::newRow("one character") << QStringLiteral("a") << 2;
    QTest::newRow("two characters") << QStringLiteral("ab") << 4;
    QTest::newRow("compressed") << QStringLiteral("Zürich") << 8;
    QTest::newRow("never shorter") << QStringLiteral("東京") << 4;
    QTest::newRow("toggles twice") << QStringLiteral("edge-東京-Kreis") << 19;
    QTest::newRow("toggles at the end") << QStringLiteral("Station 東") << 2 + 8 + 1 + 2;
    QTest::newRow("toggles at once") << QStringLiteral("Łódź, Nowa") << 18;
    QTest::newRow("low byte zero") << QStringLiteral("letter Āā and more") << 36;
}

void tst_AccessWriter::texts()
{
    QFETCH(QString, text);
    QFETCH(int, bytes);
    std::vector<std::uint8_t> encoded;
    encodeText(text, encoded);
    QCOMPARE(int(encoded.size()), bytes);

    TableWriter &table =
        m_writer->addTable(QStringLiteral("T"), {field(QStringLiteral("t"), Text)});
    table.setText(0, text);
    table.append();
    m_writer->finish();
    QCOMPARE(mdbRows(m_path, QStringLiteral("T")), QList<QStringList>{{text}});
}

void tst_AccessWriter::memosOfAllLengths()
{
    // Within the row, in a row of their own, in a chain; compressed and not; each side of the
    // bounds.
    const QList<int> lengths = {1,    62,   63,   64,   1024, 1025, 2037,
                                2038, 2039, 4072, 4073, 8144, 8145, 30'000};
    TableWriter &table = m_writer->addTable(
        QStringLiteral("T"), {field(QStringLiteral("m"), Memo), field(QStringLiteral("o"), Ole)});
    QList<QStringList> expected;
    for (const int length : lengths) {
        QString text;
        while (text.size() < length)
            text += QStringLiteral("äb%1").arg(text.size());
        text.truncate(length);
        const QByteArray bytes(length, char('a' + length % 26));
        table.setText(0, text);
        table.setBytes(1, bytes);
        table.append();
        expected.append({text, QString::fromLatin1(bytes)});
    }
    m_writer->finish();
    QCOMPARE(mdbRows(m_path, QStringLiteral("T")), expected);
}

void tst_AccessWriter::numberOfRowsIsTrueOrAsStated()
{
    TableWriter &right =
        m_writer->addTable(QStringLiteral("Right"), {field(QStringLiteral("a"), Long)});
    TableWriter &wrong =
        m_writer->addTable(QStringLiteral("Wrong"), {field(QStringLiteral("a"), Long)});
    for (int i = 0; i < 5; ++i) {
        right.append();
        wrong.append();
    }
    wrong.setStatedRows(0);
    m_writer->finish();
    QCOMPARE(get<qint32>(&page(right.definitionPage())[16]), 5);
    QCOMPARE(get<qint32>(&page(wrong.definitionPage())[16]), 0);
    QCOMPARE(mdbRows(m_path, QStringLiteral("Wrong")).size(), 5);
}

void tst_AccessWriter::manyPages()
{
    // More pages than one map page tells of, and another table's pages among them.
    constexpr int rows = 33'000;
    TableWriter &big =
        m_writer->addTable(QStringLiteral("Big"), {field(QStringLiteral("a"), Long)}, {{}, 1});
    TableWriter &sparse =
        m_writer->addTable(QStringLiteral("Sparse"), {field(QStringLiteral("a"), Long)}, {{}, 1});
    for (int i = 0; i < rows; ++i) {
        big.setInteger(0, i);
        big.append();
        if (i % 1000 == 0) {
            sparse.setInteger(0, i);
            sparse.append();
        }
    }
    m_writer->finish();
    QCOMPARE(int(big.dataPages().size()), rows);
    const QList<QStringList> read = mdbRows(m_path, QStringLiteral("Big"));
    QCOMPARE(read.size(), rows);
    for (int i = 0; i < rows; ++i)
        QCOMPARE(read[i].first().toInt(), i);
    const QList<QStringList> few = mdbRows(m_path, QStringLiteral("Sparse"));
    QCOMPARE(few.size(), 33);
    QCOMPARE(few.last().first(), QStringLiteral("32000"));
}

void tst_AccessWriter::manyColumns()
{
    std::vector<Field> fields;
    QStringList expected;
    for (int i = 0; i < 240; ++i)
        fields.push_back(
            field(QStringLiteral("A rather long column name %1").arg(i), i % 2 ? Text : Long, 9));
    TableWriter &table = m_writer->addTable(QStringLiteral("T"), fields);
    for (int i = 0; i < 240; ++i) {
        if (i % 2)
            table.setText(i, QString::number(i));
        else
            table.setInteger(i, i);
        expected.append(QString::number(i));
    }
    table.append();
    m_writer->finish();
    QCOMPARE(mdbRows(m_path, QStringLiteral("T")), QList<QStringList>{expected});
}

void tst_AccessWriter::columnOrderDroppedColumnsAndShortRows()
{
    const auto name = [](const char *text) { return QString::fromLatin1(text); };
    TableWriter &table = m_writer->addTable(name("T"),
                                            {{name("a"), Long},
                                             {name("gone"), Text, 20, 0, 0, true},
                                             {name("b"), Text},
                                             {name("gone too"), Long, 0, 0, 0, true},
                                             {name("c"), Integer},
                                             {name("d"), Text}},
                                            {{5, 2, 0, 4}});
    const auto append = [&](int number, int count) {
        table.setRowFields(count);
        table.setInteger(0, number);
        table.setText(1, u"dropped");
        table.setText(2, u"b");
        table.setInteger(3, 99);
        if (count > 4) {
            table.setInteger(4, number + 1);
            table.setText(5, u"d");
        }
        table.append();
    };
    append(10, 4);
    append(20, 6);
    m_writer->finish();
    // mdbtools shows columns by number, whatever their order in the definition.
    QCOMPARE(mdbRows(m_path, name("T")),
             (QList<QStringList>{{name("10"), name("b"), name("NULL"), name("NULL")},
                                 {name("20"), name("b"), name("21"), name("d")}}));
    QCOMPARE(get<quint16>(&page(table.definitionPage())[63 + 5]), quint16(5));
}

void tst_AccessWriter::deletedRowIsGone()
{
    TableWriter &table =
        m_writer->addTable(QStringLiteral("T"), {field(QStringLiteral("a"), Long)}, {{}, 2});
    std::vector<RowPlace> places;
    for (int i = 0; i < 5; ++i) {
        table.setInteger(0, i);
        places.push_back(table.append());
    }
    table.deleteRow(places[1]); // on a page that has been written
    table.deleteRow(places[4]); // on the one that has not
    m_writer->finish();
    const auto row = [](int value) { return QStringList{QString::number(value)}; };
    QCOMPARE(mdbRows(m_path, QStringLiteral("T")), (QList<QStringList>{row(0), row(2), row(3)}));
    QCOMPARE(get<qint32>(&page(table.definitionPage())[16]), 3);
}

void tst_AccessWriter::movedRowIsFoundThroughItsPointer()
{
    TableWriter &table =
        m_writer->addTable(QStringLiteral("T"), {field(QStringLiteral("a"), Double)});
    std::vector<RowPlace> places;
    for (int i = 0; i < 3; ++i) {
        table.setNumber(0, i + 0.5);
        places.push_back(table.append());
    }
    table.moveRow(places[1]);
    m_writer->finish();

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
    QCOMPARE(get<qint32>(&page(table.definitionPage())[16]), 3);
    // mdbtools shows such a row once, where it now stands.
    QCOMPARE(mdbRows(m_path, QStringLiteral("T")).size(), 3);
}

void tst_AccessWriter::rejectsWhatDoesNotFit()
{
    TableWriter &table =
        m_writer->addTable(QStringLiteral("T"), {field(QStringLiteral("i"), Integer),
                                                 field(QStringLiteral("t"), Text, 3),
                                                 {QStringLiteral("n"), Numeric, 0, 18, 2}});
    const auto errorOf = [](const auto &action) {
        try {
            action();
        } catch (const Error &error) {
            return error.number;
        }
        return 0;
    };
    QCOMPARE(errorOf([&] { table.setInteger(0, 32768); }), int(Overflow));
    QCOMPARE(errorOf([&] { table.setText(1, u"four"); }), int(Overflow));
    QCOMPARE(errorOf([&] { table.setText(0, u"text"); }), int(TypeMismatch));
    QCOMPARE(errorOf([&] { table.setNumeric(2, QStringLiteral("1.234")); }), int(TypeMismatch));
    QCOMPARE(errorOf([&] { table.setNumeric(2, QString(40, u'9')); }), int(Overflow));
    QCOMPARE(errorOf([&] { table.setInteger(0, 32767); }), 0);
}

void tst_AccessWriter::unfinishedFileLeavesNothing()
{
    m_writer->addTable(QStringLiteral("T"), {field(QStringLiteral("a"), Long)}).append();
    m_writer->finish();
    QFile whole(m_path);
    QVERIFY(whole.open(QIODevice::ReadOnly));
    const QByteArray before = whole.readAll();

    m_writer = std::make_unique<AccessWriter>(m_path, created);
    m_writer->addTable(QStringLiteral("Other"), {field(QStringLiteral("a"), Long)}).append();
    m_writer.reset();
    QVERIFY(whole.seek(0));
    QCOMPARE(whole.readAll(), before);
    QCOMPARE(QDir(m_folder.path()).entryList(QDir::Files), QStringList{QStringLiteral("test.mdb")});
}

QTEST_GUILESS_MAIN(tst_AccessWriter)
#include "tst_AccessWriter.moc"
