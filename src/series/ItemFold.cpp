#include "series/ItemFold.h"

#include <algorithm>

ItemFold::ItemFold(const Span &span, const SharedAxis &axis, qint64 latest)
    : m_whole(span)
{
    m_parts.push_back({span, CalculatedSummary(axis, latest)});
}

void ItemFold::addPeriod(const Span &span, const SharedAxis &axis)
{
    m_parts.push_back({span, CalculatedSummary(axis, span.to)});
    extend(span);
}

void ItemFold::trackTests(const Span &span)
{
    m_tracked = span;
    extend(span);
}

void ItemFold::extend(const Span &span)
{
    m_whole.from = std::min(m_whole.from, span.from);
    m_whole.to = std::max(m_whole.to, span.to);
}

void ItemFold::addSample(qint64 instant, qint64 state, std::optional<double> value)
{
    for (Part &part : m_parts) {
        if (part.span.contains(instant))
            part.summary.addSample(instant, state, value);
    }
    if (!m_tracked)
        return;
    if (m_tracked->contains(instant))
        m_tests.add(floorSeconds(instant), state != 0);
    else
        addSampleBefore(instant, state);
}

void ItemFold::addSampleBefore(qint64 instant, qint64 state)
{
    if (m_tracked && instant < m_tracked->from)
        m_tests.addBefore(floorSeconds(instant), state != 0);
}
