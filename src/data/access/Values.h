#pragma once

#include "data/access/AccessFile.h"

#include <QByteArrayView>

#include <cmath>
#include <optional>

namespace mdb {

/// Stored bytes to values and values to text. Pure functions. The numbers are little-endian; the
/// lengths of the bytes have been checked by the caller where a comment says so.

inline constexpr qint64 millisecondsPerDay = 86'400'000;
inline constexpr qint64 epochDays = 25'569;    ///< 1899-12-30 to 1970-01-01
inline constexpr double firstDay = -657'434;   ///< 0100-01-01
inline constexpr double endOfDays = 2'958'466; ///< the day after 9999-12-31

/// Milliseconds since 1970-01-01 of a stored date: days since 1899-12-30 whose fraction counts
/// forward in negative numbers too. Rounded; nothing outside of the years 100 to 9999.
inline std::optional<qint64> instantOfDays(double days)
{
    if (!(days > firstDay - 1 && days < endOfDays))
        return std::nullopt;
    if (days < 0)
        days = 2 * std::trunc(days) - days;
    // Counted from a day before all others, so that cutting off the fraction rounds.
    constexpr qint64 before = 700'000 * millisecondsPerDay;
    return static_cast<qint64>(days * millisecondsPerDay + (before + 0.5)) - before -
           epochDays * millisecondsPerDay;
}

/// The instant of a DateTimeExtended value; `ticks` of 100 ns below the millisecond are rounded.
std::optional<qint64> instantOfExtendedDate(QByteArrayView bytes);

/// Text of Jet 4: two bytes a character, or after the mark FF FE one byte a character, where a
/// zero byte switches to two and back. Nothing when a character is cut in half.
std::optional<QString> jet4Text(QByteArrayView bytes);

/// Two bytes a character, without a mark. An odd last byte is dropped.
QString unicodeText(QByteArrayView bytes);

/// Text in a Windows code page. Nothing for one that is not known.
std::optional<QString> codePageText(QByteArrayView bytes, int codePage);

/// Whole number `mantissa` with `scale` decimals, trailing zeros of the fraction removed.
QByteArray decimalText(qint64 mantissa, int scale);

/// A Numeric value (17 bytes: sign, then four words of 32 bits, the highest first).
QByteArray numericText(QByteArrayView bytes, int scale);

/// The Numeric of a calculated column: how many bytes follow (16 bits; 0: all), scale, sign, then a
/// whole number of 4 to 16 bytes. Nothing when it is not of that form.
std::optional<QByteArray> calculatedNumericText(QByteArrayView bytes);

/// "{00112233-4455-6677-8899-AABBCCDDEEFF}" (16 bytes).
QByteArray guidText(QByteArrayView bytes);

/// Appends "2024-03-01T07:05:09", with ".zzz" when the milliseconds are not zero. The year has four
/// digits.
void appendInstant(QByteArray &out, qint64 instant);

/// Appends the shortest text that reads back as the same number of the same type.
void appendNumber(QByteArray &out, double value);
void appendNumber(QByteArray &out, float value);
void appendNumber(QByteArray &out, qint64 value);

} // namespace mdb
