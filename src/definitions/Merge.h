#pragma once

#include <QString>

#include <pugixml.hpp>
#include <vector>

/// Merging definitions into the files: comments, order, and unknown attributes and elements stay.

/// Gives an element the attributes and the children of `fresh`, a newly written one of the same
/// definition. Of its children only schedules, devices, data items and maintenance that are not in
/// `fresh` are removed. A later LastRunDate of a schedule stays: a run may have written it
/// meanwhile.
void mergeElement(pugi::xml_node element, const pugi::xml_node &fresh);

/// Gives the schedules of a report's element the later run dates of `from`, another element of the
/// same report; a null one has none.
void keepLaterRuns(pugi::xml_node report, const pugi::xml_node &from);

/// An element of a file, and its key.
struct KeyedElement
{
    pugi::xml_node node;
    QString key;
};

/// Turns the elements `existing`, in document order below `parent`, into those of `fresh`, in the
/// order of `fresh`: merges those with equal keys, and adds the others. `existing` must not have
/// others. A comment before an element moves with it.
void mergeElements(pugi::xml_node parent, const std::vector<KeyedElement> &existing,
                   const std::vector<KeyedElement> &fresh);
