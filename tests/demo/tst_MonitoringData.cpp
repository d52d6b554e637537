#include "MdbTools.h"
#include "core/Xml.h"
#include "demo/DemoReports.h"
#include "demo/MonitoringData.h"

#include <QDateTime>
#include <QFile>
#include <QMap>
#include <QTemporaryDir>
#include <QTest>

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

qint64 secondsOf(const QString &text)
{
    QDateTime time = QDateTime::fromString(text, QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    time.setTimeSpec(Qt::UTC);
    return time.toSecsSinceEpoch();
}

} // namespace

class tst_MonitoringData : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void definitionsStandInTheFile();
    void samplesFollowThePlan();
    void specialDevices();
    void sameSeedSameFile();
    void reportsNameWhatThereIs();
    void program_data();
    void program();

private:
    QByteArray written(const MonitoringOptions &options, const QString &name);

    struct Sample
    {
        qint64 time;
        int state;
        double value;
    };
    QTemporaryDir m_folder;
    QString m_path;
    MonitoringPlan m_plan;
    QMap<int, QList<Sample>> m_samples; ///< by data item
};

void tst_MonitoringData::initTestCase()
{
    QVERIFY(m_folder.isValid());
    m_path = m_folder.filePath(QStringLiteral("data.mdb"));
    m_plan = planMonitoring(smallOptions());
    const qint64 count = writeMonitoringData(m_path, m_plan);
    const QList<QStringList> rows = mdbRows(m_path, QStringLiteral("DataValues"));
    QCOMPARE(qint64(rows.size()), count);
    for (const QStringList &row : rows)
        m_samples[row[1].toInt()].append({secondsOf(row[2]), row[3].toInt(), row[4].toDouble()});
}

void tst_MonitoringData::definitionsStandInTheFile()
{
    QCOMPARE(mdbTables(m_path),
             (QStringList{QStringLiteral("Scales"), QStringLiteral("Devices"),
                          QStringLiteral("DataFields"), QStringLiteral("DataValues")}));
    QStringList names;
    for (const QStringList &row : mdbRows(m_path, QStringLiteral("Devices")))
        names.append(row[1] + u' ' + row[2]);
    QStringList planned;
    for (const MonitoredDevice &device : m_plan.devices)
        planned.append(device.muid + u' ' + device.name);
    QCOMPARE(names, planned);
    QVERIFY(names.join(u' ').contains(QStringLiteral("東京-edge")));
    QCOMPARE(mdbRows(m_path, QStringLiteral("DataFields")).size(), 40);
    QCOMPARE(mdbRows(m_path, QStringLiteral("Scales")).first(),
             (QStringList{QStringLiteral("21"), QStringLiteral("State"), QStringLiteral("State"),
                          QStringLiteral("1")}));
}

void tst_MonitoringData::samplesFollowThePlan()
{
    int failures = 0;
    for (const MonitoredDevice &device : m_plan.devices) {
        for (const MonitoredItem &item : device.items) {
            qint64 previous = 0;
            for (const Sample &sample : m_samples.value(item.dataIdent)) {
                QVERIFY(sample.time > previous && sample.time <= m_plan.options.until);
                previous = sample.time;
                QVERIFY(!contains(m_plan.pauses, sample.time) &&
                        !contains(device.pauses, sample.time));
                const bool fails = contains(device.outages, sample.time);
                if (item.scale == stateScale) {
                    QCOMPARE(int(sample.value), sample.state);
                    QVERIFY(!fails || sample.state == 0);
                    failures += sample.state == 0;
                } else {
                    QVERIFY(!fails);
                    QVERIFY(sample.value >= item.counter.low && sample.value <= item.counter.high);
                }
            }
        }
    }
    QVERIFY(failures > 0);
}

void tst_MonitoringData::specialDevices()
{
    const auto firstItem = [&](std::size_t fromLast) {
        const auto &device = m_plan.devices[m_plan.devices.size() - 1 - fromLast];
        return m_samples.value(device.items.front().dataIdent);
    };
    const qint64 until = m_plan.options.until;
    constexpr qint64 day = 86'400;
    QVERIFY(firstItem(0).isEmpty());
    QVERIFY(!firstItem(1).isEmpty() && firstItem(1).last().time < until - 9 * day);  // went away
    QVERIFY(!firstItem(2).isEmpty() && firstItem(2).first().time > until - 3 * day); // is new
    QVERIFY(firstItem(3).first().time < until - 19 * day);
    QVERIFY(firstItem(3).last().time > until - day);
}

QByteArray tst_MonitoringData::written(const MonitoringOptions &options, const QString &name)
{
    const QString path = m_folder.filePath(name);
    writeMonitoringData(path, planMonitoring(options));
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void tst_MonitoringData::sameSeedSameFile()
{
    MonitoringOptions options = smallOptions();
    const QByteArray first = written(options, QStringLiteral("first.mdb"));
    QVERIFY(!first.isEmpty());
    QVERIFY(first == written(options, QStringLiteral("second.mdb")));
    options.seed = 2;
    QVERIFY(first != written(options, QStringLiteral("other.mdb")));
}

void tst_MonitoringData::reportsNameWhatThereIs()
{
    pugi::xml_document document;
    parseXml(document, demoReports(m_plan));
    int reports = 0;
    for (const pugi::xml_node &report :
         document.child("REPORTDEFINITIONS").children("CUSTOMREPORT")) {
        ++reports;
        QCOMPARE(GetAttr(report.child("SCHEDULE"), "LastRunDate", {}),
                 QStringLiteral("2025-06-14T15:06:40-00:00"));
        QVERIFY(report.child("DEVICE"));
        for (const pugi::xml_node &element : report.children("DEVICE")) {
            const QString muid = GetAttr(element, "MUID", {});
            const auto device =
                std::find_if(m_plan.devices.begin(), m_plan.devices.end(),
                             [&](const MonitoredDevice &d) { return d.muid == muid; });
            QVERIFY(device != m_plan.devices.end());
            QVERIFY(element.child("DATUM"));
            for (const pugi::xml_node &datum : element.children("DATUM")) {
                const int ident = GetAttr(datum, "DataIDent", {}).toInt();
                QVERIFY(std::any_of(
                    device->items.begin(), device->items.end(),
                    [&](const MonitoredItem &i) { return i.isGlobal && i.dataIdent == ident; }));
            }
        }
    }
    QVERIFY(reports >= 5);
}

void tst_MonitoringData::program_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("says");
    const auto row = [](const char *name, const char *options, int status, const char *says) {
        QTest::newRow(name) << QString::fromLatin1(options).split(u' ', Qt::SkipEmptyParts)
                            << status << QString::fromLatin1(says);
    };
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

void tst_MonitoringData::program()
{
    QFETCH(QStringList, options);
    QFETCH(int, status);
    QFETCH(QString, says);
    QTemporaryDir folder;
    QProcess process;
    process.setWorkingDirectory(folder.path());
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QCoreApplication::applicationDirPath() + QStringLiteral("/demo-database"),
                  options);
    QVERIFY(process.waitForFinished());
    const QString output = QString::fromUtf8(process.readAll());
    QCOMPARE(process.exitCode(), status);
    QVERIFY2(output.contains(says), qPrintable(output));
    const bool writes = status == 0 && !options.contains(QStringLiteral("--help"));
    QCOMPARE(QFile::exists(folder.filePath(QStringLiteral("out.mdb"))), writes);
    QCOMPARE(QFile::exists(folder.filePath(QStringLiteral("ChartSelection.XML"))),
             options.contains(QStringLiteral("--reports")));
}

QTEST_GUILESS_MAIN(tst_MonitoringData)
#include "tst_MonitoringData.moc"
