#pragma once

#include "app/Findings.h"
#include "report/TemplateNames.h"

#include <QSet>
#include <QString>

#include <limits>
#include <pugixml.hpp>

using Ids = QSet<QString>; ///< in lower case

/// Bounds of a numeric attribute.
struct NumberRule
{
    static constexpr int any = std::numeric_limits<int>::max();

    const char *attribute;
    int min;
    int max;
};

/// One definition file while it is checked: what is wrong becomes a finding with its place.
class CheckedFile
{
public:
    /// Reads the file; a failure is a finding.
    CheckedFile(Findings &findings, const QString &path);

    bool isRead() const { return m_isRead; }
    const pugi::xml_document &document() const { return m_document; }
    pugi::xml_node root() const { return m_document.document_element(); }

    /// A finding at an attribute, or at the element if it has no such attribute.
    void add(const pugi::xml_node &element, const char *attribute, const QString &text);

    void requireRoot(const char *name);

    /// An attribute that is missing has its default.
    void requireNumber(const pugi::xml_node &element, const NumberRule &rule);
    void requireNumberList(const pugi::xml_node &element, const NumberRule &rule);
    void requireDate(const pugi::xml_node &element, const char *attribute);

    /// Adds the attribute to the keys `ids`; a missing or duplicate one is a finding.
    void requireNewId(const pugi::xml_node &element, const char *attribute, Ids &ids);

    /// A title that equals an earlier one but for case and blanks.
    void requireNewTitle(const pugi::xml_node &element, const char *attribute, Ids &titles);

    void requireKnown(const pugi::xml_node &element, const char *attribute, const Ids &ids,
                      const QString &what);

private:
    void requireInRange(const pugi::xml_node &element, const NumberRule &rule, const QString &text);

    Findings &m_findings;
    SourceText m_source;
    pugi::xml_document m_document;
    bool m_isRead = false;
};

/// Finds what is wrong with a template's text: placeholders that it may not contain, a missing
/// marker.
void checkTemplateText(Findings &findings, const QString &path, const TemplateNames &kind);
