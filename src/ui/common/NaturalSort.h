#pragma once

#include "definitions/Collection.h"

#include <QSortFilterProxyModel>

/// The order of names in the windows: that of the user's language, with numbers by their value
/// ("srv-2" before "srv-10") and without regard to case. Main thread only.

/// Negative, zero, positive: `a` before, beside, after `b`.
int compareNaturally(const QString &a, const QString &b);

/// Sorts a model's rows so; sort keys that are no texts compare as usual.
class NaturalSortModel : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

protected:
    bool lessThan(const QModelIndex &left, const QModelIndex &right) const override;
};

/// Definitions of a collection by their titles.
template <typename Definition>
std::vector<std::shared_ptr<Definition>> sortedNaturally(const Collection<Definition> &definitions,
                                                         QString Definition::*titleOf)
{
    std::vector<std::shared_ptr<Definition>> sorted(definitions.begin(), definitions.end());
    std::stable_sort(sorted.begin(), sorted.end(), [titleOf](const auto &a, const auto &b) {
        return compareNaturally((*a).*titleOf, (*b).*titleOf) < 0;
    });
    return sorted;
}
