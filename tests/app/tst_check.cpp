#include "app/Check.h"
#include "core/HostSettings.h"
#include "core/Xml.h"
#include "data/Connection.h"
#include "definitions/DefinitionStores.h"
#include "report/TemplateNames.h"
#include "scheduling/ReportRunner.h"
#include "support/Sandbox.h"

#include <QDirIterator>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QTest>

/// The check of a home that holds the factory files and the demonstration's database and reports:
/// it finds nothing, and each slip of the pen at its place.
class TestCheck : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void findsNothingInTheFactoryFiles();
    void namesEachSlip_data();
    void namesEachSlip();
    void goesWithoutADatabase();
    void knowsNoNameThatPagesLeave();

private:
    QString path(const QString &name) const { return m_box->path(name); }
    void copyInto(const QString &folder) const
    {
        const QStringList names = QDir(folder).entryList(QDir::Files);
        for (QString name : names) {
            const QByteArray bytes = readFile(folder + u'/' + name);
            m_box->write("Config/" + name.replace(".FAC", ".XML"), bytes);
        }
    }
    Findings check()
    {
        loadGrapherConfig();
        GetGraphDataPath();
        return checkEverything(m_note);
    }

    QTemporaryDir m_site; ///< made once: a database and its report definitions
    std::unique_ptr<Sandbox> m_box;
    QString m_note;
};

void TestCheck::initTestCase()
{
    qputenv("XDG_CONFIG_HOME", m_site.filePath("config").toLocal8Bit());
    QVERIFY(QDir(m_site.path()).mkdir("reports"));
    QCOMPARE(QProcess::execute(VANTREL_DEMO, {m_site.filePath("VTRGData.MDB"), "--devices", "12",
                                              "--items", "3", "--days", "1", "--interval", "3600",
                                              "--reports", m_site.filePath("reports")}),
             0);
}

void TestCheck::init()
{
    m_box = std::make_unique<Sandbox>();
    const QString share = QStringLiteral(VANTREL_SHARE "/");
    m_box->write("VTRGConfigV6.XML", readFile(share + "VTRGConfigV6.FAC"));
    m_box->write("VantrelV6.Config", readFile(share + "VantrelV6.Config.FAC"));
    copyInto(share + "Config");
    copyInto(m_site.filePath("reports"));
    gDataPath = m_site.path() + u'/';
    m_note.clear();
}

void TestCheck::cleanup()
{
    CloseDatabase();
    resetDefinitions();
    m_box.reset();
}

void TestCheck::findsNothingInTheFactoryFiles()
{
    QCOMPARE(check().lines(), QStringList());
    QCOMPARE(m_note, QString());
}

void TestCheck::namesEachSlip_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("from"); // empty: the file is removed
    QTest::addColumn<QByteArray>("to");
    QTest::addColumn<QString>("finding");

    const QString reports = "Config/ChartSelection.XML";
    const QString charts = "Config/ChartDefs.XML";
    const QString schedules = "Config/ChartSchedules.XML";
    const QString config = "VTRGConfigV6.XML";
    const auto places = [](const char *text) { return QString::fromUtf8(text); };

    QTest::newRow("malformed") << reports << QByteArray("</REPORTDEFINITIONS>") << QByteArray("<")
                               << places("Could not determine tag type");
    QTest::newRow("other root") << schedules << QByteArray("SCHEDULES>") << QByteArray("PLANS>")
                                << places("the root element is 'PLANS', not 'SCHEDULES'");
    QTest::newRow("report's chart")
        << reports << QByteArray(" ChartID=\"") << QByteArray(" ChartID=\"Ä")
        << places("there is no chart definition 'Ä");
    QTest::newRow("report's schedule")
        << reports << QByteArray("ScheduleID=\"") << QByteArray("ScheduleID=\"X")
        << places("there is no schedule 'X");
    QTest::newRow("report's device") << reports << QByteArray("MUID=\"") << QByteArray("MUID=\"X")
                                     << places("the database has no device 'X");
    QTest::newRow("report's data item")
        << reports << QByteArray("DataIDent=\"") << QByteArray("DataIDent=\"9999")
        << places("the database has no data item '9999");
    QTest::newRow("date") << reports << QByteArray("LastRunDate=\"2")
                          << QByteArray("LastRunDate=\"x") << places("is no date like");
    QTest::newRow("code") << charts << QByteArray("Frequency=\"") << QByteArray("Frequency=\"7")
                          << places("is not within 0 to 4");
    QTest::newRow("no number") << charts << QByteArray("Frequency=\"")
                               << QByteArray("Frequency=\"a") << places("is no number");
    QTest::newRow("list") << schedules << QByteArray("HourList=\"") << QByteArray("HourList=\"24,")
                          << places("HourList: 24 is not within 0 to 23");
    QTest::newRow("chart's template")
        << charts << QByteArray("StateFile=\"") << QByteArray("StateFile=\"No")
        << places("there is no template 'No");
    QTest::newRow("page template")
        << config << QByteArray("TIN_TOC=\"") << QByteArray("TIN_TOC=\"No")
        << places("6:2: there is no template 'NoReportList.HTML'");
    QTest::newRow("page template's name")
        << config << QByteArray("\"Report.HTML\"") << QByteArray("\"\"")
        << places("8:2: TIN_REPORT names no template");
    QTest::newRow("output name") << config << QByteArray("\"SUMMARY.HTM\"") << QByteArray("\"\"")
                                 << places("TOU_REP_Summary names no file");
    QTest::newRow("image size") << config << QByteArray("\"640\"") << QByteArray("\"0\"")
                                << places("IMG_Width: 0 is not within");
    QTest::newRow("companion file")
        << config << QByteArray("\"vantrel.css\"") << QByteArray("\"lost.css\"")
        << places("there is no companion file 'lost.css'");
    QTest::newRow("placeholder") << QString("Config/ReportTop.HTML")
                                 << QByteArray("<title>%%report.title%%")
                                 << QByteArray("<title>\nä %%report.titel%%")
                                 << places(":3: '%%report.titel%%' is no placeholder");
    QTest::newRow("chart placeholder")
        << QString("Config/StateChart.HTML") << QByteArray("%%chart.series1%%")
        << QByteArray("%%chart.serie1%%") << places("'%%chart.serie1%%' is no placeholder");
    QTest::newRow("marker") << QString("Config/Device.HTML") << QByteArray("%%dev.varblist%%")
                            << QByteArray() << places("the marker %%dev.varblist%% is missing");
    QTest::newRow("product folder")
        << QString("VantrelV6.Config") << QByteArray("DataPath=\"\"")
        << QByteArray("DataPath=\"/no/where\"") << places("3:2: there is no folder '/no/where'");
    QTest::newRow("product's server")
        << QString("VantrelV6.Config") << QByteArray("GraphDataSQL=\"0\"")
        << QByteArray("GraphDataSQL=\"1\"") << places("GraphDataSQLConnect is empty");
    QTest::newRow("missing file") << QString("VantrelV6.Config") << QByteArray() << QByteArray()
                                  << places("1:1: File not found");
}

void TestCheck::namesEachSlip()
{
    QFETCH(QString, file);
    QFETCH(QByteArray, from);
    QFETCH(QByteArray, to);
    QFETCH(QString, finding);
    qsizetype line = 1;
    if (from.isEmpty()) {
        QVERIFY(QFile::remove(path(file)));
    } else {
        QByteArray text = m_box->read(file);
        const qsizetype at = text.indexOf(from);
        QVERIFY2(at >= 0, text.constData());
        if (!to.isEmpty()) // what is missing has no place
            line = text.left(at).count('\n') + to.count('\n') + 1;
        text.replace(from, to);
        m_box->write(file, text);
    }
    const QStringList lines = check().lines();
    const QStringList found = lines.filter(finding);
    QVERIFY2(!found.isEmpty(), qPrintable(lines.join(u'\n')));
    const QString place = path(file) + u':' + QString::number(line) + u':';
    QVERIFY2(found.first().startsWith(place), qPrintable(found.first()));
}

void TestCheck::goesWithoutADatabase()
{
    gDataPath = path("nowhere/");
    QCOMPARE(check().lines(), QStringList());
    QVERIFY2(m_note.startsWith("Devices and data items were not checked: "), qPrintable(m_note));
}

/// What the check takes for a placeholder is one: a run fills every one of them.
void TestCheck::knowsNoNameThatPagesLeave()
{
    const auto addAllNames = [this](const QString &file, const TemplateNames &kind) {
        QByteArray text = m_box->read("Config/" + file);
        for (const QLatin1String name : kind.names.tokenize(QLatin1Char(' '), Qt::SkipEmptyParts))
            text += "\n<!-- " + QByteArray(kind.attribute.data(), kind.attribute.size()) + " %%" +
                    QByteArray(name.data(), name.size()) + "%% -->";
        m_box->write("Config/" + file, text);
    };
    pugi::xml_document config;
    parseXml(config, m_box->read("VTRGConfigV6.XML"));
    for (const TemplateNames &kind : pageTemplateNames())
        addAllNames(GetAttr(config.document_element(), kind.attribute.data(), QString()), kind);
    addAllNames("StateChart.HTML", chartTemplateNames()[0]);
    addAllNames("CountChart.HTML", chartTemplateNames()[1]);
    QCOMPARE(check().lines(), QStringList());

    gGraphDataPath = m_box->path() + u'/';
    LoadReportDefs();
    QStringList ids;
    for (const auto &report : gReportDefs) {
        if (report->ReportTitle.startsWith("Everything"))
            ids.append(report->ReportID);
    }
    QCOMPARE(ids.size(), 1);
    QCOMPARE(runReports(ids, RunChoice::All).failed, 0);
    QDirIterator pages(path("Reports"), {"*.HTM"}, QDir::Files, QDirIterator::Subdirectories);
    int count = 0;
    while (pages.hasNext()) {
        const QByteArray page = readFile(pages.next());
        const qsizetype left = page.indexOf("%%");
        QVERIFY2(left < 0,
                 (pages.filePath().toUtf8() + ": " + page.mid(left - 40, 80)).constData());
        ++count;
    }
    QVERIFY(count > 20);
}

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    TestCheck test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_check.moc"
