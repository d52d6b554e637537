#pragma once

#include "definitions/Collection.h"
#include "definitions/GraphDef.h"
#include "definitions/ScheduleDef.h"

/// What a user should be told about definitions that are valid but hardly mean what they say: the
/// rules of the editors and of the check. Pure functions.

/// Why a report with this chart and this schedule shows the same period at every run: the chart has
/// a custom range, for which only a run from the window asks, and the schedule repeats. Empty where
/// there is nothing to say.
QString samePeriodWarning(const clsGraphDef &chart, const clsScheduleDef &schedule);

/// Charts, schedules or reports whose titles have the same key look alike to a reader: only letter
/// case and blanks tell them apart. Empty for a title of nothing but blanks.
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
