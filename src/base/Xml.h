#pragma once

#include <QString>

#include <pugixml.hpp>

/// XML files: the tool's definitions and configurations. Documents keep attributes in the order in
/// which they were set. Pure functions, safe on any thread.

/// The text of a file's bytes: UTF-16 or UTF-32 if detected, else as by decodeText of base/Files. A
/// byte-order mark is dropped.
QString decodeXml(const QByteArray &bytes);

/// Parses a text, or that of a file's bytes. Throws Error(InvalidFileFormat) with "line:column:
/// what" on malformed content, and when there is no root element.
void parseXml(pugi::xml_document &document, const QString &text);
void parseXml(pugi::xml_document &document, const QByteArray &bytes);

/// The value of an attribute; `fallback` when the element has no such attribute.
QString GetAttr(const pugi::xml_node &element, const char *name, const QString &fallback);

/// The number at the beginning of an attribute's text, rounded; `fallback` when the element has no
/// such attribute. Throws Error(Overflow) naming the attribute when it is beyond 32 bits.
qint32 integerAttr(const pugi::xml_node &element, const char *name, qint32 fallback);
/// The same as a code; one that is not among the enumerators stays as it is.
template <typename Code>
Code codeAttr(const pugi::xml_node &element, const char *name, Code fallback)
{
    return static_cast<Code>(integerAttr(element, name, fallback));
}

/// Appends an attribute.
void setAttr(pugi::xml_node &element, const char *name, const QString &value);
void setAttr(pugi::xml_node &element, const char *name, qint32 value);

/// The node after `node` in document order below `root`; null after the last one.
pugi::xml_node nextNode(const pugi::xml_node &node, const pugi::xml_node &root);

/// Calls `visit(element)` for every element of that name in the whole document, in document order.
template <typename Visit>
void forEachElement(const pugi::xml_node &root, const char *name, Visit visit)
{
    for (pugi::xml_node node = nextNode(root, root); node; node = nextNode(node, root)) {
        if (node.type() == pugi::node_element && qstrcmp(node.name(), name) == 0)
            visit(node);
    }
}

/// An element's XML text, without line breaks.
QString elementText(const pugi::xml_node &element);

/// A whole document as UTF-8 bytes, indented by tabs, with "\n" line ends. Its declaration, if any,
/// is changed to UTF-8.
QByteArray documentBytes(const pugi::xml_document &document);

/// Booleans are written as -1 and 0 and read as true when the number is not zero.
inline qint32 xmlBoolean(bool value)
{
    return value ? -1 : 0;
}
bool xmlBoolean(const QString &text);
