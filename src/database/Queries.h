#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

/// The SQL texts sent to the monitoring database. Bounds are wall times, written as UTC.

enum class SqlDialect { Access, SqlServer };

QString GetDataSelectionSQL();

/// Whether every server reads a key between apostrophes unchanged. Some treat a backslash as an
/// escape, and a text can end at a control character. Apostrophes are doubled.
bool isPlainKey(const QString &key);

/// A device's id as `muidList` of GetStateSummarySQL; empty (all devices) if it is not plain: then
/// select the rows by the device's IDent.
QString stateSummaryList(const QString &muid);

/// `muidList`: ids separated by commas, with or without apostrophes; empty for all devices.
QString GetStateSummarySQL(SqlDialect dialect, const QDateTime &start, const QDateTime &end,
                           QString muidList);

/// The count of all samples, as "TCOUNT".
QString GetSampleCountSQL(SqlDialect dialect);

/// The time of the newest sample, as "TNEWEST".
QString GetNewestSampleSQL();

QString GetDataValuesSQL(SqlDialect dialect, const QString &dataIdent, const QDateTime &start,
                         const QDateTime &end);

/// The samples of an item at its last time before a wall time.
QString GetLastValueBeforeSQL(SqlDialect dialect, const QString &dataIdent, const QDateTime &end);

/// The start of a state summary's period: one second later if it is midnight, for every kind of
/// database.
QDateTime summaryStart(const QDateTime &start);
