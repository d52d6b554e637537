#include "base/Numbers.h"
#include "support/Errors.h"

#include <QTest>

#include <cmath>

class TestNumbers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void leading()
    {
        for (const auto &[text, number] :
             {std::pair("", 0.0), {"abc", 0},     {"  12abc", 12}, {"-3.5x", -3.5}, {"+7", 7},
              {".5", 0.5},        {"5.", 5},      {".", 0},        {"-", 0},        {"--1", 0},
              {"-.e5", 0},        {"1e3", 1000},  {"1e", 1},       {"1e+x", 1},     {"2E-2;", 0.02},
              {"1,5", 1},         {"1.2.3", 1.2}, {"0x10", 0},     {"inf", 0},      {"nan", 0}})
            QVERIFY2(leadingNumber(QString(text)) == number, text);
    }
    void integersRoundToEven()
    {
        for (const auto &[text, number] : {std::pair("0.5", 0),
                                           {"1.5", 2},
                                           {"2.5", 2},
                                           {"2.500001", 3},
                                           {"-0.5", 0},
                                           {"-1.5", -2},
                                           {"2147483647.4", 2147483647},
                                           {"-2147483648.5", -2147483647 - 1}})
            QCOMPARE(leadingInteger(QString(text)), number);
    }

    void integersOverflow()
    {
        for (const char *text : {"2147483647.5", "-2147483649", "1e400", "99999999999999999999"})
            QCOMPARE(errorOf([&] { leadingInteger(QString(text)); }).number, int(Overflow));
        for (const double value : {double(NAN), -double(INFINITY)})
            QCOMPARE(errorOf([&] { roundToInteger(value); }).number, int(Overflow));
    }

    void texts()
    {
        QCOMPARE(plainNumber(0.1), "0.1");
        QCOMPARE(plainNumber(1e-7), "0.0000001");
        QCOMPARE(plainNumber(1.0 / 3), "0.3333333333333333");
        QCOMPARE(trimmedNumber(12.50, 4), "12.5");
        QCOMPARE(trimmedNumber(100, 0), "100");
        QCOMPARE(trimmedNumber(-0.00001, 4), "0");
        QCOMPARE(trimmedNumber(372463341316.0925, 6), "372463341316.0925");
        QCOMPARE(trimmedNumber(9123456789.1234567, 6), "9123456789.123457");
        QCOMPARE(groupedNumber(1234567.891, 2), "1,234,567.89");
        QCOMPARE(groupedNumber(-123456, 1), "-123,456.0");
        QCOMPARE(groupedNumber(-0.04, 1), "0.0");
        QCOMPARE(fixedNumber(78.125, 2), "78.12");
        QCOMPARE(fixedNumber(78.375, 2), "78.38");
        QCOMPARE(fixedNumber(-0.001, 2), "0.00");
    }
};

QTEST_GUILESS_MAIN(TestNumbers)
#include "tst_Numbers.moc"
