#pragma once

#include <QByteArray>
#include <QString>

#include <pugixml.hpp>
#include <vector>

/// Where an attribute is in the UTF-8 text from which its element was parsed: offsets of its name,
/// and of the start and end of its value between the quotes. -1 when there is no such attribute.
struct AttributeOffsets
{
    qsizetype name = -1;
    qsizetype value = -1;
    qsizetype end = -1;
};
AttributeOffsets attributeOffsets(const QByteArray &utf8, const pugi::xml_node &element,
                                  const char *attribute);

/// Sets attributes in an XML file and leaves every other byte unchanged: comments, blanks, unknown
/// content, and the encoding.
class XmlPatch
{
public:
    /// Throws Error as parseXml does.
    explicit XmlPatch(const QByteArray &bytes);

    const pugi::xml_document &document() const { return m_document; }

    /// `element` is one of document(), which does not change.
    void set(const pugi::xml_node &element, const char *attribute, const QString &value);

    /// The file with all changes.
    QByteArray bytes() const;

private:
    struct Change
    {
        qsizetype at; ///< in m_utf8
        qsizetype length;
        QByteArray text;
    };

    QByteArray m_bytes;
    QByteArray m_utf8;
    pugi::xml_document m_document;
    std::vector<Change> m_changes;
};
