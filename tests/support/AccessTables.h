#pragma once

#include "demo/AccessWriter.h"

#include <QVariant>

/// Access files for tests: tables by their fields, rows by their values.

using Row = std::vector<QVariant>;

/// Appends a row whose values stand in the order of the fields; an invalid one is NULL, an instant
/// (qint64) becomes a date-time, Currency counts in ten-thousandths.
inline demo::RowAddress append(demo::TableWriter &table, const std::vector<demo::Field> &fields,
                               const Row &row)
{
    using enum demo::FieldType;
    for (int i = 0; i < static_cast<int>(row.size()); ++i) {
        const QVariant &value = row[static_cast<size_t>(i)];
        if (!value.isValid())
            continue;
        switch (fields[static_cast<size_t>(i)].type) {
        case Boolean:
            table.setBoolean(i, value.toBool());
            break;
        case Single:
        case Double:
            table.setNumber(i, value.toDouble());
            break;
        case DateTime:
            table.setNumber(i, demo::accessDays(value.toLongLong()));
            break;
        case Currency:
            table.setCurrency(i, value.toLongLong());
            break;
        case Numeric:
            table.setNumeric(i, value.toString());
            break;
        case Text:
        case Memo:
            table.setText(i, value.toString());
            break;
        case Binary:
        case Ole:
            table.setBytes(i, value.toByteArray());
            break;
        case Guid:
            table.setGuid(i, value.toUuid());
            break;
        default:
            table.setInteger(i, value.toLongLong());
        }
    }
    return table.append();
}

struct AccessTable
{
    QString name;
    std::vector<demo::Field> fields;
    std::vector<Row> rows;
};

inline void writeTables(const QString &path, const std::vector<AccessTable> &tables)
{
    demo::AccessWriter writer(path, 0);
    for (const AccessTable &table : tables) {
        demo::TableWriter &rows = writer.addTable(table.name, table.fields);
        for (const Row &row : table.rows)
            append(rows, table.fields, row);
    }
    writer.finish();
}
