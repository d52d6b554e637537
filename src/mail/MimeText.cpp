#include "mail/MimeText.h"

#include <QUrl>

#include <algorithm>

namespace {

constexpr qsizetype maxLine = 76;

/// Whether a byte of a line stands for itself.
bool isLiteral(char byte, bool isLast)
{
    if (byte == ' ' || byte == '\t')
        return !isLast;
    return byte > ' ' && byte <= '~' && byte != '=';
}

QByteArray quotedLine(const QByteArray &line)
{
    QByteArray quoted;
    qsizetype length = 0;
    for (qsizetype i = 0; i < line.size(); ++i) {
        const char byte = line[i];
        const QByteArray next = isLiteral(byte, i == line.size() - 1)
                                    ? QByteArray(1, byte)
                                    : '=' + QByteArray(1, byte).toHex().toUpper();
        if (length + next.size() >= maxLine) { // room for the "=" of a soft line break
            quoted += "=\r\n";
            length = 0;
        }
        quoted += next;
        length += next.size();
    }
    return quoted;
}

} // namespace

QByteArray quotedPrintable(const QByteArray &text)
{
    QByteArray unix = text;
    unix.replace("\r\n", "\n").replace('\r', '\n');
    const QList<QByteArray> lines = unix.split('\n');
    QList<QByteArray> quoted;
    for (const QByteArray &line : lines)
        quoted.append(quotedLine(line));
    return quoted.join("\r\n");
}

QByteArray base64Lines(const QByteArray &bytes)
{
    constexpr qsizetype bytesInLine = maxLine / 4 * 3;
    QByteArray lines;
    lines.reserve(bytes.size() * 4 / 3 + bytes.size() / bytesInLine * 2 + maxLine);
    for (qsizetype at = 0; at < bytes.size(); at += bytesInLine)
        lines += bytes.mid(at, bytesInLine).toBase64() + "\r\n";
    return lines;
}

QByteArray fileNameParameter(const QString &name)
{
    const bool isPlain = std::all_of(name.begin(), name.end(), [](QChar c) {
        return c >= u' ' && c <= u'~' && c != u'"' && c != u'\\';
    });
    return isPlain ? "filename=\"" + name.toLatin1() + '"'
                   : "filename*=UTF-8''" + QUrl::toPercentEncoding(name);
}

QByteArray MimePart::bytes() const
{
    return headers.join("\r\n") + "\r\n\r\n" + content;
}

MimePart multipart(const QByteArray &kind, const QByteArray &boundary, const QList<MimePart> &parts)
{
    MimePart whole{{"Content-Type: multipart/" + kind + ";\r\n boundary=\"" + boundary + '"'}, {}};
    for (const MimePart &part : parts)
        whole.content += "--" + boundary + "\r\n" + part.bytes() + "\r\n";
    whole.content += "--" + boundary + "--\r\n";
    return whole;
}
