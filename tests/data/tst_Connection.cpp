#include "ListRecordset.h"
#include "MonitoringFile.h"
#include "Zones.h"
#include "core/Error.h"
#include "core/State.h"
#include "core/Status.h"
#include "core/platform/EventLog.h"
#include "data/Connection.h"
#include "data/DeviceSelection.h"

#include <QTest>

namespace {

using demo::FieldType;

QStringList events;

void takeEvent(int number, EventType type, const QString &message)
{
    events.append(QStringLiteral("%1 %2 %3").arg(number).arg(type).arg(message));
}

} // namespace

class tst_Connection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void opensOnce();
    void missingFile();
    void noFileWithTables();
    void dataSource();
    void changedFileIsReadAgain();
    void missingTable();
    void sortsDevices();

private:
    void write(int scales) const;
    qint64 countScales() const;

    std::unique_ptr<QTemporaryDir> m_folder;
    QStringList m_shown;
};

void tst_Connection::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    gDataPath = m_folder->path() + u'/';
    gStartupDone = true;
    m_shown.clear();
    events.clear();
    setStatusSink([this](const QString &line) { m_shown.append(line); });
    setEventObserver(takeEvent);
}

void tst_Connection::cleanup()
{
    CloseDatabase();
    setEventObserver(nullptr);
    resetState();
}

void tst_Connection::write(int scales) const
{
    // Another spelling of the name than the program's own.
    MonitoringFile file(m_folder->filePath(QStringLiteral("vtrgdata.mdb")));
    std::vector<std::vector<QVariant>> rows;
    for (int i = 0; i < scales; ++i)
        rows.push_back({i});
    file.add(QStringLiteral("Scales"), {{QStringLiteral("iScale"), FieldType::Long}}, rows);
    file.finish();
}

qint64 tst_Connection::countScales() const
{
    return openStatic(QStringLiteral("Select * from Scales")).recordCount();
}

void tst_Connection::opensOnce()
{
    write(2);
    QString message;
    QVERIFY(OpenDatabase(message));
    const Connection *first = gConnection.get();
    QVERIFY(OpenDatabase(message));
    QCOMPARE(gConnection.get(), first);
    QCOMPARE(m_shown, (QStringList{QStringLiteral("Opening database connection."),
                                   QStringLiteral("Database Opened."),
                                   QStringLiteral("Opening database connection."),
                                   QStringLiteral("Database Opened.")}));
    QVERIFY(message.isEmpty());
    CloseDatabase();
    CloseDatabase();
    QVERIFY_EXCEPTION_THROWN(openStatic(QStringLiteral("Select * from Scales")), Error);
}

void tst_Connection::missingFile()
{
    QString message;
    QVERIFY(!OpenDatabase(message));
    QVERIFY(!gConnection);
    const QString start =
        QStringLiteral("Error opening database 'Provider='Microsoft.Jet.OLEDB.4.0';Data Source='%1"
                       "VTRGData.MDB'' [53] ")
            .arg(gDataPath);
    QVERIFY2(message.startsWith(start), qPrintable(message));
    QVERIFY(message.size() > start.size());
    QCOMPARE(m_shown, (QStringList{QStringLiteral("Opening database connection."), message}));
    QCOMPARE(events, QStringList(QStringLiteral("6 1 ") + message));

    write(1); // the next call tries again
    QVERIFY(OpenDatabase(message));
}

void tst_Connection::noFileWithTables()
{
    QFile file(m_folder->filePath(QStringLiteral("VTRGData.MDB")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(8192, 'x'));
    file.close();
    QString message;
    QVERIFY(!OpenDatabase(message));
    QVERIFY2(message.contains(u"[3343]"), qPrintable(message));
}

void tst_Connection::dataSource()
{
    write(1);
    gGraphDataDSN = true;
    gSQLConnect = QStringLiteral("DSN=Monitor");
    QString message;
    QVERIFY2(!OpenDatabase(message), "the Access file is not what was asked for");
    QVERIFY2(message.startsWith(u"Error opening database 'DSN=Monitor' ["), qPrintable(message));
}

void tst_Connection::changedFileIsReadAgain()
{
#ifdef Q_OS_WIN
    QSKIP("A file that is being read cannot be replaced here");
#endif
    write(2);
    QString message;
    {
        const DatabaseRun run;
        QVERIFY(OpenDatabase(message));
        QCOMPARE(countScales(), 2);
        QTest::qWait(20); // file times are coarse
        write(5000);
        QVERIFY(OpenDatabase(message));
        QCOMPARE(countScales(), 2); // a run sees one state of the file
    }
    QVERIFY(OpenDatabase(message));
    QCOMPARE(countScales(), 5000);
}

void tst_Connection::missingTable()
{
    write(1);
    QString message;
    QVERIFY(OpenDatabase(message));
    for (const char *table : {"Devices", "DataFields", "DataValues"}) {
        try {
            openStatic(QStringLiteral("Select * from %1").arg(QLatin1String(table)));
            QFAIL("a table that is not there was read");
        } catch (const Error &error) {
            QVERIFY2(error.description.contains(QLatin1String(table)) &&
                         error.description.contains(u"vtrgdata.mdb", Qt::CaseInsensitive),
                     qPrintable(error.description));
        }
    }
}

void tst_Connection::sortsDevices()
{
    clsReportDef report;
    for (const char *muid : {"d1", "gone", "d2", "d3", "it's", "d4"}) {
        auto device = std::make_shared<clsReportDeviceDef>();
        device->MUID = QString::fromLatin1(muid);
        report.ReportDevices.add(device->MUID, device);
    }
    const auto row = [](const char *muid, const char *name) {
        return std::vector<QVariant>{QString::fromUtf8(muid), QString::fromUtf8(name)};
    };
    ListRecordset rows({QStringLiteral("MUID"), QStringLiteral("MachName")},
                       {row("D1", "zeta"), row("d2", "Beta"), row("d3", "alpha"), row("d4", "beta"),
                        row("IT'S", "Gamma"), row("d3", "zz")});
    StaticRecordset devices(rows);
    devices.setFilter(QStringLiteral("[MUID]='d1'"));
    SortDeviceSelection(report, devices);
    QStringList order;
    for (const auto &device : report.ReportDevices)
        order.append(device->MUID);
    QCOMPARE(order.join(u' '), QStringLiteral("gone d3 d2 d4 it's d1"));
    QVERIFY(report.ReportDevices.find(QStringLiteral("IT'S")));
    QCOMPARE(m_shown, QStringList(QStringLiteral("Sorting device selection.")));
}

QTEST_GUILESS_MAIN(tst_Connection)
#include "tst_Connection.moc"
