#include "AccessFiles.h"
#include "core/Files.h"
#include "demo/AccessWriter.h"

#include <QDateTime>
#include <QTemporaryDir>
#include <QTest>

#include <limits>

using namespace demo;
using enum FieldType;

namespace {

constexpr qint64 created = 1'750'000'000'000;

const QString nullText = QStringLiteral("NULL");

} // namespace

/// Files that the writer makes, read whole.
class tst_AccessFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_path = m_folder.filePath(QStringLiteral("test.mdb"));
        m_writer = std::make_unique<AccessWriter>(m_path, created);
    }

    void listsUserTables();
    void columnsAreFoundWithoutRegardToCase();
    void missingTableIsNamed();
    void valuesOfAllTypes();
    void typedValues();
    void longValuesOfAllLengths_data();
    void longValuesOfAllLengths();
    void definitionOfSeveralPages();
    void reorderedAndDroppedColumns();
    void rowsOlderThanColumns();
    void deletedRowsAreLeftOut();
    void movedRowsStandWhereTheyWere();
    void manyPages();
    void statedCountOfZeroIsNoError();
    void rowsAppendedMeanwhileAreReadNextTime();
    void encodedPages();
    void newEncryptionIsRefused();
    void notOpened_data();
    void notOpened();

private:
    TableWriter &add(const std::vector<Field> &fields, const TableOptions &options = {})
    {
        return m_writer->addTable(QStringLiteral("T"), fields, options);
    }
    QList<QStringList> rows()
    {
        m_writer->finish();
        return readTable(m_path, QStringLiteral("T"));
    }

    QTemporaryDir m_folder;
    QString m_path;
    std::unique_ptr<AccessWriter> m_writer;
};

void tst_AccessFile::listsUserTables()
{
    m_writer->addTable(QStringLiteral("Geräte"), {{QStringLiteral("A")}});
    m_writer->addTable(QStringLiteral("Second"), {{QStringLiteral("A")}});
    m_writer->finish();
    const mdb::AccessFile file(m_path);
    QCOMPARE(file.tableNames(),
             (std::vector<QString>{QStringLiteral("Geräte"), QStringLiteral("Second")}));
    QCOMPARE(file.path(), m_path);
}

void tst_AccessFile::columnsAreFoundWithoutRegardToCase()
{
    m_writer->addTable(QStringLiteral("Devices"), {{QStringLiteral("IDent")}});
    m_writer->finish();
    mdb::AccessFile file(m_path);
    const mdb::Table &table = file.table(QStringLiteral("devices"));
    QCOMPARE(table.name, QStringLiteral("Devices"));
    QCOMPARE(table.column(QStringLiteral("IDENT")), 0);
    QCOMPARE(table.column(QStringLiteral("ID")), -1);
}

void tst_AccessFile::missingTableIsNamed()
{
    m_writer->finish();
    const Error error = errorOf(m_path, QStringLiteral("Devices"));
    QCOMPARE(error.number, ItemNotFound);
    QVERIFY(error.description.contains(QStringLiteral("Devices")));
    QVERIFY(error.description.contains(m_path));
}

void tst_AccessFile::valuesOfAllTypes()
{
    const QString ones = QStringLiteral("11111111-2222-3333-4444-555555555555");
    TableWriter &table = add({{QStringLiteral("Boolean"), Boolean},
                              {QStringLiteral("Byte"), Byte},
                              {QStringLiteral("Integer"), Integer},
                              {QStringLiteral("Long"), Long},
                              {QStringLiteral("Currency"), Currency},
                              {QStringLiteral("Single"), Single},
                              {QStringLiteral("Double"), Double},
                              {QStringLiteral("DateTime"), DateTime},
                              {QStringLiteral("Binary"), Binary},
                              {QStringLiteral("Text"), Text},
                              {QStringLiteral("Ole"), Ole},
                              {QStringLiteral("Memo"), Memo},
                              {QStringLiteral("Guid"), Guid},
                              {QStringLiteral("Numeric"), Numeric, 0, 28, 10}});
    table.setBoolean(0, true);
    table.setInteger(1, 255);
    table.setInteger(2, -32768);
    table.setInteger(3, std::numeric_limits<qint32>::min());
    table.setCurrency(4, -12'345'678);
    table.setNumber(5, 0.1);
    table.setNumber(6, -1.0 / 3);
    table.setNumber(7, 45352.295243055552);
    table.setBytes(8, QByteArray("\x00\xFF", 2));
    table.setText(9, u"Kraków, \"ż\"");
    table.setBytes(10, QByteArray("\x01\x02"));
    table.setText(11, u"two\nlines");
    table.setGuid(12, QUuid::fromString(ones));
    table.setNumeric(13, QStringLiteral("-999999999999999999.9999999999"));
    table.append();
    table.append();
    table.setText(9, u"");
    table.append();

    QStringList empty(14, nullText);
    empty[0] = QStringLiteral("0");
    QStringList emptyText = empty;
    emptyText[9].clear();
    const QStringList full = {QStringLiteral("1"),
                              QStringLiteral("255"),
                              QStringLiteral("-32768"),
                              QStringLiteral("-2147483648"),
                              QStringLiteral("-1234.5678"),
                              QStringLiteral("0.1"),
                              QStringLiteral("-0.3333333333333333"),
                              QStringLiteral("2024-03-01T07:05:09"),
                              QStringLiteral("00ff"),
                              QStringLiteral("Kraków, \"ż\""),
                              QStringLiteral("0102"),
                              QStringLiteral("two\nlines"),
                              u'{' + ones + u'}',
                              QStringLiteral("-999999999999999999.9999999999")};
    QCOMPARE(rows(), (QList<QStringList>{full, empty, emptyText}));
}

void tst_AccessFile::typedValues()
{
    TableWriter &writer = add({{QStringLiteral("Boolean"), Boolean},
                               {QStringLiteral("Long"), Long},
                               {QStringLiteral("Single"), Single},
                               {QStringLiteral("DateTime"), DateTime},
                               {QStringLiteral("Currency"), Currency},
                               {QStringLiteral("Text"), Text}});
    writer.setBoolean(0, true);
    writer.setInteger(1, -7);
    writer.setNumber(2, 2.5);
    writer.setNumber(3, 25569.5);
    writer.setCurrency(4, 15'000);
    writer.setText(5, u"12");
    writer.append();
    writer.append();
    m_writer->finish();

    mdb::AccessFile file(m_path);
    mdb::RowCursor row(file, file.table(QStringLiteral("T")));
    QVERIFY(row.next());
    QCOMPARE(row.integer(0), 1);
    QCOMPARE(row.value(0), QVariant(true));
    QCOMPARE(row.integer(1), -7);
    QCOMPARE(row.number(1), -7.0);
    QCOMPARE(row.value(1), QVariant(-7));
    QCOMPARE(row.number(2), 2.5);
    QCOMPARE(row.integer(2), 3);
    QCOMPARE(row.number(3), 25569.5);
    QCOMPARE(row.instant(3), 43'200'000);
    QCOMPARE(row.value(3).toDateTime().toMSecsSinceEpoch(), 43'200'000);
    QCOMPARE(row.number(4), 1.5);
    QCOMPARE(row.value(4), QVariant(QStringLiteral("1.5")));
    QCOMPARE(row.number(5), 12.0);
    QVERIFY(row.next());
    QVERIFY(!row.isNull(0));
    for (int i = 1; i < 6; ++i) {
        QVERIFY(row.isNull(i));
        QCOMPARE(row.integer(i), 0);
        QCOMPARE(row.number(i), 0.0);
        QCOMPARE(row.text(i), QString());
        QVERIFY(!row.value(i).isValid());
    }
    QCOMPARE(row.instant(3), 0);
    QVERIFY(!row.next());
}

void tst_AccessFile::longValuesOfAllLengths_data()
{
    QTest::addColumn<int>("length");
    for (const int length : {0, 1, 64, 65, 4076, 4077, 8144, 8145, 100'000})
        QTest::addRow("%d", length) << length;
}

void tst_AccessFile::longValuesOfAllLengths()
{
    QFETCH(int, length);
    QByteArray value(length, 'x');
    for (int i = 0; i < length; ++i)
        value[i] = static_cast<char>(i * 7 + i / 256);
    const QString text = QString(length / 2, u'\u017C') + QString(length - length / 2, u'a');
    TableWriter &table = add({{QStringLiteral("Ole"), Ole}, {QStringLiteral("Memo"), Memo}});
    table.setBytes(0, value);
    table.setText(1, text);
    table.append();
    QCOMPARE(rows(), (QList<QStringList>{{QString::fromLatin1(value.toHex()), text}}));
}

void tst_AccessFile::definitionOfSeveralPages()
{
    std::vector<Field> fields;
    for (int i = 0; i < 250; ++i)
        fields.push_back({QStringLiteral("A column with quite a long name, number %1").arg(i),
                          i % 2 == 0 ? Byte : Text, 20});
    TableWriter &table = add(fields);
    QStringList expected;
    for (int i = 0; i < 250; ++i) {
        if (i % 2 == 0)
            table.setInteger(i, i);
        else
            table.setText(i, QString::number(i));
        expected.append(QString::number(i));
    }
    table.append();
    QCOMPARE(rows(), QList<QStringList>{expected});
    mdb::AccessFile file(m_path);
    QCOMPARE(file.table(QStringLiteral("T")).column(fields[249].name), 249);
}

void tst_AccessFile::reorderedAndDroppedColumns()
{
    Field dropped{QStringLiteral("Gone"), Double};
    dropped.dropped = true;
    Field droppedText{QStringLiteral("Gone too"), Text};
    droppedText.dropped = true;
    TableWriter &table = add({{QStringLiteral("A"), Long},
                              dropped,
                              {QStringLiteral("B"), Text},
                              droppedText,
                              {QStringLiteral("C"), Integer},
                              {QStringLiteral("D"), Text},
                              {QStringLiteral("E"), Boolean}},
                             {.definitionOrder = {5, 4, 6, 0, 2}});
    table.setInteger(0, 1);
    table.setNumber(1, 99);
    table.setText(2, u"b");
    table.setText(3, u"gone");
    table.setInteger(4, 3);
    table.setText(5, u"d");
    table.setBoolean(6, true);
    table.append();
    QCOMPARE(rows(),
             (QList<QStringList>{{QStringLiteral("d"), QStringLiteral("3"), QStringLiteral("1"),
                                  QStringLiteral("1"), QStringLiteral("b")}}));
    mdb::AccessFile file(m_path);
    QCOMPARE(file.table(QStringLiteral("T")).columns.front().name, QStringLiteral("D"));
}

void tst_AccessFile::rowsOlderThanColumns()
{
    TableWriter &table = add({{QStringLiteral("A"), Long},
                              {QStringLiteral("B"), Text},
                              {QStringLiteral("C"), Double},
                              {QStringLiteral("D"), Text},
                              {QStringLiteral("E"), Boolean}});
    table.setRowFields(1);
    table.setInteger(0, 1);
    table.append();
    table.setRowFields(2);
    table.setInteger(0, 2);
    table.setText(1, u"b");
    table.append();
    table.setRowFields(5);
    table.setInteger(0, 3);
    table.setText(3, u"d");
    table.setBoolean(4, true);
    table.append();
    const QString no = QStringLiteral("0");
    QCOMPARE(rows(),
             (QList<QStringList>{{QStringLiteral("1"), nullText, nullText, nullText, no},
                                 {QStringLiteral("2"), QStringLiteral("b"), nullText, nullText, no},
                                 {QStringLiteral("3"), nullText, nullText, QStringLiteral("d"),
                                  QStringLiteral("1")}}));
}

void tst_AccessFile::deletedRowsAreLeftOut()
{
    TableWriter &table = add({{QStringLiteral("A"), Long}});
    std::vector<RowPlace> places;
    for (int i = 0; i < 5; ++i) {
        table.setInteger(0, i);
        places.push_back(table.append());
    }
    for (const size_t i : {0U, 2U, 4U})
        table.deleteRow(places[i]);
    QCOMPARE(rows(), (QList<QStringList>{{QStringLiteral("1")}, {QStringLiteral("3")}}));
}

void tst_AccessFile::movedRowsStandWhereTheyWere()
{
    TableWriter &table = add({{QStringLiteral("A"), Long}, {QStringLiteral("B"), Text}});
    std::vector<RowPlace> places;
    for (int i = 0; i < 4; ++i) {
        table.setInteger(0, i);
        table.setText(1, QString(i, u'x'));
        places.push_back(table.append());
    }
    table.moveRow(places[0]);
    table.moveRow(places[2]);
    table.deleteRow(places[2]); // the pointer of a moved row
    QCOMPARE(rows(), (QList<QStringList>{{QStringLiteral("0"), QString()},
                                         {QStringLiteral("1"), QStringLiteral("x")},
                                         {QStringLiteral("3"), QStringLiteral("xxx")}}));
}

void tst_AccessFile::manyPages()
{
    // More than one bitmap of 512 pages, and two tables whose pages mix.
    TableWriter &first = add({{QStringLiteral("A"), Long}, {QStringLiteral("B"), Text}});
    TableWriter &second = m_writer->addTable(QStringLiteral("Other"), {{QStringLiteral("A"), Long}},
                                             {.mostRowsOnPage = 3});
    constexpr int count = 20'000;
    for (int i = 0; i < count; ++i) {
        first.setInteger(0, i);
        first.setText(1, QString(100, u'x'));
        first.append();
        second.setInteger(0, i);
        second.append();
    }
    m_writer->finish();
    mdb::AccessFile file(m_path);
    for (const QString &name : file.tableNames()) {
        mdb::RowCursor row(file, file.table(name));
        for (int i = 0; i < count; ++i) {
            QVERIFY(row.next());
            QCOMPARE(row.integer(0), i);
        }
        QVERIFY(!row.next());
        QVERIFY(!row.next());
    }
}

void tst_AccessFile::statedCountOfZeroIsNoError()
{
    TableWriter &table = add({{QStringLiteral("A"), Long}});
    table.setInteger(0, 1);
    table.append();
    table.setStatedRows(0);
    QCOMPARE(rows(), QList<QStringList>{{QStringLiteral("1")}});
}

void tst_AccessFile::rowsAppendedMeanwhileAreReadNextTime()
{
    const auto write = [this](int count) {
        AccessWriter writer(m_path, created);
        TableWriter &table = writer.addTable(QStringLiteral("T"), {{QStringLiteral("A"), Text}});
        for (int i = 0; i < count; ++i) {
            table.setText(0, QString(200, u'x'));
            table.append();
        }
        writer.finish();
    };
    write(1000);
    const QByteArray larger = readFile(m_path);
    write(1);
    mdb::AccessFile file(m_path);
    QCOMPARE(readTable(file, QStringLiteral("T")).size(), 1);

    QFile growing(m_path);
    QVERIFY(growing.open(QIODevice::ReadWrite));
    QCOMPARE(growing.write(larger), larger.size());
    growing.close();
    QCOMPARE(readTable(file, QStringLiteral("T")).size(), 1000);
    file.checkSize();

    QVERIFY(growing.resize(growing.size() - pageSize));
    QVERIFY_EXCEPTION_THROWN(file.checkSize(), Error);
}

void tst_AccessFile::encodedPages()
{
    TableWriter &table = add({{QStringLiteral("A"), Memo}});
    table.setText(0, QString(10'000, u'ż'));
    table.append();
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
    QCOMPARE(readTable(m_path, QStringLiteral("T")), QList<QStringList>{{QString(10'000, u'ż')}});
}

void tst_AccessFile::newEncryptionIsRefused()
{
    m_writer->finish();
    QByteArray bytes = readFile(m_path);
    bytes[0x14] = 3; // a version that encrypts otherwise
    applyHeaderKey(bytes);
    bytes[0x3E] = 1;
    applyHeaderKey(bytes);
    writeQuickly(m_path, bytes);
    const Error error = errorOf(m_path, QStringLiteral("T"));
    QCOMPARE(error.number, PermissionDenied);
    QVERIFY(error.description.contains(QStringLiteral("encrypted")));
}

void tst_AccessFile::notOpened_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("number");
    const QByteArray start = QByteArray("\0\1\0\0Standard Jet DB\0", 20);
    QTest::newRow("missing") << QByteArray() << int(FileNotFound);
    QTest::newRow("text") << QByteArray("no database") << int(UnrecognizedFormat);
    QTest::newRow("unknown version") << start + '\x40' << int(UnrecognizedFormat);
    QTest::newRow("header only") << start + '\1' << int(InvalidFileFormat);
    QTest::newRow("zeros") << start + '\1' + QByteArray(8 * pageSize - 21, '\0')
                           << int(InvalidFileFormat);
}

void tst_AccessFile::notOpened()
{
    QFETCH(QByteArray, content);
    const QString path = m_folder.filePath(QStringLiteral("other.mdb"));
    QFile::remove(path);
    if (!content.isEmpty())
        writeQuickly(path, content);
    const Error error = errorOf(path, QStringLiteral("T"));
    QTEST(error.number, "number");
    QVERIFY(error.description.contains(path));
}

QTEST_APPLESS_MAIN(tst_AccessFile)
#include "tst_AccessFile.moc"
