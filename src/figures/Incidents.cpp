#include "figures/Incidents.h"

#include <algorithm>
#include <map>

namespace {

constexpr qint64 intervalsOfOneCause = 2;
constexpr int minFailedTests = 3; ///< in a row, or else a single device's incident is brief

/// `outages`: all of one incident, in order of their begin.
Incident incidentOf(std::span<const DeviceOutage> outages, const Stretches &serviceTime)
{
    Incident incident;
    incident.begin = outages.front().outage.begin;
    int failedTests = 0;
    std::map<size_t, Stretches> stretches;
    for (const auto &[device, outage, interval] : outages) {
        incident.end = std::max(incident.end, outage.end);
        failedTests = std::max(failedTests, outage.failedTests);
        Stretches &ofDevice = stretches[device];
        if (ofDevice.empty())
            incident.devices.push_back({device, outage.begin, 0});
        ofDevice.emplace_back(outage.begin, outage.end);
    }
    for (Incident::Device &device : incident.devices) {
        device.seconds = totalSeconds(intersection(united(stretches[device.index]), serviceTime));
        incident.deviceSeconds += device.seconds;
    }
    incident.isBrief = incident.devices.size() == 1 && failedTests < minFailedTests;
    return incident;
}

} // namespace

std::vector<Incident> incidentsOf(std::vector<DeviceOutage> outages, const Stretches &serviceTime)
{
    std::stable_sort(
        outages.begin(), outages.end(), [](const DeviceOutage &a, const DeviceOutage &b) {
            return std::pair(a.outage.begin, a.device) < std::pair(b.outage.begin, b.device);
        });
    std::vector<Incident> incidents;
    for (auto first = outages.begin(); first != outages.end();) {
        const qint64 last = first->outage.begin + intervalsOfOneCause * first->interval;
        const auto next = std::find_if(first, outages.end(), [last](const DeviceOutage &entry) {
            return entry.outage.begin > last;
        });
        incidents.push_back(incidentOf(std::span(first, next), serviceTime));
        first = next;
    }
    std::stable_sort(incidents.begin(), incidents.end(), [](const Incident &a, const Incident &b) {
        return a.deviceSeconds > b.deviceSeconds;
    });
    return incidents;
}
