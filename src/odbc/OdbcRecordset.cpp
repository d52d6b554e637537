#include "odbc/OdbcRecordset.h"

#include "base/DayNumbers.h"
#include "base/Error.h"
#include "base/Numbers.h"
#include "odbc/OdbcConnection.h"
#include "odbc/OdbcStatement.h"

#include <QDateTime>

#include <chrono>
#include <cmath>
#include <cstring>
#include <numeric>

namespace {

template <typename Value>
Value load(const std::byte *from)
{
    Value value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

/// Dates of the proleptic Gregorian calendar; `datetime` counts in 1/300 s, hence the rounding.
qint64 instantOfStamp(const SQL_TIMESTAMP_STRUCT &stamp)
{
    using namespace std::chrono;
    const year_month_day date(year(stamp.year), month(stamp.month), day(stamp.day));
    const milliseconds time = sys_days(date).time_since_epoch() + hours(stamp.hour) +
                              minutes(stamp.minute) + seconds(stamp.second) +
                              milliseconds((stamp.fraction + 500'000) / 1'000'000);
    return time.count();
}

/// Old drivers hand out `datetime2` as a text, "2024-03-01 07:05:09.1234567". Throws Error naming
/// the column for any other text.
qint64 instantOfText(const QString &text, const QString &column)
{
    const QDateTime time = QDateTime::fromString(text.trimmed() + u'Z', Qt::ISODateWithMs);
    if (!time.isValid())
        throw Error(TypeMismatch,
                    QStringLiteral("The column '%1' holds '%2', which is not a date with a time")
                        .arg(column, text));
    return time.toMSecsSinceEpoch();
}

qint64 toInteger(double value)
{
    const double rounded = std::nearbyint(value);
    if (!(rounded >= -9.223372036854775e18 && rounded <= 9.223372036854775e18))
        throw Error(Overflow, QStringLiteral("Overflow: %1 is not a 64-bit integer").arg(value));
    return static_cast<qint64>(rounded);
}

/// The positions of the wanted columns, which the statement has checked.
std::vector<std::size_t> orderOf(const QStringList &wanted, const std::vector<OdbcColumn> &columns)
{
    if (wanted.isEmpty()) {
        std::vector<std::size_t> all(columns.size());
        std::iota(all.begin(), all.end(), std::size_t(0));
        return all;
    }
    std::vector<std::size_t> order;
    for (const QString &name : wanted) {
        const auto found =
            std::find_if(columns.begin(), columns.end(), [&](const OdbcColumn &column) {
                return column.name.compare(name, Qt::CaseInsensitive) == 0;
            });
        order.push_back(static_cast<std::size_t>(found - columns.begin()));
    }
    return order;
}

} // namespace

struct OdbcRecordset::Cell
{
    const OdbcColumn &column;
    bool isNull;
    const std::byte *bytes;
    const QString *text;

    bool isWhole() const
    {
        return column.kind == CellKind::Integer || column.kind == CellKind::Flag;
    }
    qint64 integer() const
    {
        return column.kind == CellKind::Flag ? -qint64(load<unsigned char>(bytes) != 0)
                                             : load<qint64>(bytes);
    }
    qint64 instant() const { return instantOfStamp(load<SQL_TIMESTAMP_STRUCT>(bytes)); }
    double number() const
    {
        switch (column.kind) {
        case CellKind::Number:
            return load<double>(bytes);
        case CellKind::Single:
            return double(float(load<double>(bytes)));
        case CellKind::Instant:
            return dayNumber(instant());
        case CellKind::Text:
            return leadingNumber(*text);
        default:
            return double(integer());
        }
    }
};

OdbcRecordset::OdbcRecordset(std::shared_ptr<OdbcConnection> connection, const QString &sql,
                             const QStringList &wanted)
    : m_connection(std::move(connection))
{
    if (m_connection->m_reading)
        m_connection->m_reading->fetchRest();
    m_statement = m_connection->execute(sql, wanted);
    m_columns = m_statement->columns();
    m_order = orderOf(wanted, m_columns);
    m_connection->m_reading = this;
}

OdbcRecordset::~OdbcRecordset()
{
    finish();
}

void OdbcRecordset::finish()
{
    if (!m_statement)
        return;
    m_connection->m_reading = nullptr;
    m_connection->release(std::move(m_statement));
    m_statement = nullptr;
}

void OdbcRecordset::fetchRest()
{
    if (!m_statement)
        return;
    if (m_block) {
        m_own = *m_block;
        m_block = &m_own;
    }
    for (;;) {
        m_connection->fetch(m_statement);
        if (m_statement->block().rows == 0)
            break;
        m_fetched.push_back(m_statement->block());
    }
    finish();
}

bool OdbcRecordset::nextBlock()
{
    m_row = 0;
    if (!m_fetched.empty()) {
        m_own = std::move(m_fetched.front());
        m_fetched.pop_front();
        m_block = &m_own;
        return true;
    }
    m_block = nullptr;
    if (!m_statement)
        return false;
    m_connection->fetch(m_statement);
    if (m_statement->block().rows == 0) {
        finish();
        return false;
    }
    m_block = &m_statement->block();
    return true;
}

bool OdbcRecordset::next()
{
    if (m_block && ++m_row < m_block->rows)
        return true;
    return nextBlock();
}

OdbcRecordset::Cell OdbcRecordset::cell(int column) const
{
    if (!m_block)
        throw Error(NoCurrentRecord, QStringLiteral("No current record"));
    const std::size_t position = m_order.at(static_cast<std::size_t>(column));
    const OdbcColumn &described = m_columns[position];
    const ColumnBlock &from = m_block->columns[position];
    return {described, from.indicators[m_row] == SQL_NULL_DATA,
            from.cells.data() + m_row * cellWidth(described.kind),
            described.kind == CellKind::Text ? &from.texts[m_row] : nullptr};
}

bool OdbcRecordset::isNull(int column) const
{
    return cell(column).isNull;
}

qint64 OdbcRecordset::integer(int column) const
{
    const Cell from = cell(column);
    if (from.isNull)
        return 0;
    return from.isWhole() ? from.integer() : toInteger(from.number());
}

double OdbcRecordset::number(int column) const
{
    const Cell from = cell(column);
    return from.isNull ? 0 : from.number();
}

qint64 OdbcRecordset::instant(int column) const
{
    const Cell from = cell(column);
    if (from.isNull)
        return 0;
    if (from.text)
        return instantOfText(*from.text, from.column.name);
    return from.column.kind == CellKind::Instant ? from.instant() : instantOfDay(from.number());
}

QString OdbcRecordset::text(int column) const
{
    const Cell from = cell(column);
    if (from.isNull)
        return {};
    if (from.text)
        return *from.text;
    return from.isWhole() ? QString::number(from.integer()) : plainNumber(from.number());
}
