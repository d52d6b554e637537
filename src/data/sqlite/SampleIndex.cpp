#include "data/sqlite/SampleIndex.h"

#include "core/Error.h"
#include "core/Status.h"
#include "data/sqlite/Columns.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace {

constexpr quint32 firstBlock = 64;   ///< samples
constexpr quint32 growthDivisor = 6; ///< a new block holds a sixth of what is there already
constexpr size_t sampleBytes = sizeof(qint64) + sizeof(double) + sizeof(qint32);
constexpr qint64 rowsBetweenYields = 1 << 14;

// NULLs are kept as values that no sample can have: a NaN (SQL knows none) and the least integer.
constexpr qint32 nullState = std::numeric_limits<qint32>::min();
const double nullValue = std::numeric_limits<double>::quiet_NaN();

struct Sample
{
    qint64 time = 0;
    double value = 0;
    qint32 state = 0;
    quint32 place = 0; ///< among the item's samples as stored
};

} // namespace

/// Some samples of an item, column by column in one piece of memory.
struct SampleIndex::Block
{
    explicit Block(quint32 samples)
        : capacity(samples)
        , memory(std::make_unique_for_overwrite<std::byte[]>(samples * sampleBytes))
    {}

    qint64 *times() const { return reinterpret_cast<qint64 *>(memory.get()); }
    double *values() const { return reinterpret_cast<double *>(times() + capacity); }
    qint32 *states() const { return reinterpret_cast<qint32 *>(values() + capacity); }

    void append(const Sample &sample)
    {
        times()[count] = sample.time;
        values()[count] = sample.value;
        states()[count] = sample.state;
        ++count;
    }

    /// Gives back the room that is not used.
    void trim()
    {
        if (count == capacity)
            return;
        Block exact(count);
        std::copy_n(times(), count, exact.times());
        std::copy_n(values(), count, exact.values());
        std::copy_n(states(), count, exact.states());
        exact.count = count;
        *this = std::move(exact);
    }

    quint32 capacity;
    quint32 count = 0;
    std::unique_ptr<std::byte[]> memory;
};

struct SampleIndex::Item
{
    Period period;
    qint64 lastTime = std::numeric_limits<qint64>::min();
    quint32 count = 0; ///< samples in the blocks that are full
    bool isSorted = true;
    std::vector<Block> blocks;

    void append(const Sample &sample)
    {
        if (blocks.empty() || blocks.back().count == blocks.back().capacity)
            addBlock();
        blocks.back().append(sample);
        isSorted = isSorted && sample.time >= lastTime;
        lastTime = sample.time;
    }

    void addBlock()
    {
        if (!blocks.empty())
            count += blocks.back().count;
        blocks.emplace_back(std::max(firstBlock, count / growthDivisor));
    }

    void finish()
    {
        if (blocks.empty())
            return;
        blocks.back().trim();
        blocks.shrink_to_fit();
        count += blocks.back().count;
        if (!isSorted)
            sort();
    }

    /// Takes a copy of this item's samples meanwhile; the copy is gone before the next item's.
    void sort()
    {
        std::vector<Sample> samples;
        samples.reserve(count);
        for (const Block &block : blocks) {
            for (quint32 i = 0; i < block.count; ++i)
                samples.push_back({block.times()[i], block.values()[i], block.states()[i],
                                   static_cast<quint32>(samples.size())});
        }
        std::sort(samples.begin(), samples.end(), [](const Sample &a, const Sample &b) {
            return a.time != b.time ? a.time < b.time : a.place < b.place;
        });
        auto sample = samples.cbegin();
        for (Block &block : blocks) {
            for (block.count = 0; block.count < block.capacity;)
                block.append(*sample++);
        }
        isSorted = true;
    }
};

/// Fills an index row by row.
class SampleIndexBuilder
{
public:
    SampleIndexBuilder(SampleIndex &index, mdb::AccessFile &file, const mdb::Table &table)
        : m_index(index)
        , m_file(file)
        , m_table(table)
        , m_ident(column("DataIDent"))
        , m_date(column("iDate"))
        , m_state(column("iState"))
        , m_value(column("iValue"))
    {
        const auto &periods = index.m_kept.periods();
        for (auto entry = periods.cbegin(); entry != periods.cend(); ++entry)
            addItem(entry.key(), entry.value());
    }

    void run()
    {
        mdb::RowCursor row(m_file, m_table);
        while (row.next()) {
            if (++m_index.m_rowCount % rowsBetweenYields == 0)
                yieldToUser();
            take(row);
        }
        for (SampleIndex::Item &item : m_index.m_items)
            item.finish();
    }

private:
    struct ColumnUse
    {
        int number = 0;
        bool isInteger = false;
    };

    [[noreturn]] void fail(int number, const char *columnName, const QString &what) const
    {
        throw Error(number, QStringLiteral("'%1', table '%2', column '%3': %4")
                                .arg(m_file.path(), m_table.name, QLatin1String(columnName), what));
    }

    ColumnUse column(const char *name) const
    {
        const int number = m_table.column(QLatin1String(name));
        if (number < 0)
            fail(ItemNotFound, name, QStringLiteral("the column is missing"));
        const ColumnKind kind = kindOf(m_table.columns[static_cast<size_t>(number)]);
        const bool isDate = std::strcmp(name, "iDate") == 0;
        if (isDate && kind != ColumnKind::Date)
            fail(TypeMismatch, name, QStringLiteral("it holds no date-times"));
        if (!isDate && kind != ColumnKind::Integer && kind != ColumnKind::Number)
            fail(TypeMismatch, name, QStringLiteral("it holds no numbers"));
        return {number, kind == ColumnKind::Integer};
    }

    void take(const mdb::RowCursor &row)
    {
        if (row.isNull(m_ident.number))
            return;
        SampleIndex::Item *item = itemOf(identOf(row));
        if (!item || row.isNull(m_date.number))
            return;
        const qint64 time = row.instant(m_date.number);
        if (time < item->period.from || time > item->period.to)
            return;
        item->append({time, row.isNull(m_value.number) ? nullValue : row.number(m_value.number),
                      row.isNull(m_state.number) ? nullState : stateOf(row), 0});
        ++m_index.m_sampleCount;
    }

    qint64 identOf(const mdb::RowCursor &row) const
    {
        if (m_ident.isInteger)
            return integerOf(row, m_table, m_ident.number);
        const double ident = row.number(m_ident.number);
        if (ident != std::nearbyint(ident) || std::abs(ident) > 9e15)
            fail(TypeMismatch, "DataIDent", QStringLiteral("%1 is no whole number").arg(ident));
        return static_cast<qint64>(ident);
    }

    qint32 stateOf(const mdb::RowCursor &row) const
    {
        const double state = m_state.isInteger
                                 ? static_cast<double>(integerOf(row, m_table, m_state.number))
                                 : std::nearbyint(row.number(m_state.number));
        if (!(std::abs(state) <= std::numeric_limits<qint32>::max()))
            fail(Overflow, "iState", QStringLiteral("%1 is too large a state").arg(state));
        return static_cast<qint32>(state);
    }

    /// Null for an item whose samples are not kept.
    SampleIndex::Item *itemOf(qint64 ident)
    {
        const auto found = m_index.m_numbers.constFind(ident);
        if (found != m_index.m_numbers.cend())
            return &m_index.m_items[static_cast<size_t>(*found)];
        return m_index.m_kept.isAll() ? addItem(ident, {}) : nullptr;
    }

    SampleIndex::Item *addItem(qint64 ident, const Period &period)
    {
        m_index.m_numbers.insert(ident, static_cast<qsizetype>(m_index.m_items.size()));
        SampleIndex::Item &item = m_index.m_items.emplace_back();
        item.period = period;
        return &item;
    }

    SampleIndex &m_index;
    mdb::AccessFile &m_file;
    const mdb::Table &m_table;
    ColumnUse m_ident;
    ColumnUse m_date;
    ColumnUse m_state;
    ColumnUse m_value;
};

void Period::extend(const Period &other)
{
    from = std::min(from, other.from);
    to = std::max(to, other.to);
}

KeptSamples KeptSamples::all()
{
    KeptSamples kept;
    kept.m_isAll = true;
    return kept;
}

void KeptSamples::add(const SampleScope &scope)
{
    // The bounds that queries carry are whole seconds, fractions dropped.
    constexpr qint64 second = 1000;
    const qint64 fraction = (scope.from % second + second) % second;
    const qint64 least = std::numeric_limits<qint64>::min();
    const qint64 from = scope.from < least + second ? least : scope.from - fraction;
    for (const qint64 dataIdent : scope.dataIdents)
        add(dataIdent, {from, scope.to});
}

void KeptSamples::add(qint64 dataIdent, const Period &period)
{
    const auto found = m_periods.find(dataIdent);
    if (found == m_periods.end())
        m_periods.insert(dataIdent, period);
    else
        found->extend(period);
}

bool KeptSamples::covers(qint64 dataIdent, const Period &period) const
{
    if (m_isAll || period.from > period.to)
        return true;
    const auto found = m_periods.constFind(dataIdent);
    return found != m_periods.cend() && found->covers(period);
}

SampleIndex::SampleIndex(mdb::AccessFile &file, const mdb::Table &table, KeptSamples kept)
    : m_kept(std::move(kept))
{
    SampleIndexBuilder(*this, file, table).run();
}

SampleIndex::~SampleIndex() = default;

qint64 SampleIndex::bytes() const
{
    size_t all = m_items.capacity() * sizeof(Item) +
                 static_cast<size_t>(m_numbers.capacity()) * 2 * sizeof(qint64);
    for (const Item &item : m_items) {
        all += item.blocks.capacity() * sizeof(Block);
        for (const Block &block : item.blocks)
            all += block.capacity * sampleBytes;
    }
    return static_cast<qint64>(all);
}

SampleIndex::Walk SampleIndex::walk(qint64 dataIdent, const Period &period) const
{
    const auto found = m_numbers.constFind(dataIdent);
    if (found == m_numbers.cend())
        return {};
    return Walk(m_items[static_cast<size_t>(*found)], period);
}

SampleIndex::Walk::Walk(const Item &item, const Period &period)
    : m_blocks(&item.blocks)
    , m_to(period.to)
{
    const auto first =
        std::partition_point(item.blocks.begin(), item.blocks.end(), [&](const Block &block) {
            return block.times()[block.count - 1] < period.from;
        });
    m_block = static_cast<size_t>(first - item.blocks.begin());
    if (first == item.blocks.end())
        return;
    const qint64 *times = first->times();
    m_next =
        static_cast<quint32>(std::lower_bound(times, times + first->count, period.from) - times);
    m_count = first->count;
    m_times = times;
    m_values = first->values();
    m_states = first->states();
}

bool SampleIndex::Walk::next()
{
    if (m_next == m_count) {
        if (!m_blocks || m_block >= m_blocks->size() || ++m_block == m_blocks->size())
            return false;
        const Block &block = (*m_blocks)[m_block];
        m_next = 0;
        m_count = block.count;
        m_times = block.times();
        m_values = block.values();
        m_states = block.states();
    }
    return m_times[m_next++] <= m_to;
}

qint64 SampleIndex::Walk::instant() const
{
    return m_times[m_next - 1];
}

bool SampleIndex::Walk::stateIsNull() const
{
    return state() == nullState;
}

bool SampleIndex::Walk::valueIsNull() const
{
    return std::isnan(value());
}

qint32 SampleIndex::Walk::state() const
{
    return m_states[m_next - 1];
}

double SampleIndex::Walk::value() const
{
    return m_values[m_next - 1];
}
