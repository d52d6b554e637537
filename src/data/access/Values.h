#pragma once

#include "data/access/AccessFile.h"

#include <QByteArrayView>

#include <optional>

namespace mdb {

/// Stored bytes to values and values to text. Pure functions. The numbers are little-endian; the
/// lengths of the bytes have been checked by the caller where a comment says so.

/// Milliseconds since 1970-01-01 of a stored date: days since 1899-12-30 whose fraction counts
/// forward in negative numbers too. Rounded; nothing outside of the years 100 to 9999.
std::optional<qint64> instantOfDays(double days);

/// The instant of a DateTimeExtended value; `ticks` of 100 ns below the millisecond are rounded.
std::optional<qint64> instantOfExtendedDate(QByteArrayView bytes);

/// Text of Jet 4: two bytes a character, or after the mark FF FE one byte a character, where a
/// zero byte switches to two and back. Nothing when a character is cut in half.
std::optional<QString> jet4Text(QByteArrayView bytes);

/// Two bytes a character, without a mark. An odd last byte is dropped.
QString unicodeText(QByteArrayView bytes);

/// Text in a Windows code page. Throws Error(InvalidFileFormat) for one that is not known.
QString codePageText(QByteArrayView bytes, int codePage);

/// Whole number `mantissa` with `scale` decimals, trailing zeros of the fraction removed.
QByteArray decimalText(qint64 mantissa, int scale);

/// A Numeric value (17 bytes: sign, then four words of 32 bits, the highest first).
QByteArray numericText(QByteArrayView bytes, int scale);

/// "{00112233-4455-6677-8899-AABBCCDDEEFF}" (16 bytes).
QByteArray guidText(QByteArrayView bytes);

/// "2024-03-01T07:05:09", with ".zzz" when the milliseconds are not zero.
QByteArray instantText(qint64 instant);

/// The shortest text that reads back as the same number.
QByteArray numberText(double value);
QByteArray numberText(float value);

} // namespace mdb
