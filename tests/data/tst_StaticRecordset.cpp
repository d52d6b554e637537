#include "ListRecordset.h"
#include "support/Errors.h"
#include "support/Rows.h"

namespace {

StaticRecordset devices()
{
    const QVariant none;
    ListRecordset rows({"IDent", "MUID", "MachName", "Load"}, {{qint64(3), "a1", "Zürich", 0.5},
                                                               {qint64(4), "B2", "zÜRICH", 1e6},
                                                               {qint64(5), "03", "O'Brien's", none},
                                                               {qint64(3), "C3", none, 21.0}});
    return StaticRecordset(rows);
}

QString found(StaticRecordset &set)
{
    QStringList result;
    const int muid = set.column("muid");
    for (set.moveFirst(); !set.eof(); set.moveNext())
        result.append(set.text(muid));
    return result.join(u',');
}

} // namespace

class tst_StaticRecordset : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void filters_data()
    {
        const Rows<QString, QString> row("criterion", "expected");
        row.each({{"", "a1,B2,03,C3"}, {"[MUID]='A1'", "a1"}, {"[muid]='b2'", "B2"}});
        row.each({{"MUID='none'", ""}, {"[MachName]='ZÜrich'", "a1,B2"}, {"[MachName]=''", ""}});
        row.each(
            {{"[MachName]='O''Brien''s'", "03"}, {"[IDent]=3", "a1,C3"}, {"[IDent]='3'", "a1,C3"}});
        row.each({{"[IDent]='3.0'", "a1,C3"}, {"[IDent]='x'", ""}, {"[MUID]='3'", ""}});
        row.each({{"[Load]=0.5", "a1"}, {"[Load]=1000000", "B2"}, {"[Load]='1e6'", "B2"}});
        row.each({{"[Load]=21", "C3"}, {"[IDent]='3' and [MUID]='c3'", "C3"}});
        row.each({{" [IDent] = 3 AND [Load] = 21 ", "C3"}, {"[IDent]=3 and [MUID]='B2'", ""}});
    }
    void filters()
    {
        QFETCH(QString, criterion);
        QFETCH(QString, expected);
        StaticRecordset set = devices();
        set.setFilter("[MUID]='B2'");
        set.setFilter(criterion);
        QCOMPARE(set.recordCount(), expected.isEmpty() ? 0 : expected.count(u',') + 1);
        QCOMPARE(found(set), expected);
    }

    void refusedFilters_data()
    {
        const Rows<QString, int> row("criterion", "number");
        row.each({{"[Name]='x'", ItemNotFound}, {"[MUID]", DatabaseError}});
        row.each({{"[MUID='a1'", DatabaseError}, {"[MUID]=a1", DatabaseError}});
        row.each({{"[MUID]='a1", DatabaseError}, {"[MachName]='O'Brien'", DatabaseError}});
        row.each({{"[IDent]>3", DatabaseError}, {"[IDent]=3 or [IDent]=4", DatabaseError}});
        row.each({{"[IDent]=3 and", DatabaseError}});
    }
    void refusedFilters()
    {
        QFETCH(QString, criterion);
        StaticRecordset set = devices();
        QTEST(errorOf([&] { set.setFilter(criterion); }).number, "number");
    }

    void values()
    {
        StaticRecordset set = devices();
        set.setFilter("[IDent]=5");
        QCOMPARE(set.integer(0), qint64(5));
        QCOMPARE(set.text(0), "5");
        QCOMPARE(set.integer(1), qint64(3)); // "03"
        QVERIFY(set.isNull(3));
        QCOMPARE(set.number(3), 0.0);
        QCOMPARE(set.text(3), "");
        set.moveNext();
        set.moveNext();
        QCOMPARE(errorOf([&] { static_cast<void>(set.integer(0)); }).number, int(NoCurrentRecord));
        set.moveFirst();
        QCOMPARE(set.integer(0), qint64(5));
    }

    void integersAreRounded()
    {
        QCOMPARE(toInteger(2.5), qint64(2));
        QCOMPARE(toInteger(3.5), qint64(4));
        QCOMPARE(toInteger(-0.5), qint64(0));
        QCOMPARE(toInteger(1e15), qint64(1'000'000'000'000'000));
        for (const double tooLarge : {1e19, -1e19, qInf(), qQNaN()})
            QCOMPARE(errorOf([&] { toInteger(tooLarge); }).number, int(Overflow));
    }

    void noRows()
    {
        ListRecordset none({"A"}, {});
        StaticRecordset set(none);
        for (const char *criterion : {"", "[A]='x'"}) {
            set.setFilter(criterion);
            QCOMPARE(set.recordCount(), 0);
            QVERIFY(set.eof());
        }
    }
};

QTEST_GUILESS_MAIN(tst_StaticRecordset)
#include "tst_StaticRecordset.moc"
