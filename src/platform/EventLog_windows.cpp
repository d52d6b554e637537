#include "base/Error.h"
#include "base/WindowsApi_windows.h"
#include "platform/EventLog.h"

using namespace platform;

namespace {

constexpr wchar_t sourceName[] = L"VTRGRAPHER";
constexpr wchar_t sourceKey[] =
    L"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\VTRGRAPHER";
constexpr wchar_t messageFile[] = L"EventMessageFile";

/// What entries longer than the log takes are cut to, in UTF-16 units.
constexpr qsizetype longestMessage = 31'000;

bool isSourceRegistered()
{
    DWORD bytes = 0;
    return ::RegGetValueW(HKEY_LOCAL_MACHINE, sourceKey, messageFile, RRF_RT_REG_SZ, nullptr,
                          nullptr, &bytes) == ERROR_SUCCESS;
}

HANDLE openSource()
{
    try {
        if (!isSourceRegistered())
            registerEventSource();
    } catch (const Error &) {
        // Without the rights the entries stay without their description.
    }
    return ::RegisterEventSourceW(nullptr, sourceName);
}

} // namespace

void platform::writeEvent(int eventId, EventType type, const QString &message)
{
    static const HANDLE source = openSource();
    const QString shown = message.left(longestMessage);
    const wchar_t *texts[] = {wide(shown)};
    if (source)
        ::ReportEventW(source, static_cast<WORD>(type), 0, static_cast<DWORD>(eventId), nullptr, 1,
                       0, texts, nullptr);
}

void registerEventSource()
{
    // The texts are in this program's own resources.
    const std::wstring file = programFile().toStdWString();
    const DWORD types = EVENTLOG_ERROR_TYPE | EVENTLOG_WARNING_TYPE | EVENTLOG_INFORMATION_TYPE;
    HKEY key = nullptr;
    LSTATUS status = ::RegCreateKeyExW(HKEY_LOCAL_MACHINE, sourceKey, 0, nullptr, 0, KEY_SET_VALUE,
                                       nullptr, &key, nullptr);
    if (status == ERROR_SUCCESS) {
        status = ::RegSetValueExW(key, messageFile, 0, REG_SZ,
                                  reinterpret_cast<const BYTE *>(file.c_str()),
                                  static_cast<DWORD>((file.size() + 1) * sizeof(wchar_t)));
        if (status == ERROR_SUCCESS)
            status = ::RegSetValueExW(key, L"TypesSupported", 0, REG_DWORD,
                                      reinterpret_cast<const BYTE *>(&types), sizeof(types));
        ::RegCloseKey(key);
    }
    if (status != ERROR_SUCCESS)
        throw Error(PermissionDenied, systemText(static_cast<DWORD>(status)));
}
