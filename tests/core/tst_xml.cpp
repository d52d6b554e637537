#include "core/Error.h"
#include "core/Xml.h"

#include <QTest>

class TestXml : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void malformedTextNamesItsPlace_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("place");
        QTest::newRow("empty") << QByteArray() << QStringLiteral("1:1:");
        QTest::newRow("comment alone") << QByteArray("<!-- x -->") << QStringLiteral("1:11:");
        QTest::newRow("wrong end")
            << QByteArray("<a>\n  <b>\n  </c>\n</a>") << QStringLiteral("3:5:");
        QTest::newRow("bad attribute")
            << QByteArray("<a>\n\xC3\xA4<b x=1/></a>") << QStringLiteral("2:8:");
    }
    void malformedTextNamesItsPlace()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, place);
        pugi::xml_document document;
        try {
            parseXml(document, text);
            QFAIL("no error");
        } catch (const Error &error) {
            QCOMPARE(error.number, int(InvalidFileFormat));
            QVERIFY2(error.description.startsWith(place), error.what());
        }
    }

    void everyTextOutlivesAnAttribute_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << QString();
        QTest::newRow("markup") << QStringLiteral("<a b=\"c\" d='e'>&amp;]]>");
        QTest::newRow("breaks") << QStringLiteral("a\nb\r\nc\td  e ");
        QTest::newRow("non-ASCII") << QStringLiteral("ä€日本😀");
        QTest::newRow("control") << QString(QChar(1)) + QChar(0x1F);
    }
    void everyTextOutlivesAnAttribute()
    {
        QFETCH(QString, text);
        pugi::xml_document document;
        pugi::xml_node element = document.append_child("e");
        setAttr(element, "a", text);
        for (const QByteArray &bytes : {documentBytes(document), elementText(element).toUtf8()}) {
            pugi::xml_document again;
            parseXml(again, bytes);
            QCOMPARE(GetAttr(again.document_element(), "a", QStringLiteral("none")), text);
        }
    }

    void missingAttributesHaveDefaults()
    {
        pugi::xml_document document;
        parseXml(document, QStringLiteral("<e n='7.5x' b='-1' z='0' big='1e10'/>"));
        const pugi::xml_node element = document.document_element();
        QCOMPARE(GetAttr(element, "N", QStringLiteral("none")), u"none");
        QCOMPARE(integerAttr(element, "n", 3), 8);
        QCOMPARE(integerAttr(element, "none", 3), 3);
        QVERIFY(xmlBoolean(GetAttr(element, "b", QString())));
        QVERIFY(!xmlBoolean(GetAttr(element, "z", QString())));
        QVERIFY(!xmlBoolean(GetAttr(element, "none", QString())));
        try {
            integerAttr(element, "big", 0);
            QFAIL("no error");
        } catch (const Error &error) {
            QCOMPARE(error.number, int(Overflow));
            QVERIFY2(error.description.startsWith(u"big"), error.what());
        }
    }

    void elementsComeInDocumentOrder()
    {
        pugi::xml_document document;
        parseXml(document, QStringLiteral("<e i='1'><x><e i='2'><e i='3'/></e></x>e<E i='9'/>"
                                          "<!--<e/>--><e i='4'/></e>"));
        QString found;
        forEachElement(document, "e", [&found](const pugi::xml_node &element) {
            found += GetAttr(element, "i", QString());
        });
        QCOMPARE(found, u"1234");
        // Below an element, neither itself nor what follows it.
        found.clear();
        forEachElement(
            document.document_element().child("x"), "e",
            [&found](const pugi::xml_node &element) { found += GetAttr(element, "i", QString()); });
        QCOMPARE(found, u"23");
    }

    void documentsAreIndented()
    {
        pugi::xml_document document;
        pugi::xml_node root = document.append_child("R");
        pugi::xml_node child = root.append_child("C");
        setAttr(child, "b", 1);
        setAttr(child, "a", xmlBoolean(true));
        QCOMPARE(documentBytes(document), "<R>\n\t<C b=\"1\" a=\"-1\" />\n</R>\n");
        QCOMPARE(elementText(root), u"<R><C b=\"1\" a=\"-1\"/></R>");
    }
};

QTEST_GUILESS_MAIN(TestXml)
#include "tst_xml.moc"
