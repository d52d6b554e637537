#include "base/NaturalOrder.h"

#include <QRandomGenerator>
#include <QTest>

class TestNaturalOrder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void foldsCaseAndAccents()
    {
        QCOMPARE(foldedText(""), "");
        QCOMPARE(foldedText("Zürich-Málaga-Göteborg"), "zurich-malaga-goteborg");
        QCOMPARE(foldedText("Łódź, Sørland, Đakovo"), "lodz, sorland, dakovo");
        QCOMPARE(foldedText("Straße"), "strasse");
        QCOMPARE(foldedText("東京 Ειρήνη"), "東京 ειρηνη");
    }
    void order()
    {
        const QStringList lists[] = {
            {"srv-1", "srv-2", "srv-10", "srv-100"},
            {"1.2.3", "1.2.10", "1.10.1", "2.1.1"},
            {"", "-", "7", "a", "a2b", "a2c", "a10b", "ab"},
            {"äa", "Ab", "ac", "Łb", "lc", "Z"},
            {"99999999", "100000000", "999999999", "1000000000", "20000000000000000000000000",
             "100000000000000000000000000"},
            {"n" + QString(8192, u'1'), "n" + QString(8193, u'1')}}; // more digits than are counted
        for (const QStringList &ordered : lists) {
            QStringList mixed = ordered;
            std::shuffle(mixed.begin(), mixed.end(), *QRandomGenerator::global());
            std::sort(mixed.begin(), mixed.end(), [](const QString &a, const QString &b) {
                return naturalKey(a) < naturalKey(b);
            });
            QCOMPARE(mixed, ordered);
        }
    }

    void leadingZerosAreEqual()
    {
        QCOMPARE(naturalKey("srv-007"), naturalKey("SRV-7"));
        QCOMPARE(naturalKey("000"), naturalKey("0"));
        QVERIFY(naturalKey("0") < naturalKey("1"));
    }
};

QTEST_APPLESS_MAIN(TestNaturalOrder)
#include "tst_NaturalOrder.moc"
