#include "support/AccessTables.h"
#include "support/Ended.h"

#include <QTemporaryDir>
#include <QTest>

using namespace demo;
using enum FieldType;

namespace {

Ended accessExport(const QStringList &arguments)
{
    return run(ACCESS_EXPORT, arguments);
}

} // namespace

class tst_AccessExport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void printsCsv()
    {
        const std::vector<Field> fields{
            {"a,b", Text}, {"Flag", Boolean}, {"When", DateTime}, {"Blob", Binary}};
        const Row full{"say \"ä\"", true, 1'709'276'709'001LL, QByteArray("\xAB")};
        writeTables(m_path,
                    {{"Geräte", {{"A"}}, {}}, {"T", fields, {full, {}, {""}, {"two\nlines"}}}});
        QCOMPARE(accessExport({m_path}).output, "Ger\xC3\xA4te\nT\n");
        const Ended outcome = accessExport({m_path, "t"});
        QCOMPARE(outcome.output, "\"a,b\",Flag,When,Blob\n"
                                 "\"say \"\"\xC3\xA4\"\"\",1,2024-03-01T07:05:09.001,ab\n"
                                 ",0,,\n"
                                 "\"\",0,,\n"
                                 "\"two\nlines\",0,,\n");
        QCOMPARE(outcome.errors, QByteArray());
        QCOMPARE(outcome.status, 0);
    }

    void linkedTablesAndWarnings()
    {
        AccessWriter writer(m_path, 0);
        TableWriter &table = writer.addTable("Own", {{"A"}});
        table.append();
        table.setStatedRows(3);
        writer.addLink("Orders", "C:\\other\x1b[31m.mdb", ";PWD=secret", "Order list");
        writer.addLink("Remote", "", "ODBC;DRIVER={x;y};uid=me;PWD={se;SERVER=cret};Server=db01",
                       "dbo.Remote");
        writer.finish();
        const QString orders = "'Order list' in 'C:\\other [31m.mdb'";
        QCOMPARE(accessExport({m_path}).output,
                 "Orders (linked to " + orders +
                     ")\n"
                     "Remote (linked to 'dbo.Remote' in 'ODBC;DRIVER={x;y};Server=db01')\n"
                     "Own\n");
        Ended outcome = accessExport({m_path, "orders"});
        QCOMPARE(outcome.status, 1);
        QVERIFY2(outcome.errors.contains(orders) && outcome.errors.contains("'Orders'"),
                 qPrintable(outcome.errors));
        outcome = accessExport({m_path, "Own"});
        QCOMPARE(outcome.status, 0);
        QCOMPARE(outcome.output, "A\n\n");
        QVERIFY2(outcome.errors.contains("warning: '" + m_path + "', table 'Own'") &&
                     outcome.errors.contains("states 3 rows, but 1 were found"),
                 qPrintable(outcome.errors));
    }

    void errorsHaveNumberAndText()
    {
        writeTables(m_path, {});
        const Ended outcome = accessExport({m_path, "Nothing"});
        QCOMPARE(outcome.status, 1);
        QVERIFY2(outcome.output.isEmpty() && outcome.errors.contains("[3265]"),
                 qPrintable(outcome.errors));
        QCOMPARE(accessExport({}).status, 2);
    }

private:
    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath("test.mdb");
};

QTEST_APPLESS_MAIN(tst_AccessExport)
#include "tst_AccessExport.moc"
