#pragma once

#include "data/Recordset.h"
#include "data/sqlite/SampleTable.h"

/// Samples of one data item as a recordset, straight from the index.
///
/// Measured with 1,000 queries over 3.9 million samples: SQLite takes 0.9 to 1.5 s to hand the rows
/// on, this way takes 0.1 s; one pass over the file that makes the index takes 0.4 s.
class SampleRecordset : public Recordset
{
public:
    /// `columns` of the table, each one of the four that the index holds.
    SampleRecordset(SampleTable &table, QStringList columns, qint64 dataIdent,
                    const Period &period);

    QStringList columns() const override { return m_columns; }
    bool next() override { return m_held.samples.next(); }
    bool isNull(int column) const override;
    qint64 integer(int column) const override;
    double number(int column) const override;
    qint64 instant(int column) const override;
    QString text(int column) const override;
    QVariant value(int column) const override;

private:
    enum class Source { Ident, Date, State, Value };
    Source source(int column) const { return m_sources[static_cast<size_t>(column)]; }

    QStringList m_columns;
    std::vector<Source> m_sources;
    qint64 m_dataIdent;
    SampleTable::HeldWalk m_held;
};
