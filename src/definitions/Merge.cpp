#include "definitions/Merge.h"

#include "core/Xml.h"

#include <QHash>

namespace {

/// What stands in a definition more than once, and how one is told from the other.
struct Part
{
    const char *parent;
    const char *name;
    const char *key;
};

constexpr Part parts[] = {
    {"CUSTOMREPORT", "SCHEDULE", "ScheduleID"},
    {"CUSTOMREPORT", "DEVICE", "MUID"},
    {"DEVICE", "DATUM", "DataIDent"},
};

bool is(const pugi::xml_node &node, const char *name)
{
    return node.type() == pugi::node_element && qstrcmp(node.name(), name) == 0;
}

/// The parts of an element in document order, those without a key left out.
std::vector<KeyedElement> partsOf(const pugi::xml_node &element)
{
    std::vector<KeyedElement> found;
    for (pugi::xml_node node = nextNode(element, element); node; node = nextNode(node, element)) {
        for (const Part &part : parts) {
            const QString key = is(element, part.parent) && is(node, part.name)
                                    ? GetAttr(node, part.key, QString())
                                    : QString();
            if (!key.isEmpty())
                found.push_back({node, QLatin1String(part.name) + u' ' + key});
        }
    }
    return found;
}

/// Places by key, which know no case.
QHash<QString, size_t> placesOf(const std::vector<KeyedElement> &elements)
{
    QHash<QString, size_t> places;
    for (size_t i = 0; i < elements.size(); ++i)
        places.insert(elements[i].key.toLower(), i);
    return places;
}

/// The first of the comments right before an element, or the element itself.
pugi::xml_node withComments(pugi::xml_node node)
{
    while (node.previous_sibling().type() == pugi::node_comment)
        node = node.previous_sibling();
    return node;
}

/// Moves an element, and the comments right before it, behind `previous`, or before `next`.
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

} // namespace

void mergeElements(pugi::xml_node parent, const std::vector<KeyedElement> &present,
                   const std::vector<KeyedElement> &fresh)
{
    const QHash<QString, size_t> places = placesOf(present);
    std::vector<bool> isPlaced(present.size());
    size_t first = 0; // of those that have not got their place
    pugi::xml_node previous;
    for (const KeyedElement &wanted : fresh) {
        while (first < present.size() && isPlaced[first])
            ++first;
        const pugi::xml_node next = first < present.size() ? present[first].node : pugi::xml_node();
        const auto found = places.constFind(wanted.key.toLower());
        if (found == places.cend()) {
            previous = insert(parent, wanted.node, previous, next);
            continue;
        }
        const pugi::xml_node own = present[*found].node;
        mergeElement(own, wanted.node);
        if (*found != first)
            move(own, previous, next);
        isPlaced[*found] = true;
        previous = own;
    }
}

void mergeElement(pugi::xml_node element, const pugi::xml_node &fresh)
{
    for (const pugi::xml_attribute &attribute : fresh.attributes()) {
        pugi::xml_attribute own = element.attribute(attribute.name());
        if (!own)
            own = element.append_attribute(attribute.name());
        own.set_value(attribute.value());
    }
    const std::vector<KeyedElement> wanted = partsOf(fresh);
    const QHash<QString, size_t> places = placesOf(wanted);
    std::vector<KeyedElement> present = partsOf(element);
    std::erase_if(present, [&places](const KeyedElement &each) {
        const bool goes = !places.contains(each.key.toLower());
        if (goes)
            each.node.parent().remove_child(each.node);
        return goes;
    });
    mergeElements(element, present, wanted);
}
