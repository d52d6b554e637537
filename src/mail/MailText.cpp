#include "base/OneLine.h"
#include "mail/MailMessage.h"
#include "report/Templates.h"

#include <algorithm>

namespace {

constexpr qsizetype maxWidth = 72; ///< characters of a line of plain text

/// A paragraph in lines; a word that is longer than a line stays whole.
QString wrapped(const QString &text, const QString &indent = QString())
{
    const QStringList words = oneLine(text).simplified().split(u' ');
    QString lines;
    QString line;
    for (const QString &word : words) {
        if (!line.isEmpty() && indent.size() + line.size() + 1 + word.size() > maxWidth) {
            lines += indent + line + u'\n';
            line.clear();
        }
        line += (line.isEmpty() ? QString() : QStringLiteral(" ")) + word;
    }
    return lines + indent + line + u'\n';
}

/// Rows whose values stand below one another.
QString columns(const std::vector<MailRow> &rows)
{
    constexpr qsizetype maxLabel = 40;
    qsizetype label = 0;
    qsizetype value = 0;
    for (const MailRow &row : rows) {
        label = std::max(label, std::min(row.label.size(), maxLabel));
        value = std::max(value, row.value.size());
    }
    QString lines;
    for (const MailRow &row : rows) {
        QString line = oneLine(row.label).leftJustified(label) + QLatin1String("  ") +
                       oneLine(row.value).leftJustified(value) + QLatin1String("  ") +
                       oneLine(row.note);
        while (line.endsWith(u' '))
            line.chop(1);
        lines += QLatin1String("  ") + line + u'\n';
    }
    return lines;
}

QString escaped(const QString &text)
{
    return PageValue::plain(oneLine(text)).markup();
}

/// The tables, in markup of the program's own; the classes are for dark screens.
QString rowsMarkup(const QString &heading, const std::vector<MailRow> &rows)
{
    if (rows.empty())
        return QString();
    QString markup;
    if (!heading.isEmpty())
        markup += QStringLiteral("<h2 class=\"ink\" style=\"margin:24px 0 4px;font-size:15px;"
                                 "color:#1d2733\">%1</h2>")
                      .arg(escaped(heading));
    markup += QLatin1String("<table width=\"100%\" cellpadding=\"0\" cellspacing=\"0\" "
                            "style=\"border-collapse:collapse;font-size:14px\">\n");
    const QString edge = QStringLiteral("border-bottom:1px solid #e3e7ec;padding:7px 0");
    for (const MailRow &row : rows) {
        QString note;
        if (!row.note.isEmpty())
            note = QStringLiteral("<div class=\"soft\" style=\"font-size:13px;color:#5b6673\">%1"
                                  "</div>")
                       .arg(escaped(row.note));
        markup +=
            QStringLiteral("<tr><td class=\"edge\" style=\"%1;padding-right:12px;"
                           "overflow-wrap:anywhere\">%2%3</td><td class=\"edge\" align=\"right\" "
                           "valign=\"top\" style=\"%1;white-space:nowrap;font-weight:600\">"
                           "%4</td></tr>\n")
                .arg(edge, escaped(row.label), note, escaped(row.value));
    }
    return markup + QLatin1String("</table>\n");
}

QString paragraphs(const QStringList &texts, const QString &classes, const QString &style)
{
    QString markup;
    for (const QString &text : texts)
        markup += QStringLiteral("<p class=\"%1\" style=\"%2\">%3</p>\n")
                      .arg(classes, style, escaped(text));
    return markup;
}

QString imagesMarkup(const std::vector<MailFile> &images, const QString &messageId)
{
    QString markup;
    for (const MailFile &image : images)
        markup +=
            QStringLiteral("<p style=\"margin:20px 0 0\"><img src=\"cid:%1\" alt=\"%2\" "
                           "width=\"100%\" style=\"display:block;width:100%;max-width:640px;"
                           "height:auto;border:0;border-radius:4px\"></p>\n")
                .arg(escaped(image.name.toLower() + u'.' + messageId), escaped(image.description));
    return markup;
}

bool isAddress(const QString &pages)
{
    return pages.startsWith(QLatin1String("https://")) ||
           pages.startsWith(QLatin1String("http://"));
}

QString pagesMarkup(const QString &pages)
{
    if (pages.isEmpty())
        return QString();
    if (isAddress(pages))
        return QStringLiteral("<p style=\"margin:24px 0 0\"><a class=\"button\" href=\"%1\" "
                              "style=\"display:inline-block;padding:10px 18px;border-radius:4px;"
                              "background:#1f5fa8;color:#ffffff;text-decoration:none;"
                              "font-weight:600\">Open the report</a></p>")
            .arg(escaped(pages));
    return QStringLiteral("<p class=\"soft\" style=\"margin:24px 0 0;font-size:13px;color:#5b6673;"
                          "overflow-wrap:anywhere\">The whole report: %1</p>")
        .arg(escaped(pages));
}

QString toneColour(MailTone tone)
{
    switch (tone) {
    case MailTone::Good:
        return QStringLiteral("#2e7d46");
    case MailTone::Bad:
        return QStringLiteral("#c0392b");
    case MailTone::Neutral:
        break;
    }
    return QStringLiteral("#6b7785");
}

} // namespace

QString plainMailText(const MailContent &content)
{
    QString text = wrapped(content.title);
    if (!content.period.isEmpty())
        text += wrapped(content.period);
    if (!content.verdict.isEmpty())
        text += u'\n' + wrapped(content.verdict);
    if (!content.sentences.isEmpty())
        text += u'\n';
    for (const QString &sentence : content.sentences)
        text += wrapped(sentence);
    if (!content.figures.empty())
        text += u'\n' + columns(content.figures);
    if (!content.devices.empty())
        text += QLatin1String("\nDevices to look at\n\n") + columns(content.devices);
    if (!content.pages.isEmpty())
        text += QLatin1String("\nThe whole report:\n") + oneLine(content.pages) + u'\n';
    for (const QString &note : content.notes)
        text += u'\n' + wrapped(note);
    text += QLatin1String("\n-- \n") + wrapped(content.reason); // the mark of a signature
    return text;
}

QString htmlMailText(const MailContent &content, const QString &messageId,
                     const QString &htmlTemplate)
{
    const auto text = [](const QString &value) { return PageValue::html(escaped(value)); };
    const auto markup = [](const QString &value) { return PageValue::html(value); };
    const QString lead = QStringLiteral("margin:0 0 8px;font-size:15px;line-height:1.5");
    const QString aside = QStringLiteral("margin:12px 0 0;font-size:13px;color:#5b6673");
    return fillTemplate(
        htmlTemplate,
        {
            {QLatin1String("mail.subject"), text(content.subject)},
            {QLatin1String("mail.title"), text(content.title)},
            {QLatin1String("mail.period"), text(content.period)},
            {QLatin1String("mail.verdict"), text(content.verdict)},
            {QLatin1String("mail.tone"), text(toneColour(content.tone))},
            {QLatin1String("mail.sentences"),
             markup(paragraphs(content.sentences, QStringLiteral("ink"), lead))},
            {QLatin1String("mail.figures"), markup(rowsMarkup(QString(), content.figures))},
            {QLatin1String("mail.devices"),
             markup(rowsMarkup(QStringLiteral("Devices to look at"), content.devices))},
            {QLatin1String("mail.images"), markup(imagesMarkup(content.images, messageId))},
            {QLatin1String("mail.pages"), markup(pagesMarkup(content.pages))},
            {QLatin1String("mail.notes"),
             markup(paragraphs(content.notes, QStringLiteral("soft"), aside))},
            {QLatin1String("mail.reason"), text(content.reason)},
        });
}

void fitInto(MailContent &content, qint64 maxBytes, const QString &folder)
{
    constexpr qint64 texts = 128 * 1024; // and headers: more than they ever take
    const auto encoded = [](const MailFile &file) { return file.bytes.size() / 57 * 78 + 1024; };
    qint64 left = maxBytes - texts;
    const auto isTooLarge = [&](const MailFile &file) {
        if (encoded(file) > left)
            return true;
        left -= encoded(file);
        return false;
    };
    std::erase_if(content.images, isTooLarge);
    std::erase_if(content.attachments, [&](const MailFile &file) {
        const bool goes = isTooLarge(file);
        if (goes)
            content.notes.append(
                QStringLiteral("%1 (%2 MB) is not attached, because mails are limited to %3 MB. It "
                               "is in %4")
                    .arg(file.name)
                    .arg(static_cast<double>(file.bytes.size()) / 1'000'000, 0, 'f', 1)
                    .arg(maxBytes / 1'000'000)
                    .arg(folder));
        return goes;
    });
}
