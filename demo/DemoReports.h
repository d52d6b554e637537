#pragma once

#include "demo/MonitoringPlan.h"

#include <QByteArray>

namespace demo {

/// The file of report definitions for a demonstration: reports over its devices that use the chart
/// and schedule definitions that the tool is delivered with. Each was last run a day before the
/// samples' end under a schedule that makes up for missed runs, so it is due at once.
QByteArray demoReports(const MonitoringPlan &plan);

} // namespace demo
