#pragma once

#include "core/Error.h"
#include "data/CalculatedSummary.h"
#include "data/DataSeries.h"
#include "data/Recordset.h"

#include <QString>

#include <optional>
#include <vector>

/// Which tests a report counts: those of all global state items of its devices, charted or not.
/// The devices' figures and the chart over time count the same tests, but for the second at
/// midnight with which the state summary query begins.

/// The tests of one state item over the report's period.
struct ItemCounts
{
    qint64 dataIdent = 0;
    qint64 successes = 0;
    qint64 failures = 0;
};

/// The tests of one device over the report's period, and their sums.
struct DeviceCounts
{
    QString name;
    QString folder;       ///< the device's folder below the report's
    bool hasData = false; ///< false: the summary query had no row for it
    qint64 successes = 0;
    qint64 failures = 0;
    std::vector<ItemCounts> items; ///< those that have samples

    /// Adds the rows of a state summary query that pass its filter.
    void add(StaticRecordset &rows);
    /// Zeros for an item without samples.
    ItemCounts of(qint64 dataIdent) const;
};

/// Whether the tests of the data item in the present row of `fields` (a table "DataFields") count.
bool isCounted(const StaticRecordset &fields);

/// The tests of all items that count, by time.
class OverallTests
{
public:
    std::optional<Error> problem; ///< why the tests of an item are missing

    /// Adds the tests of one item; `rows` may be empty.
    void add(const std::vector<SummaryRow> &rows);

    bool hasItems() const { return m_hasItems || problem; }
    /// Ascending by time, at most one row for each bucket.
    const std::vector<SummaryRow> &rows() const { return m_rows; }

private:
    bool m_hasItems = false;
    std::vector<SummaryRow> m_rows;
};
