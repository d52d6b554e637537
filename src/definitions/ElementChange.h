#pragma once

#include "definitions/Merge.h"

#include <QByteArray>
#include <QSet>

#include <span>

/// Changes of definitions that can be taken back: what an element of a file was before.

struct ElementChange
{
    QString id;
    QByteArray before; ///< the element's XML; empty: there was none
    QString next;      ///< the id of the definition after it; empty: it was the last one
};

/// What the elements of a file with these ids (in lower case) are, before they change: in the
/// file's order, so that of neighbours the last one comes back first.
std::vector<ElementChange> elementsBefore(const std::vector<KeyedElement> &existing,
                                          const QSet<QString> &ids);

/// Makes the elements `existing` below the document's root what they were before the changes, of
/// which the last one is taken back first. An element that a later run has stamped keeps its dates.
/// `idAttribute`: set where an element had none.
void takeBack(pugi::xml_document &document, const std::vector<KeyedElement> &existing,
              const char *idAttribute, std::span<const ElementChange> changes);
