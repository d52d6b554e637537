#pragma once

#include "odbc/OdbcRecordset.h"

#include <QStringList>

/// Rows as lines of texts, in the order in which they come.
inline QStringList lines(OdbcRecordset &rows)
{
    QStringList result;
    while (rows.next()) {
        QStringList cells;
        for (int i = 0; i < rows.columnCount(); ++i)
            cells.append(rows.isNull(i) ? "NULL" : rows.text(i));
        result.append(cells.join(u'|'));
    }
    return result;
}
