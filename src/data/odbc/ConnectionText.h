#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

/// Connection texts: "keyword=value;..." with values bare, in braces ("}" doubled), or, in OLE DB
/// texts, in quotes (doubled within). Keywords know no case. Pure functions, safe on any thread.

/// What is installed, by the names that connection texts use.
struct OdbcNames
{
    QMap<QString, QString> drivers;     ///< the library, or what else the system tells of it
    QMap<QString, QString> dataSources; ///< the driver's name or library
};

/// The text that goes to ODBC. A text with DRIVER, DSN or FILEDSN and without Provider is one
/// already and is left as it stands. An OLE DB text for SQL Server (or one without Provider) gets
/// the best of the installed drivers, one for ODBC (MSDASQL) loses its wrapping.
///
/// In all of them "Encrypt" becomes the driver's own word where that is another: a connection that
/// was to be encrypted is, or fails. (Behind FILEDSN, and with drivers that are not known, the text
/// has to hold the driver's own word.)
///
/// Throws Error when no installed driver fits, for any other provider, and for Encrypt=Strict with
/// a driver that has nothing like it.
QString odbcText(const QString &connectionText, const OdbcNames &names);

/// The text for readers: the value of each password keyword is "***", within nested texts too.
QString maskPasswords(const QString &connectionText);

/// Passwords that stand in a connection text, for `withoutSecrets`.
QStringList passwordsIn(const QString &connectionText);

/// A driver's message in which neither "PWD=..." nor one of the passwords is left.
QString withoutSecrets(const QString &message, const QStringList &passwords);
