#include "data/access/Place.h"

#include "core/Error.h"

namespace mdb {

void Place::fail(const QString &what) const
{
    QString where = u'\'' + file + u'\'';
    if (!table.isEmpty())
        where += QStringLiteral(", table '") + table + u'\'';
    if (page >= 0)
        where += QStringLiteral(", page ") + QString::number(page);
    throw Error(InvalidFileFormat, where + QStringLiteral(": ") + what);
}

} // namespace mdb
