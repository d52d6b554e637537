#include "base/Numbers.h"

#include "base/Error.h"

#include <QLocale>

#include <algorithm>
#include <cmath>
#include <limits>

double leadingNumber(QStringView text)
{
    qsizetype at = 0;
    const auto digitsFrom = [&](qsizetype from) {
        while (from < text.size() && text[from] >= u'0' && text[from] <= u'9')
            ++from;
        return from;
    };
    while (at < text.size() && text[at].isSpace())
        ++at;
    const qsizetype start = at;
    if (at < text.size() && (text[at] == u'-' || text[at] == u'+'))
        ++at;
    qsizetype end = digitsFrom(at);
    qsizetype digits = end - at;
    if (end < text.size() && text[end] == u'.') {
        const qsizetype fraction = digitsFrom(end + 1);
        digits += fraction - end - 1;
        end = fraction;
    }
    if (digits == 0)
        return 0;
    if (end < text.size() && (text[end] == u'e' || text[end] == u'E')) {
        qsizetype exponent = end + 1;
        if (exponent < text.size() && (text[exponent] == u'-' || text[exponent] == u'+'))
            ++exponent;
        if (const qsizetype after = digitsFrom(exponent); after > exponent)
            end = after;
    }
    return text.mid(start, end - start).toDouble();
}

qint32 leadingInteger(QStringView text)
{
    return roundToInteger(leadingNumber(text));
}

qint32 roundToInteger(double value)
{
    const double rounded = std::nearbyint(value);
    if (!(rounded >= std::numeric_limits<qint32>::min() &&
          rounded <= std::numeric_limits<qint32>::max()))
        throw Error(Overflow, QStringLiteral("Overflow: %1 is not a 32-bit integer").arg(value));
    return static_cast<qint32>(rounded);
}

/// Plain decimals; never a zero with a minus sign.
static QString decimalText(double value, int decimals)
{
    QString text = QString::number(value, 'f', decimals);
    const auto isZero = [](QChar character) { return character == u'0' || character == u'.'; };
    if (text.startsWith(u'-') && std::all_of(text.cbegin() + 1, text.cend(), isZero))
        text.remove(0, 1);
    return text;
}

QString plainNumber(double value)
{
    return QString::number(value, 'f', QLocale::FloatingPointShortest);
}

/// Whether a value is so large that a double has no more than that many decimals: further digits
/// would only show its binary form.
static bool isBeyond(double value, int decimals)
{
    return std::abs(value) * std::pow(10, decimals) >= 9e15;
}

QString trimmedNumber(double value, int maxDecimals)
{
    if (isBeyond(value, maxDecimals)) {
        const QString shortest = plainNumber(value);
        const qsizetype point = shortest.indexOf(u'.');
        if (point < 0 || shortest.size() - point - 1 <= maxDecimals)
            return shortest;
    }
    QString text = decimalText(value, maxDecimals);
    if (maxDecimals > 0) {
        while (text.endsWith(u'0'))
            text.chop(1);
        if (text.endsWith(u'.'))
            text.chop(1);
    }
    return text;
}

QString fixedNumber(double value, int decimals)
{
    const double shift = std::pow(10, decimals);
    return decimalText(isBeyond(value, decimals) ? value : std::nearbyint(value * shift) / shift,
                       decimals);
}

QString groupedNumber(double value, int decimals)
{
    QString text = decimalText(value, decimals);
    const qsizetype first = text.startsWith(u'-') ? 1 : 0;
    const qsizetype point = text.indexOf(u'.');
    for (qsizetype at = (point < 0 ? text.size() : point) - 3; at > first; at -= 3)
        text.insert(at, u',');
    return text;
}
