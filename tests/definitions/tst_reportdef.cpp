#include "definitions/ReportDef.h"
#include "support/Errors.h"
#include "support/Sandbox.h"

#include <QTest>

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
#include "tst_reportdef.moc"
