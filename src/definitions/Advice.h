#pragma once

#include "definitions/Collection.h"
#include "definitions/clsGraphDef.h"
#include "definitions/clsScheduleDef.h"

/// Warnings about definitions that are valid but probably a mistake, for the editors and the check.
/// Pure functions.

/// Why a report with this chart and this schedule shows the same period at every run: the chart has
/// a custom range, for which only a run from the window asks, and the schedule repeats. Empty if it
/// does not.
QString samePeriodWarning(const clsGraphDef &chart, const clsScheduleDef &schedule);

/// Titles with the same key differ only in letter case and blanks, which readers may not notice.
/// Empty for a blank title.
QString titleKey(const QString &title);
QString sameTitleWarning(const QString &title);

/// sameTitleWarning when another definition than the one of that id has the title, else empty.
/// `titleOf`: the member that holds the titles.
template <typename Definition>
QString sameTitleWarning(const Collection<Definition> &definitions, QString Definition::*titleOf,
                         const QString &id, const QString &title)
{
    const QString key = titleKey(title);
    const auto own = definitions.find(id);
    const bool isTaken =
        std::any_of(definitions.begin(), definitions.end(), [&](const auto &other) {
            return other != own && titleKey((*other).*titleOf) == key;
        });
    return isTaken && !key.isEmpty() ? sameTitleWarning(title) : QString();
}
