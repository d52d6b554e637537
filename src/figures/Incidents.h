#pragma once

#include "figures/Outages.h"

/// Outages that have one cause, as far as their times tell. Pure functions, safe on any thread.

/// An outage of a global state item of one of the report's devices.
struct DeviceOutage
{
    size_t device = 0; ///< index of the device in the report
    Outage outage;
    qint64 interval = 0; ///< expected seconds between the item's tests, 0: unknown
};

struct Incident
{
    struct Device
    {
        size_t index = 0;
        qint64 begin = 0;   ///< of its first outage
        qint64 seconds = 0; ///< of its outages, those at the same time counted once
    };

    qint64 begin = 0;
    qint64 end = 0;
    std::vector<Device> devices; ///< those that failed first come first; there is at least one
    qint64 deviceSeconds = 0;    ///< the sum over its devices
    /// One device alone failed, in fewer than three tests in a row: counted, but not worth a line.
    bool isBrief = false;

    qint64 seconds() const { return end - begin; }
};

/// An outage that belongs to none opens an incident, and all outages that begin within two of its
/// expected intervals after it belong to it. Sorted by the sum of the devices' downtime, the
/// longest first; of equal ones the earlier.
/// Of each outage only service time counts.
std::vector<Incident> incidentsOf(std::vector<DeviceOutage> outages, const Stretches &serviceTime);
