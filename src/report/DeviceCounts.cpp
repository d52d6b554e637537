#include "report/DeviceCounts.h"

#include <algorithm>
#include <iterator>

void DeviceCounts::add(StaticRecordset &rows)
{
    const int ident = rows.column(QStringLiteral("DataIDent"));
    const int sum = rows.column(QStringLiteral("sumiState"));
    const int count = rows.column(QStringLiteral("QCount"));
    for (; !rows.eof(); rows.moveNext()) {
        ItemCounts item;
        item.dataIdent = rows.integer(ident);
        item.successes = rows.integer(sum); // NULL, of samples without a state, reads as 0
        item.failures = rows.integer(count) - item.successes;
        hasData = true;
        successes += item.successes;
        failures += item.failures;
        items.push_back(item);
    }
}

ItemCounts DeviceCounts::of(qint64 dataIdent) const
{
    const auto found = std::find_if(items.begin(), items.end(), [&](const ItemCounts &item) {
        return item.dataIdent == dataIdent;
    });
    return found == items.end() ? ItemCounts{dataIdent, 0, 0} : *found;
}

bool isCounted(const StaticRecordset &fields)
{
    return fields.integer(fields.column(QStringLiteral("iScale"))) == stateScale &&
           fields.number(fields.column(QStringLiteral("IsGlobal"))) != 0;
}

void OverallTests::add(const std::vector<SummaryRow> &rows)
{
    m_hasItems = true;
    std::vector<SummaryRow> missing;
    auto known = m_rows.begin();
    for (const SummaryRow &row : rows) {
        while (known != m_rows.end() && known->start < row.start)
            ++known;
        if (known != m_rows.end() && known->start == row.start) {
            known->QCount += row.QCount;
            known->sumiState += row.sumiState;
        } else {
            missing.push_back(row);
        }
    }
    const auto middle = m_rows.insert(m_rows.end(), std::make_move_iterator(missing.begin()),
                                      std::make_move_iterator(missing.end()));
    std::inplace_merge(m_rows.begin(), middle, m_rows.end(),
                       [](const SummaryRow &a, const SummaryRow &b) { return a.start < b.start; });
}
