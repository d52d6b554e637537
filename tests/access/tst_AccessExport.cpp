#include "../demo/MdbTools.h"
#include "AccessFiles.h"
#include "demo/AccessWriter.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

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
    process.start(QStringLiteral(ACCESS_EXPORT), arguments);
    if (!process.waitForFinished(60'000))
        qFatal("access-export does not end");
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

/// Records of CSV text; NULL (an empty field without quotes) is "NULL".
QList<QStringList> csvRecords(const QString &text)
{
    QList<QStringList> records;
    QStringList record;
    for (qsizetype i = 0; i < text.size(); ++i) {
        QString field;
        bool quoted = false;
        for (bool inQuotes = false; i < text.size(); ++i) {
            if (text[i] == u'"') {
                if (inQuotes && i + 1 < text.size() && text[i + 1] == u'"')
                    field += text[i++];
                else
                    inQuotes = !inQuotes;
                quoted = true;
            } else if (!inQuotes && (text[i] == u',' || text[i] == u'\n')) {
                break;
            } else {
                field += text[i];
            }
        }
        record.append(field.isEmpty() && !quoted ? QStringLiteral("NULL") : field);
        if (i < text.size() && text[i] == u'\n') {
            records.append(record);
            record.clear();
        }
    }
    return records;
}

} // namespace

class tst_AccessExport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_path = m_folder.filePath(QStringLiteral("test.mdb")); }

    void listsTables();
    void printsCsv();
    void agreesWithMdbExport();
    void errorsHaveNumberAndText();
    void wrongUse();

private:
    QTemporaryDir m_folder;
    QString m_path;
};

void tst_AccessExport::listsTables()
{
    AccessWriter writer(m_path, 0);
    writer.addTable(QStringLiteral("Geräte"), {{QStringLiteral("A")}});
    writer.addTable(QStringLiteral("B"), {{QStringLiteral("A")}});
    writer.finish();
    const Outcome outcome = accessExport({m_path});
    QCOMPARE(outcome.output, QByteArray("Ger\xC3\xA4te\nB\n"));
    QCOMPARE(outcome.exitCode, 0);
}

void tst_AccessExport::printsCsv()
{
    AccessWriter writer(m_path, 0);
    TableWriter &table = writer.addTable(QStringLiteral("T"), {{QStringLiteral("a,b"), Text},
                                                               {QStringLiteral("Flag"), Boolean},
                                                               {QStringLiteral("When"), DateTime},
                                                               {QStringLiteral("Blob"), Binary}});
    table.setText(0, u"say \"ä\"");
    table.setBoolean(1, true);
    table.setNumber(2, 45352.29524306713);
    table.setBytes(3, "\xAB");
    table.append();
    table.append();
    table.setText(0, u"");
    table.append();
    table.setText(0, u"two\nlines");
    table.append();
    writer.finish();
    const Outcome outcome = accessExport({m_path, QStringLiteral("t")});
    QCOMPARE(outcome.output, QByteArray("\"a,b\",Flag,When,Blob\n"
                                        "\"say \"\"\xC3\xA4\"\"\",1,2024-03-01T07:05:09.001,ab\n"
                                        ",0,,\n"
                                        "\"\",0,,\n"
                                        "\"two\nlines\",0,,\n"));
    QCOMPARE(outcome.complaints, QByteArray());
    QCOMPARE(outcome.exitCode, 0);
}

/// The packaged reader as a witness, over many rows on many pages, deleted ones among them.
void tst_AccessExport::agreesWithMdbExport()
{
    AccessWriter writer(m_path, 0);
    TableWriter &table =
        writer.addTable(QStringLiteral("T"), {{QStringLiteral("Long"), Long},
                                              {QStringLiteral("Text"), Text},
                                              {QStringLiteral("Double"), Double},
                                              {QStringLiteral("Flag"), Boolean},
                                              {QStringLiteral("Date"), DateTime},
                                              {QStringLiteral("Memo"), Memo},
                                              {QStringLiteral("Money"), Currency},
                                              {QStringLiteral("Byte"), Byte},
                                              {QStringLiteral("Integer"), Integer}});
    for (int i = 0; i < 3000; ++i) {
        table.setInteger(0, i * 700'001);
        if (i % 3 != 0)
            table.setText(1, QStringLiteral("Zürich, żółw %1").arg(i));
        table.setNumber(2, std::sin(i) * 1e6);
        table.setBoolean(3, i % 2 == 0);
        table.setNumber(4, 40'000 + i * 0.25);
        if (i % 7 == 0)
            table.setText(5, QString(i * 3, u'm'));
        table.setCurrency(6, i * -12'345LL);
        table.setInteger(7, i % 256);
        if (i % 5 != 0)
            table.setInteger(8, i - 1500);
        const RowPlace place = table.append();
        if (i % 11 == 0)
            table.deleteRow(place);
    }
    writer.finish();

    QList<QStringList> ours =
        csvRecords(QString::fromUtf8(accessExport({m_path, QStringLiteral("T")}).output));
    ours.removeFirst();
    const QList<QStringList> theirs = mdbRows(m_path, QStringLiteral("T"));
    QCOMPARE(ours.size(), 2727);
    QCOMPARE(ours.size(), theirs.size());
    for (qsizetype i = 0; i < ours.size(); ++i) {
        QStringList row = ours[i];
        row[4].replace(u'T', u' ');
        for (const int number : {2, 6}) {
            QCOMPARE(row[number].toDouble(), theirs[i][number].toDouble());
            row[number] = theirs[i][number];
        }
        QCOMPARE(row, theirs[i]);
    }
}

void tst_AccessExport::errorsHaveNumberAndText()
{
    AccessWriter writer(m_path, 0);
    writer.finish();
    const Outcome outcome = accessExport({m_path, QStringLiteral("Nothing")});
    QCOMPARE(outcome.exitCode, 1);
    QCOMPARE(outcome.output, QByteArray());
    QVERIFY2(outcome.complaints.contains("[3265]") && outcome.complaints.contains("Nothing"),
             outcome.complaints.constData());
}

void tst_AccessExport::wrongUse()
{
    QCOMPARE(accessExport({}).exitCode, 2);
    QCOMPARE(accessExport({m_path, m_path, m_path}).exitCode, 2);
}

QTEST_APPLESS_MAIN(tst_AccessExport)
#include "tst_AccessExport.moc"
