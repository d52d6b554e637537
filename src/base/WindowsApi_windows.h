#pragma once

// Helpers of the _windows.cpp files for the system's calls, which take UTF-16 texts.

#include <QString>
#include <QStringList>

#include <string>
#include <windows.h>

namespace platform {

inline const wchar_t *wide(const QString &text)
{
    return reinterpret_cast<const wchar_t *>(text.utf16());
}

/// A path of any length in the form that the system's calls take: absolute, "\\?\C:\..." or
/// "\\?\UNC\server\share\...".
QString longPath(const QString &path);

/// The system's text for an error number, as in "Access is denied. [5]".
QString systemText(DWORD error);

/// Arguments as one text that a program splits into the same ones again.
QString commandLine(const QStringList &arguments);

/// This program's file: "C:\VantrelGrapher\VantrelGrapher.exe".
QString programFile();

} // namespace platform
