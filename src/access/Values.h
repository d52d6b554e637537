#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace mdb {

/// Stored bytes to values, and values to text. Pure functions. Where a comment states a length, the
/// caller has checked it.

/// The instant of a DateTimeExtended value; `ticks` of 100 ns below the millisecond are rounded.
std::optional<qint64> instantOfExtendedDate(QByteArrayView bytes);

/// Text of Jet 4: two bytes a character, or after the mark FF FE one byte a character, where a
/// zero byte switches to two and back. Null when a character is cut in half.
std::optional<QString> jet4Text(QByteArrayView bytes);

/// Two bytes a character, without a mark. An odd last byte is dropped.
QString unicodeText(QByteArrayView bytes);

/// Whole number `mantissa` with `scale` decimals, trailing zeros of the fraction removed.
QByteArray decimalText(qint64 mantissa, int scale);

/// A Numeric value (17 bytes: sign, then four words of 32 bits, the highest first).
QByteArray numericText(QByteArrayView bytes, int scale);

/// The Numeric of a calculated column: how many bytes follow (16 bits; 0: all), scale, sign, then a
/// whole number of 4 to 16 bytes. Null when it does not have that form.
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
