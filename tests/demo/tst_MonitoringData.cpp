#include "core/Files.h"
#include "demo/MonitoringData.h"
#include "support/Rows.h"

#include <QProcess>
#include <QTemporaryDir>

using namespace demo;

namespace {

MonitoringOptions smallOptions()
{
    MonitoringOptions options;
    options.devices = 8;
    options.items = 5;
    options.days = 20;
    options.interval = 1800;
    options.until = 1'750'000'000;
    return options;
}

} // namespace

class tst_MonitoringData : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;

private Q_SLOTS:
    void sameSeedSameFile()
    {
        MonitoringOptions options = smallOptions();
        QList<QByteArray> files;
        for (const std::uint64_t seed : {1, 1, 2}) {
            options.seed = seed;
            const QString path = m_folder.filePath("data.mdb");
            QVERIFY(writeMonitoringData(path, planMonitoring(options)) > 5 * 5 * 900);
            files.append(readFile(path));
        }
        QVERIFY(files[0] == files[1]);
        QVERIFY(files[0] != files[2]);
    }

    void program_data()
    {
        const Rows<QString, int, QString> row("options", "status", "says");
        row("writes", "out.mdb --days 1 --interval 3600 --reports .", 0, "24 devices");
        row("no file", "--devices 2", 2, "Name one file");
        row("bad time", "out.mdb --until yesterday", 2, "--until takes a time");
        row("too many samples", "out.mdb --interval 1", 2, "million fit");
        row("no such folder", "missing/out.mdb --days 1 --interval 3600", 1, "Path not found");
    }
    void program()
    {
        QFETCH(QString, options);
        QFETCH(int, status);
        QFETCH(QString, says);
        QTemporaryDir folder;
        QProcess process;
        process.setWorkingDirectory(folder.path());
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(QCoreApplication::applicationDirPath() + "/demo-database",
                      options.split(u' '));
        QVERIFY(process.waitForFinished());
        const QString output = QString::fromUtf8(process.readAll());
        QCOMPARE(process.exitCode(), status);
        QVERIFY2(output.contains(says), qPrintable(output));
        QCOMPARE(fileExists(folder.filePath("out.mdb")), status == 0);
        QCOMPARE(fileExists(folder.filePath("ChartSelection.XML")), status == 0);
    }
};

QTEST_GUILESS_MAIN(tst_MonitoringData)
#include "tst_MonitoringData.moc"
