#include "mail/MailAddress.h"

#include "base/Error.h"
#include "base/OneLine.h"

#include <QRegularExpression>
#include <QUrl>

#include <algorithm>

namespace {

constexpr qsizetype maxLine = 76;      ///< characters of a header's line
constexpr qsizetype maxEncoded = 45;   ///< bytes in an encoded word: 60 characters, and its frame
constexpr qsizetype maxLocalPart = 64; ///< RFC 5321
constexpr qsizetype maxAddress = 254;  ///< RFC 5321

Error refusal(const QString &text, const QString &why)
{
    return Error(TypeMismatch,
                 QStringLiteral("'%1' is not a mail address: %2").arg(oneLine(text), why));
}

bool isPlain(const QString &text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return c >= u' ' && c <= u'~'; });
}

/// Whether a text may stand in a header as it is. "=?" would begin an encoded word.
bool needsEncoding(const QString &text)
{
    return !isPlain(text) || text.contains(QLatin1String("=?"));
}

/// "=?UTF-8?B?...?=" words, each with whole characters only.
QList<QByteArray> encodedWords(const QString &text)
{
    QList<QByteArray> words;
    QByteArray bytes;
    const auto flush = [&] {
        if (!bytes.isEmpty())
            words.append("=?UTF-8?B?" + bytes.toBase64() + "?=");
        bytes.clear();
    };
    const QList<uint> characters = text.toUcs4();
    for (const uint code : characters) {
        const char32_t character = code;
        const QByteArray next = QString::fromUcs4(&character, 1).toUtf8();
        if (bytes.size() + next.size() > maxEncoded)
            flush();
        bytes += next;
    }
    flush();
    return words;
}

/// The words of a plain text, each with the blanks before it.
QList<QByteArray> plainWords(const QString &text)
{
    QList<QByteArray> words;
    static const QRegularExpression form(QStringLiteral(" *[^ ]+"));
    for (auto found = form.globalMatch(text); found.hasNext();)
        words.append(found.next().captured().toLatin1());
    return words;
}

QString quoted(const QString &name)
{
    QString inside = name;
    inside.replace(u'\\', QLatin1String("\\\\")).replace(u'"', QLatin1String("\\\""));
    return u'"' + inside + u'"';
}

/// Whether a name may stand before an address without quotes.
bool isPhrase(const QString &name)
{
    static const QRegularExpression form(QStringLiteral("^[^\\x00-\\x1f\"(),.:;<>@\\[\\]\\\\]*$"));
    return form.match(name).hasMatch();
}

QString unquoted(QString name)
{
    name = name.trimmed();
    if (name.size() < 2 || !name.startsWith(u'"') || !name.endsWith(u'"'))
        return name;
    static const QRegularExpression escape(QStringLiteral("\\\\(.)"));
    return name.mid(1, name.size() - 2).replace(escape, QStringLiteral("\\1"));
}

/// The address itself, checked. Throws Error that cites `whole`.
QString checkedAddress(const QString &text, const QString &whole)
{
    const qsizetype at = text.lastIndexOf(u'@');
    if (at < 1 || at == text.size() - 1)
        throw refusal(whole, QStringLiteral("it has to have the form name@domain"));
    const QString local = text.left(at);
    if (!isPlain(local))
        throw refusal(whole, QStringLiteral("only ASCII letters are possible before the '@'"));
    static const QRegularExpression localForm(
        QStringLiteral("^[A-Za-z0-9!#$%&'*+/=?^_`{|}~-]+(\\.[A-Za-z0-9!#$%&'*+/=?^_`{|}~-]+)*$"));
    if (!localForm.match(local).hasMatch() || local.size() > maxLocalPart)
        throw refusal(whole,
                      QStringLiteral("'%1' cannot stand before the '@'").arg(oneLine(local)));
    const QString domain = QString::fromLatin1(QUrl::toAce(text.mid(at + 1)));
    static const QRegularExpression domainForm(QStringLiteral(
        "^[A-Za-z0-9]([A-Za-z0-9-]*[A-Za-z0-9])?(\\.[A-Za-z0-9]([A-Za-z0-9-]*[A-Za-z0-9])?)*$"));
    if (!domainForm.match(domain).hasMatch() || text.size() > maxAddress)
        throw refusal(
            whole,
            QStringLiteral("'%1' is not the name of a domain").arg(oneLine(text.mid(at + 1))));
    return local + u'@' + domain;
}

} // namespace

QString MailAddress::text() const
{
    if (name.isEmpty())
        return address;
    return (isPhrase(name) ? name : quoted(name)) + QLatin1String(" <") + address + u'>';
}

QByteArray MailAddress::header() const
{
    if (name.isEmpty())
        return address.toLatin1();
    const QByteArray before =
        needsEncoding(name) ? encodedWords(name).join("\r\n ") : quoted(name).toLatin1();
    return before + " <" + address.toLatin1() + '>';
}

MailAddress mailAddress(const QString &text)
{
    const QString whole = text.trimmed();
    if (oneLine(whole) != whole)
        throw refusal(whole, QStringLiteral("it has a control character"));
    if (!whole.endsWith(u'>'))
        return {QString(), checkedAddress(whole, whole)};
    const qsizetype open = whole.lastIndexOf(u'<');
    if (open < 0)
        throw refusal(whole, QStringLiteral("the '<' is missing"));
    return {unquoted(whole.left(open)),
            checkedAddress(whole.mid(open + 1, whole.size() - open - 2).trimmed(), whole)};
}

std::vector<MailAddress> mailAddresses(const QString &text)
{
    std::vector<MailAddress> addresses;
    // A name in quotes may hold the separators.
    static const QRegularExpression entry(
        QStringLiteral("(?:\"(?:\\\\.|[^\"\\\\])*\"|[^,;\\r\\n])+"));
    for (auto found = entry.globalMatch(text); found.hasNext();) {
        const QString one = found.next().captured().trimmed();
        if (one.isEmpty())
            continue;
        MailAddress address = mailAddress(one);
        const bool isTwice =
            std::any_of(addresses.begin(), addresses.end(), [&](const MailAddress &other) {
                return other.address.compare(address.address, Qt::CaseInsensitive) == 0;
            });
        if (isTwice)
            throw Error(TypeMismatch, QStringLiteral("'%1' is there twice").arg(address.address));
        addresses.push_back(std::move(address));
    }
    return addresses;
}

QString addressListText(const std::vector<MailAddress> &addresses)
{
    QStringList texts;
    for (const MailAddress &address : addresses)
        texts.append(address.text());
    return texts.join(QLatin1String(", "));
}

QByteArray textHeader(const QByteArray &name, const QString &text)
{
    const QString line = oneLine(text).simplified();
    const bool isEncoded = needsEncoding(line) || line.size() > 8 * maxLine;
    const QList<QByteArray> words = isEncoded ? encodedWords(line) : plainWords(line);
    QByteArray header = name + ':';
    qsizetype length = header.size();
    for (const QByteArray &word : words) {
        const QByteArray next =
            isEncoded || length == name.size() + 1 ? ' ' + word.trimmed() : word;
        if (length + next.size() > maxLine && length > name.size() + 1) {
            header += "\r\n";
            length = 0;
        }
        header += next;
        length += next.size();
    }
    return header;
}

QByteArray addressHeader(const QByteArray &name, const std::vector<MailAddress> &addresses)
{
    QByteArray header = name + ':';
    for (size_t i = 0; i < addresses.size(); ++i)
        header += (i == 0 ? " " : ",\r\n ") + addresses[i].header();
    return header;
}
