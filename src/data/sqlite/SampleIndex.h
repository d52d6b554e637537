#pragma once

#include "data/Connection.h"
#include "data/access/AccessFile.h"

#include <QHash>

#include <cstddef>
#include <limits>
#include <memory>
#include <vector>

/// A period; instants, both inclusive.
struct Period
{
    qint64 from = std::numeric_limits<qint64>::min();
    qint64 to = std::numeric_limits<qint64>::max();

    bool covers(const Period &other) const { return from <= other.from && to >= other.to; }
    /// Becomes the least period that covers both.
    void extend(const Period &other);
};

/// Which samples an index keeps: those of the items named, each within its period, or all.
class KeptSamples
{
public:
    static KeptSamples all();

    void add(const SampleScope &scope);
    void add(qint64 dataIdent, const Period &period);
    void clear() { *this = KeptSamples(); }

    bool isAll() const { return m_isAll; }
    bool isEmpty() const { return !m_isAll && m_periods.isEmpty(); }
    bool covers(qint64 dataIdent, const Period &period) const;
    const QHash<qint64, Period> &periods() const { return m_periods; }

private:
    bool m_isAll = false;
    QHash<qint64, Period> m_periods; ///< by data item
};

/// The samples of the table `DataValues` in memory, by data item and in order of time, gathered in
/// one pass over the table. Takes at most 24 bytes for each sample kept (20 once it is made), and
/// some 100 for each data item.
///
/// The columns DataIDent, iDate, iState and iValue have to be there and to be numeric (iDate a
/// date-time): else the constructor throws Error(ItemNotFound) or Error(TypeMismatch) naming the
/// file, table and column. States are kept as 32-bit integers, fractions rounded half to even,
/// True is -1. Samples without a time or an item are counted but not kept.
class SampleIndex
{
public:
    /// Reads the whole table. Throws what the file's reader throws. Yields to the message loop.
    SampleIndex(mdb::AccessFile &file, const mdb::Table &table, KeptSamples kept);
    ~SampleIndex();
    SampleIndex(const SampleIndex &) = delete;
    SampleIndex &operator=(const SampleIndex &) = delete;

    const KeptSamples &kept() const { return m_kept; }
    qint64 rowCount() const { return m_rowCount; }       ///< all rows of the table
    qint64 sampleCount() const { return m_sampleCount; } ///< samples kept
    qint64 bytes() const;                                ///< memory held by the samples kept

    class Walk;
    /// The samples of an item in a period, ascending by time, those of one time as stored. The
    /// index has to outlive the walk.
    Walk walk(qint64 dataIdent, const Period &period) const;

private:
    friend class SampleIndexBuilder;
    struct Block;
    struct Item;

    KeptSamples m_kept;
    QHash<qint64, qsizetype> m_numbers; ///< data item -> place in m_items
    std::vector<Item> m_items;
    qint64 m_rowCount = 0;
    qint64 m_sampleCount = 0;
};

class SampleIndex::Walk
{
public:
    Walk() = default; ///< over nothing

    /// Moves to the next sample, at first to the first one; false behind the last.
    bool next();

    qint64 instant() const;
    bool stateIsNull() const;
    bool valueIsNull() const;
    qint32 state() const;
    double value() const;

private:
    friend class SampleIndex;
    Walk(const Item &item, const Period &period);

    const std::vector<Block> *m_blocks = nullptr;
    size_t m_block = 0;
    quint32 m_next = 0; ///< place of the sample behind the present one, within the block
    qint64 m_to = 0;
    // The present block's columns.
    quint32 m_count = 0;
    const qint64 *m_times = nullptr;
    const double *m_values = nullptr;
    const qint32 *m_states = nullptr;
};
