#include "data/sqlite/CachedTable.h"

#include "core/Error.h"
#include "data/DayNumbers.h"

#include <algorithm>
#include <cstring>
#include <numeric>

namespace {

/// The plan of a walk: all rows, or the number of the column whose value is given, plus one.
constexpr int allRows = 0;

struct Less
{
    bool operator()(qint64 a, qint64 b) const { return a < b; }
    bool operator()(double a, double b) const { return a < b; }
    bool operator()(const QString &a, const QString &b) const
    {
        return a.compare(b, Qt::CaseInsensitive) < 0;
    }
    // A number asked for may lie between two integers.
    bool operator()(qint64 a, double b) const { return static_cast<double>(a) < b; }
    bool operator()(double a, qint64 b) const { return a < static_cast<double>(b); }
};

/// The rows, out of those ordered by value, whose value equals the one wanted.
template <typename Values, typename Wanted>
std::span<const quint32> equalRange(const std::vector<quint32> &rows, const Values &values,
                                    const Wanted &wanted)
{
    const Less less;
    const auto from = std::partition_point(rows.begin(), rows.end(),
                                           [&](quint32 row) { return less(values[row], wanted); });
    const auto to = std::partition_point(from, rows.end(),
                                         [&](quint32 row) { return !less(wanted, values[row]); });
    return {from, to};
}

} // namespace

class CachedTable::Cursor : public VirtualCursor
{
public:
    explicit Cursor(CachedTable &table)
        : m_table(table)
    {}

    void filter(int plan, const char *, int, sqlite3_value **values) override
    {
        m_at = 0;
        m_isWhole = true;
        m_count = m_table.rowCount();
        if (plan != allRows)
            narrow(plan - 1, values[0]);
    }
    void next() override { ++m_at; }
    bool eof() const override { return m_at >= m_count; }
    void column(sqlite3_context *context, int number) const override
    {
        m_table.result(context, number, row());
    }
    qint64 rowNumber() const override { return static_cast<qint64>(row()); }

private:
    size_t row() const { return m_isWhole ? m_at : m_rows[m_at]; }

    void keep(std::span<const RowNumber> rows)
    {
        m_isWhole = false;
        m_rows = rows;
        m_count = rows.size();
    }

    /// Keeps a superset of the rows whose value equals the one given by SQLite's rules of
    /// comparison between types; where those are intricate, all rows.
    void narrow(int number, sqlite3_value *value)
    {
        const ColumnKind kind = kindOf(m_table.m_table.columns[static_cast<size_t>(number)]);
        const int type = kind == ColumnKind::Text ? sqlite3_value_type(value)
                                                  : sqlite3_value_numeric_type(value);
        if (type == SQLITE_NULL)
            keep({}); // nothing equals NULL
        else if (kind == ColumnKind::Text && type == SQLITE_TEXT)
            keep(m_table.rowsEqual(number, textOf(value)));
        else if (kind != ColumnKind::Text && (type == SQLITE_INTEGER || type == SQLITE_FLOAT))
            keep(m_table.rowsEqual(number, sqlite3_value_double(value)));
    }

    static QString textOf(sqlite3_value *value)
    {
        const auto *text = static_cast<const char16_t *>(sqlite3_value_text16(value));
        return QString::fromUtf16(text, sqlite3_value_bytes16(value) / 2);
    }

    CachedTable &m_table;
    size_t m_at = 0;
    size_t m_count = 0;
    bool m_isWhole = true;
    std::span<const RowNumber> m_rows; ///< unless whole
};

CachedTable::CachedTable(mdb::AccessFile &file, const mdb::Table &table)
    : m_file(file)
    , m_table(table)
{}

CachedTable::~CachedTable() = default;

QString CachedTable::declaration() const
{
    return declarationOf(m_table);
}

std::unique_ptr<VirtualCursor> CachedTable::open()
{
    return std::make_unique<Cursor>(*this);
}

void CachedTable::bestIndex(sqlite3_index_info &info)
{
    const auto rows = static_cast<double>(rowCount());
    info.idxNum = allRows;
    info.estimatedCost = rows + 1;
    info.estimatedRows = static_cast<sqlite3_int64>(rows);
    for (int i = 0; i < info.nConstraint; ++i) {
        if (!canSearch(info, i))
            continue;
        const int number = info.aConstraint[i].iColumn;
        const ColumnIndex &found = index(number);
        const double cost = 1 + static_cast<double>(found.rows.size()) /
                                    static_cast<double>(std::max<size_t>(found.distinctValues, 1));
        if (cost >= info.estimatedCost)
            continue;
        for (int j = 0; j < info.nConstraint; ++j)
            info.aConstraintUsage[j].argvIndex = 0;
        info.aConstraintUsage[i].argvIndex = 1;
        info.idxNum = number + 1;
        info.estimatedCost = cost;
        info.estimatedRows = static_cast<sqlite3_int64>(cost);
    }
}

bool CachedTable::canSearch(const sqlite3_index_info &info, int constraint) const
{
    const auto &condition = info.aConstraint[constraint];
    if (!condition.usable || condition.op != SQLITE_INDEX_CONSTRAINT_EQ || condition.iColumn < 0)
        return false;
    switch (kindOf(m_table.columns[static_cast<size_t>(condition.iColumn)])) {
    case ColumnKind::Text: {
        const char *collation =
            sqlite3_vtab_collation(const_cast<sqlite3_index_info *>(&info), constraint);
        return sqlite3_stricmp(collation, accessCollation) == 0;
    }
    case ColumnKind::Bytes:
        return false;
    default:
        return true;
    }
}

size_t CachedTable::rowCount()
{
    if (m_rowCount < 0) {
        mdb::RowCursor row(m_file, m_table);
        qint64 count = 0;
        while (row.next())
            ++count;
        m_rowCount = count;
    }
    return static_cast<size_t>(m_rowCount);
}

const CachedTable::ColumnData &CachedTable::column(int number)
{
    const auto found = m_columns.find(number);
    if (found != m_columns.end())
        return found->second;
    return m_columns.emplace(number, readColumn(number)).first->second;
}

CachedTable::ColumnData CachedTable::readColumn(int number)
{
    ColumnData data;
    mdb::RowCursor row(m_file, m_table);
    const auto readAll = [&](auto values, auto valueOf) {
        values.reserve(rowCount());
        while (row.next()) {
            const bool isNull = row.isNull(number);
            data.isNull.push_back(isNull);
            values.push_back(isNull ? typename decltype(values)::value_type() : valueOf());
        }
        data.values = std::move(values);
    };
    switch (kindOf(m_table.columns[static_cast<size_t>(number)])) {
    case ColumnKind::Integer:
        readAll(std::vector<qint64>(), [&] { return integerOf(row, m_table, number); });
        break;
    case ColumnKind::Number:
        readAll(std::vector<double>(), [&] { return row.number(number); });
        break;
    case ColumnKind::Date:
        readAll(std::vector<double>(), [&] { return dayNumber(row.instant(number)); });
        break;
    case ColumnKind::Text:
        readAll(std::vector<QString>(), [&] { return row.text(number); });
        break;
    case ColumnKind::Bytes:
        readAll(std::vector<QByteArray>(), [&] { return row.bytes(number); });
        break;
    }
    if (data.isNull.size() != rowCount())
        throw Error(DatabaseError,
                    QStringLiteral("'%1', table '%2': the table changed while it was read")
                        .arg(m_file.path(), m_table.name));
    return data;
}

const CachedTable::ColumnIndex &CachedTable::index(int number)
{
    if (const auto found = m_indexes.find(number); found != m_indexes.end())
        return found->second;
    const ColumnData &data = column(number);
    ColumnIndex made;
    for (size_t row = 0; row < data.isNull.size(); ++row) {
        if (!data.isNull[row])
            made.rows.push_back(static_cast<RowNumber>(row));
    }
    std::visit(
        [&made](const auto &values) {
            if constexpr (!std::is_same_v<decltype(values), const std::vector<QByteArray> &>) {
                const Less less;
                const auto precedes = [&](RowNumber a, RowNumber b) {
                    return less(values[a], values[b]);
                };
                std::stable_sort(made.rows.begin(), made.rows.end(), precedes);
                for (size_t i = 0; i < made.rows.size(); ++i) {
                    if (i == 0 || precedes(made.rows[i - 1], made.rows[i]))
                        ++made.distinctValues;
                }
            }
        },
        data.values);
    return m_indexes.emplace(number, std::move(made)).first->second;
}

std::span<const CachedTable::RowNumber> CachedTable::rowsEqual(int number, double value)
{
    const std::vector<RowNumber> &rows = index(number).rows;
    const auto &values = column(number).values;
    if (const auto *integers = std::get_if<std::vector<qint64>>(&values))
        return equalRange(rows, *integers, value);
    return equalRange(rows, std::get<std::vector<double>>(values), value);
}

std::span<const CachedTable::RowNumber> CachedTable::rowsEqual(int number, const QString &text)
{
    return equalRange(index(number).rows, std::get<std::vector<QString>>(column(number).values),
                      text);
}

void CachedTable::result(sqlite3_context *context, int number, size_t row)
{
    const ColumnData &data = column(number);
    if (data.isNull[row]) {
        sqlite3_result_null(context);
        return;
    }
    if (const auto *integers = std::get_if<std::vector<qint64>>(&data.values))
        sqlite3_result_int64(context, (*integers)[row]);
    else if (const auto *numbers = std::get_if<std::vector<double>>(&data.values))
        sqlite3_result_double(context, (*numbers)[row]);
    else if (const auto *texts = std::get_if<std::vector<QString>>(&data.values))
        resultText(context, (*texts)[row]);
    else
        resultBytes(context, std::get<std::vector<QByteArray>>(data.values)[row]);
}
