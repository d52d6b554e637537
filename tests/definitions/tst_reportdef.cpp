#include "core/Clock.h"
#include "definitions/GraphValueItem.h"
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
    void collectionFindsByKeyWithoutCase()
    {
        auto collection = collectionOf("bÄc");
        QCOMPARE(*collection.find("B"), "b");
        QCOMPARE(*collection.find("ä"), "Ä");
        QVERIFY(!collection.find("d"));
        QVERIFY(!collection.contains(""));
        QCOMPARE(*collection.at(2), "c");
        const QString failure = failureOf([&] { collection.add("C", nullptr); });
        QVERIFY2(failure.startsWith("[457] The key 'C'"), qPrintable(failure));
        QCOMPARE(joined(collection), "bÄc");
    }

    void collectionKeepsItsOrder()
    {
        auto collection = collectionOf("dBac");
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
        collection.clear();
        QVERIFY(collection.isEmpty() && !collection.contains("a"));
    }

    void reportWithoutAnything()
    {
        clsReportDef report;
        QCOMPARE(report.ReportTitle, "New Report Definition");
        const QString id = report.ReportID;
        report.SetXMLConfig("<CUSTOMREPORT/>");
        QVERIFY(report.ReportDevices.isEmpty() && report.ReportSchedules.isEmpty());
        QCOMPARE(report.XMLConfig(),
                 "<CUSTOMREPORT ReportID=\"" + id +
                     "\" ReportTitle=\"No Title\" ChartID=\"No Charts Defined\" "
                     "OutputFile=\".\\TEMP.HTML\" OutputTemplate=\"\"/>");
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

    void unknownContentIsNoHindrance()
    {
        const FrozenClock clock("2024-07-01T12:00:00");
        clsReportDef report;
        report.SetXMLConfig(
            "<?xml version='1.0'?><!-- mine --><CUSTOMREPORT ReportID=\"r\" Colour=\"red\">text"
            "<GROUP><DEVICE MUID=\"d\" Note=\"n\"><DATUM/><DATUM DataIDent=\"\"/><X/>"
            "<DATUM DataIDent=\"7\"/></DEVICE></GROUP><SCHEDULE ScheduleID=\"s\"/>"
            "</CUSTOMREPORT>");
        QCOMPARE(report.ReportDevices.size(), 1);
        QCOMPARE(report.ReportDevices.at(0)->DataItems.size(), 1);
        QCOMPARE(report.ReportDevices.at(0)->DataItems.at(0)->DataIDent, "7");
        QCOMPARE(report.ReportSchedules.at(0)->LastRunDate, LocalToUTC(now()));
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

    void valueItem()
    {
        clsGraphValueItem item;
        const QString fresh = "<gValue Scale=\"0\" Name=\"Un-named\" Value=\"0\" "
                              "Desc=\"\" State=\"0\" IsGlobal=\"0\"/>";
        QCOMPARE(item.XMLData(), fresh);
        item.SetXMLData("");
        item.SetXMLData("<Value Scale=\"3\"/>");
        QCOMPARE(item.XMLData(), fresh);
        item.SetXMLData("<GVALUE/>");
        QCOMPARE(item.XMLData(), "<gValue Scale=\"0\" Name=\"UnNamed Value\" Value=\"0\" "
                                 "Desc=\"No Description\" State=\"0\" IsGlobal=\"0\"/>");
        const QString full = "<gValue Scale=\"21\" Name=\"Öl\" Value=\"&lt;1>\" "
                             "Desc=\"a&#10;b\" State=\"-4\" IsGlobal=\"-1\"/>";
        item.SetXMLData(full);
        QCOMPARE(item.XMLData(), full);
        QCOMPARE(item.ItemValue, "<1>");
    }
};

QTEST_GUILESS_MAIN(TestReportDef)
#include "tst_reportdef.moc"
