#pragma once

#include "data/access/Place.h"

#include <QByteArrayView>
#include <QHash>

namespace mdb {

/// The types of the results of a table's calculated columns, by the column's case-folded name, from
/// the properties that the catalog holds of the table. Fails at `place` when these are broken.
QHash<QString, quint8> resultTypes(QByteArrayView properties, const Place &place);

} // namespace mdb
