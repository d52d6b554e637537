#include "figures/Rankings.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>

namespace {

std::optional<double> valueOf(const ItemFigures &item, RankedBy by)
{
    switch (by) {
    case RankedBy::Percentile95:
        return item.present.percentile95;
    case RankedBy::Change: {
        const std::optional<double> rise = changeOfPercentile95(item);
        return rise && *rise > 0 ? rise : std::nullopt;
    }
    case RankedBy::Limit:
        break;
    }
    const std::optional<double> limit = limitOf(item);
    if (!limit || *limit <= 0 || !item.present.percentile95)
        return {};
    return 100 * *item.present.percentile95 / *limit;
}

} // namespace

std::vector<Ranking> rankingsOf(const ReportFigures &report, size_t maxEntries)
{
    std::map<std::tuple<QString, QString, RankedBy>, Ranking> rankings;
    for (size_t device = 0; device < report.devices.size(); ++device) {
        const std::vector<ItemFigures> &items = report.devices[device].items;
        for (size_t i = 0; i < items.size(); ++i) {
            const ItemFigures &item = items[i];
            if (item.isState)
                continue;
            for (const RankedBy by : {RankedBy::Percentile95, RankedBy::Change, RankedBy::Limit}) {
                const std::optional<double> value = valueOf(item, by);
                if (!value)
                    continue;
                Ranking &ranking = rankings[{item.name, item.unit, by}];
                ranking.name = item.name;
                ranking.unit = item.unit;
                ranking.by = by;
                ranking.entries.push_back({device, i, *value});
            }
        }
    }
    std::vector<Ranking> found;
    for (auto &[kind, ranking] : rankings) {
        if (ranking.entries.size() < 2)
            continue;
        std::stable_sort(
            ranking.entries.begin(), ranking.entries.end(),
            [](const Ranking::Entry &a, const Ranking::Entry &b) { return a.value > b.value; });
        ranking.entries.resize(std::min(ranking.entries.size(), maxEntries));
        found.push_back(std::move(ranking));
    }
    return found;
}

std::optional<double> changeOfPercentile95(const ItemFigures &item)
{
    if (!item.preceding)
        return {};
    const std::optional<double> present = item.present.percentile95;
    const std::optional<double> preceding = item.preceding->percentile95;
    if (!present || !preceding || *preceding == 0 ||
        !comparability(item.present.rate.coverage, item.preceding->rate.coverage).isComparable)
        return {};
    return 100 * (*present - *preceding) / std::abs(*preceding);
}

std::optional<double> limitOf(const ItemFigures &item)
{
    if (item.limit)
        return item.limit;
    return item.unit == QLatin1String("%") ? std::optional(100.0) : std::nullopt;
}
