#include "database/RuleMatches.h"

#include "base/NaturalOrder.h"
#include "series/DataSeries.h"

#include <algorithm>

namespace {

/// A rule made ready for many devices and items, many of which share their names.
class ReadyRule
{
public:
    ReadyRule(const SelectionRule &rule, const Inventory &inventory)
        : m_rule(rule)
        , m_device(rule.device)
        , m_group(rule.group)
        , m_description(rule.deviceDescription)
        , m_item(rule.item)
    {
        const NamePattern unit(rule.unit);
        m_anyUnit = unit.isAny();
        for (const ScaleRow &scale : inventory.scales()) {
            if (unit.matches(unitText(scale)))
                m_scales.append(scale.scale);
        }
    }

    bool isException() const { return m_rule.isException; }
    bool takes(const DeviceRow &device) const
    {
        return m_device.matches(device.name) && m_group.matches(device.group) &&
               m_description.matches(device.description);
    }
    bool takes(const ItemRow &item)
    {
        const bool isState = item.scale == stateScale;
        if ((m_rule.kind == SelectionRule::Items::States && !isState) ||
            (m_rule.kind == SelectionRule::Items::Counters && isState))
            return false;
        if (!m_anyUnit && !m_scales.contains(item.scale))
            return false;
        if (m_item.isAny())
            return true;
        const auto known = m_names.constFind(item.name);
        return known != m_names.cend() ? *known
                                       : *m_names.insert(item.name, m_item.matches(item.name));
    }

private:
    const SelectionRule &m_rule;
    NamePattern m_device;
    NamePattern m_group;
    NamePattern m_description;
    NamePattern m_item;
    bool m_anyUnit = true;
    QList<qint32> m_scales; ///< with the unit
    QHash<QString, bool> m_names;
};

template <typename Row>
void sortByName(std::vector<std::pair<QString, Row>> &rows)
{
    std::stable_sort(rows.begin(), rows.end(),
                     [](const auto &a, const auto &b) { return a.first < b.first; });
}

/// A device with the rules that may take its items.
struct Candidate
{
    const DeviceRow *device;
    std::vector<ReadyRule *> rules;
    std::vector<std::pair<QString, const ItemRow *>> items;

    bool takes(const ItemRow &item) const
    {
        bool isTaken = false;
        for (ReadyRule *rule : rules) {
            if ((isTaken && !rule->isException()) || !rule->takes(item))
                continue;
            if (rule->isException())
                return false;
            isTaken = true;
        }
        return isTaken;
    }
};

} // namespace

std::vector<RuleMatch> ruleMatches(const std::vector<SelectionRule> &rules,
                                   const Inventory &inventory)
{
    std::vector<ReadyRule> ready;
    for (const SelectionRule &rule : rules)
        ready.emplace_back(rule, inventory);
    std::vector<Candidate> candidates;
    QHash<qint64, size_t> candidateOf; // by IDent
    for (const DeviceRow &device : inventory.devices()) {
        if (device.isExcluded || inventory.device(device.muid) != &device)
            continue;
        Candidate candidate{&device, {}, {}};
        bool mayTake = false;
        for (ReadyRule &rule : ready) {
            if (!rule.takes(device))
                continue;
            candidate.rules.push_back(&rule);
            mayTake = mayTake || !rule.isException();
        }
        if (!mayTake || candidateOf.contains(device.ident))
            continue;
        candidateOf.insert(device.ident, candidates.size());
        candidates.push_back(std::move(candidate));
    }
    for (const ItemRow &item : inventory.items()) {
        const auto found = candidateOf.constFind(item.deviceIdent);
        if (found == candidateOf.cend() || !candidates[*found].takes(item) ||
            inventory.item(item.dataIdent) != &item)
            continue;
        candidates[*found].items.emplace_back(naturalKey(item.name), &item);
    }

    std::vector<std::pair<QString, Candidate *>> order;
    for (Candidate &candidate : candidates) {
        if (!candidate.items.empty())
            order.emplace_back(naturalKey(candidate.device->name), &candidate);
    }
    sortByName(order);
    std::vector<RuleMatch> matches;
    for (const auto &[key, candidate] : order) {
        sortByName(candidate->items);
        RuleMatch &match = matches.emplace_back();
        match.device = candidate->device;
        for (const auto &[name, item] : candidate->items)
            match.items.push_back(item);
    }
    return matches;
}

QString unitText(const ScaleRow &scale)
{
    const QString unit = scale.abbreviation.trimmed();
    return unit.isEmpty() ? scale.name.trimmed() : unit;
}
