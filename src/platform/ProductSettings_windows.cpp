#include "base/WindowsApi_windows.h"
#include "platform/ProductSettings.h"

#include <vector>

namespace platform {

namespace {

QString readValue(HKEY hive, REGSAM view, const QString &key, const QString &name)
{
    HKEY opened = nullptr;
    if (::RegOpenKeyExW(hive, wide(key), 0, KEY_QUERY_VALUE | view, &opened) != ERROR_SUCCESS)
        return QString();
    // Expands variables such as %ProgramFiles%.
    DWORD bytes = 0;
    QString value;
    if (::RegGetValueW(opened, nullptr, wide(name), RRF_RT_REG_SZ, nullptr, nullptr, &bytes) ==
        ERROR_SUCCESS) {
        std::vector<wchar_t> buffer(bytes / sizeof(wchar_t) + 1);
        if (::RegGetValueW(opened, nullptr, wide(name), RRF_RT_REG_SZ, nullptr, buffer.data(),
                           &bytes) == ERROR_SUCCESS)
            value = QString::fromWCharArray(buffer.data());
    }
    ::RegCloseKey(opened);
    return value;
}

} // namespace

QString productSetting(const QString &productKey, const QString &name)
{
    const QString key = QLatin1String("SOFTWARE\\Orlek INC\\") + productKey;
    // Values for all users come first, so that a scheduled run under another account reads the
    // same. 32-bit set-ups write to a view of their own.
    for (const HKEY hive : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
        for (const REGSAM view : {KEY_WOW64_64KEY, KEY_WOW64_32KEY}) {
            const QString value = readValue(hive, view, key, name);
            if (!value.isEmpty())
                return value;
        }
    }
    return QString();
}

} // namespace platform
