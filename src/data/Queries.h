#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

/// The SQL texts sent to the monitoring database, in the Access dialect, or in SQL Server's when
/// `gGraphDataSQL` is set. Bounds are wall times, written as UTC.

QString GetDataSelectionSQL();

/// Whether every server reads a key between apostrophes as it stands. Some take a backslash for the
/// beginning of an escape, and a text can end at a control character. Apostrophes are doubled.
bool isPlainKey(const QString &key);

/// The rows of the table Devices with these ids. Ids that are not plain are asked for by a pattern,
/// so that a row too many can come: pick those that are meant by a filter.
QString GetSelectedDevicesSQL(const QStringList &muids);

/// A device's id as `muidList` of GetStateSummarySQL; empty, for all devices, where it is not
/// plain: pick the rows by the device's IDent.
QString stateSummaryList(const QString &muid);

/// `muidList`: ids separated by commas, with or without apostrophes; empty for all devices.
QString GetStateSummarySQL(const QDateTime &start, const QDateTime &end, QString muidList);

QString GetDataValuesSQL(const QString &dataIdent, const QDateTime &start, const QDateTime &end);

/// The text of GetDataValuesSQL in the Access dialect around its three numbers: the item's key and
/// the bounds as day numbers. The Access connection recognises the query by it.
QString accessSampleQuery(const QString &dataIdent, const QString &from, const QString &to);
