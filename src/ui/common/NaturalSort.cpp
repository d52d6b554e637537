#include "ui/common/NaturalSort.h"

#include "base/NaturalOrder.h"

#include <QCollator>

int compareNaturally(const QString &a, const QString &b)
{
    const QLocale locale;
    if (locale.language() == QLocale::C) // its collation knows neither case nor numbers
        return naturalKey(a).compare(naturalKey(b));
    QCollator collator(locale);
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator.compare(a, b);
}

bool NaturalSortModel::lessThan(const QModelIndex &left, const QModelIndex &right) const
{
    const QVariant a = left.data(sortRole());
    const QVariant b = right.data(sortRole());
    if (a.typeId() != QMetaType::QString || b.typeId() != QMetaType::QString)
        return QSortFilterProxyModel::lessThan(left, right);
    return compareNaturally(a.toString(), b.toString()) < 0;
}
