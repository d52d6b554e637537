#include "MdbTools.h"
#include "core/Files.h"
#include "demo/AccessWriter.h"
#include "support/Errors.h"

#include <QTemporaryDir>
#include <QTest>

using namespace demo;
using enum FieldType;

/// What reading a file's rows does not show.
class tst_AccessWriter : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath("test.mdb");
    std::unique_ptr<AccessWriter> m_writer;

private Q_SLOTS:
    void init() { m_writer = std::make_unique<AccessWriter>(m_path, 1'750'000'000'000); }
    void cleanup() { m_writer.reset(); }

    void header()
    {
        m_writer->addTable("T", {{"東", Text, 12}});
        m_writer->finish();
        QCOMPARE(mdbTool("mdb-ver", {m_path}).trimmed(), "JET4");
        QVERIFY(mdbTool("mdb-schema", {m_path}).contains("Text (12)"));

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

    void datesCountFromTheEndOf1899()
    {
        QCOMPARE(accessDays(1'750'010'400'000), 45823.75); // 2025-06-15 18:00
        QCOMPARE(accessDays(-2'209'226'400'000), -1.25);   // 1899-12-29 06:00
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
    }

    void unfinishedFileLeavesNothing()
    {
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
