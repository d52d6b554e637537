#pragma once

#include "charts/ChartJob.h"
#include "config/clsGrapherConfig.h"
#include "database/MonitoringDatabase.h"
#include "definitions/clsGraphDef.h"

/// Draws nothing and writes nothing: the chart of one data item as a report that runs at the
/// instant `latest` would draw it. On the thread that uses the database. Throws Error: the
/// database's, or why there is no such chart.
Chart itemChart(MonitoringDatabase &database, const clsGraphDef &chart, const QString &muid,
                qint64 dataIdent, const clsGrapherConfig &settings, qint64 latest);
