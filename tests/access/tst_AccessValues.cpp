#include "core/Error.h"
#include "data/access/Values.h"

#include <QTest>

#include <cmath>
#include <limits>

using namespace mdb;

namespace {

QByteArray hex(const char *digits)
{
    return QByteArray::fromHex(digits);
}

} // namespace

class tst_AccessValues : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textOfJet4_data();
    void textOfJet4();
    void textCutWithinACharacterIsNone_data();
    void textCutWithinACharacterIsNone();
    void textInCodePages_data();
    void textInCodePages();
    void unknownCodePageIsAnError();
    void dates_data();
    void dates();
    void daysThatAreNoDates_data();
    void daysThatAreNoDates();
    void extendedDates_data();
    void extendedDates();
    void decimals_data();
    void decimals();
    void numerics_data();
    void numerics();
    void guid();
    void numbersReadBackTheSame_data();
    void numbersReadBackTheSame();
};

void tst_AccessValues::textOfJet4_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");

    QTest::newRow("empty") << QByteArray() << QString();
    QTest::newRow("two bytes a character") << hex("41007C01") << QStringLiteral("A\u017C");
    QTest::newRow("compressed") << hex("FFFE41E9") << QStringLiteral("A\u00E9");
    QTest::newRow("compressed, empty") << hex("FFFE") << QString();
    QTest::newRow("to two bytes") << hex("FFFE41007C01") << QStringLiteral("A\u017C");
    QTest::newRow("and back") << hex("FFFE41007C010042") << QStringLiteral("A\u017CB");
    QTest::newRow("two bytes first")
        << hex("FFFE007C01AC200041") << QStringLiteral("\u017C\u20ACA");
    QTest::newRow("Latin among two bytes")
        << hex("FFFE007C0142007D01") << QStringLiteral("\u017CB\u017D");
    QTest::newRow("surrogates") << hex("3DD800DE") << QStringLiteral("\U0001F600");
}

void tst_AccessValues::textOfJet4()
{
    QFETCH(QByteArray, bytes);
    QTEST(jet4Text(bytes).value_or(QStringLiteral("none")), "text");
}

void tst_AccessValues::textCutWithinACharacterIsNone_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("two bytes a character") << hex("41007C");
    QTest::newRow("compressed") << hex("FFFE41007C");
}

void tst_AccessValues::textCutWithinACharacterIsNone()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(!jet4Text(bytes));
}

void tst_AccessValues::textInCodePages_data()
{
    QTest::addColumn<int>("codePage");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");

    QTest::newRow("874") << 874 << hex("80A1DBDFFB")
                         << QStringLiteral("\u20AC\u0E01\u00DB\u0E3F\u0E5B");
    QTest::newRow("1250") << 1250 << hex("418AB3FF") << QStringLiteral("A\u0160\u0142\u02D9");
    QTest::newRow("1251") << 1251 << hex("80C0FF") << QStringLiteral("\u0402\u0410\u044F");
    QTest::newRow("1252") << 1252 << hex("7F8099E4FF")
                          << QStringLiteral("\u007F\u20AC\u2122\u00E4\u00FF");
    QTest::newRow("1253") << 1253 << hex("A1C1FE") << QStringLiteral("\u0385\u0391\u03CE");
    QTest::newRow("1254") << 1254 << hex("D0FDFE") << QStringLiteral("\u011E\u0131\u015F");
    QTest::newRow("1255") << 1255 << hex("A4E0FA") << QStringLiteral("\u20AA\u05D0\u05EA");
    QTest::newRow("1256") << 1256 << hex("81C7FF") << QStringLiteral("\u067E\u0627\u06D2");
    QTest::newRow("1257") << 1257 << hex("8DC0FF") << QStringLiteral("\u00A8\u0104\u02D9");
    QTest::newRow("1258") << 1258 << hex("CCFEFF") << QStringLiteral("\u0300\u20AB\u00FF");
    QTest::newRow("no character") << 1252 << hex("81") << QStringLiteral("\u0081");
}

void tst_AccessValues::textInCodePages()
{
    QFETCH(int, codePage);
    QFETCH(QByteArray, bytes);
    QTEST(codePageText(bytes, codePage), "text");
}

void tst_AccessValues::unknownCodePageIsAnError()
{
    QVERIFY_EXCEPTION_THROWN(codePageText("a", 4711), Error);
}

void tst_AccessValues::dates_data()
{
    QTest::addColumn<double>("days");
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("day 0") << 0.0 << QByteArray("1899-12-30T00:00:00");
    QTest::newRow("1970") << 25569.0 << QByteArray("1970-01-01T00:00:00");
    QTest::newRow("today") << 45352.295243055552 << QByteArray("2024-03-01T07:05:09");
    QTest::newRow("a millisecond") << 45352.29524306713 << QByteArray("2024-03-01T07:05:09.001");
    QTest::newRow("rounds up") << 45351.999999999 << QByteArray("2024-03-01T00:00:00");
    QTest::newRow("rounds down") << 45352.000000001 << QByteArray("2024-03-01T00:00:00");
    QTest::newRow("fractions of negative days count forward")
        << -1.25 << QByteArray("1899-12-29T06:00:00");
    QTest::newRow("less than a day below 0") << -0.75 << QByteArray("1899-12-30T18:00:00");
    QTest::newRow("first") << -657434.0 << QByteArray("0100-01-01T00:00:00");
    QTest::newRow("end of the first day") << -657434.5 << QByteArray("0100-01-01T12:00:00");
    QTest::newRow("last") << 2958465.5 << QByteArray("9999-12-31T12:00:00");
}

void tst_AccessValues::dates()
{
    QFETCH(double, days);
    QVERIFY(instantOfDays(days));
    QByteArray text;
    appendInstant(text, *instantOfDays(days));
    QTEST(text, "text");
}

void tst_AccessValues::daysThatAreNoDates_data()
{
    QTest::addColumn<double>("days");
    QTest::newRow("before the year 100") << -657435.0;
    QTest::newRow("after 9999") << 2958466.0;
    QTest::newRow("endless") << std::numeric_limits<double>::infinity();
    QTest::newRow("no number") << std::numeric_limits<double>::quiet_NaN();
}

void tst_AccessValues::daysThatAreNoDates()
{
    QFETCH(double, days);
    QVERIFY(!instantOfDays(days));
}

void tst_AccessValues::extendedDates_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("isDate");
    QTest::addColumn<qint64>("instant");

    const QByteArray day = "0000000000000738945"; // 2024-03-01 counted from the year 1
    QTest::newRow("midnight") << day + ":0000000000000000000:7" << true
                              << qint64(1'709'251'200'000);
    QTest::newRow("ticks") << day + ":0000000000000015000:7" << true << qint64(1'709'251'200'002);
    QTest::newRow("more ticks than a day") << day + ":0000000864000000000:7" << false << qint64(0);
    QTest::newRow("letters") << day + ":000000000000000000x:7" << false << qint64(0);
    QTest::newRow("cut short") << day << false << qint64(0);
}

void tst_AccessValues::extendedDates()
{
    QFETCH(QByteArray, bytes);
    const std::optional<qint64> instant = instantOfExtendedDate(bytes);
    QTEST(instant.has_value(), "isDate");
    QTEST(instant.value_or(0), "instant");
}

void tst_AccessValues::decimals_data()
{
    QTest::addColumn<qint64>("mantissa");
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("zero") << qint64(0) << QByteArray("0");
    QTest::newRow("whole") << qint64(120'000) << QByteArray("12");
    QTest::newRow("zeros dropped") << qint64(125'000) << QByteArray("12.5");
    QTest::newRow("small") << qint64(-1) << QByteArray("-0.0001");
    QTest::newRow("most") << std::numeric_limits<qint64>::max()
                          << QByteArray("922337203685477.5807");
    QTest::newRow("least") << std::numeric_limits<qint64>::min()
                           << QByteArray("-922337203685477.5808");
}

void tst_AccessValues::decimals()
{
    QFETCH(qint64, mantissa);
    QTEST(decimalText(mantissa, 4), "text");
}

void tst_AccessValues::numerics_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("scale");
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("zero") << hex("0000000000000000000000000000000000") << 2 << QByteArray("0");
    QTest::newRow("minus zero") << hex("8000000000000000000000000000000000") << 2
                                << QByteArray("0");
    QTest::newRow("lowest word") << hex("00000000000000000000000000D2040000") << 2
                                 << QByteArray("12.34");
    QTest::newRow("negative") << hex("80000000000000000000000000D2040000") << 4
                              << QByteArray("-0.1234");
    QTest::newRow("two words") << hex("0000000000000000000100000000000000") << 0
                               << QByteArray("4294967296");
    QTest::newRow("zeros between")
        << hex("0000000000000000008291634507CA8E80") << 0 << QByteArray("5000000001000000007");
    QTest::newRow("28 digits") << hex("00000000005ECE4F206102253EFFFFFF0F") << 10
                               << QByteArray("999999999999999999.9999999999");
}

void tst_AccessValues::numerics()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, scale);
    QTEST(numericText(bytes, scale), "text");
}

void tst_AccessValues::guid()
{
    QCOMPARE(guidText(hex("33221100554477668899AABBCCDDEEFF")),
             QByteArray("{00112233-4455-6677-8899-AABBCCDDEEFF}"));
}

void tst_AccessValues::numbersReadBackTheSame_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QByteArray>("asDouble");
    QTest::addColumn<QByteArray>("asSingle");

    QTest::newRow("zero") << 0.0 << QByteArray("0") << QByteArray("0");
    QTest::newRow("a tenth") << 0.1 << QByteArray("0.1") << QByteArray("0.1");
    QTest::newRow("a third") << 1.0 / 3 << QByteArray("0.3333333333333333")
                             << QByteArray("0.33333334");
    QTest::newRow("large") << 1e300 << QByteArray("1e+300") << QByteArray("inf");
    QTest::newRow("negative") << -12.5 << QByteArray("-12.5") << QByteArray("-12.5");
}

void tst_AccessValues::numbersReadBackTheSame()
{
    QFETCH(double, value);
    QByteArray asDouble;
    appendNumber(asDouble, value);
    QTEST(asDouble, "asDouble");
    QByteArray asSingle;
    appendNumber(asSingle, static_cast<float>(value));
    QTEST(asSingle, "asSingle");
}

QTEST_APPLESS_MAIN(tst_AccessValues)
#include "tst_AccessValues.moc"
