#include "access/Location.h"

#include "base/Error.h"

namespace mdb {

QString Location::message(const QString &what) const
{
    QString text = u'\'' + file + u'\'';
    if (!table.isEmpty())
        text += QStringLiteral(", table '") + table + u'\'';
    if (page >= 0)
        text += QStringLiteral(", page ") + QString::number(page);
    return text + QStringLiteral(": ") + what;
}

void Location::fail(const QString &what) const
{
    throw Error(InvalidFileFormat, message(what));
}

} // namespace mdb
