#include "support/AccessTables.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace demo;
using enum FieldType;

namespace {

struct Outcome
{
    int exitCode = -1;
    QByteArray output;
    QByteArray complaints;
};

Outcome accessExport(const QStringList &arguments)
{
    QProcess process;
    process.start(ACCESS_EXPORT, arguments);
    if (!process.waitForFinished(60'000))
        qFatal("access-export does not end");
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
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
        QCOMPARE(accessExport({m_path}).output, QByteArray("Ger\xC3\xA4te\nT\n"));
        const Outcome outcome = accessExport({m_path, "t"});
        QCOMPARE(outcome.output,
                 QByteArray("\"a,b\",Flag,When,Blob\n"
                            "\"say \"\"\xC3\xA4\"\"\",1,2024-03-01T07:05:09.001,ab\n"
                            ",0,,\n"
                            "\"\",0,,\n"
                            "\"two\nlines\",0,,\n"));
        QCOMPARE(outcome.complaints, QByteArray());
        QCOMPARE(outcome.exitCode, 0);
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
        const QByteArray orders = "'Order list' in 'C:\\other [31m.mdb'";
        QCOMPARE(accessExport({m_path}).output,
                 "Orders (linked to " + orders +
                     ")\n"
                     "Remote (linked to 'dbo.Remote' in 'ODBC;DRIVER={x;y};Server=db01')\n"
                     "Own\n");
        Outcome outcome = accessExport({m_path, "orders"});
        QCOMPARE(outcome.exitCode, 1);
        QVERIFY2(outcome.complaints.contains(orders) && outcome.complaints.contains("'Orders'"),
                 outcome.complaints.constData());
        outcome = accessExport({m_path, "Own"});
        QCOMPARE(outcome.exitCode, 0);
        QCOMPARE(outcome.output, QByteArray("A\n\n"));
        QVERIFY2(outcome.complaints.contains("warning: '" + m_path.toUtf8() + "', table 'Own'") &&
                     outcome.complaints.contains("states 3 rows, but 1 were found"),
                 outcome.complaints.constData());
    }

    void doesNotWaitForPipes()
    {
        const QString pipe = m_folder.filePath("pipe.mdb");
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        for (const QString &path : {pipe, QString("/dev/zero"), m_folder.path()}) {
            const Outcome outcome = accessExport({path});
            QCOMPARE(outcome.exitCode, 1);
            QVERIFY2(outcome.complaints.contains(path.toUtf8() + "': it is not a regular file"),
                     outcome.complaints.constData());
        }
    }

    void errorsHaveNumberAndText()
    {
        writeTables(m_path, {});
        const Outcome outcome = accessExport({m_path, "Nothing"});
        QCOMPARE(outcome.exitCode, 1);
        QVERIFY2(outcome.output.isEmpty() && outcome.complaints.contains("[3265]"),
                 outcome.complaints.constData());
        QCOMPARE(accessExport({}).exitCode, 2);
    }

private:
    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath("test.mdb");
};

QTEST_APPLESS_MAIN(tst_AccessExport)
#include "tst_AccessExport.moc"
