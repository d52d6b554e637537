#include "definitions/SelectionRule.h"

#include "base/Error.h"
#include "base/NaturalOrder.h"
#include "base/Xml.h"

#include <algorithm>

namespace {

/// The texts of a rule, in the order of the file.
struct TextAttribute
{
    const char *name;
    QString SelectionRule::*text;
    const char *words;
};

constexpr TextAttribute texts[] = {
    {"Device", &SelectionRule::device, "devices named %1"},
    {"Group", &SelectionRule::group, "devices of the group %1"},
    {"Description", &SelectionRule::deviceDescription, "devices described as %1"},
    {"Item", &SelectionRule::item, "items named %1"},
    {"Unit", &SelectionRule::unit, "items in %1"},
};

constexpr const char *kindAttribute = "Kind";

QString kindText(SelectionRule::Items kind)
{
    switch (kind) {
    case SelectionRule::Items::States:
        return QStringLiteral("State");
    case SelectionRule::Items::Counters:
        return QStringLiteral("Counter");
    case SelectionRule::Items::Any:
        break;
    }
    return {};
}

/// Whether a text fits a pattern with "*" and "?". After a mismatch only the last "*" takes one
/// character more: that is enough, and quick for every pattern.
bool fits(QStringView text, QStringView pattern)
{
    qsizetype at = 0;
    qsizetype in = 0;
    qsizetype star = -1;
    qsizetype taken = 0;
    while (at < text.size()) {
        if (in < pattern.size() && pattern[in] == u'*') {
            star = in++;
            taken = at;
        } else if (in < pattern.size() && (pattern[in] == u'?' || pattern[in] == text[at])) {
            ++at;
            ++in;
        } else if (star >= 0) {
            in = star + 1;
            at = ++taken;
        } else {
            return false;
        }
    }
    return std::all_of(pattern.begin() + in, pattern.end(),
                       [](QChar character) { return character == u'*'; });
}

} // namespace

SelectionRule readRule(const pugi::xml_node &element)
{
    SelectionRule rule;
    rule.isException = qstrcmp(element.name(), "EXCEPT") == 0;
    for (const TextAttribute &attribute : texts)
        rule.*attribute.text = GetAttr(element, attribute.name, QString()).trimmed();
    const QString kind = GetAttr(element, kindAttribute, QString());
    for (const auto known : {SelectionRule::Items::States, SelectionRule::Items::Counters}) {
        if (kind.compare(kindText(known), Qt::CaseInsensitive) == 0)
            rule.kind = known;
    }
    if (!kind.isEmpty() && rule.kind == SelectionRule::Items::Any)
        throw Error(TypeMismatch,
                    QStringLiteral("Kind '%1' is neither State nor Counter").arg(kind));
    return rule;
}

void appendRule(pugi::xml_node parent, const SelectionRule &rule)
{
    pugi::xml_node element = parent.append_child(rule.isException ? "EXCEPT" : "RULE");
    for (const TextAttribute &attribute : texts) {
        if (!(rule.*attribute.text).isEmpty())
            setAttr(element, attribute.name, rule.*attribute.text);
    }
    if (rule.kind != SelectionRule::Items::Any)
        setAttr(element, kindAttribute, kindText(rule.kind));
}

QString ruleKey(const pugi::xml_node &element)
{
    QString key = GetAttr(element, kindAttribute, QString());
    for (const TextAttribute &attribute : texts)
        key += u'\n' + GetAttr(element, attribute.name, QString()).trimmed();
    return key;
}

QString ruleInWords(const SelectionRule &rule)
{
    QStringList words;
    for (const TextAttribute &attribute : texts) {
        if (!(rule.*attribute.text).isEmpty())
            words += QString::fromLatin1(attribute.words).arg(rule.*attribute.text);
    }
    if (rule.kind == SelectionRule::Items::States)
        words += QStringLiteral("states only");
    else if (rule.kind == SelectionRule::Items::Counters)
        words += QStringLiteral("counters only");
    return words.isEmpty() ? QStringLiteral("all data items of all devices")
                           : words.join(QLatin1String(", "));
}

NamePattern::NamePattern(const QString &text)
{
    const QStringList alternatives = text.split(u'|');
    for (const QString &alternative : alternatives) {
        if (const QString pattern = foldedText(alternative.trimmed()); !pattern.isEmpty())
            m_alternatives.append(pattern);
    }
}

bool NamePattern::matches(const QString &name) const
{
    if (isAny())
        return true;
    const QString folded = foldedText(name.trimmed());
    return std::any_of(m_alternatives.begin(), m_alternatives.end(),
                       [&folded](const QString &pattern) { return fits(folded, pattern); });
}
