#pragma once

#include "data/DayNumbers.h"
#include "demo/AccessWriter.h"

#include <QTemporaryDir>
#include <QVariant>

/// Writes monitoring databases for tests: tables by their fields, rows by their values.
class MonitoringFile
{
public:
    MonitoringFile(const QString &path)
        : m_writer(path, 0)
    {}

    /// Adds a table and its rows. A row's values stand in the order of the fields; an invalid one
    /// is NULL; an instant (qint64) becomes a date-time.
    demo::TableWriter &add(const QString &name, const std::vector<demo::Field> &fields,
                           const std::vector<std::vector<QVariant>> &rows)
    {
        demo::TableWriter &table = m_writer.addTable(name, fields);
        for (const std::vector<QVariant> &row : rows) {
            for (size_t i = 0; i < fields.size(); ++i) {
                if (row[i].isValid())
                    set(table, static_cast<int>(i), fields[i].type, row[i]);
            }
            table.append();
        }
        return table;
    }

    void finish() { m_writer.finish(); }

private:
    static void set(demo::TableWriter &table, int field, demo::FieldType type,
                    const QVariant &value)
    {
        switch (type) {
        case demo::FieldType::Boolean:
            table.setBoolean(field, value.toBool());
            break;
        case demo::FieldType::Byte:
        case demo::FieldType::Integer:
        case demo::FieldType::Long:
            table.setInteger(field, value.toLongLong());
            break;
        case demo::FieldType::Single:
        case demo::FieldType::Double:
            table.setNumber(field, value.toDouble());
            break;
        case demo::FieldType::DateTime:
            table.setNumber(field, dayNumber(value.toLongLong()));
            break;
        case demo::FieldType::Currency:
            table.setCurrency(field, value.toLongLong());
            break;
        case demo::FieldType::Numeric:
            table.setNumeric(field, value.toString());
            break;
        case demo::FieldType::Text:
        case demo::FieldType::Memo:
            table.setText(field, value.toString());
            break;
        case demo::FieldType::Guid:
            table.setGuid(field, value.toUuid());
            break;
        case demo::FieldType::Binary:
        case demo::FieldType::Ole:
            table.setBytes(field, value.toByteArray());
            break;
        }
    }

    demo::AccessWriter m_writer;
};
