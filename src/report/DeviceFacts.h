#pragma once

#include "charts/ChartStatistics.h"
#include "database/MonitoringDatabase.h"
#include "figures/ReportFigures.h"
#include "report/ReportPlan.h"
#include "series/ItemFold.h"

#include <optional>
#include <vector>

/// The facts of a device in a report's period: everything that its pages, files and charts show.

/// One charted data item.
struct ItemFacts
{
    int number = 0; ///< position among the report's items of this device, from 1
    qint64 dataIdent = 0;
    QString name;
    QString description;
    QString scaleName;
    QString unit;
    DataSeries series;
    StateStatistics tests;    ///< of the series of a state item
    CounterStatistics values; ///< of the series of a counter item
    qint64 samples = 0;
    std::optional<Error> error; ///< why it cannot be charted; the series is empty then
    bool counts = false;        ///< a state item whose tests count for the device

    /// Takes the series, and computes its statistics.
    void setSeries(DataSeries data);
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
    DeviceFigures figures;
};

/// The questions whose answers become a device's facts: have the database answer them, then take
/// the facts. The questions point into this object, so it must not move.
class DeviceQuestions
{
public:
    /// `device` is one of the plan's, which has to outlive this, and that the inventory knows.
    DeviceQuestions(const PlannedReport &plan, const PlannedReport::Device &device,
                    const Inventory &inventory);
    DeviceQuestions(const DeviceQuestions &) = delete;
    DeviceQuestions &operator=(const DeviceQuestions &) = delete;

    std::vector<ItemQuestion> items;
    SummaryQuestion summary;

    /// ItemFacts::number and ItemFacts::name of the items in the facts.
    std::vector<int> itemNumbers() const;
    QStringList itemNames() const;

    /// The maximum memory of the answers, in bytes.
    qint64 maxBytes() const { return m_maxBytes; }

    /// The facts, once the questions are answered. Called once; any thread.
    DeviceFacts takeFacts();

private:
    void ask(const ItemRow &item, const Inventory &inventory, const PlannedReport::Device &device);
    void addPeriod(ItemFold &fold, const PlannedReport::FurtherPeriod &period);
    bool needsForecast(const ItemFigures &item) const;
    void takeFigures(const ItemFold &fold, const CounterStatistics &values, ItemFigures &figures);

    const PlannedReport &m_plan;
    const std::optional<double> m_target;
    DeviceFacts m_facts;
    /// Of the charted items, then of the counted ones that are not charted; each with what is known
    /// of its figures.
    std::vector<ItemFold> m_folds;
    std::vector<ItemFigures> m_figures;
    qint64 m_maxBytes = 0;
};

/// Adds the tests of one series to another on the same axis.
void addTests(DataSeries &sum, const DataSeries &tests);
