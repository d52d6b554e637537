#include "base/Xml.h"
#include "support/Errors.h"

#include <QStringEncoder>
#include <QTest>

class TestXml : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void malformedTextNamesItsPlace()
    {
        const auto failure = [](const QByteArray &text) {
            pugi::xml_document document;
            return failureOf([&] { parseXml(document, text); }).section(' ', 0, 1);
        };
        QCOMPARE(failure(""), "[321] 1:1:");
        QCOMPARE(failure("<!-- x -->"), "[321] 1:11:");
        QCOMPARE(failure("<a>\n  <b>\n  </c>\n</a>"), "[321] 3:5:");
        QCOMPARE(failure("<a>\n\xC3\xA4<b x=1/></a>"), "[321] 2:8:");
    }

    void everyTextOutlivesAnAttribute()
    {
        for (const char *const text :
             {"", "<a b=\"c\" d='e'>&amp;]]>", "a\nb\r\nc\td  e ", "ä€日本😀", "\x01\x1F"}) {
            pugi::xml_document document;
            pugi::xml_node element = document.append_child("e");
            setAttr(element, "a", QString(text));
            for (const QByteArray &bytes :
                 {documentBytes(document), elementText(element).toUtf8()}) {
                pugi::xml_document again;
                parseXml(again, bytes);
                QCOMPARE(GetAttr(again.document_element(), "a", "none"), QString(text));
            }
        }
    }

    void elementsComeInDocumentOrder()
    {
        pugi::xml_document document;
        parseXml(document, QString("<e i='1'><x><e i='2'><e i='3'/></e></x>e<E i='9'/>"
                                   "<!--<e/>--><e i='4'/></e>"));
        QString found;
        const auto note = [&](const pugi::xml_node &element) {
            found += GetAttr(element, "i", "");
        };
        forEachElement(document, "e", note);
        QCOMPARE(found, "1234");
        found.clear();
        forEachElement(document.document_element().child("x"), "e", note);
        QCOMPARE(found, "23"); // below an element, neither itself nor what follows it
    }

    void otherEncodingsAreRead()
    {
        const QByteArray utf8 = "<C t='\xC3\xA4'/>";
        const QByteArray latin = "<?xml version='1.0' encoding='windows-1252'?><C t='\xE4'/>";
        const QByteArray wide = QStringEncoder(QStringEncoder::Utf16LE)(u'\uFEFF' + QString(utf8));
        for (const QByteArray &bytes : {"\xEF\xBB\xBF" + utf8, latin, wide}) {
            pugi::xml_document document;
            parseXml(document, bytes);
            QCOMPARE(GetAttr(document.document_element(), "t", ""), "ä");
        }
    }

    void deepNestingDoesNoHarm()
    {
        const QByteArray open = QByteArray("<a>").repeated(300'000);
        const QByteArray close = QByteArray("</a>").repeated(300'000);
        pugi::xml_document document;
        parseXml(document, open + "<e/>" + close);
        int count = 0;
        forEachElement(document, "e", [&](const pugi::xml_node &) { ++count; });
        QCOMPARE(count, 1);
    }
};

QTEST_GUILESS_MAIN(TestXml)
#include "tst_Xml.moc"
