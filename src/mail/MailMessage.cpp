#include "mail/MailMessage.h"

#include "base/TimeZone.h"
#include "mail/MimeText.h"

#include <QUuid>

namespace {

/// "Sun, 22 Nov 2026 07:37:25 +0000" in the local zone (RFC 5322).
QByteArray dateText(qint64 instant)
{
    const qint64 minutes = offsetSpanAt(instant).offset / 60'000;
    const QString zone = QStringLiteral("%1%2%3")
                             .arg(minutes < 0 ? QLatin1Char('-') : QLatin1Char('+'))
                             .arg(qAbs(minutes) / 60, 2, 10, QLatin1Char('0'))
                             .arg(qAbs(minutes) % 60, 2, 10, QLatin1Char('0'));
    return (QLocale::c().toString(wallTime(instant), QStringLiteral("ddd, d MMM yyyy HH:mm:ss ")) +
            zone)
        .toLatin1();
}

QString contentId(const MailFile &image, const QString &messageId)
{
    return image.name.toLower() + u'.' + messageId;
}

MimePart textPart(const QByteArray &type, const QString &text)
{
    return {{"Content-Type: " + type + "; charset=utf-8",
             "Content-Transfer-Encoding: quoted-printable"},
            quotedPrintable(text.toUtf8())};
}

MimePart filePart(const MailFile &file, const QByteArray &disposition)
{
    MimePart part{{"Content-Type: " + file.type, "Content-Transfer-Encoding: base64"},
                  base64Lines(file.bytes)};
    part.headers.append("Content-Disposition: " + disposition + ";\r\n " +
                        fileNameParameter(file.name));
    return part;
}

} // namespace

QString newMessageId(const MailAddress &from)
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces) +
           from.address.mid(from.address.lastIndexOf(u'@'));
}

QByteArray mailMessage(const MailContent &content, const MailEnvelope &envelope,
                       const QString &htmlTemplate)
{
    // "=_" occurs in no encoded text.
    const QByteArray boundary = "=_" + envelope.messageId.section(u'@', 0, 0).toLatin1();
    MimePart body = textPart("text/plain", plainMailText(content));
    if (!htmlTemplate.isEmpty()) {
        QList<MimePart> related = {
            textPart("text/html", htmlMailText(content, envelope.messageId, htmlTemplate))};
        for (const MailFile &image : content.images) {
            MimePart part = filePart(image, "inline");
            part.headers.append("Content-ID: <" + contentId(image, envelope.messageId).toLatin1() +
                                '>');
            related.append(part);
        }
        const MimePart html = related.size() == 1 ? related.constFirst()
                                                  : multipart("related", boundary + ".r", related);
        body = multipart("alternative", boundary + ".a", {body, html});
    }
    if (!content.attachments.empty()) {
        QList<MimePart> mixed = {body};
        for (const MailFile &file : content.attachments)
            mixed.append(filePart(file, "attachment"));
        body = multipart("mixed", boundary + ".m", mixed);
    }
    const QList<QByteArray> headers = {
        addressHeader("From", {envelope.from}),
        addressHeader("To", envelope.to),
        textHeader("Subject", content.subject),
        "Date: " + dateText(envelope.instant),
        "Message-ID: <" + envelope.messageId.toLatin1() + '>',
        "Auto-Submitted: auto-generated", // no answers from those who are away
        "MIME-Version: 1.0",
    };
    return headers.join("\r\n") + "\r\n" + body.bytes();
}
