#pragma once

#include "data/sqlite/SampleIndex.h"
#include "data/sqlite/VirtualTable.h"

/// The name of the table that is too large to be kept as it stands.
inline constexpr QLatin1String sampleTableName("DataValues");

/// The table of samples as a virtual table. Conditions "DataIDent = x" (and on iDate, beside it)
/// are answered from a SampleIndex; every other walk, and one that needs further columns, reads
/// the table in the file.
///
/// The index is made on first use and keeps what was announced. A query that it does not cover has
/// it made again with the query's item and period added; the third such query, with all samples.
class SampleTable : public VirtualTable
{
public:
    /// File and table have to outlive it.
    SampleTable(mdb::AccessFile &file, const mdb::Table &table);
    ~SampleTable() override;

    /// Adds to the samples that the queries to come can need.
    void expect(const SampleScope &scope);
    /// Drops the index and forgets what was announced.
    void forget();

    /// All rows of the table. Where samples are announced, the index is made for it; else the rows
    /// are counted without keeping any.
    qint64 countRows();

    /// Samples of an item, and the index that they stand in, which may be replaced meanwhile.
    struct HeldWalk
    {
        std::shared_ptr<const SampleIndex> index;
        SampleIndex::Walk samples;
    };
    HeldWalk walk(qint64 dataIdent, const Period &period);

    /// True for the four columns that the index holds.
    bool isIndexed(int column) const;

    const mdb::Table &definition() const { return m_table; }
    /// The index as it stands; null before its first use.
    const SampleIndex *index() const { return m_index.get(); }

    QString declaration() const override;
    void bestIndex(sqlite3_index_info &info) override;
    std::unique_ptr<VirtualCursor> open() override;

private:
    class Cursor;

    bool needsOtherColumns(const sqlite3_index_info &info) const;
    void planSearch(sqlite3_index_info &info, int itemCondition) const;
    void build(KeptSamples kept);

    mdb::AccessFile &m_file;
    const mdb::Table &m_table;
    int m_ident;
    int m_date;
    int m_state;
    int m_value;
    KeptSamples m_expected;
    int m_misses = 0;       ///< queries that the index did not cover
    qint64 m_rowCount = -1; ///< not known yet
    /// Walks may still be under way over an index that was replaced.
    std::shared_ptr<const SampleIndex> m_index;
};
