#include "AccessFiles.h"
#include "core/Files.h"
#include "demo/AccessWriter.h"

#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <random>
#include <set>

using namespace demo;
using enum FieldType;

namespace {

const QString samples = QStringLiteral("Samples");
const QString mixed = QStringLiteral("Mixed");

/// A file's bytes and where things stand in them.
struct Damaged
{
    QByteArray bytes;
    int definition = 0;
    std::vector<int> pages; ///< data pages of the table of samples
    int fullPage = 0;       ///< one of them that holds rows only, none deleted or moved

    char *page(int number) { return bytes.data() + qsizetype(number) * pageSize; }
    quint16 word(int pageNumber, int offset) { return get<quint16>(data(pageNumber, offset)); }
    quint32 number(int pageNumber, int offset) { return get<quint32>(data(pageNumber, offset)); }
    void setWord(int pageNumber, int offset, int value)
    {
        put(data(pageNumber, offset), quint16(value));
    }
    void setNumber(int pageNumber, int offset, quint32 value)
    {
        put(data(pageNumber, offset), value);
    }
    int rowStart(int pageNumber, int row) { return word(pageNumber, 14 + 2 * row) & 0x1FFF; }
    int mapPage() { return int(number(definition, 55) >> 8); }
    int mapStart() { return rowStart(mapPage(), int(number(definition, 55) & 0xFF)); }

private:
    std::uint8_t *data(int pageNumber, int offset)
    {
        return reinterpret_cast<std::uint8_t *>(page(pageNumber) + offset);
    }
};

using Damage = std::function<void(Damaged &)>;

} // namespace

Q_DECLARE_METATYPE(Damage)

/// A damaged file gives an error that names the place, or all its rows; never fewer.
class tst_AccessDamage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void namesThePlace_data();
    void namesThePlace();
    void readsOnWhereNoRowIsLost_data();
    void readsOnWhereNoRowIsLost();
    void fileCutAnywhere();
    void flippedBitsOfTheRowTables();
    void flippedBitsAnywhere();

private:
    void writeFile();
    /// Reads both tables; false when that gives an error, which has to name the file. Fails the
    /// test when rows are missing, or when rows differ that have no reason to.
    void check(bool valuesMayDiffer, const QString &what);

    QTemporaryDir m_folder;
    QString m_path;
    Damaged m_whole;
    std::set<int> m_valuePages; ///< where a flipped bit can change values and no structure
    QList<QStringList> m_samples;
    QList<QStringList> m_mixed;
};

void tst_AccessDamage::initTestCase()
{
    m_path = m_folder.filePath(QStringLiteral("test.mdb"));
    writeFile();
    m_samples = readTable(m_path, samples);
    m_mixed = readTable(m_path, mixed);
    QCOMPARE(m_samples.size(), 157);
    QCOMPARE(m_mixed.size(), 12);
}

void tst_AccessDamage::writeFile()
{
    AccessWriter writer(m_path, 1'750'000'000'000);
    TableWriter &table = writer.addTable(samples,
                                         {{QStringLiteral("DataIDent"), Long},
                                          {QStringLiteral("iDate"), DateTime},
                                          {QStringLiteral("iState"), Integer},
                                          {QStringLiteral("iValue"), Double}},
                                         {.mostRowsOnPage = 40});
    std::vector<RowPlace> places;
    for (int i = 0; i < 160; ++i) {
        table.setInteger(0, i);
        table.setNumber(1, 45'000 + i / 288.0);
        table.setInteger(2, i % 2);
        table.setNumber(3, i * 1.5);
        places.push_back(table.append());
    }
    for (const size_t i : {3U, 7U, 130U})
        table.deleteRow(places[i]);
    table.moveRow(places[20]);

    TableWriter &other = writer.addTable(mixed, {{QStringLiteral("Name"), Text},
                                                 {QStringLiteral("Flag"), Boolean},
                                                 {QStringLiteral("Note"), Memo},
                                                 {QStringLiteral("Size"), Numeric, 0, 18, 4}});
    for (int i = 0; i < 12; ++i) {
        other.setText(0, QStringLiteral("Name %1").arg(i));
        other.setBoolean(1, i % 2 == 0);
        other.setText(2, QString(i * i * 40, u'n')); // in the row, on a page, on several
        other.setNumeric(3, QStringLiteral("12.5"));
        other.append();
    }
    writer.finish();

    m_whole.definition = table.definitionPage();
    m_whole.pages = table.dataPages();
    m_whole.fullPage = m_whole.pages.at(1);
    m_whole.bytes = readFile(m_path);
    for (const int page : table.dataPages())
        m_valuePages.insert(page);
    for (const int page : other.dataPages())
        m_valuePages.insert(page);
    for (int page = 1; page < m_whole.bytes.size() / pageSize; ++page) {
        if (m_whole.page(page)[0] == 2 || m_whole.number(page, 4) == longValueOwner)
            m_valuePages.insert(page);
    }
}

void tst_AccessDamage::namesThePlace_data()
{
    QTest::addColumn<Damage>("damage");
    QTest::addColumn<QString>("words");

    const auto row = [](const char *name, const char *words, const Damage &damage) {
        QTest::newRow(name) << damage << QString::fromLatin1(words);
    };
    row("page of another type", "type 4", [](Damaged &d) { d.page(d.fullPage)[0] = 4; });
    row("page of another table", "page 2", [](Damaged &d) { d.setNumber(d.fullPage, 4, 2); });
    row("more rows than fit", "cannot hold", [](Damaged &d) { d.setWord(d.fullPage, 12, 3000); });
    row("a row left out", "only 156",
        [](Damaged &d) { d.setWord(d.fullPage, 12, d.word(d.fullPage, 12) - 1); });
    row("a row marked deleted", "only 156",
        [](Damaged &d) { d.setWord(d.fullPage, 14, d.word(d.fullPage, 14) | rowDeleted); });
    row("rows that overlap", "row 6 does not lie",
        [](Damaged &d) { d.setWord(d.fullPage, 14 + 2 * 6, d.rowStart(d.fullPage, 5) + 1); });
    row("row inside the row table", "row 39 does not lie",
        [](Damaged &d) { d.setWord(d.fullPage, 14 + 2 * 39, 40); });
    row("row too short", "shorter", [](Damaged &d) {
        const int start = d.rowStart(d.fullPage, 39) + 1;
        d.setWord(d.fullPage, 14 + 2 * 39, start);
        d.setWord(d.fullPage, start, 4);
    });
    row("row too long", "longer", [](Damaged &d) {
        const int start = d.rowStart(d.fullPage, 39) - 1;
        d.setWord(d.fullPage, 14 + 2 * 39, start);
        d.setWord(d.fullPage, start, 4);
    });
    row("row without columns", "0 columns",
        [](Damaged &d) { d.setWord(d.fullPage, d.rowStart(d.fullPage, 4), 0); });
    row("row of too many columns", "5 columns",
        [](Damaged &d) { d.setWord(d.fullPage, d.rowStart(d.fullPage, 4), 5); });
    row("pointer to itself", "yet also stands for itself", [](Damaged &d) {
        d.setWord(d.fullPage, 14, d.word(d.fullPage, 14) | rowPointer);
        d.setNumber(d.fullPage, d.rowStart(d.fullPage, 0), quint32(d.fullPage) << 8);
    });
    row("pointers in a ring", "ring", [](Damaged &d) {
        d.setWord(d.fullPage, 14, d.word(d.fullPage, 14) | rowPointer);
        d.setWord(d.fullPage, 16, d.word(d.fullPage, 16) | rowPointer | rowDeleted);
        d.setNumber(d.fullPage, d.rowStart(d.fullPage, 0), quint32(d.fullPage) << 8 | 1);
        d.setNumber(d.fullPage, d.rowStart(d.fullPage, 1), quint32(d.fullPage) << 8 | 1);
    });
    row("pointer to a row that is not there", "row 200", [](Damaged &d) {
        d.setWord(d.fullPage, 14, d.word(d.fullPage, 14) | rowPointer);
        d.setNumber(d.fullPage, d.rowStart(d.fullPage, 0), quint32(d.fullPage) << 8 | 200);
    });
    row("date that is none", "is no date",
        [](Damaged &d) { memset(d.page(d.fullPage) + d.rowStart(d.fullPage, 4) + 6, 0xFF, 8); });
    row("map without a page", "only 117", [](Damaged &d) {
        const int bit = d.fullPage - int(d.number(d.mapPage(), d.mapStart() + 1));
        d.page(d.mapPage())[d.mapStart() + 5 + bit / 8] &= char(~(1 << bit % 8));
    });
    row("map with a foreign page and no count", "not a data page", [](Damaged &d) {
        const int bit = d.fullPage - int(d.number(d.mapPage(), d.mapStart() + 1));
        d.page(d.mapPage())[d.mapStart() + 5 + bit / 8] |= char(0xFF);
        d.setNumber(d.definition, 16, 0); // no count tells that all rows are there
    });
    row("map with a page behind the end", "does not exist",
        [](Damaged &d) { d.page(d.mapPage())[d.mapStart() + 5 + 63] |= char(0x80); });
    row("map that starts elsewhere", "page",
        [](Damaged &d) { d.setNumber(d.mapPage(), d.mapStart() + 1, 0xFFFFFFF0); });
    row("map of an unknown type", "unknown type",
        [](Damaged &d) { d.page(d.mapPage())[d.mapStart()] = 7; });
    row("map that is not there", "page 0", [](Damaged &d) { d.setNumber(d.definition, 55, 0); });
    row("definition of another type", "type 1", [](Damaged &d) { d.page(d.definition)[0] = 1; });
    row("definition in a ring", "ring",
        [](Damaged &d) { d.setNumber(d.definition, 4, quint32(d.definition)); });
    row("definition goes on nowhere", "does not exist",
        [](Damaged &d) { d.setNumber(d.definition, 4, 0x00FFFFFF); });
    row("definition longer than its pages", "longer",
        [](Damaged &d) { d.setNumber(d.definition, 8, 5000); });
    row("more columns than rows have", "counts",
        [](Damaged &d) { d.setWord(d.definition, 45, 5); });
    row("indexes without end", "counts",
        [](Damaged &d) { d.setNumber(d.definition, 51, 0x80000000); });
    row("two columns of one number", "impossible place",
        [](Damaged &d) { d.setWord(d.definition, 63 + 25 + 5, 0); });
    row("two columns at one place", "impossible place",
        [](Damaged &d) { d.setWord(d.definition, 63 + 25 + 21, 0); });
    row("column of a wrong size", "cannot have",
        [](Damaged &d) { d.setWord(d.definition, 63 + 23, 8); });
    row("stated rows that are not there", "states 158 rows, but only 157",
        [](Damaged &d) { d.setNumber(d.definition, 16, 158); });
}

void tst_AccessDamage::namesThePlace()
{
    QFETCH(Damage, damage);
    QFETCH(QString, words);
    Damaged damaged = m_whole;
    damage(damaged);
    QVERIFY(damaged.bytes != m_whole.bytes);
    const QString path = m_folder.filePath(QStringLiteral("place.mdb"));
    writeQuickly(path, damaged.bytes);

    const Error error = errorOf(path, samples);
    QCOMPARE(error.number, InvalidFileFormat);
    QVERIFY2(error.description.contains(path) && error.description.contains(samples) &&
                 error.description.contains(QStringLiteral("page ")) &&
                 error.description.contains(words),
             qPrintable(error.description));
    QCOMPARE(readTable(path, mixed), m_mixed); // the other table is as readable as before
}

void tst_AccessDamage::readsOnWhereNoRowIsLost_data()
{
    QTest::addColumn<Damage>("damage");
    QTest::newRow("map with a page given back") << Damage([](Damaged &d) {
        const int bit = d.fullPage - int(d.number(d.mapPage(), d.mapStart() + 1));
        d.page(d.mapPage())[d.mapStart() + 5 + bit / 8] |= char(0xFF);
    });
    QTest::newRow("deleted rows not counted off")
        << Damage([](Damaged &d) { d.setNumber(d.definition, 16, 160); });
    QTest::newRow("no count") << Damage([](Damaged &d) { d.setNumber(d.definition, 16, 0); });
}

void tst_AccessDamage::readsOnWhereNoRowIsLost()
{
    QFETCH(Damage, damage);
    Damaged damaged = m_whole;
    damage(damaged);
    QVERIFY(damaged.bytes != m_whole.bytes);
    const QString path = m_folder.filePath(QStringLiteral("odd.mdb"));
    writeQuickly(path, damaged.bytes);
    QCOMPARE(readTable(path, samples), m_samples);
}

void tst_AccessDamage::check(bool valuesMayDiffer, const QString &what)
{
    for (const QString &table : {samples, mixed}) {
        const QList<QStringList> &whole = table == samples ? m_samples : m_mixed;
        QList<QStringList> rows;
        try {
            rows = readTable(m_path, table);
        } catch (const Error &error) {
            QVERIFY2(error.description.contains(m_path), qPrintable(what));
            continue;
        }
        QVERIFY2(rows.size() >= whole.size(), qPrintable(what));
        QVERIFY2(valuesMayDiffer || rows == whole, qPrintable(what));
    }
}

void tst_AccessDamage::fileCutAnywhere()
{
    for (qsizetype cut = 0; cut < m_whole.bytes.size(); cut += 512) {
        for (const qsizetype length : {cut, cut + 1, cut + 511}) {
            writeQuickly(m_path, m_whole.bytes.first(length));
            check(false, QStringLiteral("cut to %1 bytes").arg(length));
            if (length % pageSize != 0)
                QVERIFY(errorOf(m_path, samples).number != 0);
        }
    }
}

void tst_AccessDamage::flippedBitsOfTheRowTables()
{
    writeQuickly(m_path, m_whole.bytes);
    QFile file(m_path);
    QVERIFY(file.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
    // Rows of one size: no flipped bit of a page's header or row table may go unnoticed, nor change
    // a value, but for those of the free space (2 to 3), of no meaning (1, 8 to 11) and one flag.
    const int page = m_whole.fullPage;
    for (int offset = 0; offset < 14 + 2 * m_whole.word(page, 12); ++offset) {
        for (int bit = 0; bit < 8; ++bit) {
            const qint64 at = qint64(page) * pageSize + offset;
            const char byte = m_whole.bytes[at];
            const char flipped = static_cast<char>(byte ^ (1 << bit));
            QVERIFY(file.seek(at) && file.write(&flipped, 1) == 1);
            check(false, QStringLiteral("offset %1, bit %2").arg(offset).arg(bit));
            const bool ignored = (offset >= 1 && offset < 4) || (offset >= 8 && offset < 12) ||
                                 (offset >= 14 && offset % 2 == 1 && bit == 5);
            QCOMPARE(errorOf(m_path, samples).number, ignored ? 0 : InvalidFileFormat);
            QVERIFY(file.seek(at) && file.write(&byte, 1) == 1);
        }
    }
}

void tst_AccessDamage::flippedBitsAnywhere()
{
    writeQuickly(m_path, m_whole.bytes);
    QFile file(m_path);
    QVERIFY(file.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
    std::mt19937 random(20240301);
    std::uniform_int_distribution<qint64> anywhere(0, m_whole.bytes.size() * 8 - 1);
    for (int i = 0; i < 2000; ++i) {
        const qint64 bit = anywhere(random);
        const qint64 at = bit / 8;
        const char byte = m_whole.bytes[at];
        const char flipped = static_cast<char>(byte ^ (1 << (bit % 8)));
        QVERIFY(file.seek(at) && file.write(&flipped, 1) == 1);
        check(m_valuePages.contains(static_cast<int>(at / pageSize)),
              QStringLiteral("byte %1, bit %2").arg(at).arg(bit % 8));
        QVERIFY(file.seek(at) && file.write(&byte, 1) == 1);
    }
}

QTEST_APPLESS_MAIN(tst_AccessDamage)
#include "tst_AccessDamage.moc"
