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

/// A device's id as `muidList` of GetStateSummarySQL; empty, for all devices, where it is not
/// plain: pick the rows by the device's IDent.
QString stateSummaryList(const QString &muid);

/// `muidList`: ids separated by commas, with or without apostrophes; empty for all devices.
QString GetStateSummarySQL(const QDateTime &start, const QDateTime &end, QString muidList);

/// The count of all samples, as "TCOUNT".
QString GetSampleCountSQL();

QString GetDataValuesSQL(const QString &dataIdent, const QDateTime &start, const QDateTime &end);

/// Where a state summary's period starts: one second later where it starts at midnight, in every
/// dialect and of every kind of database.
QDateTime summaryStart(const QDateTime &start);
