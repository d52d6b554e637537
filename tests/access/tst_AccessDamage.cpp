#include "AccessFiles.h"
#include "base/Files.h"
#include "demo/AccessWriter.h"
#include "support/Rows.h"

#include <QTemporaryDir>

#include <functional>
#include <random>
#include <set>

using namespace demo;
using enum FieldType;

namespace {

const QString samples = "Samples";
const QString mixed = "Mixed";
const QString catalog = "MSysObjects";

struct PageBytes
{
    std::uint8_t *bytes;

    int word(int offset) const { return get<quint16>(bytes + offset); }
    quint32 number(int offset) const { return get<quint32>(bytes + offset); }
    void setWord(int offset, int value) const { put(bytes + offset, quint16(value)); }
    void setNumber(int offset, quint32 value) const { put(bytes + offset, value); }
    int rowStart(int row) const { return word(14 + 2 * row) & rowOffsetMask; }
    void setRowStart(int row, int start) const { setWord(14 + 2 * row, start); }
    void setFreeSpace() const { setWord(2, rowStart(word(12) - 1) - 14 - 2 * word(12)); }
    void markRow(int row, int flags) const { setWord(14 + 2 * row, word(14 + 2 * row) | flags); }
};

/// A file's bytes and where the table of samples stands in them.
struct Damaged
{
    QByteArray bytes;
    int definitionPage = 0;
    int fullPage = 0; ///< a data page that holds rows only, none deleted or moved

    PageBytes page(int number)
    {
        return {reinterpret_cast<std::uint8_t *>(bytes.data()) + number * pageSize};
    }
    PageBytes definition() { return page(definitionPage); }
    PageBytes full() { return page(fullPage); }
    /// The map of the table's pages: type, first page, and from byte 5 on a bit for each page.
    PageBytes map()
    {
        const quint32 place = definition().number(55);
        const PageBytes holder = page(int(place >> 8));
        return {holder.bytes + holder.rowStart(int(place & 0xFF))};
    }
    int mapBit() { return fullPage - int(map().number(1)); }
    std::uint8_t &mapByte() { return map().bytes[5 + mapBit() / 8]; }
    /// The row that the catalog has of the table "Mixed", or of one before it.
    PageBytes catalogRow(int before = 0)
    {
        int number = 3;
        while (page(number).bytes[0] != 1 || page(number).number(4) != 2)
            ++number;
        return {page(number).bytes + page(number).rowStart(page(number).word(12) - 1 - before)};
    }
    /// What the last row of "Mixed" has of its long value: 9680 bytes in three parts.
    PageBytes chainHead() { return {page(0).bytes + bytes.indexOf(QByteArray("\xD0\x25\0\0", 4))}; }
    PageBytes chainPart(int number)
    {
        const quint32 place = number == 0 ? chainHead().number(4) : chainPart(number - 1).number(0);
        const PageBytes holder = page(int(place >> 8));
        return {holder.bytes + holder.rowStart(int(place & 0xFF))};
    }
    /// Turns a row into a pointer to another place.
    void point(int row, int flags, int toRow)
    {
        full().markRow(row, flags | rowPointer);
        full().setNumber(full().rowStart(row), quint32(fullPage) << 8 | quint32(toRow));
    }
};

/// What reading a table gives: its rows, or an error; a warning beside them.
struct Reading
{
    QList<QStringList> rows;
    Error error{0, {}};
    QString warnings;
};

Reading read(const QString &path, const QString &table)
{
    Reading reading;
    reading.error = errorOf([&] {
        mdb::AccessFile file(path);
        reading.rows = readTable(file, table);
        reading.warnings = file.warnings().join(u'\n');
    });
    return reading;
}

using Damage = std::function<void(Damaged &)>;

} // namespace

/// A damaged file gives an error that names the place, or all its rows; fewer only with a warning.
class tst_AccessDamage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        AccessWriter writer(m_path, 1'750'000'000'000);
        TableWriter &table = writer.addTable(
            samples,
            {{"DataIDent", Long}, {"iDate", DateTime}, {"iState", Integer}, {"iValue", Double}},
            {.maxRowsOnPage = 40});
        std::vector<RowAddress> places;
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

        TableWriter &other = writer.addTable(
            mixed,
            {{"Name", Text}, {"Flag", Boolean}, {"Note", Memo}, {"Size", Numeric, 0, 18, 4}});
        for (int i = 0; i < 12; ++i) {
            other.setText(0, QString("Name %1").arg(i));
            other.setBoolean(1, i % 2 == 0);
            other.setText(2, QString(i * i * 40, u'n')); // in the row, on a page, on several
            other.setNumeric(3, "12.5");
            other.append();
        }
        writer.finish();

        m_whole = {readFile(m_path), table.definitionPage(), table.dataPages().at(1)};
        m_valuePages.insert(table.dataPages().begin(), table.dataPages().end());
        m_valuePages.insert(other.dataPages().begin(), other.dataPages().end());
        for (int page = 1; page < m_whole.bytes.size() / pageSize; ++page) {
            if (m_whole.page(page).bytes[0] == 2 || m_whole.page(page).number(4) == longValueOwner)
                m_valuePages.insert(page);
        }

        m_samples = readTable(m_path, samples);
        m_mixed = readTable(m_path, mixed);
        QCOMPARE(m_samples.size(), 157);
        QCOMPARE(m_mixed.size(), 12);
    }
    void namesThePlaceOrReadsOn_data()
    {
        const Rows<QString, QString, Damage> rows("table", "words", "damage");
        const auto row = [&](const char *name, const char *words, const Damage &damage) {
            rows(name, samples, words, damage);
        };
        row("page of another type", "type 4", [](Damaged &d) { d.full().bytes[0] = 4; });
        row("page of another table", "page 2", [](Damaged &d) { d.full().setNumber(4, 2); });
        row("more rows than fit", "cannot hold", [](Damaged &d) { d.full().setWord(12, 3000); });
        row("a row left out", "states 3002 free bytes, but its rows leave 3029",
            [](Damaged &d) { d.full().setWord(12, d.full().word(12) - 1); });
        row("a row marked deleted", "warning: states 157 rows, but 156",
            [](Damaged &d) { d.full().markRow(0, rowDeleted); });
        row("rows that overlap", "row 6 is outside",
            [](Damaged &d) { d.full().setRowStart(6, d.full().rowStart(5) + 1); });
        row("row too long", "longer", [](Damaged &d) {
            d.full().setRowStart(39, d.full().rowStart(39) - 1);
            d.full().setWord(d.full().rowStart(39), 4);
            d.full().setFreeSpace();
        });
        row("row of too many columns", "5 columns",
            [](Damaged &d) { d.full().setWord(d.full().rowStart(4), 5); });
        row("pointers in a cycle", "cycle", [](Damaged &d) {
            d.point(0, 0, 1);
            d.point(1, rowDeleted, 1);
        });
        row("pointer to a row that is not there", "row 200",
            [](Damaged &d) { d.point(0, 0, 200); });
        row("date that is none", "is not a valid date",
            [](Damaged &d) { memset(d.full().bytes + d.full().rowStart(4) + 6, 0xFF, 8); });
        row("map without a page", "warning: states 157 rows, but 117",
            [](Damaged &d) { d.mapByte() &= std::uint8_t(~(1 << d.mapBit() % 8)); });
        row("map with a page of nobody's", "not a data page", [](Damaged &d) {
            d.mapByte() = 0xFF;
            d.definition().setNumber(16, 0); // no count tells that all rows are there
        });
        row("map that starts elsewhere", "page",
            [](Damaged &d) { d.map().setNumber(1, 0xFFFFFFF0); });
        row("map of an unknown type", "unknown type", [](Damaged &d) { d.map().bytes[0] = 7; });
        row("definition of another type", "type 1",
            [](Damaged &d) { d.definition().bytes[0] = 1; });
        row("definition in a cycle", "cycle",
            [](Damaged &d) { d.definition().setNumber(4, quint32(d.definitionPage)); });
        row("definition goes on nowhere", "does not exist",
            [](Damaged &d) { d.definition().setNumber(4, 0x00FFFFFF); });
        row("definition longer than its pages", "longer",
            [](Damaged &d) { d.definition().setNumber(8, 5000); });
        row("indexes without end", "counts",
            [](Damaged &d) { d.definition().setNumber(51, 0x80000000); });
        row("two columns of one number", "impossible position",
            [](Damaged &d) { d.definition().setWord(63 + 25 + 5, 0); });
        row("column of a wrong size", "cannot have",
            [](Damaged &d) { d.definition().setWord(63 + 23, 8); });
        // No row is lost.
        row("deleted rows not counted off", "warning: states 160 rows, but 157",
            [](Damaged &d) { d.definition().setNumber(16, 160); });
        row("no count", "", [](Damaged &d) { d.definition().setNumber(16, 0); });

        rows("chain that ends early", mixed, "value of 9680 bytes ends after 4072",
             [](Damaged &d) { d.chainPart(0).setNumber(0, 0); });
        rows("chain in a cycle", mixed, "value of 9680 bytes continues after its last one",
             [](Damaged &d) { d.chainPart(2).setNumber(0, d.chainHead().number(4)); });
        rows("value longer than the file", mixed, "longer than the file", [](Damaged &d) {
            d.chainPart(2).setNumber(0, d.chainHead().number(4));
            d.chainHead().setNumber(0, 0x3FFFFFFF);
        });
        const std::pair<int, const char *> columns[] = {
            {0, "Id"}, {2, "Name"}, {3, "Type"}, {7, "Flags"}};
        for (const auto &[number, name] : columns) {
            const int at = number;
            rows(qPrintable(QString("no %1").arg(name)), catalog, QString("has no '%1'").arg(name),
                 [at](Damaged &d) { // the null mask is before the previous row
                     d.catalogRow(1).bytes[at / 8 - 3] &= std::uint8_t(~(1 << at % 8));
                 });
            rows(qPrintable(QString("other %1").arg(name)), catalog,
                 QString("column '%1' is missing or of another type").arg(name),
                 [at](Damaged &d) { d.page(2).bytes[63 + 25 * at] = at == 2 ? 9 : 1; });
        }
        rows("table that became another object", catalog, "object of type 3",
             [](Damaged &d) { d.catalogRow().setWord(10, 3); });
    }
    void namesThePlaceOrReadsOn()
    {
        QFETCH(Damage, damage);
        QFETCH(QString, table);
        QFETCH(QString, words);
        Damaged damaged = m_whole;
        damage(damaged);
        QVERIFY(damaged.bytes != m_whole.bytes);
        const QString path = m_folder.filePath("place.mdb");
        writeQuickly(path, damaged.bytes);
        const bool isWarning = words.startsWith("warning: ");
        words.remove("warning: ");
        for (const QString &name : {samples, mixed}) {
            const Reading reading = read(path, name);
            const QString text = reading.error.description + reading.warnings;
            if (words.isEmpty() || (table != name && table != catalog)) {
                QCOMPARE(reading.rows, name == samples ? m_samples : m_mixed);
                QCOMPARE(text, QString());
                continue;
            }
            QCOMPARE(reading.error.number, isWarning ? 0 : int(InvalidFileFormat));
            for (const QString &part : {path, QString("table '%1', page ").arg(table), words})
                QVERIFY2(text.contains(part), qPrintable(text));
        }
    }

    void pageGivenUpDuringTheWalk()
    {
        writeQuickly(m_path, m_whole.bytes);
        mdb::AccessFile file(m_path);
        mdb::RowCursor row(file, file.table(samples));
        Damaged changed = m_whole;
        changed.full().setNumber(4, 2);
        changed.mapByte() &= std::uint8_t(~(1 << changed.mapBit() % 8));
        changed.definition().setNumber(16, 117);
        writeQuickly(m_path, changed.bytes);
        int count = 0;
        while (row.next())
            ++count;
        QCOMPARE(count, 117);
        QCOMPARE(file.warnings(), QStringList());
    }

    void fileCutAnywhere()
    {
        for (qsizetype cut = 0; cut < m_whole.bytes.size(); cut += 512) {
            for (const qsizetype length : {cut, cut + 1, cut + 511}) {
                writeQuickly(m_path, m_whole.bytes.first(length));
                check(false, QString("cut to %1 bytes").arg(length));
                if (length % pageSize != 0)
                    QVERIFY(errorOf(m_path, samples).number != 0);
            }
        }
    }

    void flippedBitsOfTheRowTables()
    {
        writeQuickly(m_path, m_whole.bytes);
        // Rows of one size: no flipped bit of a page's header or row table may go unnoticed, nor
        // change a value, but for those of no meaning (1, 8 to 11) and one flag.
        for (int offset = 0; offset < 14 + 2 * m_whole.full().word(12); ++offset) {
            for (int bit = 0; bit < 8; ++bit) {
                const bool ignored = offset == 1 || (offset >= 8 && offset < 12) ||
                                     (offset >= 14 && offset % 2 == 1 && bit == 5);
                withFlippedBit(qint64(m_whole.fullPage) * pageSize + offset, bit, [&] {
                    check(false, QString("offset %1, bit %2").arg(offset).arg(bit));
                    const Reading reading = read(m_path, samples);
                    QCOMPARE(reading.error.number == 0 && reading.warnings.isEmpty(), ignored);
                });
            }
        }
    }

    void flippedBitsAnywhere()
    {
        writeQuickly(m_path, m_whole.bytes);
        std::mt19937 random(20240301);
        std::uniform_int_distribution<qint64> anywhere(0, m_whole.bytes.size() * 8 - 1);
        for (int i = 0; i < 2000; ++i) {
            const qint64 place = anywhere(random);
            withFlippedBit(place / 8, int(place % 8), [&] {
                check(m_valuePages.contains(place / 8 / pageSize), QString("bit %1").arg(place));
            });
        }
    }

private:
    /// Reads both tables; an error has to name the file. Fails the test when rows are missing
    /// without a warning, or when rows differ that have no reason to.
    void check(bool valuesMayDiffer, const QString &what)
    {
        for (const QString &table : {samples, mixed}) {
            const QList<QStringList> &whole = table == samples ? m_samples : m_mixed;
            const auto [rows, error, warnings] = read(m_path, table);
            const bool isWarned = warnings.contains(m_path);
            if (error.number != 0) {
                QVERIFY2(error.description.contains(m_path), qPrintable(what));
                continue;
            }
            QVERIFY2(isWarned || rows.size() >= whole.size(), qPrintable(what));
            QVERIFY2(isWarned || valuesMayDiffer || rows == whole, qPrintable(what));
        }
    }

    /// Does something while a bit of the file is flipped.
    void withFlippedBit(qint64 byte, int bit, const std::function<void()> &action)
    {
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
        const char flipped = static_cast<char>(m_whole.bytes[byte] ^ (1 << bit));
        QVERIFY(file.seek(byte) && file.write(&flipped, 1) == 1);
        action();
        QVERIFY(file.seek(byte) && file.write(&m_whole.bytes.constData()[byte], 1) == 1);
    }

    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath("test.mdb");
    Damaged m_whole;
    std::set<qint64> m_valuePages; ///< where a flipped bit can change values and no structure
    QList<QStringList> m_samples;
    QList<QStringList> m_mixed;
};

QTEST_APPLESS_MAIN(tst_AccessDamage)
#include "tst_AccessDamage.moc"
