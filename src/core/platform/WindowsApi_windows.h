#pragma once

// What the _windows.cpp files need of the system beside its own calls, which take UTF-16 texts
// only.

#include <QString>

#include <string>
#include <windows.h>

namespace platform {

inline const wchar_t *wide(const QString &text)
{
    return reinterpret_cast<const wchar_t *>(text.utf16());
}

/// A path as the system's calls take it whatever its length: absolute, "\\?\C:\..." or
/// "\\?\UNC\server\share\...".
QString longPath(const QString &path);

/// The system's text for an error number, as in "Access is denied. [5]".
QString systemText(DWORD error);

/// This program's file: "C:\VantrelGrapher\VantrelGrapher.exe".
QString programFile();

} // namespace platform
