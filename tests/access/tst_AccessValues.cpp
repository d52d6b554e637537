#include "access/Values.h"
#include "base/CodePages.h"
#include "base/DayNumbers.h"
#include "support/Rows.h"

#include <limits>

using namespace mdb;

namespace {

QByteArray hex(const QByteArray &digits)
{
    return QByteArray::fromHex(digits);
}

} // namespace

class tst_AccessValues : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textOfJet4_data()
    {
        const Rows<QByteArray, QString> row("digits", "text");
        row("empty", "", "");
        row("two bytes a character", "41007C01", "A\u017C");
        row("compressed", "FFFE41E9", "A\u00E9");
        row("compressed, empty", "FFFE", "");
        row("and back", "FFFE41007C010042", "A\u017CB");
        row("Latin among two bytes", "FFFE007C0142007D01", "\u017CB\u017D");
        row("surrogates", "3DD800DE", "\U0001F600");
        row("cut within a character", "41007C", "none");
        row("compressed, cut within a character", "FFFE41007C", "none");
    }
    void textOfJet4()
    {
        QFETCH(QByteArray, digits);
        QTEST(jet4Text(hex(digits)).value_or("none"), "text");
    }

    void textInCodePages_data()
    {
        const Rows<int, QByteArray, QString> row("codePage", "digits", "text");
        row("1250", 1250, "418AB3FF", "A\u0160\u0142\u02D9");
        row("1251", 1251, "80C0FF", "\u0402\u0410\u044F");
        row("1252", 1252, "7F8099E4FF", "\u007F\u20AC\u2122\u00E4\u00FF");
        row("1254", 1254, "D0FDFE", "\u011E\u0131\u015F");
        row("1256", 1256, "81C7FF", "\u067E\u0627\u06D2");
        row("1258", 1258, "CCFEFF", "\u0300\u20AB\u00FF");
        row("no character", 1252, "81", "\u0081");
        row("unknown code page", 4711, "41", "none");
    }
    void textInCodePages()
    {
        QFETCH(int, codePage);
        QFETCH(QByteArray, digits);
        QTEST(codePageText(hex(digits), codePage).value_or("none"), "text");
    }

    void dates_data()
    {
        const Rows<double, QByteArray> row("days", "text");
        row("1970", 25569, "1970-01-01T00:00:00");
        row("today", 45352.295243055552, "2024-03-01T07:05:09");
        row("a millisecond", 45352.29524306713, "2024-03-01T07:05:09.001");
        row("rounds down", 45352.000000001, "2024-03-01T00:00:00");
        row("fractions of negative days count forward", -1.25, "1899-12-29T06:00:00");
        row("first", -657434, "0100-01-01T00:00:00");
        row("last", 2958465.5, "9999-12-31T12:00:00");
        row("before the year 100", -657435, "");
        row("after 9999", 2958466, "");
        row("endless", std::numeric_limits<double>::infinity(), "");
        row("no number", std::numeric_limits<double>::quiet_NaN(), "");
    }
    void dates()
    {
        QFETCH(double, days);
        QByteArray text;
        if (const std::optional<qint64> instant = instantOfAccessDate(days))
            appendInstant(text, *instant);
        QTEST(text, "text");
    }

    void extendedDates_data()
    {
        const Rows<QByteArray, qint64> row("bytes", "instant");
        const QByteArray day = "0000000000000738945"; // 2024-03-01 counted from the year 1
        row("midnight", day + ":0000000000000000000:7", 1'709'251'200'000);
        row("ticks", day + ":0000000000000015000:7", 1'709'251'200'002);
        row("more ticks than a day", day + ":0000000864000000000:7", -1);
        row("cut short", day, -1);
    }
    void extendedDates()
    {
        QFETCH(QByteArray, bytes);
        QTEST(instantOfExtendedDate(bytes).value_or(-1), "instant");
    }

    void decimals_data()
    {
        const Rows<qint64, QByteArray> row("mantissa", "text");
        row("zero", 0, "0");
        row("whole", 120'000, "12");
        row("zeros dropped", 125'000, "12.5");
        row("most", std::numeric_limits<qint64>::max(), "922337203685477.5807");
    }
    void decimals()
    {
        QFETCH(qint64, mantissa);
        QTEST(decimalText(mantissa, 4), "text");
    }

    void numerics_data()
    {
        const Rows<QByteArray, int, QByteArray> row("digits", "scale", "text");
        row("minus zero", "8000000000000000000000000000000000", 2, "0");
        row("lowest word", "00000000000000000000000000D2040000", 2, "12.34");
        row("negative", "80000000000000000000000000D2040000", 4, "-0.1234");
        row("zeros between", "0000000000000000008291634507CA8E80", 0, "5000000001000000007");
    }
    void numerics()
    {
        QFETCH(QByteArray, digits);
        QFETCH(int, scale);
        QTEST(numericText(hex(digits), scale), "text");
    }

    void calculatedNumerics_data()
    {
        const Rows<QByteArray, QByteArray> row("digits", "text");
        row("12 bytes", "0E00028000000000D204000000000000", "-12.34");
        row("all words", "1200000004000000030000000200000001000000",
            "237684487616579989079765024770");
        row("no length", "00000100D204000000000000", "123.4");
        row("most bytes and scale", "12001C0000000000000000000100000000000000",
            "0.0000000000000000000000000001");
        row("longer than it is", "0E00000001000000", "none");
        row("scale", "06001D0001000000", "none");
    }
    void calculatedNumerics()
    {
        QFETCH(QByteArray, digits);
        QTEST(calculatedNumericText(hex(digits)).value_or("none"), "text");
    }
};

QTEST_APPLESS_MAIN(tst_AccessValues)
#include "tst_AccessValues.moc"
