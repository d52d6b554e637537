#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <pugixml.hpp>

/// A text file under check. Offsets count bytes of its UTF-8 form.
struct SourceText
{
    QString path;
    QByteArray bytes;

    /// Reads the file as definitions and templates are read. Throws Error that names it.
    static SourceText read(const QString &configured);

    /// Where an attribute of an element starts, or the element if it has no such attribute.
    qsizetype offsetOf(const pugi::xml_node &element, const char *attribute = nullptr) const;
};

/// What --check finds, in the order in which it was found.
class Findings
{
public:
    /// "path:line:column: text"; columns count characters from 1.
    void add(const SourceText &source, qsizetype offset, const QString &text);
    /// For the whole file: "path:1:1: text".
    void add(const QString &path, const QString &text);
    /// For a text that starts with "line:column: " itself, as XML errors do.
    void addPlaced(const QString &path, const QString &placedText);

    const QStringList &lines() const { return m_lines; }

private:
    QStringList m_lines;
};
