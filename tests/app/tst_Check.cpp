#include "access/AccessFile.h"
#include "app/Check.h"
#include "base/Xml.h"
#include "config/HostSettings.h"
#include "config/Status.h"
#include "database/Connection.h"
#include "definitions/Definitions.h"
#include "report/TemplateNames.h"
#include "scheduling/ReportRunner.h"
#include "support/Rows.h"
#include "support/Sandbox.h"

#include <QDirIterator>
#include <QGuiApplication>
#include <QProcess>

/// The check of a home that holds the factory files and the demonstration's database and reports:
/// it finds nothing, and each slip of the pen at its place.
class TestCheck : public QObject
{
    Q_OBJECT

    QTemporaryDir m_site; ///< made once: a database and its report definitions
    std::unique_ptr<Sandbox> m_box;
    QString m_note;

    QString path(const QString &name) const { return m_box->path(name); }
    void copyInto(const QString &folder) const
    {
        for (QString name : QDir(folder).entryList(QDir::Files)) {
            const QByteArray bytes = readFile(folder + u'/' + name);
            m_box->write("Config/" + name.replace(".FAC", ".XML"), bytes);
        }
    }
    QStringList check()
    {
        loadGrapherConfig();
        GetGraphDataPath();
        return checkEverything(m_note).lines();
    }
    /// Of the reports whose titles begin so, for a run below the home.
    QStringList reportIds(const QString &title) const
    {
        program().gGraphDataPath = m_box->path() + u'/';
        definitions().LoadReportDefs();
        QStringList ids;
        for (const auto &report : definitions().gReportDefs) {
            if (report->ReportTitle.startsWith(title))
                ids.append(report->ReportID);
        }
        return ids;
    }

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("XDG_CONFIG_HOME", m_site.filePath("config").toLocal8Bit());
        QVERIFY(QDir(m_site.path()).mkdir("reports"));
        QCOMPARE(QProcess::execute(VANTREL_DEMO, {m_site.filePath("VTRGData.MDB"), "--devices",
                                                  "12", "--items", "3", "--days", "1", "--interval",
                                                  "3600", "--reports", m_site.filePath("reports")}),
                 0);
    }
    void init()
    {
        m_box = std::make_unique<Sandbox>();
        const QString share = VANTREL_SHARE "/";
        m_box->write("VTRGConfigV6.XML", readFile(share + "VTRGConfigV6.FAC"));
        m_box->write("VantrelV6.Config", readFile(share + "VantrelV6.Config.FAC"));
        copyInto(share + "Config");
        copyInto(m_site.filePath("reports"));
        program().gDataPath = m_site.path() + u'/';
        m_note.clear();
    }
    void cleanup() { m_box.reset(); }

    void findsNothingInTheFactoryFiles()
    {
        QCOMPARE(check(), QStringList());
        QCOMPARE(m_note, QString());
    }

    void namesEachSlip_data()
    {
        const QString reports = "Config/ChartSelection.XML";
        const QString charts = "Config/ChartDefs.XML";
        const QString schedules = "Config/ChartSchedules.XML";
        const QString config = "VTRGConfigV6.XML";
        const QString product = "VantrelV6.Config";
        // An empty "from" has the file removed; an empty "to" leaves no place to name.
        const Rows<QString, QByteArray, QByteArray, QString> row("file", "from", "to", "finding");
        row("malformed", reports, "</REPORTDEFINITIONS>", "<", "Could not determine tag type");
        row("other root", schedules, "SCHEDULES>", "PLANS>", "the root element is 'PLANS'");
        row("report's chart", reports, " ChartID=\"", " ChartID=\"Ä", "no chart definition 'Ä");
        row("report's device", reports, "MUID=\"", "MUID=\"X", "the database has no device 'X");
        row("data item", reports, "DataIDent=\"", "DataIDent=\"1 or 1=", "is not a whole number");
        row("rule", reports, "<DEVICE ", "<RULE Item=\"no such\"/><DEVICE ",
            "the rule finds nothing");
        row("kind of a rule", reports, "<DEVICE ", "<EXCEPT Kind=\"x\"/><DEVICE ", "Kind 'x'");
        row("future date", reports, "LastRunDate=\"20", "LastRunDate=\"30", "is in the future");
        row("same title", charts, "Title=\"",
            "Title=\"X\"/><CHART ChartID=\"2\" Title=\" x\"/><CHART ChartID=\"3\" T=\"",
            "the title 'x' is given twice");
        row("date", reports, "LastRunDate=\"2", "LastRunDate=\"x", "is not a date like");
        row("offset", reports, "-00:00\"", "+02:00\"", "is not a date like");
        row("code", charts, "Frequency=\"", "Frequency=\"7", "is not within 0 to 4");
        row("list", schedules, "HourList=\"", "HourList=\"24,",
            "HourList: 24 is not within 0 to 23");
        row("no hour", schedules, "ScheduleID=\"", "HourList=\"\" ScheduleID=\"",
            "the schedule never runs: no hour is checked");
        row("intervals", charts, "IntervalCount=\"", "IntervalCount=\"99999",
            "more than the 110,000 intervals");
        row("no template", charts, "StateFile=\"", "StateFile=\"No", "there is no template 'No");
        row("no page", charts, "StateFile=\"", "StateFile=\"./VantrelV6.Config\" X=\"",
            "VantrelV6.Config' is not a template: only regular files named");
        row("page template", config, "TIN_TOC=\"", "TIN_TOC=\"No", "6:2: there is no template 'No");
        row("output name", config, "\"SUMMARY.HTM\"", "\"\"", "TOU_REP_Summary names no file");
        row("image format", config, "\"PNG\"", "\"GIF\"", "IMG_Format 'GIF' is not PNG");
        row("companion elsewhere", config, "\"vantrel.css\"", "\"..\\VantrelV6.Config\"",
            "'..\\VantrelV6.Config' is not a file of the configuration folder");
        row("companion", config, "\"vantrel.css\"", "\"lost.css\"", "no companion file 'lost.css'");
        row("placeholder", "Config/ReportTop.HTML", "<title>%%report.title%%",
            "<title>\nä %%report.titel%%", ":3: '%%report.titel%%' is not a placeholder");
        row("marker", "Config/Device.HTML", "%%dev.varblist%%", "", "%%dev.varblist%% is missing");
        row("product folder", product, "DataPath=\"\"", "DataPath=\"/no/where\"",
            "3:2: there is no folder '/no/where'");
        row("server", product, "SQL=\"0\"", "SQL=\"1\"", "GraphDataSQLConnect is empty");
        row("missing file", product, "", "", "1:1: File not found");
    }

    void namesEachSlip()
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
            if (!to.isEmpty())
                line = text.left(at).count('\n') + to.count('\n') + 1;
            m_box->write(file, text.replace(from, to));
        }
        const QStringList lines = check();
        const QStringList found = lines.filter(finding);
        QVERIFY2(!found.isEmpty(), qPrintable(lines.join(u'\n')));
        QVERIFY2(found[0].startsWith(path(file) + u':' + QString::number(line) + u':'),
                 qPrintable(found[0]));
    }

    void readsTheMailSettings()
    {
        program().gGraphDataPath = m_box->path() + u'/';
        m_box->write("Config/MailSettings.XML",
                     "<MAILSETTINGS>\n<SERVER Host='h' User='u'\nPort='x' From='a@b'/>\n"
                     "<FAILURES To='c'/>\n<SUBSCRIPTION To='d@e'\nReportID='{0}'/></MAILSETTINGS>");
        m_box->write("Config/Mail.HTML", "\n%%mail.titel%%");
        QStringList found;
        const QStringList lines = check();
        for (const QString &line : lines)
            found.append(line.section(u'/', -1).section(u'\'', 0, 0));
        QCOMPARE(found, QStringList({"MailSettings.XML:3:1: Port ",
                                     "MailSettings.XML:2:18: no password of ",
                                     "MailSettings.XML:6:1: there is no report ",
                                     "MailSettings.XML:4:11: ", "Mail.HTML:2:1: "}));
    }

    /// A count of samples that is too high is a finding, and a line of a run that goes well.
    void saysWhatTheDatabaseLacks()
    {
        QByteArray bytes = readFile(m_site.filePath("VTRGData.MDB"));
        mdb::AccessFile file(m_site.filePath("VTRGData.MDB"));
        bytes[file.table("DataValues").definitionPage * 4096 + 19] = 1; // the highest byte
        m_box->write("VTRGData.MDB", bytes);
        program().gDataPath = m_box->path() + u'/';
        const QString finding = check().join(u'\n');
        QVERIFY2(finding.startsWith(path("VTRGData.MDB:1:1: ")), qPrintable(finding));
        QVERIFY2(finding.contains("'DataValues'"), qPrintable(finding));

        QVERIFY(!runReports({reportIds({})}).failed());
        const QStringList warnings = m_box->status.filter("Warning: ");
        QCOMPARE(warnings.size(), 1);
        QVERIFY(finding.endsWith(warnings[0].mid(9)));
    }

    void goesWithoutADatabase()
    {
        program().gDataPath = path("nowhere/");
        QCOMPARE(check(), QStringList());
        QVERIFY2(m_note.startsWith("Devices and data items were not checked: "),
                 qPrintable(m_note));
    }

    /// What the check takes for a placeholder is one: a run fills every one of them.
    void knowsNoNameThatPagesLeave()
    {
        const auto addAllNames = [this](const QString &file, const TemplateNames &kind) {
            QByteArray text = m_box->read("Config/" + file);
            for (const QLatin1String name :
                 kind.names.tokenize(QLatin1Char(' '), Qt::SkipEmptyParts))
                text += ("\n<!-- " + kind.attribute + " %%" + name + "%% -->").toUtf8();
            m_box->write("Config/" + file, text);
        };
        pugi::xml_document config;
        parseXml(config, m_box->read("VTRGConfigV6.XML"));
        for (const TemplateNames &kind : pageTemplateNames())
            addAllNames(GetAttr(config.document_element(), kind.attribute.data(), {}), kind);
        addAllNames("StateChart.HTML", chartTemplateNames()[0]);
        addAllNames("CountChart.HTML", chartTemplateNames()[1]);
        QCOMPARE(check(), QStringList());

        QVERIFY(!runReports({reportIds("Everything")}).failed());
        QDirIterator pages(path("Reports"), {"*.HTM"}, QDir::Files, QDirIterator::Subdirectories);
        int count = 0;
        for (; pages.hasNext(); ++count) {
            const QByteArray page = readFile(pages.next());
            const qsizetype left = page.indexOf("%%");
            QVERIFY2(left < 0, qPrintable(pages.filePath() + ": " + page.mid(left - 40, 80)));
        }
        QVERIFY(count > 20);
    }
};

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    TestCheck test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_Check.moc"
