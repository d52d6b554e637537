#include "../demo/MdbTools.h"
#include "AccessFiles.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

namespace {

constexpr int pageSize = 2048;

void append16(QByteArray &bytes, int value)
{
    bytes += static_cast<char>(value);
    bytes += static_cast<char>(value >> 8);
}

void append32(QByteArray &bytes, quint32 value)
{
    append16(bytes, static_cast<int>(value & 0xFFFF));
    append16(bytes, static_cast<int>(value >> 16));
}

QByteArray filled(QByteArray page)
{
    return page.leftJustified(pageSize, '\0');
}

struct Jet3Column
{
    QByteArray name;
    int type = 4;
    bool isFixed = true;
    int place = 0; ///< fixed offset or number among the variable ones
    int size = 4;
};

QByteArray dataPage(quint32 owner, const QList<QByteArray> &rows)
{
    QByteArray page("\1\1\0\0", 4);
    append32(page, owner);
    append16(page, static_cast<int>(rows.size()));
    qsizetype end = pageSize;
    for (const QByteArray &row : rows) {
        end -= row.size();
        append16(page, static_cast<int>(end));
    }
    page = filled(page);
    end = pageSize;
    for (const QByteArray &row : rows) {
        end -= row.size();
        page.replace(end, row.size(), row);
    }
    return page;
}

/// A definition whose page map is row `map` of page 3.
QByteArray definitionPage(const QList<Jet3Column> &columns, int rows, int map)
{
    int variable = 0;
    for (const Jet3Column &column : columns)
        variable += column.isFixed ? 0 : 1;
    QByteArray page("\2\1VC\0\0\0\0", 8);
    append32(page, 0); // length
    append32(page, static_cast<quint32>(rows));
    append32(page, 0);
    page += 'N';
    append16(page, static_cast<int>(columns.size()));
    append16(page, variable);
    append16(page, static_cast<int>(columns.size()));
    append32(page, 0);
    append32(page, 0);
    append32(page, 3U << 8 | static_cast<quint32>(map));
    append32(page, 0);
    for (qsizetype i = 0; i < columns.size(); ++i) {
        const Jet3Column &column = columns[i];
        page += static_cast<char>(column.type);
        append16(page, static_cast<int>(i));
        append16(page, column.isFixed ? 0 : column.place);
        page += QByteArray(8, '\0');
        page += column.isFixed ? '\3' : '\2';
        append16(page, column.isFixed ? column.place : 0);
        append16(page, column.size);
    }
    for (const Jet3Column &column : columns)
        page += static_cast<char>(column.name.size()) + column.name;
    return filled(page);
}

QByteArray pageMap(int page)
{
    QByteArray map(133, '\0');
    map[5 + page / 8] = static_cast<char>(1 << page % 8);
    return map;
}

/// A row without NULL values.
QByteArray row(int columns, const QByteArray &fixed, const QList<QByteArray> &variable)
{
    QByteArray bytes = static_cast<char>(columns) + fixed;
    QList<qsizetype> offsets;
    for (const QByteArray &value : variable) {
        offsets.prepend(bytes.size());
        bytes += value;
    }
    offsets.prepend(bytes.size());
    const qsizetype contentEnd = bytes.size();
    for (const qsizetype offset : offsets)
        bytes += static_cast<char>(offset);
    // For each 256 bytes, the first offset behind them; the last entry can be a dummy.
    const qsizetype maskSize = (columns + 7) / 8;
    qsizetype jumps = 0;
    while ((bytes.size() + jumps + 1 + maskSize - 1) / 256 > jumps)
        ++jumps;
    for (qsizetype jump = jumps; jump >= 1; --jump) {
        qsizetype first = 0;
        while (first < offsets.size() && offsets[offsets.size() - 1 - first] < jump * 256)
            ++first;
        bytes += jump * 256 > contentEnd ? '\xFF' : static_cast<char>(first);
    }
    bytes += static_cast<char>(variable.size());
    return bytes + QByteArray(maskSize, '\xFF');
}

QByteArray long32(quint32 value)
{
    QByteArray bytes;
    append32(bytes, value);
    return bytes;
}

/// A file of one table "T" with a Long and texts.
QByteArray jet3File(int codePage, const QList<QList<QByteArray>> &rows)
{
    QByteArray header("\0\1\0\0Standard Jet DB\0", 20);
    header = filled(header);
    header[0x3C] = static_cast<char>(codePage);
    header[0x3D] = static_cast<char>(codePage >> 8);
    applyHeaderKey(header);

    QByteArray catalogFixed = long32(5);
    append16(catalogFixed, 1);
    append32(catalogFixed, 0);
    const QByteArray catalog = row(4, catalogFixed, {"T"});

    QList<Jet3Column> columns = {{"Number"}};
    for (qsizetype i = 0; i < rows.front().size(); ++i)
        columns.append({"Text" + QByteArray::number(i), 10, false, static_cast<int>(i), 255});
    QList<QByteArray> data;
    for (const QList<QByteArray> &texts : rows) {
        const auto number = static_cast<quint32>(data.size());
        data.append(row(static_cast<int>(columns.size()), long32(number), texts));
    }
    return header + filled({}) +
           definitionPage({{"Id"},
                           {"Type", 3, true, 4, 2},
                           {"Flags", 4, true, 6, 4},
                           {"Name", 10, false, 0, 255},
                           {"LvProp", 11, false, 1, 0}},
                          1, 0) +
           dataPage(2, {pageMap(4), pageMap(6)}) + dataPage(2, {catalog}) +
           definitionPage(columns, static_cast<int>(rows.size()), 1) + dataPage(5, data);
}

} // namespace

/// Files of the older format, built byte by byte.
class tst_AccessJet3 : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textInTheCodePageOfTheFile_data();
    void textInTheCodePageOfTheFile();
    void rowsOfAllLengths();
    void brokenOffsetsAreFound();

private:
    QTemporaryDir m_folder;
};

void tst_AccessJet3::textInTheCodePageOfTheFile_data()
{
    QTest::addColumn<int>("codePage");
    QTest::addColumn<QString>("text");
    QTest::newRow("Western Europe") << 1252 << QStringLiteral("\u00E6\u00E7");
    QTest::newRow("Central Europe") << 1250 << QStringLiteral("\u0107\u00E7");
    QTest::newRow("Cyrillic") << 1251 << QStringLiteral("\u0436\u0437");
}

void tst_AccessJet3::textInTheCodePageOfTheFile()
{
    QFETCH(int, codePage);
    QFETCH(QString, text);
    const QString path = m_folder.filePath(QStringLiteral("text.mdb"));
    writeQuickly(path, jet3File(codePage, {{QByteArray("\xE6\xE7")}, {QByteArray()}}));
    QCOMPARE(readTable(path, QStringLiteral("T")),
             (QList<QStringList>{{QStringLiteral("0"), text}, {QStringLiteral("1"), QString()}}));
}

void tst_AccessJet3::rowsOfAllLengths()
{
    // The table of offsets changes its form at every 256 bytes.
    const QString path = m_folder.filePath(QStringLiteral("long.mdb"));
    for (int length = 0; length < 255; ++length) {
        const QList<QByteArray> texts = {QByteArray(length, 'a'), QByteArray(200, 'b'),
                                         QByteArray(), QByteArray(length, 'c'),
                                         QByteArray(40, 'd')};
        writeQuickly(path, jet3File(1252, {texts}));
        QStringList expected = {QStringLiteral("0")};
        for (const QByteArray &text : texts)
            expected.append(QString::fromLatin1(text));
        QCOMPARE(readTable(path, QStringLiteral("T")), QList<QStringList>{expected});
        if (length % 50 != 0)
            continue;
        // That the files are right is for another reader to say, which shows empty texts as NULL.
        expected.replaceInStrings(QRegularExpression(QStringLiteral("^$")), QStringLiteral("NULL"));
        QCOMPARE(mdbRows(path, QStringLiteral("T")), QList<QStringList>{expected});
    }
}

void tst_AccessJet3::brokenOffsetsAreFound()
{
    const QString path = m_folder.filePath(QStringLiteral("broken.mdb"));
    QByteArray bytes = jet3File(1252, {{"one", "two"}});
    bytes[bytes.size() - 1 - 1 - 1] = 60; // where the first text begins
    writeQuickly(path, bytes);
    const Error error = errorOf(path, QStringLiteral("T"));
    QCOMPARE(error.number, InvalidFileFormat);
    QVERIFY2(error.description.contains(QStringLiteral("page 6")), qPrintable(error.description));
}

QTEST_APPLESS_MAIN(tst_AccessJet3)
#include "tst_AccessJet3.moc"
