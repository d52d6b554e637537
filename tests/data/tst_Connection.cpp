#include "data/Connection.h"
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
        gDataPath = m_box->path() + u'/';
        m_message.clear();
    }

    void cleanup()
    {
        CloseDatabase();
        m_box.reset();
    }

    void opensOnce()
    {
        write(2);
        QVERIFY(OpenDatabase(m_message));
        const MonitoringDatabase *first = gConnection.get();
        QVERIFY(OpenDatabase(m_message));
        QCOMPARE(gConnection.get(), first);
        const QStringList lines{"Opening database connection.", "Database Opened."};
        QCOMPARE(m_box->status, lines + lines);
        QCOMPARE(m_message, "");
        const Error error = errorOf([] { gConnection->sampleCount(); });
        QVERIFY2(error.description.contains("DataValues"), qPrintable(error.description));
        CloseDatabase();
        CloseDatabase();
        QVERIFY(!gConnection);
    }

    void missingFile()
    {
        QVERIFY(!OpenDatabase(m_message));
        QVERIFY(!gConnection);
        const QString start =
            QString("Error opening database 'Provider='Microsoft.Jet.OLEDB.4.0';Data Source='%1"
                    "VTRGData.MDB'' [53] ")
                .arg(gDataPath);
        QVERIFY2(m_message.startsWith(start), qPrintable(m_message));
        QCOMPARE(m_box->status, QStringList({"Opening database connection.", m_message}));
        QCOMPARE(m_box->events, QStringList("6 1 " + m_message));

        write(1); // the next call tries again
        QVERIFY(OpenDatabase(m_message));
    }

    void changedFileIsReadAgain()
    {
#ifdef Q_OS_WIN
        QSKIP("A file that is being read cannot be replaced here");
#endif
        const auto scales = [] { return gConnection->inventory()->scales().size(); };
        write(2);
        {
            const DatabaseRun run;
            QVERIFY(OpenDatabase(m_message));
            QCOMPARE(scales(), size_t(2));
            QTest::qWait(20); // file times are coarse
            write(5000);
            QVERIFY(OpenDatabase(m_message));
            QCOMPARE(scales(), size_t(2)); // a run sees one state of the file
        }
        QVERIFY(OpenDatabase(m_message));
        QCOMPARE(scales(), size_t(5000));
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
    QString m_message;
};

QTEST_GUILESS_MAIN(tst_Connection)
#include "tst_Connection.moc"
