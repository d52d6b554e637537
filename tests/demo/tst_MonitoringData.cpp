#include "MdbTools.h"
#include "core/Files.h"
#include "core/Xml.h"
#include "demo/DemoReports.h"
#include "demo/MonitoringData.h"
#include "support/Rows.h"

#include <QDateTime>
#include <QMap>
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

bool contains(const std::vector<Span> &spans, qint64 time)
{
    return std::any_of(spans.begin(), spans.end(),
                       [time](const Span &span) { return time >= span.from && time < span.to; });
}

} // namespace

class tst_MonitoringData : public QObject
{
    Q_OBJECT

    struct Sample
    {
        qint64 time;
        int state;
        double value;
    };
    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath("data.mdb");
    MonitoringPlan m_plan = planMonitoring(smallOptions());
    QMap<int, QList<Sample>> m_samples; ///< by data item

private Q_SLOTS:
    void initTestCase()
    {
        const qint64 count = writeMonitoringData(m_path, m_plan);
        const QList<QStringList> rows = mdbRows(m_path, "DataValues");
        QCOMPARE(rows.size(), count);
        for (const QStringList &row : rows) {
            const auto time = QDateTime::fromString(row[2] + 'Z', Qt::ISODate);
            m_samples[row[1].toInt()].append(
                {time.toSecsSinceEpoch(), row[3].toInt(), row[4].toDouble()});
        }
    }

    void definitionsStandInTheFile()
    {
        QCOMPARE(mdbTables(m_path), QStringList({"Scales", "Devices", "DataFields", "DataValues"}));
        const QList<QStringList> rows = mdbRows(m_path, "Devices");
        QCOMPARE(rows.size(), 8);
        for (qsizetype i = 0; i < rows.size(); ++i) {
            const MonitoredDevice &device = m_plan.devices[size_t(i)];
            QCOMPARE(rows[i].mid(1, 2), QStringList({device.muid, device.name}));
        }
        QCOMPARE(mdbRows(m_path, "DataFields").size(), 40);
        QCOMPARE(mdbRows(m_path, "Scales").first().join(u'|'), "21|State|State|1");
    }

    void samplesFollowThePlan()
    {
        int failures = 0;
        for (const MonitoredDevice &device : m_plan.devices) {
            for (const MonitoredItem &item : device.items) {
                qint64 previous = 0;
                for (const auto &[time, state, value] : m_samples.value(item.dataIdent)) {
                    QVERIFY(time > previous && time <= m_plan.options.until);
                    previous = time;
                    QVERIFY(!contains(m_plan.pauses, time) && !contains(device.pauses, time));
                    const bool fails = contains(device.outages, time);
                    if (item.scale == stateScale) {
                        QCOMPARE(int(value), state);
                        QVERIFY(!fails || state == 0);
                        failures += state == 0;
                    } else {
                        QVERIFY(!fails);
                        QVERIFY(value >= item.counter.low && value <= item.counter.high);
                    }
                }
            }
        }
        QVERIFY(failures > 0);
    }

    void specialDevices()
    {
        const auto firstItem = [&](std::size_t fromLast) {
            const auto &device = m_plan.devices[m_plan.devices.size() - 1 - fromLast];
            return m_samples.value(device.items.front().dataIdent);
        };
        const qint64 until = m_plan.options.until;
        constexpr qint64 day = 86'400;
        QVERIFY(firstItem(0).isEmpty());
        QVERIFY(!firstItem(1).isEmpty() && firstItem(1).last().time < until - 9 * day); // went away
        QVERIFY(!firstItem(2).isEmpty() && firstItem(2).first().time > until - 3 * day); // is new
        QVERIFY(firstItem(3).first().time < until - 19 * day);
        QVERIFY(firstItem(3).last().time > until - day);
    }

    void sameSeedSameFile()
    {
        const auto written = [&](std::uint64_t seed) {
            MonitoringOptions options = smallOptions();
            options.seed = seed;
            writeMonitoringData(m_folder.filePath("other.mdb"), planMonitoring(options));
            return readFile(m_folder.filePath("other.mdb"));
        };
        QVERIFY(written(1) == readFile(m_path));
        QVERIFY(written(2) != readFile(m_path));
    }

    void reportsNameWhatThereIs()
    {
        QStringList items; // "device item"
        for (const MonitoredDevice &device : m_plan.devices) {
            for (const MonitoredItem &item : device.items) {
                if (item.isGlobal)
                    items.append(QString("%1 %2").arg(device.muid).arg(item.dataIdent));
            }
        }
        pugi::xml_document document;
        parseXml(document, demoReports(m_plan));
        int reports = 0;
        forEachElement(document, "CUSTOMREPORT", [&](const pugi::xml_node &report) {
            ++reports;
            QCOMPARE(GetAttr(report.child("SCHEDULE"), "LastRunDate", {}),
                     "2025-06-14T15:06:40-00:00");
            QVERIFY(report.child("DEVICE"));
        });
        QVERIFY(reports >= 5);
        forEachElement(document, "DEVICE", [&](const pugi::xml_node &device) {
            QVERIFY(device.child("DATUM"));
            for (const pugi::xml_node &datum : device.children("DATUM"))
                QVERIFY(items.contains(GetAttr(device, "MUID", {}) + u' ' +
                                       GetAttr(datum, "DataIDent", {})));
        });
    }

    void program_data()
    {
        const Rows<QString, int, QString> row("options", "status", "says");
        row("help", "--help", 0, "--interval");
        row("writes", "out.mdb --devices 2 --items 2 --days 1 --until 2025-06-15T00:00:00Z", 0,
            "2 devices, 4 data items");
        row("reports", "out.mdb --days 1 --interval 3600 --reports .", 0, "24 devices");
        row("no file", "--devices 2", 2, "Name one file");
        row("bad number", "out.mdb --days many", 2, "--days takes a number");
        row("bad time", "out.mdb --until yesterday", 2, "--until takes a time");
        row("unknown option", "out.mdb --colour red", 2, "colour");
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
        QCOMPARE(fileExists(folder.filePath("out.mdb")), status == 0 && options != "--help");
        QCOMPARE(fileExists(folder.filePath("ChartSelection.XML")), options.contains("--reports"));
    }
};

QTEST_GUILESS_MAIN(tst_MonitoringData)
#include "tst_MonitoringData.moc"
