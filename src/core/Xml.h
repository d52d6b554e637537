#pragma once

#include <QString>

#include <pugixml.hpp>

/// XML files: the tool's definitions and configurations. Documents keep attributes in the order in
/// which they were set. Pure functions, safe on any thread.

/// Parses a text, or a file's bytes: UTF-8 or what core/Files' decodeText makes of them, UTF-16 where
/// they look so. Throws Error(InvalidFileFormat) with "line:column: what" on
/// malformed content, and when there is no root element.
void parseXml(pugi::xml_document &document, const QString &text);
void parseXml(pugi::xml_document &document, const QByteArray &bytes);

/// The value of an attribute; `fallback` when the element has no such attribute.
QString GetAttr(const pugi::xml_node &element, const char *name, const QString &fallback);

/// Appends an attribute.
void setAttr(pugi::xml_node &element, const char *name, const QString &value);
void setAttr(pugi::xml_node &element, const char *name, qint32 value);

/// Calls `visit(element)` for every element of that name in the whole document, in document order.
template <typename Visit>
void forEachElement(const pugi::xml_node &root, const char *name, Visit visit)
{
    for (const pugi::xml_node &child : root.children()) {
        if (child.type() == pugi::node_element && qstrcmp(child.name(), name) == 0)
            visit(child);
        forEachElement(child, name, visit);
    }
}

/// An element's XML text, without line breaks.
QString elementText(const pugi::xml_node &element);

/// A whole document as UTF-8 bytes, indented by tabs, each line ended by "\n".
QByteArray documentBytes(const pugi::xml_document &document);

/// Booleans are written as -1 and 0 and read as true when the number is not zero.
inline qint32 xmlBoolean(bool value) { return value ? -1 : 0; }
bool xmlBoolean(const QString &text);
