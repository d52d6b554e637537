#include "ListRecordset.h"
#include "core/Error.h"

#include <QTest>

namespace {

StaticRecordset devices()
{
    const QVariant none;
    ListRecordset rows({QStringLiteral("IDent"), QStringLiteral("MUID"), QStringLiteral("MachName"),
                        QStringLiteral("Load")},
                       {{qint64(3), QStringLiteral("a1"), QString::fromUtf8("Zürich"), 0.5},
                        {qint64(4), QStringLiteral("B2"), QString::fromUtf8("zÜRICH"), 1e6},
                        {qint64(5), QStringLiteral("03"), QStringLiteral("O'Brien"), none},
                        {qint64(3), QStringLiteral("C3"), none, 21.0}});
    return StaticRecordset(rows);
}

QString found(StaticRecordset &set)
{
    QStringList result;
    const int muid = set.column(QStringLiteral("muid"));
    for (set.moveFirst(); !set.eof(); set.moveNext())
        result.append(set.text(muid));
    return result.join(u',');
}

} // namespace

class tst_StaticRecordset : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void filters_data();
    void filters();
    void refusedFilters_data();
    void refusedFilters();
    void values();
    void integersAreRounded_data();
    void integersAreRounded();
    void noRows();
};

void tst_StaticRecordset::filters_data()
{
    QTest::addColumn<QString>("criterion");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *criterion, const char *expected) {
        QTest::newRow(criterion) << QString::fromUtf8(criterion) << QString::fromUtf8(expected);
    };
    row("", "a1,B2,03,C3");
    row("[MUID]='A1'", "a1");
    row("[muid]='b2'", "B2");
    row("MUID='none'", "");
    row("[MachName]='ZÜrich'", "a1,B2");
    row("[MachName]='O''Brien'", "03");
    row("[MachName]=''", "");
    row("[IDent]=3", "a1,C3");
    row("[IDent]='3'", "a1,C3");
    row("[IDent]='3.0'", "a1,C3");
    row("[IDent]='x'", "");
    row("[MUID]='3'", "");
    row("[Load]=0.5", "a1");
    row("[Load]=1000000", "B2");
    row("[Load]='1e6'", "B2");
    row("[Load]=21", "C3");
    row("[IDent]='3' and [MUID]='c3'", "C3");
    row(" [IDent] = 3 AND [Load] = 21 ", "C3");
    row("[IDent]=3 and [MUID]='B2'", "");
}

void tst_StaticRecordset::filters()
{
    QFETCH(QString, criterion);
    QFETCH(QString, expected);
    StaticRecordset set = devices();
    set.setFilter(QStringLiteral("[MUID]='B2'"));
    set.setFilter(criterion);
    QCOMPARE(set.recordCount(), expected.isEmpty() ? 0 : expected.count(u',') + 1);
    QCOMPARE(set.eof(), expected.isEmpty());
    QCOMPARE(found(set), expected);
}

void tst_StaticRecordset::refusedFilters_data()
{
    QTest::addColumn<QString>("criterion");
    QTest::addColumn<int>("number");
    const auto row = [](const char *criterion, int number = DatabaseError) {
        QTest::newRow(criterion) << QString::fromLatin1(criterion) << number;
    };
    row("[Name]='x'", ItemNotFound);
    row("[MUID]");
    row("[MUID='a1'");
    row("[MUID]=a1");
    row("[MUID]='a1");
    row("[MachName]='O'Brien'");
    row("[IDent]>3");
    row("[IDent]=3 or [IDent]=4");
    row("[IDent]=3 and");
}

void tst_StaticRecordset::refusedFilters()
{
    QFETCH(QString, criterion);
    QFETCH(int, number);
    StaticRecordset set = devices();
    try {
        set.setFilter(criterion);
        QFAIL("the filter was taken");
    } catch (const Error &error) {
        QCOMPARE(error.number, number);
    }
}

void tst_StaticRecordset::values()
{
    StaticRecordset set = devices();
    set.setFilter(QStringLiteral("[IDent]=5"));
    QCOMPARE(set.integer(0), qint64(5));
    QCOMPARE(set.text(0), QStringLiteral("5"));
    QCOMPARE(set.integer(1), qint64(3)); // "03"
    QVERIFY(set.isNull(3));
    QCOMPARE(set.number(3), 0.0);
    QCOMPARE(set.text(3), QString());
    set.moveNext();
    QVERIFY(set.eof());
    set.moveNext();
    QVERIFY_EXCEPTION_THROWN(static_cast<void>(set.integer(0)), Error);
    set.moveFirst();
    QCOMPARE(set.integer(0), qint64(5));
}

void tst_StaticRecordset::integersAreRounded_data()
{
    QTest::addColumn<double>("number");
    QTest::addColumn<qint64>("expected");
    QTest::newRow("half to even below") << 2.5 << qint64(2);
    QTest::newRow("half to even above") << 3.5 << qint64(4);
    QTest::newRow("negative") << -0.5 << qint64(0);
    QTest::newRow("plain") << 1e15 << qint64(1'000'000'000'000'000);
}

void tst_StaticRecordset::integersAreRounded()
{
    QFETCH(double, number);
    QTEST(toInteger(number), "expected");
    for (const double tooLarge : {1e19, -1e19, qInf(), qQNaN()})
        QVERIFY_EXCEPTION_THROWN(toInteger(tooLarge), Error);
}

void tst_StaticRecordset::noRows()
{
    ListRecordset none({QStringLiteral("A")}, {});
    StaticRecordset set(none);
    QCOMPARE(set.recordCount(), 0);
    QVERIFY(set.eof());
    set.setFilter(QStringLiteral("[A]='x'"));
    QVERIFY(set.eof());
}

QTEST_GUILESS_MAIN(tst_StaticRecordset)
#include "tst_StaticRecordset.moc"
