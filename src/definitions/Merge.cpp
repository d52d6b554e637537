#include "definitions/Merge.h"

#include "base/Clock.h"
#include "base/Xml.h"
#include "definitions/Dates.h"
#include "definitions/SelectionRule.h"

#include <QHash>

namespace {

/// The repeated elements of a definition, and the attribute that identifies each; null: all that a
/// rule says does.
struct Part
{
    const char *parent;
    const char *name;
    const char *key;
};

constexpr Part parts[] = {
    {"CUSTOMREPORT", "SCHEDULE", "ScheduleID"}, {"CUSTOMREPORT", "DEVICE", "MUID"},
    {"CUSTOMREPORT", "RULE", nullptr},          {"CUSTOMREPORT", "EXCEPT", nullptr},
    {"CUSTOMREPORT", "MAINTENANCE", "From"},    {"DEVICE", "DATUM", "DataIDent"},
};

/// Attributes that a definition only has where they are set: one that a fresh element lacks goes.
constexpr const char *optionalAttributes[] = {"Target", "ServiceHours", "Compare",
                                              "Limit",  "Pdf",          "Keep"};

bool is(const pugi::xml_node &node, const char *name)
{
    return node.type() == pugi::node_element && qstrcmp(node.name(), name) == 0;
}

/// The parts of an element in document order, without those that have no key.
std::vector<KeyedElement> partsOf(const pugi::xml_node &element)
{
    std::vector<KeyedElement> found;
    for (pugi::xml_node node = nextNode(element, element); node; node = nextNode(node, element)) {
        for (const Part &part : parts) {
            if (!is(element, part.parent) || !is(node, part.name))
                continue;
            const QString key = part.key ? GetAttr(node, part.key, QString()) : ruleKey(node);
            if (!key.isEmpty())
                found.push_back({node, QLatin1String(part.name) + u' ' + key});
        }
    }
    return found;
}

/// Positions by key, without regard to case.
QHash<QString, size_t> positionsOf(const std::vector<KeyedElement> &elements)
{
    QHash<QString, size_t> positions;
    for (size_t i = 0; i < elements.size(); ++i)
        positions.insert(elements[i].key.toLower(), i);
    return positions;
}

/// The first of the comments right before an element, or the element itself.
pugi::xml_node withComments(pugi::xml_node node)
{
    while (node.previous_sibling().type() == pugi::node_comment)
        node = node.previous_sibling();
    return node;
}

/// Moves an element, and the comments right before it, after `previous`, or before `next`.
void move(const pugi::xml_node &node, pugi::xml_node previous, const pugi::xml_node &next)
{
    const pugi::xml_node before = withComments(next);
    for (pugi::xml_node each = withComments(node), following; each; each = following) {
        following = each == node ? pugi::xml_node() : each.next_sibling();
        if (previous)
            previous = previous.parent().insert_move_after(each, previous);
        else
            before.parent().insert_move_before(each, before);
    }
}

pugi::xml_node insert(pugi::xml_node parent, const pugi::xml_node &fresh,
                      const pugi::xml_node &previous, const pugi::xml_node &next)
{
    if (previous)
        return previous.parent().insert_copy_after(fresh, previous);
    if (next)
        return next.parent().insert_copy_before(fresh, withComments(next));
    return parent.append_copy(fresh);
}

/// Whether a run has written a later date than the one of the definition, which was loaded before
/// it. A date in the future counts as none.
bool isOfLaterRun(const pugi::xml_attribute &own, const pugi::xml_attribute &fresh)
{
    if (qstrcmp(own.name(), "LastRunDate") != 0 || !isXmlDate(QString::fromUtf8(own.value())))
        return false;
    const QDateTime written = XMLToDate(QString::fromUtf8(own.value()));
    return written > XMLToDate(QString::fromUtf8(fresh.value())) && written <= now();
}

} // namespace

void mergeElements(pugi::xml_node parent, const std::vector<KeyedElement> &existing,
                   const std::vector<KeyedElement> &fresh)
{
    const QHash<QString, size_t> positions = positionsOf(existing);
    std::vector<bool> isMerged(existing.size());
    size_t first = 0; // of those that are not merged
    pugi::xml_node previous;
    for (const KeyedElement &wanted : fresh) {
        while (first < existing.size() && isMerged[first])
            ++first;
        const pugi::xml_node next =
            first < existing.size() ? existing[first].node : pugi::xml_node();
        const auto found = positions.constFind(wanted.key.toLower());
        if (found == positions.cend()) {
            previous = insert(parent, wanted.node, previous, next);
            continue;
        }
        const pugi::xml_node own = existing[*found].node;
        mergeElement(own, wanted.node);
        if (*found != first)
            move(own, previous, next);
        isMerged[*found] = true;
        previous = own;
    }
}

void mergeElement(pugi::xml_node element, const pugi::xml_node &fresh)
{
    for (const char *name : optionalAttributes) {
        if (!fresh.attribute(name))
            element.remove_attribute(name);
    }
    for (const pugi::xml_attribute &attribute : fresh.attributes()) {
        pugi::xml_attribute own = element.attribute(attribute.name());
        if (!own)
            own = element.append_attribute(attribute.name());
        if (!isOfLaterRun(own, attribute))
            own.set_value(attribute.value());
    }
    const std::vector<KeyedElement> wanted = partsOf(fresh);
    const QHash<QString, size_t> positions = positionsOf(wanted);
    std::vector<KeyedElement> existing = partsOf(element);
    std::erase_if(existing, [&positions](const KeyedElement &each) {
        const bool goes = !positions.contains(each.key.toLower());
        if (goes)
            each.node.parent().remove_child(each.node);
        return goes;
    });
    mergeElements(element, existing, wanted);
}

void keepLaterRuns(pugi::xml_node report, const pugi::xml_node &from)
{
    QHash<QString, pugi::xml_attribute> dates;
    forEachElement(from, "SCHEDULE", [&dates](const pugi::xml_node &entry) {
        dates.insert(GetAttr(entry, "ScheduleID", QString()).toLower(),
                     entry.attribute("LastRunDate"));
    });
    forEachElement(report, "SCHEDULE", [&dates](pugi::xml_node entry) {
        const pugi::xml_attribute later =
            dates.value(GetAttr(entry, "ScheduleID", QString()).toLower());
        pugi::xml_attribute own = entry.attribute("LastRunDate");
        if (later && own && isOfLaterRun(later, own))
            own.set_value(later.value());
    });
}
