#include "base/OneLine.h"

namespace {

bool steers(QChar character)
{
    const char16_t code = character.unicode();
    const bool turnsDirection = (code >= 0x202A && code <= 0x202E) || // embeddings, overrides
                                (code >= 0x2066 && code <= 0x2069);   // isolates
    const QChar::Category category = character.category();
    return turnsDirection || category == QChar::Other_Control ||
           category == QChar::Separator_Line || category == QChar::Separator_Paragraph;
}

} // namespace

QString oneLine(QString text)
{
    for (QChar &character : text) {
        if (steers(character))
            character = u' ';
    }
    return text;
}

QString printable(QString text)
{
    for (QChar &character : text) {
        if (steers(character) && character != u'\n' && character != u'\t')
            character = u' ';
    }
    return text;
}
