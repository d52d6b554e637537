#pragma once

#include "demo/MonitoringPlan.h"

#include <functional>

namespace demo {

/// Called with the part of the period that is written, 0 to 1, once for each tenth.
using WriteProgress = std::function<void(double share)>;

/// Writes a monitoring database: the tables Devices, DataFields, Scales and DataValues, with the
/// samples in the order in which a service that tests one device after the other stores them.
/// The same plan gives the same file, byte for byte. Returns the number of samples; throws Error.
qint64 writeMonitoringData(const QString &path, const MonitoringPlan &plan,
                           const WriteProgress &progress = {});

} // namespace demo
