#pragma once

#include "data/CalculatedSummary.h"
#include "data/MonitoringDatabase.h"
#include "report/ReportPlan.h"

#include <optional>
#include <vector>

/// What a device's samples come to in a report's period: all that its pages, files and charts show.

/// One charted data item.
struct ItemFacts
{
    int number = 0; ///< place among the report's items of this device, from 1
    qint64 dataIdent = 0;
    QString name;
    QString description;
    QString scaleName;
    QString unit;
    DataSeries series;
    qint64 samples = 0;
    std::optional<Error> error; ///< why it cannot be charted; the series is empty then
    bool counts = false;        ///< a state item whose tests count for the device
};

/// A state item whose tests count: global, charted in this report or not.
struct CountedItem
{
    qint64 dataIdent = 0;
    QString name;
    int number = 0; ///< ItemFacts::number of the item that charts it; 0: not charted
    qint64 successes = 0;
    qint64 failures = 0;
};

/// The tests of a device over the report's period, the sums over all its counted items.
struct DeviceCounts
{
    QString name;
    QString folder;       ///< the device's folder below the report's
    bool hasData = false; ///< false: there is no test
    qint64 successes = 0;
    qint64 failures = 0;
};

struct DeviceFacts
{
    DeviceCounts counts;
    QString description;
    std::vector<ItemFacts> items; ///< those that the device records, in the report's order
    std::vector<CountedItem> counted;
    DataSeries tests;                ///< of all counted items, by time
    std::optional<Error> testsError; ///< why tests are missing from them
};

/// The questions whose answers make a device's facts. Ask them of the database, then take the
/// facts. The questions point into this object, so it does not move.
class DeviceQuestions
{
public:
    /// `device` is one of the plan's that the inventory knows.
    DeviceQuestions(const PlannedReport &plan, const PlannedReport::Device &device,
                    const Inventory &inventory);
    DeviceQuestions(const DeviceQuestions &) = delete;
    DeviceQuestions &operator=(const DeviceQuestions &) = delete;

    std::vector<ItemQuestion> items;
    SummaryQuestion summary;

    /// ItemFacts::number and ItemFacts::name of the items to come.
    std::vector<int> itemNumbers() const;
    QStringList itemNames() const;

    /// Memory that the answers can take, in bytes.
    qint64 maxBytes() const { return m_maxBytes; }

    /// The facts, once the questions are answered. Called once; any thread.
    DeviceFacts takeFacts();

private:
    DeviceFacts m_facts;
    /// Of the charted items, then of the counted ones that are not charted.
    std::vector<CalculatedSummary> m_folds;
    qint64 m_maxBytes = 0;
};

/// Adds the tests of one series to another on the same axis.
void addTests(DataSeries &sum, const DataSeries &tests);
