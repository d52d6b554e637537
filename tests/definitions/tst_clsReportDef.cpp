#include "base/TimeZone.h"
#include "definitions/clsReportDef.h"
#include "support/Errors.h"
#include "support/Rows.h"
#include "support/Sandbox.h"

namespace {
QString joined(const Collection<QString> &letters)
{
    QString text;
    for (const auto &letter : letters)
        text += *letter;
    return text;
}

Collection<QString> collectionOf(const QString &letters)
{
    Collection<QString> collection;
    for (const QChar letter : letters)
        collection.add(letter, std::make_shared<QString>(letter));
    return collection;
}

} // namespace

class TestReportDef : public QObject
{
    Q_OBJECT

    const ProgramState m_state;

private Q_SLOTS:

    void collectionKeepsItsOrder()
    {
        auto collection = collectionOf("dBac");
        QVERIFY(!collection.find("e") && !collection.contains(""));
        collection.replace("Ä", std::make_shared<QString>("Ä"));
        QVERIFY(collection.remove("ä"));
        QVERIFY(collection.remove("b"));
        QVERIFY(!collection.remove("b"));
        QCOMPARE(joined(collection), "dac");
        QCOMPARE(*collection.find("c"), "c");
        collection.replace("A", std::make_shared<QString>("x"));
        collection.replace("e", std::make_shared<QString>("e"));
        QCOMPARE(joined(collection), "dxce");
        collection.add("b", std::make_shared<QString>("B"));
        collection.sortByText([](const QString &entry) { return entry; });
        QCOMPARE(joined(collection), "Bcdex");
        QCOMPARE(*collection.find("a"), "x");
    }

    void reportTextOutlivesTheElement()
    {
        const LocalZone zone("Australia/Lord_Howe");
        const QString text =
            "<CUSTOMREPORT ReportID=\"r\" ReportTitle=\"Büro &amp; Lager\" ChartID=\"c\" "
            "OutputFile=\"o&quot;\" OutputTemplate=\"a&#10;b\">"
            "<SCHEDULE ScheduleID=\"s2\" LastRunDate=\"2024-10-06T13:07:09-00:00\"/>"
            "<SCHEDULE ScheduleID=\"s1\" LastRunDate=\"2024-06-01T00:00:00-00:00\"/>"
            "<DEVICE MUID=\"9\"><DATUM DataIDent=\"30\"/><DATUM DataIDent=\"4\"/></DEVICE>"
            "<DEVICE MUID=\"ä\"/>"
            "<DEVICE MUID=\"1\"><DATUM DataIDent=\"30\"/></DEVICE>"
            "</CUSTOMREPORT>";
        clsReportDef report;
        report.SetXMLConfig(text);
        QCOMPARE(report.XMLConfig(), text);
        const auto device = report.ReportDevices.find("9");
        QVERIFY(device && device->DataItems.contains("k30"));
        QCOMPARE(report.ReportSchedules.find("S1")->LastRunDate,
                 wallDateTime(QDate(2024, 6, 1), QTime(10, 30)));
    }

    void whatFiguresAreHeldAgainst()
    {
        const LocalZone zone("Europe/Berlin");
        const QString text =
            "<CUSTOMREPORT ReportID=\"r\" ReportTitle=\"t\" ChartID=\"c\" OutputFile=\"\" "
            "OutputTemplate=\"\" Target=\"99.95\" ServiceHours=\"Sat-Sun 22:00-6:00, Mon "
            "0:00-24:00\" "
            "Compare=\"0\" Pdf=\"-1\" Keep=\"12\"><DEVICE MUID=\"1\" Target=\"0\"><DATUM "
            "DataIDent=\"2\" Limit=\"-1.5\"/>"
            "</DEVICE><MAINTENANCE From=\"2024-10-06T13:00:00-00:00\" "
            "To=\"2024-10-06T13:00:01-00:00\" Reason=\"&lt;b &amp; c\"/></CUSTOMREPORT>";
        clsReportDef report;
        report.SetXMLConfig(text);
        QCOMPARE(report.XMLConfig(), text);
        QCOMPARE(*report.Target, 99.95);
        QCOMPARE(*report.ReportDevices.find("1")->DataItems.find("k2")->Limit, -1.5);
        QCOMPARE(report.Maintenance[0].From, wallDateTime(QDate(2024, 10, 6), QTime(15, 0)));

        // The clock goes forward in the night to Sunday, 2024-03-31.
        const auto second = [](int day, int hour) {
            return instantOf(wallDateTime(QDate(2024, 3, 1).addDays(day - 1), QTime(hour, 0))) /
                   1000;
        };
        const auto stretches = report.Hours.stretches(second(31, 5), second(32, 12));
        QCOMPARE(stretches,
                 (std::vector<std::pair<qint64, qint64>>{{second(30, 22), second(31, 6)},
                                                         {second(31, 22), second(32, 6)},
                                                         {second(32, 0), second(33, 0)}}));
        QCOMPARE(stretches[0].second - stretches[0].first, 7 * 3600);
    }

    void rules()
    {
        const QString text =
            "<CUSTOMREPORT ReportID=\"r\" ReportTitle=\"t\" ChartID=\"c\" OutputFile=\"\" "
            "OutputTemplate=\"\"><RULE Device=\"*-SW-*|&lt;x\" Group=\"Core\" Description=\"d\" "
            "Item=\"Latency\" Unit=\"ms\" Kind=\"Counter\"/><RULE/><EXCEPT Kind=\"State\"/>"
            "</CUSTOMREPORT>";
        clsReportDef report;
        report.SetXMLConfig(text);
        QCOMPARE(report.XMLConfig(), text);
        QCOMPARE(report.Rules.size(), size_t(3));
        QVERIFY(report.Rules[2].isException && !report.Rules[0].isException);
        report.SetXMLConfig("<R><RULE Item=' a'/><RULE Item='a '/></R>");
        QCOMPARE(report.Rules.size(), size_t(1));
        QCOMPARE(failureOf([&] { report.SetXMLConfig("<R><RULE Kind='Ping'/></R>"); }),
                 QString("[13] Kind 'Ping' is neither State nor Counter"));
    }

    void patterns_data()
    {
        const Rows<QString, QString, bool> row("pattern", "name", "matches");
        row("empty", "", "x", true);
        row("case and accents", "z\u00fcrich-sw?", "ZURICH-SW1", true);
        row("whole name", "SW", "SW1", false);
        row("stars", "*a*b*", "xxabab-", true);
        row("star gives way", "*ab", "abaab", true);
        row("nothing behind", "a*b", "abc", false);
        row("one character", "??", "a", false);
        row("alternatives", "disk* | *memory*|", "Free Memory", true);
        row("none of them", "disk*|*memory*", "a disk", false);
        row("no expression", "[a-z].*", "b", false);
    }
    void patterns()
    {
        QFETCH(QString, pattern);
        QFETCH(QString, name);
        QTEST(NamePattern(pattern).matches(name), "matches");
    }

    void duplicatesEndTheReading()
    {
        const auto failure = [](const QString &content) {
            clsReportDef report;
            return failureOf([&] { report.SetXMLConfig("<R>" + content + "</R>"); }).left(17);
        };
        QCOMPARE(failure("<SCHEDULE ScheduleID='s'/><SCHEDULE ScheduleID='S'/>"),
                 "[457] The key 'S'");
        QCOMPARE(failure("<DEVICE MUID='d'/><DEVICE MUID='d'/>"), "[457] The key 'd'");
        QCOMPARE(failure("<DEVICE MUID='d'><DATUM DataIDent='1'/><DATUM DataIDent='1'/></DEVICE>"),
                 "[457] The key 'k1");
        QCOMPARE(
            failure(
                "<MAINTENANCE From='2024-01-01T00:00:00-00:00' To='2024-01-01T00:00:01-00:00'/>"
                "<MAINTENANCE From='2024-01-01T00:00:00-00:00' To='2024-01-01T00:00:02-00:00'/>"),
            "[457] MAINTENANCE");
        for (const char *content :
             {"<MAINTENANCE From='2024-02-30T00:00:00-00:00' To='2025-01-01T00:00:00-00:00'/>",
              "<MAINTENANCE From='2024-01-01T00:00:00-00:00' To='2024-01-01T00:00:00-00:00'/>",
              "<DEVICE MUID='d' Target='101'/>", "<DEVICE MUID='d' Target='nan'/>",
              "<DEVICE MUID='d'><DATUM DataIDent='1' Limit=''/></DEVICE>"})
            QCOMPARE(failure(content).left(5), "[13] ");
        for (const char *keep : {"1.5", "-1", "1001", "x"})
            QVERIFY(failureOf([&] {
                        clsReportDef().SetXMLConfig(QString("<R Keep='%1'/>").arg(keep));
                    }).startsWith("[13] Keep"));
        for (const char *hours : {"Mon", "Mon-Foo 8:00-9:00", "Mon 8:00-24:01", "Mon 8:60-9:00",
                                  "Mon 8:00-9:00,", "8:00-9:00"})
            QCOMPARE(failureOf([&] { ServiceHours{QString(hours)}; }).left(19),
                     "[13] ServiceHours: ");
    }

    void readingReplacesDevicesOnly()
    {
        clsReportDef report;
        for (const QString &id : {QString("a"), QString("b")})
            report.SetXMLConfig("<CUSTOMREPORT><SCHEDULE ScheduleID=\"" + id +
                                "\"/><DEVICE MUID=\"" + id + "\"/></CUSTOMREPORT>");
        QCOMPARE(report.ReportSchedules.size(), 2);
        QCOMPARE(report.ReportDevices.size(), 1);
    }
};

QTEST_GUILESS_MAIN(TestReportDef)
#include "tst_clsReportDef.moc"
