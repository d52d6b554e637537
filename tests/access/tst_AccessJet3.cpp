#include "AccessFiles.h"
#include "support/MdbTools.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

namespace {

constexpr int pageSize = 2048;
using Texts = QList<QStringList>;

/// A number of so many bytes, the lowest first.
QByteArray number(qint64 value, int size)
{
    QByteArray bytes;
    for (; size > 0; --size, value >>= 8)
        bytes += static_cast<char>(value);
    return bytes;
}

QByteArray filled(const QByteArray &page)
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

QByteArray dataPage(int owner, const QList<QByteArray> &rows)
{
    const qsizetype size =
        std::accumulate(rows.begin(), rows.end(), qsizetype(0),
                        [](qsizetype sum, const QByteArray &row) { return sum + row.size(); });
    QByteArray page = QByteArray("\1\1", 2) + number(pageSize - 10 - 2 * rows.size() - size, 2) +
                      number(owner, 4) + number(rows.size(), 2);
    QByteArray content;
    for (const QByteArray &row : rows) {
        content.prepend(row);
        page += number(pageSize - content.size(), 2);
    }
    return page.leftJustified(pageSize - content.size(), '\0') + content;
}

/// A definition whose page map is row `map` of page 3.
QByteArray definitionPage(const QList<Jet3Column> &columns, qint64 rows, int map)
{
    QByteArray definitions;
    QByteArray names;
    int variable = 0;
    for (qsizetype i = 0; i < columns.size(); ++i) {
        const Jet3Column &column = columns[i];
        variable += column.isFixed ? 0 : 1;
        definitions += number(column.type, 1) + number(i, 2) +
                       number(column.isFixed ? 0 : column.place, 2) + number(0, 8) +
                       (column.isFixed ? '\3' : '\2') +
                       number(column.isFixed ? column.place : 0, 2) + number(column.size, 2);
        names += number(column.name.size(), 1) + column.name;
    }
    const QByteArray count = number(columns.size(), 2);
    return filled(QByteArray("\2\1VC\0\0\0\0", 8) + number(0, 4) + number(rows, 4) + number(0, 4) +
                  'N' + count + number(variable, 2) + count + number(0, 8) +
                  number(3 << 8 | map, 4) + number(0, 4) + definitions + names);
}

QByteArray pageMap(int page)
{
    QByteArray map(133, '\0');
    map[5 + page / 8] = static_cast<char>(1 << page % 8);
    return map;
}

/// A row without NULL values.
QByteArray row(qsizetype columns, const QByteArray &fixed, const QList<QByteArray> &variable)
{
    QByteArray bytes = number(columns, 1) + fixed;
    QList<qsizetype> offsets; // the last one first
    for (const QByteArray &value : variable) {
        offsets.prepend(bytes.size());
        bytes += value;
    }
    const qsizetype contentEnd = bytes.size();
    offsets.prepend(contentEnd);
    for (const qsizetype offset : offsets)
        bytes += static_cast<char>(offset);
    // For each 256 bytes, the first offset behind them; the last entry can be a dummy.
    const qsizetype maskSize = (columns + 7) / 8;
    qsizetype jumps = 0;
    while ((bytes.size() + jumps + 1 + maskSize - 1) / 256 > jumps)
        ++jumps;
    for (qsizetype jump = jumps; jump >= 1; --jump) {
        const auto first = std::count_if(offsets.begin(), offsets.end(),
                                         [=](qsizetype offset) { return offset < jump * 256; });
        bytes += jump * 256 > contentEnd ? '\xFF' : static_cast<char>(first);
    }
    return bytes + number(variable.size(), 1) + QByteArray(maskSize, '\xFF');
}

/// A file of one table "T" with a Long and texts.
QByteArray jet3File(int codePage, const QList<QList<QByteArray>> &rows)
{
    QByteArray header = filled(QByteArray("\0\1\0\0Standard Jet DB\0", 20));
    header.replace(0x3C, 2, number(codePage, 2));
    applyHeaderKey(header);

    const QByteArray catalog = row(4, number(5, 4) + number(1, 2) + number(0, 4), {"T"});
    QList<Jet3Column> columns = {{"Number"}};
    for (int i = 0; i < rows.front().size(); ++i)
        columns.append({"Text" + QByteArray::number(i), 10, false, i, 255});
    QList<QByteArray> data;
    for (const QList<QByteArray> &texts : rows)
        data.append(row(columns.size(), number(data.size(), 4), texts));
    return header + filled({}) +
           definitionPage({{"Id"},
                           {"Type", 3, true, 4, 2},
                           {"Flags", 4, true, 6, 4},
                           {"Name", 10, false, 0, 255},
                           {"LvProp", 11, false, 1, 0}},
                          1, 0) +
           dataPage(2, {pageMap(4), pageMap(6)}) + dataPage(2, {catalog}) +
           definitionPage(columns, rows.size(), 1) + dataPage(5, data);
}

} // namespace

/// Files of the older format, built byte by byte.
class tst_AccessJet3 : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textInTheCodePageOfTheFile()
    {
        const QMap<int, QString> texts{
            {0, "\u00E6\u00E7"}, {1252, "\u00E6\u00E7"}, {1251, "\u0436\u0437"}};
        for (const int codePage : texts.keys()) {
            writeQuickly(m_path, jet3File(codePage, {{"\xE6\xE7"}, {""}}));
            QCOMPARE(readTable(m_path, "T"), Texts({{"0", texts[codePage]}, {"1", ""}}));
        }
        writeQuickly(m_path, jet3File(4711, {{"a"}}));
        const Error error = errorOf(m_path, "T");
        QVERIFY2(error.description.contains("code page 4711") && error.description.contains(m_path),
                 qPrintable(error.description));
    }

    void rowsOfAllLengths()
    {
        // The table of offsets changes its form at every 256 bytes.
        for (int length = 0; length < 255; ++length) {
            const QList<QByteArray> texts = {QByteArray(length, 'a'), QByteArray(200, 'b'),
                                             QByteArray(), QByteArray(length, 'c'),
                                             QByteArray(40, 'd')};
            writeQuickly(m_path, jet3File(1252, {texts}));
            QStringList expected = {"0"};
            for (const QByteArray &text : texts)
                expected.append(QString::fromLatin1(text));
            QCOMPARE(readTable(m_path, "T"), Texts{expected});
            if (length % 50 != 0)
                continue;
            // That the files are right is for another reader to say; empty texts it shows as NULL.
            expected.replaceInStrings(QRegularExpression("^$"), "NULL");
            QCOMPARE(mdbRows(m_path, "T"), Texts{expected});
        }
    }

    void brokenOffsetsAreFound()
    {
        QByteArray bytes = jet3File(1252, {{"one", "two"}});
        bytes[bytes.size() - 1 - 1 - 1] = 60; // where the first text begins
        writeQuickly(m_path, bytes);
        const Error error = errorOf(m_path, "T");
        QCOMPARE(error.number, int(InvalidFileFormat));
        QVERIFY2(error.description.contains("page 6"), qPrintable(error.description));
    }

private:
    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath("jet3.mdb");
};

QTEST_APPLESS_MAIN(tst_AccessJet3)
#include "tst_AccessJet3.moc"
