#pragma once

#include <QDateTime>
#include <QString>

/// The SQL texts sent to the monitoring database, in the Access dialect, or in SQL Server's when
/// `gGraphDataSQL` is set. Bounds are wall times, written as UTC.

QString GetDataSelectionSQL();

/// `muidList`: ids separated by commas, with or without apostrophes; empty for all devices.
QString GetStateSummarySQL(const QDateTime &start, const QDateTime &end, QString muidList);

QString GetDataValuesSQL(const QString &dataIdent, const QDateTime &start, const QDateTime &end);

/// The text of GetDataValuesSQL in the Access dialect around its three numbers: the item's key and
/// the bounds as day numbers. The Access connection recognises the query by it.
QString accessSampleQuery(const QString &dataIdent, const QString &from, const QString &to);
