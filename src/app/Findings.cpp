#include "app/Findings.h"

#include "base/Files.h"
#include "base/OneLine.h"
#include "base/Xml.h"
#include "base/XmlPatch.h"

#include <algorithm>

SourceText SourceText::read(const QString &configured)
{
    return {nativePath(configured), decodeXml(readFile(configured)).toUtf8()};
}

qsizetype SourceText::offsetOf(const pugi::xml_node &element, const char *attribute) const
{
    const AttributeOffsets found =
        attribute ? attributeOffsets(bytes, element, attribute) : AttributeOffsets{};
    return found.name >= 0 ? found.name
                           : std::max(static_cast<qsizetype>(element.offset_debug()), qsizetype(0));
}

void Findings::add(const SourceText &source, qsizetype offset, const QString &text)
{
    const QByteArray before = source.bytes.left(std::max(offset, qsizetype(0)));
    const qsizetype line = before.count('\n') + 1;
    const qsizetype column = QString::fromUtf8(before.mid(before.lastIndexOf('\n') + 1)).size() + 1;
    m_lines.append(
        oneLine(QStringLiteral("%1:%2:%3: ").arg(source.path).arg(line).arg(column) + text));
}

void Findings::add(const QString &path, const QString &text)
{
    m_lines.append(oneLine(path + QLatin1String(":1:1: ") + text));
}

void Findings::addPlaced(const QString &path, const QString &placedText)
{
    m_lines.append(oneLine(path + u':' + placedText));
}
