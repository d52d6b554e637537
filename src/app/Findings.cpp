#include "app/Findings.h"

#include "core/Files.h"

#include <QStringDecoder>

#include <algorithm>
#include <cctype>

SourceText SourceText::read(const QString &configured)
{
    const QByteArray bytes = readFile(configured);
    const bool wide = bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF");
    const QString text =
        wide ? QString(QStringDecoder(QStringDecoder::Utf16)(bytes)) : decodeText(bytes);
    return {nativePath(configured), text.toUtf8()};
}

qsizetype SourceText::offsetOf(const pugi::xml_node &element, const char *attribute) const
{
    const auto begin = static_cast<qsizetype>(element.offset_debug());
    if (begin < 0 || !attribute)
        return std::max(begin, qsizetype(0));
    const auto isBlank = [](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; };
    qsizetype at = begin;
    const auto ends = [&] { return at >= bytes.size() || bytes[at] == '>' || bytes[at] == '/'; };
    while (!ends() && !isBlank(bytes[at])) // the element's name
        ++at;
    while (!ends()) {
        while (!ends() && isBlank(bytes[at]))
            ++at;
        const qsizetype name = at;
        while (!ends() && !isBlank(bytes[at]) && bytes[at] != '=')
            ++at;
        if (bytes.mid(name, at - name) == attribute)
            return name;
        while (!ends() && bytes[at] != '"' && bytes[at] != '\'')
            ++at;
        if (ends())
            break;
        at = bytes.indexOf(bytes[at], at + 1) + 1; // behind the value; the file has been parsed
    }
    return begin;
}

void Findings::add(const SourceText &source, qsizetype offset, const QString &text)
{
    const QByteArray before = source.bytes.left(std::max(offset, qsizetype(0)));
    const qsizetype line = before.count('\n') + 1;
    const qsizetype column = QString::fromUtf8(before.mid(before.lastIndexOf('\n') + 1)).size() + 1;
    m_lines.append(QStringLiteral("%1:%2:%3: ").arg(source.path).arg(line).arg(column) + text);
}

void Findings::add(const QString &path, const QString &text)
{
    m_lines.append(path + QLatin1String(":1:1: ") + text);
}

void Findings::addPlaced(const QString &path, const QString &placedText)
{
    m_lines.append(path + u':' + placedText);
}
