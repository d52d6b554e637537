#pragma once

#include "data/Recordset.h"

#include <utility>

/// A recordset over rows that a test writes down.
class ListRecordset : public Recordset
{
public:
    ListRecordset(QStringList columns, std::vector<std::vector<QVariant>> rows)
        : m_columns(std::move(columns))
        , m_rows(std::move(rows))
    {}

    QStringList columns() const override { return m_columns; }
    bool next() override { return ++m_at < static_cast<qsizetype>(m_rows.size()); }
    bool isNull(int column) const override { return value(column).isNull(); }
    qint64 integer(int column) const override { return toInteger(value(column)); }
    double number(int column) const override { return toNumber(value(column)); }
    qint64 instant(int column) const override { return value(column).toLongLong(); }
    QString text(int column) const override { return toText(value(column)); }
    QVariant value(int column) const override
    {
        return m_rows.at(static_cast<size_t>(m_at)).at(static_cast<size_t>(column));
    }

private:
    QStringList m_columns;
    std::vector<std::vector<QVariant>> m_rows;
    qsizetype m_at = -1;
};
