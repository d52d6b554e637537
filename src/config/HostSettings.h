#pragma once

#include <QString>

/// Settings of the installed monitoring product: its folder, its configuration file
/// ("VantrelV6.Config"), and from that the data folders and the connection settings of
/// config/Program.h. Each value is read once. All functions throw Error naming a configuration file
/// that exists but cannot be read. Main thread only.

QString GetProductKey();
void SetProductKey(const QString &key);

/// The product's folder: the value "AppPath" of its settings key, else the program's folder.
QString GetAppPath();

/// Folder of the monitoring data.
QString GetDataPath();
/// Sets it and makes sure that it exists; an empty path means GetDataPath(). A folder that cannot
/// be created is logged as a warning.
void SetDataPath(const QString &path);

/// Folder of the tool's own data files; also loads the connection settings.
QString GetGraphDataPath();
void SetGraphDataPath(const QString &path);

/// Where the samples are, as the product's configuration says it.
struct DatabaseSettings
{
    QString dataPath;          ///< folder of the Access file
    bool isSqlServer = false;  ///< in SQL Server
    bool isDataSource = false; ///< else in an ODBC data source that takes the Access dialect
    QString connectionText;    ///< of either; kept where neither is set

    bool isServer() const { return isSqlServer || isDataSource; }
    bool operator==(const DatabaseSettings &) const = default;
};

/// Those in force.
DatabaseSettings databaseSettings();

/// Writes them into the product's configuration, where everything else stays byte for byte, and
/// puts them in force. Throws Error; file and settings are then as they were.
void saveDatabaseSettings(const DatabaseSettings &wanted);
