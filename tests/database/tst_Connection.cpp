#include "database/Connection.h"
#include "support/AccessTables.h"
#include "support/Errors.h"
#include "support/Sandbox.h"

#include <QTest>

class tst_Connection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_box = std::make_unique<Sandbox>();
        program().gDataPath = m_box->path() + u'/';
    }
    void cleanup() { m_box.reset(); }

    void opensOnce()
    {
        write(2);
        RunLog log(observer());
        DatabaseConnection connection(databaseSource());
        const MonitoringDatabase *first = &connection.open(log);
        QCOMPARE(&connection.open(log), first);
        const QStringList lines{"Opening database connection.", "Database Opened."};
        QCOMPARE(m_box->status, lines + lines);
        const Error error = errorOf([&] { connection.get()->sampleCount(); });
        QVERIFY2(error.description.contains("DataValues"), qPrintable(error.description));
    }

    void missingFile()
    {
        RunLog log(observer());
        DatabaseConnection connection(databaseSource());
        const QString start =
            QString("Error opening database 'Provider='Microsoft.Jet.OLEDB.4.0';Data Source='%1"
                    "VTRGData.MDB'' [53] ")
                .arg(program().gDataPath);
        for (int i = 0; i < 2; ++i) {
            const QString text = errorOf([&] { connection.open(log); }).description;
            QVERIFY2(text.startsWith(start), qPrintable(text));
            QCOMPARE(m_box->status.mid(2 * i), QStringList({"Opening database connection.", text}));
            QCOMPARE(m_box->events, QStringList("6 1 " + text)); // once
        }
        QVERIFY(!connection.get());
        write(1); // the next call tries again
        connection.open(log);
    }

private:
    void write(int scales) const
    {
        std::vector<Row> rows;
        for (int i = 0; i < scales; ++i)
            rows.push_back({i});
        // Another spelling of the name than the program's own.
        writeTables(
            m_box->path("vtrgdata.mdb"),
            {{"Devices", {{"IDent"}, {"MUID"}, {"MachName"}, {"MachDesc"}, {"MachExclude"}}, {}},
             {"DataFields",
              {{"DataIDent"}, {"IDent"}, {"DataName"}, {"DataDesc"}, {"iScale"}, {"IsGlobal"}},
              {}},
             {"Scales",
              {{"iScale"},
               {"ScaleName", demo::FieldType::Text},
               {"ScaleAbbr", demo::FieldType::Text}},
              rows}});
    }

    std::unique_ptr<Sandbox> m_box;
};

QTEST_GUILESS_MAIN(tst_Connection)
#include "tst_Connection.moc"
