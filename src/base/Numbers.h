#pragma once

#include <QString>

/// Numbers as the definition and configuration files write them: C locale, read leniently.
/// Pure functions, safe on any thread.

/// The leading numeric part of a text: blanks, sign, digits, point, exponent; 0 when there is none.
double leadingNumber(QStringView text);

/// `leadingNumber` rounded to the nearest integer, halves to the even one.
/// Throws Error(Overflow) when the result does not fit 32 bits.
qint32 leadingInteger(QStringView text);

/// Rounds to the nearest integer, halves to the even one. Throws Error(Overflow) outside 32 bits.
qint32 roundToInteger(double value);

/// The shortest plain decimal text (never an exponent) that reads back as the same value.
QString plainNumber(double value);

/// A fixed number of decimals with trailing zeros (and a trailing point) removed: 12.5, 3, 0.0004.
QString trimmedNumber(double value, int maxDecimals);

/// A fixed number of decimals, halves rounded to even.
QString fixedNumber(double value, int decimals);

/// Digits grouped by commas in threes: 1,234,567. `decimals` are kept as they are.
QString groupedNumber(double value, int decimals);
