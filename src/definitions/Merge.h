#pragma once

#include <QString>

#include <pugixml.hpp>
#include <vector>

/// Definitions put into the files as users left them: comments, order, and attributes and elements
/// that the tool does not know stay.

/// Gives an element the attributes and the children of `fresh`, a newly written one of the same
/// definition. Of its children only those that `fresh` could have are removed: a schedule, device
/// or data item that it does not name any more.
void mergeElement(pugi::xml_node element, const pugi::xml_node &fresh);

/// An element of a file, and its key.
struct KeyedElement
{
    pugi::xml_node node;
    QString key;
};

/// Makes the elements `present`, in document order below `parent`, those of `fresh`, in the order
/// of `fresh`: merges those that have the key of one, and adds the others. `present` must hold no
/// other. A comment before an element goes where the element goes.
void mergeElements(pugi::xml_node parent, const std::vector<KeyedElement> &present,
                   const std::vector<KeyedElement> &fresh);
