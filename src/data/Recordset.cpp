#include "data/Recordset.h"

#include "core/Error.h"
#include "core/Numbers.h"

#include <cmath>

namespace {

int columnOf(const QStringList &columns, const QString &name)
{
    for (qsizetype i = 0; i < columns.size(); ++i) {
        if (columns[i].compare(name, Qt::CaseInsensitive) == 0)
            return static_cast<int>(i);
    }
    throw Error(ItemNotFound, QStringLiteral("Item not found: no column '%1'").arg(name));
}

} // namespace

qint64 toInteger(double value)
{
    const double rounded = std::nearbyint(value);
    if (!(rounded >= -9.223372036854775e18 && rounded <= 9.223372036854775e18))
        throw Error(Overflow, QStringLiteral("Overflow: %1 is no 64-bit integer").arg(value));
    return static_cast<qint64>(rounded);
}

qint64 toInteger(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Double:
        return toInteger(value.toDouble());
    case QMetaType::QString:
        return toInteger(leadingNumber(value.toString()));
    default:
        return value.toLongLong();
    }
}

double toNumber(const QVariant &value)
{
    return value.typeId() == QMetaType::QString ? leadingNumber(value.toString())
                                                : value.toDouble();
}

QString toText(const QVariant &value)
{
    return value.typeId() == QMetaType::Double ? plainNumber(value.toDouble()) : value.toString();
}

int Recordset::column(const QString &name) const
{
    return columnOf(columns(), name);
}
