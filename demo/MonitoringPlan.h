#pragma once

#include <QString>

#include <cstdint>
#include <vector>

/// What a demonstration monitors: invented devices with their data items, and what befell them.
/// Times are seconds since 1970-01-01 UTC.
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

/// How a counter's value comes about: a base, the rhythm of the working day and of the night's
/// jobs, a drift that starts anew from time to time, noise and spikes; kept within low and high.
struct CounterModel
{
    double base = 0;
    double work = 0;        ///< added at the height of a working day
    double night = 0;       ///< added while the night's jobs run
    double noise = 0;       ///< its standard deviation
    double spikeChance = 0; ///< of each sample
    double spike = 0;       ///< least size of a spike; the greatest is three times that
    double drift = 0;       ///< a day
    double resetDays = 0;   ///< the drift starts anew after so many days; 0: never
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
    CounterModel counter;       ///< where the scale is another than the state scale
    std::vector<Span> failures; ///< of a state item, beside its device's outages
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
    Span monitored;            ///< samples lie within; empty: the device has none
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
    std::vector<Span> pauses; ///< the monitoring service itself stood still
};

/// Plans a demonstration; the same options give the same plan. From four devices on, the last one
/// has no samples, the one before went away some time ago, and the one before that is new.
MonitoringPlan planMonitoring(const MonitoringOptions &options);

} // namespace demo
