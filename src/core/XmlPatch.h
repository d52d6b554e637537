#pragma once

#include <QByteArray>
#include <QString>

#include <pugixml.hpp>
#include <vector>

/// Where an attribute stands in the UTF-8 text from which its element was parsed: offsets of its
/// name and of its value between the quotes. All are -1 when the element has no such attribute.
struct AttributePlace
{
    qsizetype name = -1;
    qsizetype value = -1;
    qsizetype end = -1;
};
AttributePlace attributePlace(const QByteArray &utf8, const pugi::xml_node &element,
                              const char *attribute);

/// Sets attributes in an XML file and leaves every other byte as it stands: comments, blanks, what
/// nobody here knows, and the encoding.
class XmlPatch
{
public:
    /// Throws Error as parseXml does.
    explicit XmlPatch(const QByteArray &bytes);

    const pugi::xml_document &document() const { return m_document; }

    /// `element` is one of document(), which stays as it was read. The value is ASCII.
    void set(const pugi::xml_node &element, const char *attribute, const QString &value);

    /// The file with all that was set.
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
