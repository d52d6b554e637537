#include "access/Values.h"

#include "access/Bytes.h"
#include "base/DayNumbers.h"

#include <array>
#include <charconv>
#include <chrono>

namespace mdb {

namespace {

constexpr qint64 epochDaysOfYearOne = 719'162; ///< 0001-01-01 to 1970-01-01

template <typename Number>
void appendShortest(QByteArray &out, Number value)
{
    std::array<char, 32> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    out.append(buffer.data(), result.ptr - buffer.data());
}

void appendDigits(QByteArray &out, int value, int digits)
{
    std::array<char, 4> buffer{};
    for (int i = digits; i-- > 0; value /= 10)
        buffer[static_cast<size_t>(i)] = static_cast<char>('0' + value % 10);
    out.append(buffer.data(), digits);
}

/// A number written in digits only.
std::optional<qint64> wholeNumber(QByteArrayView digits)
{
    qint64 value = 0;
    const auto result = std::from_chars(digits.begin(), digits.end(), value);
    if (result.ec != std::errc() || result.ptr != digits.end() || value < 0)
        return std::nullopt;
    return value;
}

/// Puts the decimal point into digits and drops the trailing zeros after it.
QByteArray withPoint(QByteArray digits, int scale, bool negative)
{
    if (scale > 0) {
        if (digits.size() <= scale)
            digits.prepend(QByteArray(scale - digits.size() + 1, '0'));
        digits.insert(digits.size() - scale, '.');
        while (digits.endsWith('0'))
            digits.chop(1);
        if (digits.endsWith('.'))
            digits.chop(1);
    }
    if (negative && digits != "0")
        digits.prepend('-');
    return digits;
}

/// A whole number of 128 bits, the highest word first, with `scale` decimals.
QByteArray scaledText(std::array<quint32, 4> words, int scale, bool negative)
{
    constexpr quint64 groupSize = 1'000'000'000; // nine digits at a time
    QByteArray digits;
    while (words != std::array<quint32, 4>{}) {
        quint64 rest = 0;
        for (quint32 &word : words) {
            const quint64 value = rest << 32 | word;
            word = static_cast<quint32>(value / groupSize);
            rest = value % groupSize;
        }
        digits.prepend(QByteArray::number(rest).rightJustified(9, '0'));
    }
    qsizetype zeros = 0;
    while (zeros < digits.size() && digits[zeros] == '0')
        ++zeros;
    digits.remove(0, zeros);
    if (digits.isEmpty())
        digits = "0";
    return withPoint(digits, scale, negative);
}

} // namespace

std::optional<qint64> instantOfExtendedDate(QByteArrayView bytes)
{
    // Days and ticks as texts of 19 digits each, then the precision: "days:ticks:7".
    if (bytes.size() < 39 || bytes[19] != ':')
        return std::nullopt;
    const std::optional<qint64> days = wholeNumber(bytes.first(19));
    const std::optional<qint64> ticks = wholeNumber(bytes.sliced(20, 19));
    if (!days || !ticks || *days > 3'652'058 || *ticks >= 864'000'000'000)
        return std::nullopt;
    return (*days - epochDaysOfYearOne) * millisecondsPerDay + (*ticks + 5'000) / 10'000;
}

QString unicodeText(QByteArrayView bytes)
{
    QString text(bytes.size() / 2, Qt::Uninitialized);
    for (qsizetype i = 0; i < text.size(); ++i)
        text[i] = QChar(load<quint16>(bytes.data() + 2 * i));
    return text;
}

std::optional<QString> jet4Text(QByteArrayView bytes)
{
    if (!bytes.startsWith("\xFF\xFE")) {
        if (bytes.size() % 2 != 0)
            return std::nullopt;
        return unicodeText(bytes);
    }
    QString text;
    text.reserve(bytes.size());
    bool compressed = true;
    for (qsizetype i = 2; i < bytes.size();) {
        if (bytes[i] == 0) {
            compressed = !compressed;
            ++i;
        } else if (compressed) {
            text += QChar(static_cast<char16_t>(static_cast<quint8>(bytes[i++])));
        } else {
            if (i + 1 == bytes.size())
                return std::nullopt;
            text += QChar(load<quint16>(bytes.data() + i));
            i += 2;
        }
    }
    return text;
}

QByteArray decimalText(qint64 mantissa, int scale)
{
    const bool negative = mantissa < 0;
    const quint64 size =
        negative ? 0 - static_cast<quint64>(mantissa) : static_cast<quint64>(mantissa);
    return withPoint(QByteArray::number(size), scale, negative);
}

QByteArray numericText(QByteArrayView bytes, int scale)
{
    std::array<quint32, 4> words;
    for (qsizetype i = 0; i < 4; ++i)
        words[static_cast<size_t>(i)] = load<quint32>(bytes.data() + 1 + 4 * i);
    return scaledText(words, scale, bytes[0] != 0);
}

std::optional<QByteArray> calculatedNumericText(QByteArrayView bytes)
{
    constexpr int header = 4;
    constexpr int maxScale = 28;
    if (bytes.size() < header + 4)
        return std::nullopt;
    const int following = load<quint16>(bytes.data());
    const qsizetype whole = following == 0 ? bytes.size() : following + 2;
    const qsizetype size = (whole - header) / 4 * 4; // further bytes have no meaning
    const int scale = static_cast<quint8>(bytes[2]);
    if (whole > bytes.size() || size < 4 || size > 16 || scale > maxScale)
        return std::nullopt;
    // Numbers of 64 bits, the highest first; where that leaves 32 bits over, they come before.
    std::array<quint32, 4> words{};
    const char *at = bytes.data() + header;
    auto word = words.size() - static_cast<size_t>(size) / 4;
    if (word % 2 != 0) {
        words[word++] = load<quint32>(at);
        at += 4;
    }
    for (; word < words.size(); word += 2, at += 8) {
        words[word] = load<quint32>(at + 4);
        words[word + 1] = load<quint32>(at);
    }
    return scaledText(words, scale, bytes[3] != 0);
}

QByteArray guidText(QByteArrayView bytes)
{
    // The first three groups are numbers and stand low byte first.
    constexpr std::array<int, 16> order = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
    QByteArray text = "{";
    for (size_t i = 0; i < order.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            text += '-';
        text += bytes.sliced(order[i], 1).toByteArray().toHex().toUpper();
    }
    return text + '}';
}

void appendInstant(QByteArray &out, qint64 instant)
{
    using namespace std::chrono;
    const sys_time<milliseconds> time{milliseconds(instant)};
    const auto day = floor<days>(time);
    const year_month_day date(day);
    const hh_mm_ss clock(time - day);
    appendDigits(out, static_cast<int>(date.year()), 4);
    out += '-';
    appendDigits(out, static_cast<int>(static_cast<unsigned>(date.month())), 2);
    out += '-';
    appendDigits(out, static_cast<int>(static_cast<unsigned>(date.day())), 2);
    out += 'T';
    appendDigits(out, static_cast<int>(clock.hours().count()), 2);
    out += ':';
    appendDigits(out, static_cast<int>(clock.minutes().count()), 2);
    out += ':';
    appendDigits(out, static_cast<int>(clock.seconds().count()), 2);
    const auto milli = static_cast<int>(clock.subseconds().count());
    if (milli != 0) {
        out += '.';
        appendDigits(out, milli, 3);
    }
}

void appendNumber(QByteArray &out, double value)
{
    appendShortest(out, value);
}

void appendNumber(QByteArray &out, float value)
{
    appendShortest(out, value);
}

void appendNumber(QByteArray &out, qint64 value)
{
    appendShortest(out, value);
}

} // namespace mdb
