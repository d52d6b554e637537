#include "base/Xml.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/Numbers.h"

#include <QStringDecoder>

namespace {

/// "line:column" of a byte offset, both counted from 1.
QString lineAndColumn(const QByteArray &bytes, qsizetype offset)
{
    offset = qBound(qsizetype(0), offset, bytes.size());
    qsizetype line = 1;
    qsizetype start = 0;
    for (qsizetype i = 0; i < offset; ++i) {
        if (bytes[i] == '\n') {
            ++line;
            start = i + 1;
        }
    }
    return QStringLiteral("%1:%2").arg(line).arg(offset - start + 1);
}

/// The bytes are UTF-8, whatever encoding the declaration names.
void load(pugi::xml_document &document, const QByteArray &bytes)
{
    const pugi::xml_parse_result result = document.load_buffer(
        bytes.constData(), static_cast<size_t>(bytes.size()),
        pugi::parse_default | pugi::parse_comments | pugi::parse_pi | pugi::parse_declaration,
        pugi::encoding_utf8);
    if (!result) {
        document.reset(); // drops what was parsed before the mistake
        throw Error(InvalidFileFormat, lineAndColumn(bytes, result.offset) + QLatin1String(": ") +
                                           QString::fromUtf8(result.description()));
    }
    if (!document.document_element())
        throw Error(InvalidFileFormat, QStringLiteral("1:1: no root element"));
}

class TextWriter : public pugi::xml_writer
{
public:
    void write(const void *data, size_t size) override
    {
        bytes.append(static_cast<const char *>(data), static_cast<qsizetype>(size));
    }
    QByteArray bytes;
};

} // namespace

QString decodeXml(const QByteArray &bytes)
{
    const auto encoding = QStringConverter::encodingForData(bytes, u'<');
    if (!encoding || *encoding == QStringConverter::Utf8)
        return decodeText(bytes);
    QString text = QStringDecoder(*encoding, QStringConverter::Flag::Stateless)(bytes);
    if (text.startsWith(QChar::ByteOrderMark))
        text.remove(0, 1);
    return text;
}

void parseXml(pugi::xml_document &document, const QString &text)
{
    load(document, text.toUtf8());
}

void parseXml(pugi::xml_document &document, const QByteArray &bytes)
{
    parseXml(document, decodeXml(bytes));
}

QString GetAttr(const pugi::xml_node &element, const char *name, const QString &fallback)
{
    const pugi::xml_attribute attribute = element.attribute(name);
    return attribute ? QString::fromUtf8(attribute.value()) : fallback;
}

qint32 integerAttr(const pugi::xml_node &element, const char *name, qint32 fallback)
{
    const pugi::xml_attribute attribute = element.attribute(name);
    if (!attribute)
        return fallback;
    try {
        return leadingInteger(QString::fromUtf8(attribute.value()));
    } catch (const Error &error) {
        throw Error(error.number, QLatin1String(name) + QLatin1String(": ") + error.description);
    }
}

void setAttr(pugi::xml_node &element, const char *name, const QString &value)
{
    element.append_attribute(name).set_value(value.toUtf8().constData());
}

void setAttr(pugi::xml_node &element, const char *name, qint32 value)
{
    element.append_attribute(name).set_value(value);
}

pugi::xml_node nextNode(const pugi::xml_node &node, const pugi::xml_node &root)
{
    // Without recursion: a hostile file may be nested as deep as it is long.
    if (const pugi::xml_node child = node.first_child())
        return child;
    for (pugi::xml_node at = node; at != root; at = at.parent()) {
        if (const pugi::xml_node sibling = at.next_sibling())
            return sibling;
    }
    return pugi::xml_node();
}

QString elementText(const pugi::xml_node &element)
{
    TextWriter writer;
    element.print(writer, "", pugi::format_raw, pugi::encoding_utf8);
    return QString::fromUtf8(writer.bytes);
}

QByteArray documentBytes(const pugi::xml_document &document)
{
    TextWriter writer;
    const pugi::xml_node first = document.first_child();
    if (pugi::xml_attribute encoding = first.attribute("encoding");
        encoding && first.type() == pugi::node_declaration)
        encoding.set_value("UTF-8");
    document.save(writer, "\t", pugi::format_indent | pugi::format_no_declaration,
                  pugi::encoding_utf8);
    return writer.bytes;
}

bool xmlBoolean(const QString &text)
{
    return leadingNumber(text) != 0;
}
