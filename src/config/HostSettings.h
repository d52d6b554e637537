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
