#include "../support/Sandbox.h"
#include "core/Clock.h"
#include "core/Error.h"
#include "definitions/GraphValueItem.h"
#include "definitions/ReportDef.h"

#include <QTest>

namespace {

struct Named
{
    QString name;
};

QString namesOf(const Collection<Named> &collection)
{
    QString names;
    for (const auto &entry : collection)
        names += entry->name;
    return names;
}

Collection<Named> collectionOf(const QString &letters)
{
    Collection<Named> collection;
    for (const QChar letter : letters)
        collection.add(letter, std::make_shared<Named>(Named{letter}));
    return collection;
}

} // namespace

class TestReportDef : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void collectionFindsByKeyWithoutCase()
    {
        const auto collection = collectionOf(QStringLiteral("bÄc"));
        QCOMPARE(collection.find(QStringLiteral("B"))->name, u"b");
        QCOMPARE(collection.find(QStringLiteral("ä"))->name, QStringLiteral("Ä"));
        QVERIFY(!collection.find(QStringLiteral("d")));
        QVERIFY(!collection.contains(QString()));
        QCOMPARE(collection.at(2)->name, u"c");
    }

    void collectionRefusesASecondEntry()
    {
        auto collection = collectionOf(QStringLiteral("abc"));
        try {
            collection.add(QStringLiteral("B"), std::make_shared<Named>());
            QFAIL("no error");
        } catch (const Error &error) {
            QCOMPARE(error.number, int(DuplicateKey));
            QVERIFY2(error.description.contains(u"'B'"), error.what());
        }
        QCOMPARE(namesOf(collection), u"abc");
    }

    void collectionKeepsItsOrder()
    {
        auto collection = collectionOf(QStringLiteral("dBac"));
        QVERIFY(collection.remove(QStringLiteral("b")));
        QVERIFY(!collection.remove(QStringLiteral("b")));
        QCOMPARE(namesOf(collection), u"dac");
        QCOMPARE(collection.find(QStringLiteral("c"))->name, u"c");
        collection.replace(QStringLiteral("A"),
                           std::make_shared<Named>(Named{QStringLiteral("x")}));
        collection.replace(QStringLiteral("e"),
                           std::make_shared<Named>(Named{QStringLiteral("e")}));
        QCOMPARE(namesOf(collection), u"dxce");
        collection.add(QStringLiteral("b"), std::make_shared<Named>(Named{QStringLiteral("B")}));
        collection.sortByText([](const Named &entry) { return entry.name; });
        QCOMPARE(namesOf(collection), u"Bcdex");
        QCOMPARE(collection.find(QStringLiteral("a"))->name, u"x");
        collection.clear();
        QVERIFY(collection.isEmpty() && !collection.contains(QStringLiteral("a")));
    }

    void collectionSortsEqualTextsStably()
    {
        auto collection = collectionOf(QStringLiteral("cba"));
        collection.sortByText([](const Named &) { return QStringLiteral("same"); });
        QCOMPARE(namesOf(collection), u"cba");
    }

    void reportWithoutAnything()
    {
        clsReportDef report;
        QCOMPARE(report.ReportTitle, u"New Report Definition");
        const QString id = report.ReportID;
        report.SetXMLConfig(QStringLiteral("<CUSTOMREPORT/>"));
        QVERIFY(report.ReportDevices.isEmpty() && report.ReportSchedules.isEmpty());
        QCOMPARE(report.XMLConfig(),
                 QStringLiteral("<CUSTOMREPORT ReportID=\"%1\" ReportTitle=\"No Title\" "
                                "ChartID=\"No Charts Defined\" OutputFile=\".\\TEMP.HTML\" "
                                "OutputTemplate=\"\"/>")
                     .arg(id));
    }

    void reportTextOutlivesTheElement()
    {
        const LocalZone zone("Australia/Lord_Howe");
        const QString text = QStringLiteral(
            "<CUSTOMREPORT ReportID=\"r\" ReportTitle=\"Büro &amp; Lager\" ChartID=\"c\" "
            "OutputFile=\"o&quot;\" OutputTemplate=\"a&#10;b\">"
            "<SCHEDULE ScheduleID=\"s2\" LastRunDate=\"2024-10-06T13:07:09-00:00\"/>"
            "<SCHEDULE ScheduleID=\"s1\" LastRunDate=\"2024-06-01T00:00:00-00:00\"/>"
            "<DEVICE MUID=\"9\"><DATUM DataIDent=\"30\"/><DATUM DataIDent=\"4\"/></DEVICE>"
            "<DEVICE MUID=\"ä\"/>"
            "<DEVICE MUID=\"1\"><DATUM DataIDent=\"30\"/></DEVICE>"
            "</CUSTOMREPORT>");
        clsReportDef report;
        report.SetXMLConfig(text);
        QCOMPARE(report.XMLConfig(), text);
        const auto device = report.ReportDevices.find(QStringLiteral("9"));
        QVERIFY(device && device->DataItems.contains(QStringLiteral("k30")));
        QCOMPARE(report.ReportSchedules.find(QStringLiteral("S1"))->LastRunDate,
                 wallDateTime(QDate(2024, 6, 1), QTime(10, 30)));
    }

    void unknownContentIsNoHindrance()
    {
        const FrozenClock clock(QStringLiteral("2024-07-01T12:00:00"));
        clsReportDef report;
        report.SetXMLConfig(QStringLiteral(
            "<?xml version='1.0'?><!-- mine --><CUSTOMREPORT ReportID=\"r\" Colour=\"red\">text"
            "<GROUP><DEVICE MUID=\"d\" Note=\"n\"><DATUM/><DATUM DataIDent=\"\"/><X/>"
            "<DATUM DataIDent=\"7\"/></DEVICE></GROUP><SCHEDULE ScheduleID=\"s\"/>"
            "</CUSTOMREPORT>"));
        QCOMPARE(report.ReportDevices.size(), 1);
        QCOMPARE(report.ReportDevices.at(0)->DataItems.size(), 1);
        QCOMPARE(report.ReportDevices.at(0)->DataItems.at(0)->DataIDent, u"7");
        QCOMPARE(report.ReportSchedules.at(0)->LastRunDate, LocalToUTC(now()));
    }

    void duplicatesEndTheReading_data()
    {
        QTest::addColumn<QString>("content");
        QTest::addColumn<QString>("key");
        QTest::newRow("schedule") << QStringLiteral(
                                         "<SCHEDULE ScheduleID=\"s\"/><SCHEDULE ScheduleID=\"S\"/>")
                                  << QStringLiteral("'S'");
        QTest::newRow("device") << QStringLiteral("<DEVICE MUID=\"d\"/><DEVICE MUID=\"d\"/>")
                                << QStringLiteral("'d'");
        QTest::newRow("data item")
            << QStringLiteral("<DEVICE MUID=\"d\"><DATUM DataIDent=\"1\"/><DATUM DataIDent=\"1\"/>"
                              "</DEVICE>")
            << QStringLiteral("'k1'");
    }
    void duplicatesEndTheReading()
    {
        QFETCH(QString, content);
        QFETCH(QString, key);
        clsReportDef report;
        try {
            report.SetXMLConfig(QStringLiteral("<CUSTOMREPORT>%1</CUSTOMREPORT>").arg(content));
            QFAIL("no error");
        } catch (const Error &error) {
            QCOMPARE(error.number, int(DuplicateKey));
            QVERIFY2(error.description.contains(key), error.what());
        }
    }

    void readingReplacesDevicesOnly()
    {
        clsReportDef report;
        report.SetXMLConfig(QStringLiteral(
            "<CUSTOMREPORT><SCHEDULE ScheduleID=\"a\"/><DEVICE MUID=\"a\"/></CUSTOMREPORT>"));
        report.SetXMLConfig(QStringLiteral(
            "<CUSTOMREPORT><SCHEDULE ScheduleID=\"b\"/><DEVICE MUID=\"b\"/></CUSTOMREPORT>"));
        QCOMPARE(report.ReportSchedules.size(), 2);
        QCOMPARE(report.ReportDevices.size(), 1);
    }

    void valueItem()
    {
        clsGraphValueItem item;
        const QString fresh = QStringLiteral("<gValue Scale=\"0\" Name=\"Un-named\" Value=\"0\" "
                                             "Desc=\"\" State=\"0\" IsGlobal=\"0\"/>");
        QCOMPARE(item.XMLData(), fresh);
        item.SetXMLData(QString());
        item.SetXMLData(QStringLiteral("<Value Scale=\"3\"/>"));
        QCOMPARE(item.XMLData(), fresh);
        item.SetXMLData(QStringLiteral("<GVALUE/>"));
        QCOMPARE(item.XMLData(), u"<gValue Scale=\"0\" Name=\"UnNamed Value\" Value=\"0\" "
                                 u"Desc=\"No Description\" State=\"0\" IsGlobal=\"0\"/>");
        const QString full = QStringLiteral("<gValue Scale=\"21\" Name=\"Öl\" Value=\"&lt;1>\" "
                                            "Desc=\"a&#10;b\" State=\"-4\" IsGlobal=\"-1\"/>");
        item.SetXMLData(full);
        QCOMPARE(item.ItemScale, 21);
        QVERIFY(item.ItemIsGlobal);
        QCOMPARE(item.ItemValue, u"<1>");
        QCOMPARE(item.XMLData(), full);
    }
};

QTEST_GUILESS_MAIN(TestReportDef)
#include "tst_reportdef.moc"
