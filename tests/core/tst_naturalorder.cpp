#include "core/NaturalOrder.h"

#include <QRandomGenerator>
#include <QTest>

class TestNaturalOrder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void folded_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("folded");
        QTest::newRow("empty") << ""
                               << "";
        QTest::newRow("case") << "CPU Load"
                              << "cpu load";
        QTest::newRow("accents") << "Zürich-Málaga-Göteborg"
                                 << "zurich-malaga-goteborg";
        QTest::newRow("accents apart") << QString::fromUtf8("Zu\u0308rich") << "zurich";
        QTest::newRow("strokes") << "Łódź, Sørland, Đakovo"
                                 << "lodz, sorland, dakovo";
        QTest::newRow("sharp s") << "Straße"
                                 << "strasse";
        QTest::newRow("other scripts") << "東京 Ειρήνη"
                                       << "東京 ειρηνη";
    }
    void folded()
    {
        QFETCH(QString, text);
        QTEST(foldedText(text), "folded");
        QCOMPARE(foldedText(foldedText(text)), foldedText(text));
    }

    void order_data()
    {
        QTest::addColumn<QStringList>("ordered");
        QTest::newRow("numbers by value") << QStringList{"srv-1", "srv-2", "srv-10", "srv-100"};
        QTest::newRow("within") << QStringList{"a2b", "a2c", "a10b", "a10c"};
        QTest::newRow("several") << QStringList{"1.2.3", "1.2.10", "1.10.1", "2.1.1"};
        QTest::newRow("number before letters") << QStringList{"", "-", "7", "a", "a7", "ab"};
        QTest::newRow("case and accents") << QStringList{"äa", "Ab", "ac", "Łb", "lc", "Z"};
        QTest::newRow("nine digits and more") << QStringList{"99999999",
                                                             "100000000",
                                                             "999999999",
                                                             "1000000000",
                                                             "20000000000000000000000000",
                                                             "100000000000000000000000000"};
        QTest::newRow("longer than a number counts")
            << QStringList{"n" + QString(8192, u'1'), "n" + QString(8193, u'1')};
    }
    void order()
    {
        QFETCH(QStringList, ordered);
        QStringList mixed = ordered;
        std::shuffle(mixed.begin(), mixed.end(), *QRandomGenerator::global());
        std::sort(mixed.begin(), mixed.end(),
                  [](const QString &a, const QString &b) { return naturalKey(a) < naturalKey(b); });
        QCOMPARE(mixed, ordered);
    }

    void leadingZerosAreEqual()
    {
        QCOMPARE(naturalKey("srv-007"), naturalKey("SRV-7"));
        QCOMPARE(naturalKey("000"), naturalKey("0"));
        QVERIFY(naturalKey("0") < naturalKey("1"));
    }
};

QTEST_APPLESS_MAIN(TestNaturalOrder)
#include "tst_naturalorder.moc"
