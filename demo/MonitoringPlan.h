#pragma once

#include <QString>

#include <cstdint>
#include <vector>

/// What a demonstration monitors: invented devices with their data items, outages and pauses. Times
/// are seconds since 1970-01-01 UTC.
namespace demo {

struct MonitoringOptions
{
    int devices = 24;
    int items = 8; ///< of each device
    int days = 35;
    int interval = 300; ///< seconds between two tests of a device
    qint64 until = 0;   ///< no sample is later
    std::uint64_t seed = 1;
};

enum class DeviceKind { Router, Switch, Server, Printer, Ups, WebSite, AccessPoint, Climate };

inline constexpr int stateScale = 21;

/// A counter's values: a base, the rhythm of the working day and of the night's jobs, a drift that
/// is reset from time to time, noise and spikes; kept within low and high.
struct CounterModel
{
    double base = 0;
    double work = 0;        ///< added at the height of a working day
    double night = 0;       ///< added while the night's jobs run
    double noise = 0;       ///< its standard deviation
    double spikeChance = 0; ///< of each sample
    double spike = 0;       ///< min size of a spike; the max is three times that
    double drift = 0;       ///< per day
    double resetDays = 0;   ///< the drift is reset after so many days; 0: never
    double low = 0;
    double high = 0;
};

struct Span
{
    qint64 from = 0;
    qint64 to = 0; ///< the first second after it
};

struct MonitoredItem
{
    qint32 dataIdent = 0;
    QString name;
    QString description;
    int scale = stateScale;
    bool isGlobal = true;
    CounterModel counter;       ///< if the scale is not the state scale
    std::vector<Span> failures; ///< of a state item, in addition to its device's outages
};

struct MonitoredDevice
{
    qint32 ident = 0;
    DeviceKind kind = DeviceKind::Server;
    QString muid; ///< braced GUID text
    QString name;
    QString description;
    QString address;
    QString group;
    QString notes;
    bool isExcluded = false;
    int zone = 0;              ///< hours east of UTC; the rhythm of the day follows it
    Span monitored;            ///< the period of its samples; empty: it has none
    std::vector<Span> outages; ///< its states fail and its counters have no samples
    std::vector<Span> pauses;  ///< maintenance: no samples at all
    std::vector<MonitoredItem> items;
};

struct Scale
{
    int scale;
    QString name;
    QString abbreviation;
};

struct MonitoringPlan
{
    MonitoringOptions options;
    std::vector<Scale> scales;
    std::vector<MonitoredDevice> devices;
    std::vector<Span> pauses; ///< of the monitoring service itself
};

/// Plans a demonstration; the same options give the same plan. With at least four devices the last
/// one has no samples, the one before it was removed some time ago, and the one before that is new.
MonitoringPlan planMonitoring(const MonitoringOptions &options);

} // namespace demo
