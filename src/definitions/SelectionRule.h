#pragma once

#include <QString>
#include <QStringList>

#include <pugixml.hpp>

/// A rule that chooses the data items of a report by what the database says of them, so that new
/// devices join by themselves: element "RULE" of a CUSTOMREPORT, or "EXCEPT" for an exception. Each
/// condition is a pattern of NamePattern; empty: any. All that are set have to hold.
struct SelectionRule
{
    enum class Items { Any, States, Counters };

    bool isException = false;       ///< takes out what the other rules find; ticked items stay
    QString device = {};            ///< attribute Device: the device's name
    QString group = {};             ///< Group: what the monitor groups it under, if it does
    QString deviceDescription = {}; ///< Description
    QString item = {};              ///< Item: the data item's name
    QString unit = {};              ///< Unit
    Items kind = Items::Any;        ///< Kind: "State" or "Counter"

    bool operator==(const SelectionRule &) const = default;
};

/// Reads a rule. Throws Error(TypeMismatch) where its Kind is not known.
SelectionRule readRule(const pugi::xml_node &element);

/// Appends the rule's element, with the attributes that are set.
void appendRule(pugi::xml_node parent, const SelectionRule &rule);

/// What tells a rule's element from those of other rules of the report.
QString ruleKey(const pugi::xml_node &element);

/// A rule in words: "devices named *-SW-*, items named Latency".
QString ruleInWords(const SelectionRule &rule);

/// A pattern for names: "*" stands for any characters, "?" for one, "|" separates alternatives.
/// Letter case, accents and blanks at the ends of an alternative do not count. An empty pattern
/// fits every name. Safe on any thread.
class NamePattern
{
public:
    explicit NamePattern(const QString &text);

    bool isAny() const { return m_alternatives.isEmpty(); }
    bool matches(const QString &name) const;

private:
    QStringList m_alternatives; ///< folded
};
