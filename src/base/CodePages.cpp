#include "base/CodePages.h"

#include <QStringDecoder>

namespace {

/// The upper half (80 to FF) of a Windows code page of one byte a character.
struct CodePage
{
    int number;
    const char16_t *upperHalf;
};

constexpr CodePage codePages[] = {
    {874, u"€\201\202\203\204…\206\207\210\211\212\213\214\215\216\217\220‘’“”•–—\230\231\232"
          u"\233\234\235\236\237\u00A0\u0E01\u0E02\u0E03\u0E04\u0E05\u0E06\u0E07\u0E08\u0E09"
          u"\u0E0A\u0E0B\u0E0C\u0E0D\u0E0E\u0E0F\u0E10\u0E11\u0E12\u0E13\u0E14\u0E15\u0E16\u0E17"
          u"\u0E18\u0E19\u0E1A\u0E1B\u0E1C\u0E1D\u0E1E\u0E1F\u0E20\u0E21\u0E22\u0E23\u0E24\u0E25"
          u"\u0E26\u0E27\u0E28\u0E29\u0E2A\u0E2B\u0E2C\u0E2D\u0E2E\u0E2F\u0E30\u0E31\u0E32\u0E33"
          u"\u0E34\u0E35\u0E36\u0E37\u0E38\u0E39\u0E3AÛÜÝÞ\u0E3F\u0E40\u0E41\u0E42\u0E43\u0E44"
          u"\u0E45\u0E46\u0E47\u0E48\u0E49\u0E4A\u0E4B\u0E4C\u0E4D\u0E4E\u0E4F\u0E50\u0E51\u0E52"
          u"\u0E53\u0E54\u0E55\u0E56\u0E57\u0E58\u0E59\u0E5A\u0E5Büýþÿ"},
    {1250, u"€\201‚\203„…†‡\210‰Š‹ŚŤŽŹ\220‘’“”•–—\230™š›śťžź\u00A0ˇ˘Ł¤Ą¦§¨©Ş«¬\u00AD®Ż°±˛ł´µ¶·¸ąş"
           u"»Ľ˝ľżŔÁÂĂÄĹĆÇČÉĘËĚÍÎĎĐŃŇÓÔŐÖ×ŘŮÚŰÜÝŢßŕáâăäĺćçčéęëěíîďđńňóôőö÷řůúűüýţ˙"},
    {1251, u"ЂЃ‚ѓ„…†‡€‰Љ‹ЊЌЋЏђ‘’“”•–—\230™љ›њќћџ\u00A0ЎўЈ¤Ґ¦§Ё©Є«¬\u00AD®Ї°±Ііґµ¶·ё№є»јЅѕїАБВГДЕЖ"
           u"ЗИЙКЛМНОПРСТУФХЦЧШЩЪЫЬЭЮЯабвгдежзийклмнопрстуфхцчшщъыьэюя"},
    {1252, u"€\201‚ƒ„…†‡ˆ‰Š‹Œ\215Ž\217\220‘’“”•–—˜™š›œ\235žŸ\u00A0¡¢£¤¥¦§¨©ª«¬\u00AD®¯°±²³´µ¶·¸¹º"
           u"»¼½¾¿ÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏÐÑÒÓÔÕÖ×ØÙÚÛÜÝÞßàáâãäåæçèéêëìíîïðñòóôõö÷øùúûüýþÿ"},
    {1253, u"€\201‚ƒ„…†‡\210‰\212‹\214\215\216\217\220‘’“”•–—\230™\232›\234\235\236\237\u00A0΅Ά£¤"
           u"¥¦§¨©ª«¬\u00AD®―°±²³΄µ¶·ΈΉΊ»Ό½ΎΏΐΑΒΓΔΕΖΗΘΙΚΛΜΝΞΟΠΡÒΣΤΥΦΧΨΩΪΫάέήίΰαβγδεζηθικλμνξοπρςσ"
           u"τυφχψωϊϋόύώÿ"},
    {1254, u"€\201‚ƒ„…†‡ˆ‰Š‹Œ\215\216\217\220‘’“”•–—˜™š›œ\235\236Ÿ\u00A0¡¢£¤¥¦§¨©ª«¬\u00AD®¯°±²³´"
           u"µ¶·¸¹º»¼½¾¿ÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏĞÑÒÓÔÕÖ×ØÙÚÛÜİŞßàáâãäåæçèéêëìíîïğñòóôõö÷øùúûüışÿ"},
    {1255, u"€\201‚ƒ„…†‡ˆ‰\212‹\214\215\216\217\220‘’“”•–—˜™\232›\234\235\236\237\u00A0¡¢£₪¥¦§¨©×"
           u"«¬\u00AD®¯°±²³´µ¶·¸¹÷»¼½¾¿\u05B0\u05B1\u05B2\u05B3\u05B4\u05B5\u05B6\u05B7\u05B8"
           u"\u05B9Ê\u05BB\u05BC\u05BD\u05BE\u05BF\u05C0\u05C1\u05C2\u05C3\u05F0\u05F1\u05F2"
           u"\u05F3\u05F4ÙÚÛÜÝÞß\u05D0\u05D1\u05D2\u05D3\u05D4\u05D5\u05D6\u05D7\u05D8\u05D9"
           u"\u05DA\u05DB\u05DC\u05DD\u05DE\u05DF\u05E0\u05E1\u05E2\u05E3\u05E4\u05E5\u05E6\u05E7"
           u"\u05E8\u05E9\u05EAûü\u200E\u200Fÿ"},
    {1256, u"€\u067E‚ƒ„…†‡ˆ‰\u0679‹Œ\u0686\u0698\u0688\u06AF‘’“”•–—\u06A9™\u0691›œ\u200C\u200D"
           u"\u06BA\u00A0\u060C¢£¤¥¦§¨©\u06BE«¬\u00AD®¯°±²³´µ¶·¸¹\u061B»¼½¾\u061F\u06C1\u0621"
           u"\u0622\u0623\u0624\u0625\u0626\u0627\u0628\u0629\u062A\u062B\u062C\u062D\u062E\u062F"
           u"\u0630\u0631\u0632\u0633\u0634\u0635\u0636×\u0637\u0638\u0639\u063A\u0640\u0641"
           u"\u0642\u0643à\u0644â\u0645\u0646\u0647\u0648çèéêë\u0649\u064Aîï\u064B\u064C\u064D"
           u"\u064Eô\u064F\u0650÷\u0651ù\u0652ûü\u200E\u200F\u06D2"},
    {1257, u"€\201‚\203„…†‡\210‰\212‹\214¨ˇ¸\220‘’“”•–—\230™\232›\234¯˛\237\u00A0¡¢£¤¥¦§Ø©Ŗ«¬"
           u"\u00AD®Æ°±²³´µ¶·ø¹ŗ»¼½¾æĄĮĀĆÄÅĘĒČÉŹĖĢĶĪĻŠŃŅÓŌÕÖ×ŲŁŚŪÜŻŽßąįāćäåęēčéźėģķīļšńņóōõö÷ųłśū"
           u"üżž˙"},
    {1258, u"€\201‚ƒ„…†‡ˆ‰\212‹Œ\215\216\217\220‘’“”•–—˜™\232›œ\235\236Ÿ\u00A0¡¢£¤¥¦§¨©ª«¬\u00AD®"
           u"¯°±²³´µ¶·¸¹º»¼½¾¿ÀÁÂĂÄÅÆÇÈÉÊË\u0300ÍÎÏĐÑ\u0309ÓÔƠÖ×ØÙÚÛÜƯ\u0303ßàáâăäåæçèéêë\u0301íî"
           u"ïđñ\u0323óôơö÷øùúûüư₫ÿ"},
};

} // namespace

std::optional<QString> codePageText(QByteArrayView bytes, int codePage)
{
    for (const CodePage &page : codePages) {
        if (page.number != codePage)
            continue;
        QString text(bytes.size(), Qt::Uninitialized);
        for (qsizetype i = 0; i < bytes.size(); ++i) {
            const auto byte = static_cast<quint8>(bytes[i]);
            text[i] = byte < 0x80 ? QChar(static_cast<char16_t>(byte))
                                  : QChar(page.upperHalf[byte - 0x80]);
        }
        return text;
    }
    // The code pages of East Asia are left to the system's converter, if it has one.
    QStringDecoder decoder(QByteArray("windows-" + QByteArray::number(codePage)).constData());
    if (!decoder.isValid())
        return std::nullopt;
    return QString(decoder(bytes));
}
