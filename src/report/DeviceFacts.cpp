#include "report/DeviceFacts.h"

#include "base/TimeZone.h"
#include "definitions/Dates.h"
#include "figures/Rankings.h"

#include <algorithm>

namespace {

constexpr int counterScale = 0; ///< any but that of states
/// Room for a byte a test is set aside for so much time.
constexpr qint64 millisecondsPerTestByte = 30'000;

std::vector<DailyMean> dailyMeans(const DataSeries &days)
{
    std::vector<DailyMean> means;
    for (size_t i = 0; i < days.buckets.size(); ++i) {
        if (!days.buckets[i].isEmpty())
            means.push_back(
                {days.interval(i).wallStart.date().toJulianDay(), days.buckets[i].mean});
    }
    return means;
}

} // namespace

void ItemFacts::setSeries(DataSeries data)
{
    series = std::move(data);
    if (series.isState())
        tests = stateStatistics(series);
    else
        values = counterStatistics(series);
}

DeviceQuestions::DeviceQuestions(const PlannedReport &plan, const PlannedReport::Device &device,
                                 const Inventory &inventory)
    : m_plan(plan)
    , m_target(device.target)
{
    const DeviceRow &row = *inventory.device(device.muid);
    m_facts.counts.name = row.name;
    m_facts.counts.folder = folderSafe(device.muid);
    m_facts.description = row.description;
    m_facts.tests.scale = stateScale;
    m_facts.tests.axis = plan.axis;
    m_facts.testsError = plan.axisError;
    for (const ItemRow *item : inventory.countedItems(row.ident))
        m_facts.counted.push_back({item->dataIdent, item->name, 0, 0, 0});

    std::vector<qint64> asked;
    int number = 0;
    for (const qint64 dataIdent : device.dataIdents) {
        ++number;
        const ItemRow *item = inventory.item(dataIdent);
        if (!item || item->deviceIdent != row.ident)
            continue; // the device does not record it
        ItemFacts &facts = m_facts.items.emplace_back();
        facts.number = number;
        facts.dataIdent = dataIdent;
        facts.name = item->name;
        facts.description = item->description;
        if (const ScaleRow *scale = inventory.scale(item->scale)) {
            facts.scaleName = scale->name;
            facts.unit = scale->abbreviation;
        }
        facts.series.scale = item->scale;
        facts.error = plan.axisError;
        const auto counted =
            std::find_if(m_facts.counted.begin(), m_facts.counted.end(),
                         [&](const CountedItem &entry) { return entry.dataIdent == dataIdent; });
        if (counted != m_facts.counted.end()) {
            facts.counts = true;
            counted->number = number;
        }
        asked.push_back(dataIdent);
    }
    for (const CountedItem &counted : m_facts.counted) {
        if (counted.number == 0)
            asked.push_back(counted.dataIdent);
    }

    m_folds.reserve(asked.size());
    for (const qint64 dataIdent : asked)
        ask(*inventory.item(dataIdent), inventory, device);
    summary = {device.muid, plan.chart.StartTime, plan.chart.EndTime, {}};
}

void DeviceQuestions::ask(const ItemRow &item, const Inventory &inventory,
                          const PlannedReport::Device &device)
{
    ItemFigures &figures = m_figures.emplace_back();
    figures.dataIdent = item.dataIdent;
    figures.name = item.name;
    if (const ScaleRow *scale = inventory.scale(item.scale))
        figures.unit = scale->abbreviation;
    figures.isState = item.scale == stateScale;
    const auto limit = device.limits.constFind(item.dataIdent);
    if (limit != device.limits.cend())
        figures.limit = *limit;

    const ItemFold::Span period{LocalToUTC(m_plan.chart.StartTime).toMSecsSinceEpoch(),
                                LocalToUTC(m_plan.chart.EndTime).toMSecsSinceEpoch()};
    ItemFold &fold = m_folds.emplace_back(period, m_plan.axis, m_plan.latest);
    qint64 tracked = period.from;
    if (m_plan.preceding) {
        tracked = std::min(tracked, m_plan.preceding->span.from);
        if (!figures.isState)
            addPeriod(fold, *m_plan.preceding);
    }
    if (needsForecast(figures))
        addPeriod(fold, *m_plan.recentDays);
    const ItemFold::Span counted{tracked, std::min(period.to, m_plan.latest)};
    fold.trackTests(counted);
    m_maxBytes += static_cast<qint64>(m_plan.axis->size()) * CalculatedSummary::bytesPerBucket +
                  (counted.to - counted.from) / millisecondsPerTestByte;

    items.push_back({item.dataIdent, m_plan.chart.StartTime, m_plan.chart.EndTime, &fold});
    if (!figures.isState && fold.wholeSpan().from >= period.from)
        return;
    items.push_back({.dataIdent = item.dataIdent,
                     .start = wallTime(fold.wholeSpan().from),
                     .end = m_plan.chart.StartTime,
                     .answer = &fold,
                     .lastBefore = figures.isState,
                     .endExcluded = true});
}

void DeviceQuestions::addPeriod(ItemFold &fold, const PlannedReport::FurtherPeriod &period)
{
    fold.addPeriod(period.span, period.axis);
    m_maxBytes += static_cast<qint64>(period.axis->size()) * CalculatedSummary::bytesPerBucket;
}

bool DeviceQuestions::needsForecast(const ItemFigures &item) const
{
    return !item.isState && m_plan.recentDays && limitOf(item);
}

std::vector<int> DeviceQuestions::itemNumbers() const
{
    std::vector<int> numbers;
    for (const ItemFacts &item : m_facts.items)
        numbers.push_back(item.number);
    return numbers;
}

QStringList DeviceQuestions::itemNames() const
{
    QStringList names;
    for (const ItemFacts &item : m_facts.items)
        names.append(item.name);
    return names;
}

DeviceFacts DeviceQuestions::takeFacts()
{
    DeviceCounts &counts = m_facts.counts;
    for (const StateCount &count : summary.answer) {
        counts.hasData = true;
        counts.successes += count.successes;
        counts.failures += count.tests - count.successes;
        for (CountedItem &item : m_facts.counted) {
            if (item.dataIdent == count.dataIdent) {
                item.successes = count.successes;
                item.failures = count.tests - count.successes;
            }
        }
    }
    const auto takeTests = [this](const CalculatedSummary &fold) {
        if (fold.error)
            m_facts.testsError = fold.error;
        else
            addTests(m_facts.tests, fold.series(stateScale));
    };
    for (size_t i = 0; i < m_folds.size(); ++i) {
        const CalculatedSummary &fold = m_folds[i].summary();
        ItemFigures &figures = m_figures[i];
        figures.counts = true;
        if (i < m_facts.items.size()) {
            ItemFacts &item = m_facts.items[i];
            item.samples = fold.sampleCount();
            if (fold.error)
                item.error = fold.error;
            if (!item.error)
                item.setSeries(fold.series(item.series.scale));
            figures.counts = item.counts;
            figures.number = item.number;
        }
        if (figures.counts)
            takeTests(fold);
        takeFigures(m_folds[i],
                    i < m_facts.items.size() ? m_facts.items[i].values : CounterStatistics(),
                    figures);
    }
    m_facts.figures.muid = summary.muid;
    m_facts.figures.name = counts.name;
    m_facts.figures.folder = counts.folder;
    m_facts.figures.items = std::move(m_figures);
    summarize(m_facts.figures, m_plan.service, m_plan.precedingService, m_target);
    for (ItemFigures &item : m_facts.figures.items) {
        if (item.preceding)
            item.preceding->gaps = {}; // which nobody shows
    }
    m_folds = {};
    return std::move(m_facts);
}

void DeviceQuestions::takeFigures(const ItemFold &fold, const CounterStatistics &values,
                                  ItemFigures &figures)
{
    const std::vector<Test> tests = fold.tests().tests();
    const auto figuresOf = [&](const ServiceTime &service, const CounterStatistics &statistics) {
        PeriodFigures period =
            periodFigures(tests, fold.tests().before(), service, figures.isState);
        if (statistics.count > 0) {
            period.mean = statistics.mean;
            period.percentile95 = statistics.percentile95;
        }
        return period;
    };
    figures.present = figuresOf(m_plan.service, values);
    if (figures.isState && figures.counts)
        addToTimeline(m_facts.figures.timeline, tests, m_plan.service, figures.present.rate);
    size_t period = 0;
    if (m_plan.precedingService && figures.isState)
        figures.preceding = figuresOf(*m_plan.precedingService, {});
    else if (m_plan.precedingService)
        figures.preceding =
            figuresOf(*m_plan.precedingService,
                      counterStatistics(fold.summaryOf(period++).series(counterScale)));
    if (needsForecast(figures))
        figures.forecast =
            forecast(dailyMeans(fold.summaryOf(period).series(counterScale)), *limitOf(figures));
}

void addTests(DataSeries &sum, const DataSeries &tests)
{
    sum.buckets.resize(std::max(sum.buckets.size(), tests.buckets.size()));
    for (size_t i = 0; i < tests.buckets.size(); ++i) {
        sum.buckets[i].count += tests.buckets[i].count;
        sum.buckets[i].successes += tests.buckets[i].successes;
    }
}
