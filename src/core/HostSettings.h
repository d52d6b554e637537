#pragma once

#include <QString>

/// What the tool takes from the installed monitoring product: its folder, its configuration file
/// ("VantrelV6.Config"), and from that the data folders and the connection settings of
/// core/State.h. Each value is read once per process. A configuration file that is there and cannot
/// be read is an Error, which names it, from whatever reads it. Main thread only.

QString GetProductKey();
void SetProductKey(const QString &key);

/// The product's folder: the value "AppPath" of its settings key, else the program's folder.
QString GetAppPath();

/// Folder of the monitoring data.
QString GetDataPath();
/// Fixes it and makes sure that it exists; an empty path means GetDataPath(). A folder that cannot
/// be created is logged as a warning and does not stop the start.
void SetDataPath(const QString &path);

/// Folder of the tool's own data files; also loads the connection settings.
QString GetGraphDataPath();
void SetGraphDataPath(const QString &path);

/// Forgets everything read.
void resetHostSettings();
