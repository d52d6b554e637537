#include "data/odbc/OdbcRecordset.h"

#include "core/Error.h"
#include "data/DayNumbers.h"
#include "data/odbc/Link.h"
#include "data/odbc/Statement.h"

#include <QDateTime>

#include <chrono>
#include <cstring>

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
                    QStringLiteral("The column '%1' holds '%2', which is no date with a time")
                        .arg(column, text));
    return time.toMSecsSinceEpoch();
}

} // namespace

struct OdbcRecordset::Cell
{
    CellKind kind;
    bool isNull;
    const std::byte *bytes;
    const QString *text;

    qint64 integer() const
    {
        return kind == CellKind::Flag ? -qint64(load<unsigned char>(bytes) != 0)
                                      : load<qint64>(bytes);
    }
    double number() const
    {
        const auto number = load<double>(bytes);
        return kind == CellKind::Single ? double(float(number)) : number;
    }
    qint64 instant() const { return instantOfStamp(load<SQL_TIMESTAMP_STRUCT>(bytes)); }
};

OdbcRecordset::OdbcRecordset(std::shared_ptr<OdbcLink> link, const QString &sql,
                             const QStringList &wanted)
    : m_link(std::move(link))
{
    if (m_link->reading)
        m_link->reading->fetchRest();
    m_statement = m_link->execute(sql, wanted);
    m_columns = m_statement->columns();
    for (const OdbcColumn &column : m_columns)
        m_names.append(column.name);
    m_link->reading = this;
}

OdbcRecordset::~OdbcRecordset()
{
    finish();
}

void OdbcRecordset::finish()
{
    if (!m_statement)
        return;
    m_link->reading = nullptr;
    m_link->release(std::move(m_statement));
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
        m_link->fetch(m_statement);
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
    m_link->fetch(m_statement);
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
    const auto at = static_cast<std::size_t>(column);
    const CellKind kind = m_columns.at(at).kind;
    const ColumnBlock &from = m_block->columns[at];
    return {kind, from.indicators[m_row] == SQL_NULL_DATA,
            from.cells.data() + m_row * cellWidth(kind),
            kind == CellKind::Text ? &from.texts[m_row] : nullptr};
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
    switch (from.kind) {
    case CellKind::Integer:
    case CellKind::Flag:
        return from.integer();
    default:
        return toInteger(value(column));
    }
}

double OdbcRecordset::number(int column) const
{
    const Cell from = cell(column);
    if (from.isNull)
        return 0;
    switch (from.kind) {
    case CellKind::Integer:
    case CellKind::Flag:
        return double(from.integer());
    case CellKind::Number:
    case CellKind::Single:
        return from.number();
    case CellKind::Instant:
        return dayNumber(from.instant());
    case CellKind::Text:
        break;
    }
    return toNumber(*from.text);
}

qint64 OdbcRecordset::instant(int column) const
{
    const Cell from = cell(column);
    if (from.isNull)
        return 0;
    if (from.kind == CellKind::Text)
        return instantOfText(*from.text, m_names[column]);
    return from.kind == CellKind::Instant ? from.instant() : instantOfDay(number(column));
}

QString OdbcRecordset::text(int column) const
{
    const Cell from = cell(column);
    if (from.isNull)
        return {};
    return from.kind == CellKind::Text ? *from.text : toText(value(column));
}

QVariant OdbcRecordset::value(int column) const
{
    const Cell from = cell(column);
    if (from.isNull)
        return {};
    switch (from.kind) {
    case CellKind::Integer:
    case CellKind::Flag:
        return from.integer();
    case CellKind::Text:
        return *from.text;
    default:
        return number(column);
    }
}
