#pragma once

#include "demo/MonitoringPlan.h"

#include <QByteArray>

namespace demo {

/// The report definitions of a demonstration: reports on its devices with the factory's chart and
/// schedule definitions. Each ran last a day before the samples' end, under a schedule that makes
/// up for missed runs, so it is due at once.
QByteArray demoReports(const MonitoringPlan &plan);

} // namespace demo
