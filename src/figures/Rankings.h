#pragma once

#include "figures/ReportFigures.h"

/// Counters of one kind, those of the same name and unit, in the order of what they come to. Pure
/// functions, safe on any thread.

enum class RankedBy {
    Percentile95, ///< the greatest 95th percentile
    Change,       ///< its greatest rise against the preceding period, in percent
    Limit         ///< the nearest to its limit, in percent of it: 100 is reached
};

struct Ranking
{
    struct Entry
    {
        size_t device = 0; ///< index in the report
        size_t item = 0;   ///< index in the device
        double value = 0;
    };

    QString name; ///< of the counters
    QString unit;
    RankedBy by = RankedBy::Percentile95;
    std::vector<Entry> entries; ///< the greatest first
};

/// All rankings that have at least two entries, of at most `maxEntries` each; by name, unit and
/// kind.
std::vector<Ranking> rankingsOf(const ReportFigures &report, size_t maxEntries = 10);

/// The change of a counter's 95th percentile against the preceding period in percent; nothing where
/// the periods cannot be compared.
std::optional<double> changeOfPercentile95(const ItemFigures &item);

/// The limit of a counter: its own, or 100 for "%".
std::optional<double> limitOf(const ItemFigures &item);
