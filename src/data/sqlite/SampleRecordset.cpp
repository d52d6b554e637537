#include "data/sqlite/SampleRecordset.h"

#include "data/DayNumbers.h"

SampleRecordset::SampleRecordset(SampleTable &table, QStringList columns, qint64 dataIdent,
                                 const Period &period)
    : m_columns(std::move(columns))
    , m_dataIdent(dataIdent)
    , m_held(table.walk(dataIdent, period))
{
    for (const QString &name : m_columns) {
        if (name.compare(u"DataIDent", Qt::CaseInsensitive) == 0)
            m_sources.push_back(Source::Ident);
        else if (name.compare(u"iDate", Qt::CaseInsensitive) == 0)
            m_sources.push_back(Source::Date);
        else if (name.compare(u"iState", Qt::CaseInsensitive) == 0)
            m_sources.push_back(Source::State);
        else
            m_sources.push_back(Source::Value);
    }
}

bool SampleRecordset::isNull(int column) const
{
    switch (source(column)) {
    case Source::State:
        return m_held.samples.stateIsNull();
    case Source::Value:
        return m_held.samples.valueIsNull();
    default:
        return false;
    }
}

qint64 SampleRecordset::integer(int column) const
{
    switch (source(column)) {
    case Source::Ident:
        return m_dataIdent;
    case Source::State:
        return isNull(column) ? 0 : m_held.samples.state();
    default:
        return toInteger(number(column));
    }
}

double SampleRecordset::number(int column) const
{
    switch (source(column)) {
    case Source::Date:
        return dayNumber(m_held.samples.instant());
    case Source::Value:
        return isNull(column) ? 0 : m_held.samples.value();
    default:
        return static_cast<double>(integer(column));
    }
}

qint64 SampleRecordset::instant(int column) const
{
    return source(column) == Source::Date ? m_held.samples.instant() : instantOfDay(number(column));
}

QString SampleRecordset::text(int column) const
{
    return toText(value(column));
}

QVariant SampleRecordset::value(int column) const
{
    if (isNull(column))
        return {};
    const Source from = source(column);
    return from == Source::Ident || from == Source::State ? QVariant(integer(column))
                                                          : QVariant(number(column));
}
