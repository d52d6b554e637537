#pragma once

#include "mail/MailAddress.h"
#include "mail/MailContent.h"
#include "report/TemplateNames.h"

/// Messages as servers take them (RFC 5322, MIME). The tool writes them itself, because one that
/// waits in the outbox has to stay the same to the last byte. Pure functions, safe on any thread.

struct MailEnvelope
{
    MailAddress from;
    std::vector<MailAddress> to;
    QString messageId;  ///< of newMessageId
    qint64 instant = 0; ///< of the header "Date"
};

/// A new id in the sender's domain, "uuid@example.org".
QString newMessageId(const MailAddress &from);

/// The message with CR LF line ends: plain text and, unless `htmlTemplate` is empty, the filled
/// template with the images in it, and the attachments.
QByteArray mailMessage(const MailContent &content, const MailEnvelope &envelope,
                       const QString &htmlTemplate);

/// The part of plain text: lines of at most 76 characters, where its words allow that.
QString plainMailText(const MailContent &content);

/// The filled template; images are cited as "cid:<name>.<messageId>".
QString htmlMailText(const MailContent &content, const QString &messageId,
                     const QString &htmlTemplate);

/// The placeholders of Mail.HTML.
inline constexpr TemplateNames mailTemplate{
    QLatin1String("mails"), QLatin1String(""),
    QLatin1String(
        "mail.subject mail.title mail.period mail.verdict mail.tone mail.sentences mail.figures "
        "mail.devices mail.images mail.pages mail.notes mail.reason")};
