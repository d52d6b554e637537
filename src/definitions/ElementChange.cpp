#include "definitions/ElementChange.h"

#include "base/Xml.h"

#include <QHash>

std::vector<ElementChange> elementsBefore(const std::vector<KeyedElement> &existing,
                                          const QSet<QString> &ids)
{
    std::vector<ElementChange> changes;
    QSet<QString> added = ids;
    for (size_t i = 0; i < existing.size(); ++i) {
        if (!added.remove(existing[i].key.toLower()))
            continue;
        const bool isLast = i + 1 == existing.size();
        changes.push_back({existing[i].key, elementText(existing[i].node).toUtf8(),
                           isLast ? QString() : existing[i + 1].key});
    }
    for (const QString &id : std::as_const(added))
        changes.push_back({id, {}, {}});
    return changes;
}

void takeBack(pugi::xml_document &document, const std::vector<KeyedElement> &existing,
              const char *idAttribute, std::span<const ElementChange> changes)
{
    QHash<QString, pugi::xml_node> nodes;
    for (const KeyedElement &each : existing)
        nodes.insert(each.key.toLower(), each.node);
    for (auto change = changes.rbegin(); change != changes.rend(); ++change) {
        const QString key = change->id.toLower();
        pugi::xml_node present = nodes.value(key);
        pugi::xml_node former;
        if (!change->before.isEmpty()) {
            pugi::xml_document kept;
            parseXml(kept, change->before);
            pugi::xml_node root = present ? present.parent() : document.document_element();
            const pugi::xml_node next = nodes.value(change->next.toLower());
            if (present)
                former = root.insert_copy_before(kept.document_element(), present);
            else if (next && !change->next.isEmpty())
                former = next.parent().insert_copy_before(kept.document_element(), next);
            else
                former = root.append_copy(kept.document_element());
            if (!former.attribute(idAttribute))
                setAttr(former, idAttribute, change->id);
            keepLaterRuns(former, present);
            nodes.insert(key, former);
        } else {
            nodes.remove(key);
        }
        if (present)
            present.parent().remove_child(present);
    }
}
