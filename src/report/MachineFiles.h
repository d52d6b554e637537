#pragma once

#include "figures/ReportFigures.h"

#include <QByteArray>
#include <QString>

/// A report's figures in files for programs. Pure functions, safe on any thread.

inline const QString outagesCsvName = QStringLiteral("outages.csv");
inline const QString reportJsonName = QStringLiteral("report.json");

/// One record for each outage, by device in the report's order, then by item and begin: Device,
/// MUID, Item, DataIDent, Begin, End, Seconds, FailedTests, Note. Times as ISO 8601 with the local
/// zone's offset.
QByteArray outagesCsv(const ReportFigures &figures);

/// All figures, as docs/report.schema.json describes them.
QByteArray reportJson(const QString &reportId, const QString &title, const ReportFigures &figures);
