#pragma once

#include <QString>
#include <QStringList>

/// Connection texts: "keyword=value;..." with values bare, in braces ("}" doubled), or, in OLE DB
/// texts, in quotes (doubled within). Keywords know no case. Pure functions, safe on any thread.

/// The text that goes to ODBC. A text with DRIVER, DSN or FILEDSN and without Provider is one
/// already and is left as it stands. An OLE DB text for SQL Server (or one without Provider) gets
/// the best of the installed drivers, one for ODBC (MSDASQL) loses its wrapping.
/// Throws Error when no installed driver fits, and for any other provider.
QString odbcText(const QString &connectionText, const QStringList &installedDrivers);

/// The text for readers: the value of each password keyword is "***", within nested texts too.
QString maskPasswords(const QString &connectionText);

/// Passwords that stand in a connection text, for `withoutSecrets`.
QStringList passwordsIn(const QString &connectionText);

/// A driver's message in which neither "PWD=..." nor one of the passwords is left.
QString withoutSecrets(const QString &message, const QStringList &passwords);
