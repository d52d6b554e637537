#include "data/access/Place.h"

#include "core/Error.h"

namespace mdb {

QString Place::message(const QString &what) const
{
    QString where = u'\'' + file + u'\'';
    if (!table.isEmpty())
        where += QStringLiteral(", table '") + table + u'\'';
    if (page >= 0)
        where += QStringLiteral(", page ") + QString::number(page);
    return where + QStringLiteral(": ") + what;
}

void Place::fail(const QString &what) const
{
    throw Error(InvalidFileFormat, message(what));
}

} // namespace mdb
