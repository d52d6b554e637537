#pragma once

#include "data/Recordset.h"

#include <QStringList>

/// Rows as lines of texts, in the order in which they come.
inline QStringList lines(Recordset &rows)
{
    QStringList result;
    while (rows.next()) {
        QStringList cells;
        for (int i = 0; i < rows.columns().size(); ++i)
            cells.append(rows.isNull(i) ? "NULL" : rows.text(i));
        result.append(cells.join(u'|'));
    }
    return result;
}
