#pragma once

#include "database/Inventory.h"
#include "definitions/SelectionRule.h"

#include <vector>

/// A device that rules find, and those of its items that they find.
struct RuleMatch
{
    const DeviceRow *device = nullptr; ///< rows of the inventory
    std::vector<const ItemRow *> items;
};

/// What rules find: the items that at least one rule takes and no exception takes out. Devices that
/// the monitor excludes are not found. Devices in the natural order of their names, and so are the
/// items of each. Pure; safe on any thread.
std::vector<RuleMatch> ruleMatches(const std::vector<SelectionRule> &rules,
                                   const Inventory &inventory);

/// A scale's unit for rules and lists: its abbreviation, or else its name.
QString unitText(const ScaleRow &scale);
