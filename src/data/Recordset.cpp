#include "data/Recordset.h"

#include "core/Error.h"
#include "core/Numbers.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

int columnOf(const QStringList &columns, const QString &name)
{
    for (qsizetype i = 0; i < columns.size(); ++i) {
        if (columns[i].compare(name, Qt::CaseInsensitive) == 0)
            return static_cast<int>(i);
    }
    throw Error(ItemNotFound, QStringLiteral("Item not found: no column '%1'").arg(name));
}

bool isNumber(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::Double:
        return true;
    default:
        return false;
    }
}

/// The form in which a cell stands in an index.
QString indexText(const QVariant &value)
{
    return isNumber(value) ? toText(value) : toText(value).toCaseFolded();
}

bool equals(const QVariant &value, const QString &wanted)
{
    if (value.isNull())
        return false;
    if (!isNumber(value))
        return toText(value).compare(wanted, Qt::CaseInsensitive) == 0;
    bool isNumeric = false;
    const double number = wanted.toDouble(&isNumeric);
    return isNumeric && toNumber(value) == number;
}

/// Reads a filter criterion from left to right.
class CriterionReader
{
public:
    explicit CriterionReader(const QString &criterion)
        : m_criterion(criterion)
    {}

    bool atEnd()
    {
        skipBlanks();
        return m_at == m_criterion.size();
    }

    /// "[name]" or a bare name.
    QString columnName()
    {
        skipBlanks();
        if (take(u'[')) {
            const QString name = upTo(u']');
            return name;
        }
        return bareWord();
    }

    /// "'text'", with apostrophes within it doubled, or a bare number.
    QString value()
    {
        skipBlanks();
        if (!take(u'\'')) {
            const QString number = bareWord();
            bool isNumeric = false;
            static_cast<void>(number.toDouble(&isNumeric));
            if (!isNumeric)
                fail();
            return number;
        }
        QString text = upTo(u'\'');
        while (take(u'\''))
            text += u'\'' + upTo(u'\'');
        return text;
    }

    void expectEqualSign()
    {
        skipBlanks();
        if (!take(u'='))
            fail();
    }

    void expectAnd()
    {
        skipBlanks();
        if (bareWord().compare(u"and", Qt::CaseInsensitive) != 0)
            fail();
    }

private:
    [[noreturn]] void fail() const
    {
        throw Error(DatabaseError,
                    QStringLiteral("The filter \"%1\" is not understood").arg(m_criterion));
    }

    void skipBlanks()
    {
        while (m_at < m_criterion.size() && m_criterion[m_at].isSpace())
            ++m_at;
    }

    bool take(QChar character)
    {
        if (m_at == m_criterion.size() || m_criterion[m_at] != character)
            return false;
        ++m_at;
        return true;
    }

    QString upTo(QChar closing)
    {
        const qsizetype end = m_criterion.indexOf(closing, m_at);
        if (end < 0)
            fail();
        const QString text = m_criterion.mid(m_at, end - m_at);
        m_at = end + 1;
        return text;
    }

    QString bareWord()
    {
        const qsizetype from = m_at;
        while (m_at < m_criterion.size() && !m_criterion[m_at].isSpace() &&
               !QStringView(u"=<>'[]").contains(m_criterion[m_at]))
            ++m_at;
        if (m_at == from)
            fail();
        return m_criterion.mid(from, m_at - from);
    }

    const QString &m_criterion;
    qsizetype m_at = 0;
};

} // namespace

QString quoted(QString text)
{
    return u'\'' + text.replace(u'\'', QLatin1String("''")) + u'\'';
}

qint64 toInteger(double value)
{
    const double rounded = std::nearbyint(value);
    if (!(rounded >= -9.223372036854775e18 && rounded <= 9.223372036854775e18))
        throw Error(Overflow, QStringLiteral("Overflow: %1 is no 64-bit integer").arg(value));
    return static_cast<qint64>(rounded);
}

qint64 toInteger(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Double:
        return toInteger(value.toDouble());
    case QMetaType::QString:
        return toInteger(leadingNumber(value.toString()));
    default:
        return value.toLongLong();
    }
}

double toNumber(const QVariant &value)
{
    return value.typeId() == QMetaType::QString ? leadingNumber(value.toString())
                                                : value.toDouble();
}

QString toText(const QVariant &value)
{
    return value.typeId() == QMetaType::Double ? plainNumber(value.toDouble()) : value.toString();
}

int Recordset::column(const QString &name) const
{
    return columnOf(columns(), name);
}

StaticRecordset::StaticRecordset(Recordset &source)
    : m_table(std::make_shared<Table>())
{
    m_table->columns = source.columns();
    const int count = static_cast<int>(m_table->columns.size());
    while (source.next()) {
        std::vector<QVariant> &row = m_table->rows.emplace_back();
        row.reserve(static_cast<size_t>(count));
        for (int i = 0; i < count; ++i)
            row.push_back(source.value(i));
    }
    setFilter({});
}

int StaticRecordset::column(const QString &name) const
{
    return columnOf(m_table->columns, name);
}

qsizetype StaticRecordset::recordCount() const
{
    return static_cast<qsizetype>(m_passing.size());
}

void StaticRecordset::setFilter(const QString &criterion)
{
    m_at = 0;
    const std::vector<Condition> conditions = parsed(criterion);
    const auto &rows = m_table->rows;
    if (conditions.empty()) {
        m_passing.resize(rows.size());
        std::iota(m_passing.begin(), m_passing.end(), size_t(0));
        return;
    }
    const auto passes = [&](size_t row) {
        return std::all_of(conditions.begin(), conditions.end(), [&](const Condition &condition) {
            return equals(rows[row][static_cast<size_t>(condition.column)], condition.value);
        });
    };
    m_passing = candidates(conditions.front());
    std::erase_if(m_passing, [&](size_t row) { return !passes(row); });
}

std::vector<StaticRecordset::Condition> StaticRecordset::parsed(const QString &criterion) const
{
    std::vector<Condition> conditions;
    CriterionReader reader(criterion);
    while (!reader.atEnd()) {
        if (!conditions.empty())
            reader.expectAnd();
        Condition &condition = conditions.emplace_back();
        condition.column = column(reader.columnName());
        reader.expectEqualSign();
        condition.value = reader.value();
    }
    return conditions;
}

const StaticRecordset::Index &StaticRecordset::index(int column)
{
    const auto [entry, isNew] = m_table->indexes.try_emplace(column);
    if (isNew) {
        const auto &rows = m_table->rows;
        for (size_t row = 0; row < rows.size(); ++row)
            entry->second.emplace(indexText(rows[row][static_cast<size_t>(column)]), row);
    }
    return entry->second;
}

/// Rows that may fulfil a condition, ascending: a superset of those that do.
std::vector<size_t> StaticRecordset::candidates(const Condition &condition)
{
    const Index &rows = index(condition.column);
    std::vector<size_t> found;
    const auto take = [&](const QString &text) {
        const auto [from, to] = rows.equal_range(text);
        for (auto entry = from; entry != to; ++entry)
            found.push_back(entry->second);
    };
    const QString folded = condition.value.toCaseFolded();
    take(folded);
    bool isNumeric = false;
    const double number = condition.value.toDouble(&isNumeric);
    if (const QString text = plainNumber(number); isNumeric && text != folded)
        take(text);
    std::sort(found.begin(), found.end());
    return found;
}

void StaticRecordset::moveFirst()
{
    m_at = 0;
}

void StaticRecordset::moveNext()
{
    if (!eof())
        ++m_at;
}

bool StaticRecordset::eof() const
{
    return m_at >= m_passing.size();
}

const QVariant &StaticRecordset::cell(int column) const
{
    if (eof())
        throw Error(NoCurrentRecord, QStringLiteral("No current record"));
    return m_table->rows[m_passing[m_at]].at(static_cast<size_t>(column));
}

bool StaticRecordset::isNull(int column) const
{
    return cell(column).isNull();
}

qint64 StaticRecordset::integer(int column) const
{
    return toInteger(cell(column));
}

double StaticRecordset::number(int column) const
{
    return toNumber(cell(column));
}

QString StaticRecordset::text(int column) const
{
    return toText(cell(column));
}
