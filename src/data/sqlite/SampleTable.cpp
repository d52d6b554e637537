#include "data/sqlite/SampleTable.h"

#include "core/Error.h"
#include "data/DayNumbers.h"
#include "data/sqlite/Columns.h"

#include <algorithm>
#include <cmath>

namespace {

// Plans of a walk. A search is told by one letter for each value given: the item, and conditions
// on the time.
enum Plan { scanPlan, countPlan, searchPlan };
constexpr char itemLetter = '=';
constexpr char atLeastLetter = 'g';
constexpr char moreLetter = 'G';
constexpr char atMostLetter = 'l';
constexpr char lessLetter = 'L';

constexpr int mostMisses = 2;      ///< then all samples are kept
constexpr double mostIdent = 9e15; ///< whole numbers up to here are exact
constexpr double scanCost = 1e9;
constexpr double searchCost = 1e3;

/// A period that holds nothing.
constexpr Period noPeriod{0, -1};

/// Narrows a period by "iDate >= day" or "iDate > day".
void setLower(Period &period, double day, bool isStrict)
{
    if (!isDayNumber(day)) {
        if (day > 0)
            period = noPeriod;
        return;
    }
    qint64 instant = instantOfDay(day);
    if (dayNumber(instant) < day || (isStrict && dayNumber(instant) == day))
        ++instant;
    period.from = std::max(period.from, instant);
}

/// Narrows a period by "iDate <= day" or "iDate < day".
void setUpper(Period &period, double day, bool isStrict)
{
    if (!isDayNumber(day)) {
        if (day < 0)
            period = noPeriod;
        return;
    }
    qint64 instant = instantOfDay(day);
    if (dayNumber(instant) > day || (isStrict && dayNumber(instant) == day))
        --instant;
    period.to = std::min(period.to, instant);
}

char letterOf(int op)
{
    switch (op) {
    case SQLITE_INDEX_CONSTRAINT_GE:
        return atLeastLetter;
    case SQLITE_INDEX_CONSTRAINT_GT:
        return moreLetter;
    case SQLITE_INDEX_CONSTRAINT_LE:
        return atMostLetter;
    case SQLITE_INDEX_CONSTRAINT_LT:
        return lessLetter;
    default:
        return 0;
    }
}

} // namespace

class SampleTable::Cursor : public VirtualCursor
{
public:
    explicit Cursor(SampleTable &table)
        : m_table(table)
    {}

    void filter(int plan, const char *planText, int count, sqlite3_value **values) override
    {
        m_plan = plan;
        m_row.reset();
        m_held = {};
        if (plan == searchPlan)
            search(planText, count, values);
        else if (plan == countPlan)
            m_left = m_table.countRows() + 1;
        else
            m_row = std::make_unique<mdb::RowCursor>(m_table.m_file, m_table.m_table);
        next();
    }

    void next() override
    {
        if (m_plan == searchPlan)
            m_isAtEnd = !m_held.samples.next();
        else if (m_plan == countPlan)
            m_isAtEnd = --m_left == 0;
        else
            m_isAtEnd = !m_row->next();
    }

    bool eof() const override { return m_isAtEnd; }

    void column(sqlite3_context *context, int number) const override
    {
        if (m_row)
            resultOf(context, *m_row, m_table.m_table, number);
        else if (number == m_table.m_ident)
            sqlite3_result_int64(context, m_ident);
        else if (number == m_table.m_date)
            sqlite3_result_double(context, dayNumber(m_held.samples.instant()));
        else if (number == m_table.m_state && !m_held.samples.stateIsNull())
            sqlite3_result_int(context, m_held.samples.state());
        else if (number == m_table.m_value) // a NaN is a NULL to SQLite too
            sqlite3_result_double(context, m_held.samples.value());
    }

    qint64 rowNumber() const override
    {
        throw Error(DatabaseError, QStringLiteral("'%1', table '%2': its rows have no numbers")
                                       .arg(m_table.m_file.path(), m_table.m_table.name));
    }

private:
    /// What SQLite's rules of comparison say of each value is settled here, to the millisecond:
    /// checking each row again would cost more than the walk.
    void search(const char *planText, int count, sqlite3_value **values)
    {
        Period period;
        for (int i = 0; i < count; ++i) {
            const int type = sqlite3_value_numeric_type(values[i]);
            const bool isNumber = type == SQLITE_INTEGER || type == SQLITE_FLOAT;
            const double number = isNumber ? sqlite3_value_double(values[i]) : 0;
            if (type == SQLITE_NULL || !narrow(period, planText[i], isNumber, number))
                return;
        }
        m_held = m_table.walk(m_ident, period);
    }

    /// False when no row can fulfil the condition.
    bool narrow(Period &period, char letter, bool isNumber, double number)
    {
        switch (letter) {
        case atLeastLetter:
        case moreLetter:
            setLower(period, number, letter == moreLetter);
            return isNumber; // texts are more than all numbers
        case atMostLetter:
        case lessLetter:
            if (isNumber)
                setUpper(period, number, letter == lessLetter);
            return true;
        default:
            if (!isNumber || number != std::nearbyint(number) || std::abs(number) > mostIdent)
                return false;
            m_ident = static_cast<qint64>(number);
            return true;
        }
    }

    SampleTable &m_table;
    int m_plan = scanPlan;
    bool m_isAtEnd = true;
    std::unique_ptr<mdb::RowCursor> m_row; ///< of a scan
    qint64 m_left = 0;                     ///< of a count
    HeldWalk m_held;                       ///< of a search
    qint64 m_ident = 0;
};

SampleTable::SampleTable(mdb::AccessFile &file, const mdb::Table &table)
    : m_file(file)
    , m_table(table)
    , m_ident(table.column(QStringLiteral("DataIDent")))
    , m_date(table.column(QStringLiteral("iDate")))
    , m_state(table.column(QStringLiteral("iState")))
    , m_value(table.column(QStringLiteral("iValue")))
{}

SampleTable::~SampleTable() = default;

void SampleTable::expect(const SampleScope &scope)
{
    m_expected.add(scope);
}

void SampleTable::forget()
{
    m_index.reset();
    m_expected.clear();
    m_misses = 0;
}

qint64 SampleTable::countRows()
{
    if (m_index)
        return m_index->rowCount();
    if (!m_expected.isEmpty()) {
        build(m_expected);
        return m_index->rowCount();
    }
    if (m_rowCount < 0) {
        mdb::RowCursor row(m_file, m_table);
        qint64 count = 0;
        while (row.next())
            ++count;
        m_rowCount = count;
    }
    return m_rowCount;
}

SampleTable::HeldWalk SampleTable::walk(qint64 dataIdent, const Period &period)
{
    if (!m_index || !m_index->kept().covers(dataIdent, period)) {
        if (m_index)
            ++m_misses;
        if (m_expected.isEmpty() || m_misses > mostMisses)
            m_expected = KeptSamples::all();
        else
            m_expected.add(dataIdent, period);
        build(m_expected);
    }
    return {m_index, m_index->walk(dataIdent, period)};
}

void SampleTable::build(KeptSamples kept)
{
    m_index.reset(); // before the new one takes its memory
    m_index = std::make_shared<const SampleIndex>(m_file, m_table, std::move(kept));
}

bool SampleTable::isIndexed(int column) const
{
    return column == m_ident || column == m_date || column == m_state || column == m_value;
}

QString SampleTable::declaration() const
{
    return declarationOf(m_table);
}

std::unique_ptr<VirtualCursor> SampleTable::open()
{
    return std::make_unique<Cursor>(*this);
}

void SampleTable::bestIndex(sqlite3_index_info &info)
{
    info.idxNum = info.colUsed == 0 && info.nConstraint == 0 ? countPlan : scanPlan;
    info.estimatedCost = scanCost;
    info.estimatedRows = static_cast<sqlite3_int64>(scanCost);
    if (needsOtherColumns(info))
        return;
    for (int i = 0; i < info.nConstraint; ++i) {
        const auto &condition = info.aConstraint[i];
        if (condition.usable && condition.op == SQLITE_INDEX_CONSTRAINT_EQ && m_ident >= 0 &&
            condition.iColumn == m_ident) {
            planSearch(info, i);
            return;
        }
    }
}

bool SampleTable::needsOtherColumns(const sqlite3_index_info &info) const
{
    constexpr int lastBit = 63; // stands for all columns from there on
    for (int i = 0; i < static_cast<int>(m_table.columns.size()); ++i) {
        const quint64 bit = quint64(1) << std::min(i, lastBit);
        if ((info.colUsed & bit) != 0 && !isIndexed(i))
            return true;
    }
    return false;
}

void SampleTable::planSearch(sqlite3_index_info &info, int itemCondition) const
{
    QByteArray letters(1, itemLetter);
    info.aConstraintUsage[itemCondition].argvIndex = 1;
    info.aConstraintUsage[itemCondition].omit = 1;
    for (int i = 0; i < info.nConstraint; ++i) {
        const auto &condition = info.aConstraint[i];
        const char letter = letterOf(condition.op);
        if (!condition.usable || condition.iColumn != m_date || letter == 0)
            continue;
        letters.append(letter);
        info.aConstraintUsage[i].argvIndex = static_cast<int>(letters.size());
        info.aConstraintUsage[i].omit = 1;
    }
    info.idxNum = searchPlan;
    info.idxStr = sqlite3_mprintf("%s", letters.constData());
    info.needToFreeIdxStr = 1;
    info.estimatedCost = searchCost;
    info.estimatedRows = static_cast<sqlite3_int64>(searchCost);
    info.orderByConsumed =
        info.nOrderBy == 1 && info.aOrderBy[0].iColumn == m_date && info.aOrderBy[0].desc == 0;
}
