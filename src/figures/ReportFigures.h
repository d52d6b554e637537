#pragma once

#include "figures/Forecast.h"
#include "figures/Incidents.h"
#include "figures/Outages.h"
#include "figures/ServiceTime.h"
#include "figures/Targets.h"
#include "figures/Timeline.h"

#include <QString>

/// The figures of a report, of its devices and of their items: what pages, CSV and JSON show alike.
/// What each of them means stands in docs/figures.md. Values and pure functions, safe on any
/// thread; times are instants in whole seconds since 1970-01-01 UTC.

/// One item in one period.
struct PeriodFigures
{
    qint64 samples = 0;
    TestRate rate;
    std::vector<Gap> gaps;

    // Of a state item: all its tests, and those in service time.
    qint64 failures = 0;
    qint64 countedTests = 0;
    qint64 countedFailures = 0;
    std::vector<Outage> outages; ///< cut to service time

    // Of a counter that has values.
    std::optional<double> mean;
    std::optional<double> percentile95;
};

/// The figures of the samples in the period of a service time, but for `mean` and `percentile95`.
/// `tests`: all samples of the item as tests, in order of time, maybe more than those of the
/// period. `before`: the last test before all of them.
PeriodFigures periodFigures(std::span<const Test> tests, const std::optional<Test> &before,
                            const ServiceTime &service, bool isState);

struct ItemFigures
{
    qint64 dataIdent = 0;
    QString name;
    QString unit;
    int number = 0;       ///< of its chart on the device's page, 0: not charted
    bool isState = false; ///< its samples are successes and failures
    bool counts = false;  ///< a state item whose tests count for its device
    PeriodFigures present;
    std::optional<PeriodFigures> preceding;
    std::optional<double> limit;
    std::optional<Forecast> forecast;
};

/// How available a device was in a period, or all devices of a report.
struct Availability
{
    qint64 tests = 0;
    qint64 failures = 0;
    qint64 countedTests = 0; ///< in service time
    qint64 countedFailures = 0;
    double expectedTests = 0; ///< of the items whose interval is known
    qint64 regularTests = 0;  ///< how many those items have
    Downtime downtime;

    qint64 successes() const { return tests - failures; }
    /// Percent of all tests that succeeded; nothing without tests.
    std::optional<double> rate() const;
    std::optional<double> countedRate() const;
    /// 0 to 1; unknown where no interval is known.
    std::optional<double> coverage() const;

    void add(const Availability &other); ///< of another device
};

struct DeviceFigures
{
    QString muid;
    QString name;
    QString folder; ///< of its page, below the report's
    std::vector<ItemFigures> items;
    Availability present;
    std::optional<Availability> preceding;
    std::optional<TargetResult> target; ///< nothing without a target, or without tests for it
    TimelineParts timeline;             ///< empty without items that count
};

/// Adds up the state items that count, and holds them against the target. `preceding`: the service
/// time of the preceding period where there is one to compare with.
void summarize(DeviceFigures &device, const ServiceTime &service,
               const std::optional<ServiceTime> &preceding, std::optional<double> target);

struct ReportFigures
{
    Period period;
    std::optional<Period> precedingPeriod;
    qint64 excludedSeconds = 0;         ///< of the period, outside of service time
    std::vector<DeviceFigures> devices; ///< in the order of the report
    Availability present;
    std::optional<Availability> preceding;
    int withTarget = 0; ///< devices that have a target and tests
    int missedTarget = 0;
    std::vector<Incident> incidents; ///< those worth a line, the worst first
    int briefIncidents = 0;
    /// Those worth a line in the preceding period, where there is one.
    std::optional<int> precedingIncidents;
};

/// Adds up the devices, and finds the incidents. `preceding`: the service time of the preceding
/// period where there is one; its outages, which nobody shows, are dropped once they are counted.
void summarize(ReportFigures &report, const ServiceTime &service,
               const std::optional<ServiceTime> &preceding = {});

/// Whether a period can be compared with the preceding one: both hold at least half of the tests
/// that were to be expected. Otherwise says why not.
struct Comparability
{
    bool isComparable = false;
    QString reason;
};
Comparability comparability(const std::optional<double> &presentCoverage,
                            const std::optional<double> &precedingCoverage);
