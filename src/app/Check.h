#pragma once

#include "app/Findings.h"

/// The check of everything that a run reads: both configurations, the definition files and the
/// templates, and every reference in them: report to chart, schedule, device and data item, chart
/// and configuration to template, configuration to companion file, template to placeholder and
/// marker. Needs the paths of config/State and `gConfig` as read. Changes nothing. Main thread
/// only.
///
/// Devices and items are looked up in the database, and a database file is read whole: what is
/// wrong with it is a finding. Where it cannot be opened `note` tells why, and that alone is no
/// finding.
Findings checkEverything(QString &note);
