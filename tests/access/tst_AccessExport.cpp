#include "../demo/MdbTools.h"
#include "support/AccessTables.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
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
        writer.addLink("Orders", "C:\\other.mdb", ";PWD=secret", "Order list");
        writer.addLink("Remote", "", "ODBC;DRIVER={x;y};uid=me;PWD={se;SERVER=cret};Server=db01",
                       "dbo.Remote");
        writer.finish();
        const QByteArray orders = "'Order list' in 'C:\\other.mdb'";
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

    /// The packaged reader as a witness, over many rows on many pages, deleted ones among them.
    void agreesWithMdbExport()
    {
        const std::vector<Field> fields{
            {"Long", Long},      {"Text", Text},     {"Double", Double},
            {"Flag", Boolean},   {"Date", DateTime}, {"Memo", Memo},
            {"Money", Currency}, {"Byte", Byte},     {"Integer", Integer}};
        const QVariant null;
        AccessWriter writer(m_path, 0);
        TableWriter &table = writer.addTable("T", fields);
        for (int i = 0; i < 3000; ++i) {
            const RowPlace place =
                append(table, fields,
                       {i * 700'001, i % 3 != 0 ? QString("Zürich; żółw %1").arg(i) : null,
                        std::sin(i) * 1e6, i % 2 == 0, i * 21'600'000LL,
                        i % 7 == 0 ? QString(i * 3, u'm') : null, i * -12'345LL, i % 256,
                        i % 5 != 0 ? i - 1500 : null});
            if (i % 11 == 0)
                table.deleteRow(place);
        }
        writer.finish();

        const QString csv = QString::fromUtf8(accessExport({m_path, "T"}).output);
        const QStringList ours = csv.split(u'\n', Qt::SkipEmptyParts).mid(1);
        const QList<QStringList> theirs = mdbRows(m_path, "T");
        QCOMPARE(ours.size(), 2727);
        QCOMPARE(ours.size(), theirs.size());
        for (qsizetype i = 0; i < ours.size(); ++i) {
            QStringList row = QString(ours[i]).remove(u'"').split(u',');
            row.replaceInStrings(QRegularExpression("^$"), "NULL");
            row[4].replace(u'T', u' ');
            for (const int number : {2, 6}) {
                QCOMPARE(row[number].toDouble(), theirs[i][number].toDouble());
                row[number] = theirs[i][number];
            }
            QCOMPARE(row, theirs[i]);
        }
    }

    void errorsHaveNumberAndText()
    {
        writeTables(m_path, {});
        const Outcome outcome = accessExport({m_path, "Nothing"});
        QCOMPARE(outcome.exitCode, 1);
        QCOMPARE(outcome.output, QByteArray());
        QVERIFY2(outcome.complaints.contains("[3265]") && outcome.complaints.contains("Nothing"),
                 outcome.complaints.constData());
        QCOMPARE(accessExport({}).exitCode, 2);
        QCOMPARE(accessExport({m_path, m_path, m_path}).exitCode, 2);
    }

private:
    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath("test.mdb");
};

QTEST_APPLESS_MAIN(tst_AccessExport)
#include "tst_AccessExport.moc"
