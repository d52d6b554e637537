#include "core/Error.h"
#include "core/Numbers.h"

#include <QTest>

#include <cmath>

class TestNumbers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void leading_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("number");
        const auto row = [](const char *text, double number) {
            QTest::newRow(text) << QString::fromLatin1(text) << number;
        };
        row("", 0);
        row("abc", 0);
        row("12", 12);
        row("  12abc", 12);
        row("-3.5x", -3.5);
        row("+7", 7);
        row(".5", 0.5);
        row("5.", 5);
        row(".", 0);
        row("-", 0);
        row("-.e5", 0);
        row("1e3", 1000);
        row("1e", 1);
        row("1e+x", 1);
        row("2E-2;", 0.02);
        row("1,5", 1);
        row("1.2.3", 1.2);
        row("--1", 0);
        row("0x10", 0);
        row("inf", 0);
        row("nan", 0);
    }
    void leading()
    {
        QFETCH(QString, text);
        QTEST(leadingNumber(text), "number");
    }

    void integers_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("fits");
        QTest::addColumn<qint32>("number");
        const auto row = [](const char *text, bool fits, qint32 number) {
            QTest::newRow(text) << QString::fromLatin1(text) << fits << number;
        };
        row("0.5", true, 0);
        row("1.5", true, 2);
        row("2.5", true, 2);
        row("-0.5", true, 0);
        row("-1.5", true, -2);
        row("2.500001", true, 3);
        row("2147483647", true, 2147483647);
        row("2147483647.4", true, 2147483647);
        row("2147483647.5", false, 0);
        row("2147483648", false, 0);
        row("-2147483648.5", true, -2147483647 - 1);
        row("-2147483649", false, 0);
        row("1e400", false, 0);
        row("99999999999999999999", false, 0);
    }
    void integers()
    {
        QFETCH(QString, text);
        QFETCH(bool, fits);
        if (fits) {
            QTEST(leadingInteger(text), "number");
            return;
        }
        try {
            leadingInteger(text);
            QFAIL("no error");
        } catch (const Error &error) {
            QCOMPARE(error.number, int(Overflow));
        }
    }

    void noNumberOverflows()
    {
        QVERIFY_EXCEPTION_THROWN(roundToInteger(std::nan("")), Error);
        QVERIFY_EXCEPTION_THROWN(roundToInteger(-INFINITY), Error);
    }

    void texts_data()
    {
        QTest::addColumn<QString>("actual");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const QString &actual, const char *expected) {
            QTest::newRow(name) << actual << QString::fromLatin1(expected);
        };
        row("plain 0.1", plainNumber(0.1), "0.1");
        row("plain 1e15", plainNumber(1e15), "1000000000000000");
        row("plain 1e-7", plainNumber(1e-7), "0.0000001");
        row("plain third", plainNumber(1.0 / 3), "0.3333333333333333");
        row("trimmed", trimmedNumber(12.50, 4), "12.5");
        row("trimmed whole", trimmedNumber(3, 2), "3");
        row("trimmed hundred", trimmedNumber(100, 0), "100");
        row("trimmed small", trimmedNumber(0.0004, 4), "0.0004");
        row("trimmed to nothing", trimmedNumber(-0.00001, 4), "0");
        row("grouped", groupedNumber(1234567, 0), "1,234,567");
        row("grouped decimals", groupedNumber(1234567.891, 2), "1,234,567.89");
        row("grouped three digits", groupedNumber(-123, 0), "-123");
        row("grouped six digits", groupedNumber(-123456, 1), "-123,456.0");
        row("grouped minus zero", groupedNumber(-0.04, 1), "0.0");
        row("fixed tie", fixedNumber(78.125, 2), "78.12");
        row("fixed tie to even", fixedNumber(78.375, 2), "78.38");
        row("fixed minus zero", fixedNumber(-0.001, 2), "0.00");
        row("fixed huge", fixedNumber(1e20, 2), "100000000000000000000.00");
        row("grouped below one", groupedNumber(0.1234567, 6), "0.123457");
    }
    void texts()
    {
        QFETCH(QString, actual);
        QTEST(actual, "expected");
    }
};

QTEST_GUILESS_MAIN(TestNumbers)
#include "tst_numbers.moc"
