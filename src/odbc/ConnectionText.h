#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>

/// Connection texts: "keyword=value;..." with values bare, in braces ("}" doubled), or, in OLE DB
/// texts, in quotes (doubled within). Keywords know no case. Pure functions, safe on any thread.

/// The installed drivers and data sources, by the names that connection texts use.
struct OdbcNames
{
    QMap<QString, QString> drivers;     ///< the library, or other attributes
    QMap<QString, QString> dataSources; ///< the driver's name or library
};

/// The text that goes to ODBC. A text with DRIVER, DSN or FILEDSN and without Provider is one
/// already and stays unchanged. An OLE DB text for SQL Server (or one without Provider) gets the
/// best of the installed drivers, one for ODBC (MSDASQL) is unwrapped.
///
/// In all of them "Encrypt" is replaced by the driver's own keyword, if that differs: a connection
/// that should be encrypted is encrypted or fails. (With FILEDSN and unknown drivers the text has
/// to use the driver's own keyword.)
///
/// Throws Error when no suitable driver is installed, for any other provider, and for
/// Encrypt=Strict with a driver that does not support it.
QString odbcText(const QString &connectionText, const OdbcNames &names);

/// What somebody enters to reach a server or a data source.
struct ConnectionForm
{
    QString dataSource; ///< the name of a data source; empty: driver, server and database count
    QString driver;     ///< empty: the best that is installed for SQL Server
    QString server;
    QString database;
    bool isIntegrated = false; ///< signs in with the account of the program
    QString user;
    QString password;
    bool isEncrypted = true;
    bool acceptsAnyCertificate = false;

    bool operator==(const ConnectionForm &) const = default;
};

/// The text of a form, for odbcText(); values may hold any character.
QString connectionText(const ConnectionForm &form);

/// The form of a text; nothing where it holds what no form has a place for.
std::optional<ConnectionForm> connectionForm(const QString &connectionText);

/// The text for messages: the value of each password keyword is "***", in nested texts too.
QString maskPasswords(const QString &connectionText);

/// The passwords in a connection text, for `withoutSecrets`.
QStringList passwordsIn(const QString &connectionText);

/// A driver's message with the values of "PWD=..." and the passwords masked.
QString withoutSecrets(const QString &message, const QStringList &passwords);
