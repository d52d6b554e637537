#pragma once

#include "access/Location.h"

#include <QByteArrayView>
#include <QHash>

namespace mdb {

/// The result types of a table's calculated columns, by the column's case-folded name, read from
/// the table's properties in the catalog. Throws when these are broken.
QHash<QString, quint8> resultTypes(QByteArrayView properties, const Location &where);

} // namespace mdb
