#include "base/NaturalOrder.h"

#include <algorithm>

namespace {

constexpr qsizetype maxDigits = 0x2000; ///< longer numbers are split

bool isAscii(const QString &text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x80; });
}

/// Letters with a stroke, which Unicode does not decompose.
QChar withoutStroke(QChar letter)
{
    switch (letter.unicode()) {
    case u'ł':
        return u'l';
    case u'ø':
        return u'o';
    case u'đ':
        return u'd';
    case u'ħ':
        return u'h';
    case u'ŧ':
        return u't';
    default:
        return letter;
    }
}

} // namespace

QString foldedText(const QString &text)
{
    if (isAscii(text))
        return text.toLower();
    QString folded = text.toCaseFolded().normalized(QString::NormalizationForm_KD);
    folded.removeIf([](QChar c) { return c.category() == QChar::Mark_NonSpacing; });
    std::transform(folded.begin(), folded.end(), folded.begin(), withoutStroke);
    return folded.replace(u'ß', QLatin1String("ss"));
}

QString naturalKey(const QString &text)
{
    const QString folded = foldedText(text);
    const auto isDigit = [](QChar c) { return c >= u'0' && c <= u'9'; };
    QString key;
    key.reserve(folded.size() + 4);
    for (qsizetype i = 0; i < folded.size();) {
        if (!isDigit(folded[i])) {
            key += folded[i++];
            continue;
        }
        while (i + 1 < folded.size() && folded[i] == u'0' && isDigit(folded[i + 1]))
            ++i;
        qsizetype end = i;
        while (end < folded.size() && end - i < maxDigits && isDigit(folded[end]))
            ++end;
        // The number's length before its digits, as longer numbers are greater. The length starts
        // with a digit too, so that numbers sort among other characters as before.
        const qsizetype length = end - i;
        if (length < 9)
            key += QChar(static_cast<char16_t>(u'0' + length));
        else
            key += QLatin1Char('9') + QChar(static_cast<char16_t>(length));
        key += QStringView(folded).mid(i, length);
        i = end;
    }
    return key;
}
