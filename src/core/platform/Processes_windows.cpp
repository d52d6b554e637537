#include "core/platform/Processes.h"
#include "core/platform/WindowsApi_windows.h"

#include <QFileInfo>

#include <tlhelp32.h>
#include <utility>
#include <vector>

namespace platform {

namespace {

const QString extension = QStringLiteral(".exe");

/// The numbers of all processes with an image name, of every user.
std::vector<DWORD> processesOf(const QString &imageName)
{
    std::vector<DWORD> numbers;
    const HANDLE snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (snapshot == INVALID_HANDLE_VALUE)
        return numbers;
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL more = ::Process32FirstW(snapshot, &entry); more;
         more = ::Process32NextW(snapshot, &entry)) {
        const QString image = QString::fromWCharArray(entry.szExeFile);
        if (image.compare(imageName + extension, Qt::CaseInsensitive) == 0)
            numbers.push_back(entry.th32ProcessID);
    }
    ::CloseHandle(snapshot);
    return numbers;
}

/// When a process began, in the 100 ns that the system counts since 1601. 0 when it has ended, or
/// belongs to a user whose processes may not be looked at.
quint64 beginOf(HANDLE process)
{
    FILETIME begin{};
    FILETIME end{};
    FILETIME kernel{};
    FILETIME user{};
    if (!::GetProcessTimes(process, &begin, &end, &kernel, &user))
        return 0;
    return quint64(begin.dwHighDateTime) << 32 | begin.dwLowDateTime;
}

/// Whether a process began before this one did. One that may not be looked at counts as earlier:
/// giving way to it is the safe side.
bool isEarlier(DWORD number)
{
    const DWORD own = ::GetCurrentProcessId();
    if (number == own)
        return false;
    const HANDLE process = ::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, number);
    if (!process)
        return ::GetLastError() == ERROR_ACCESS_DENIED;
    const quint64 begin = beginOf(process);
    ::CloseHandle(process);
    return begin > 0 &&
           std::make_pair(begin, number) < std::make_pair(beginOf(::GetCurrentProcess()), own);
}

} // namespace

int countProcesses(const QString &imageName)
{
    return static_cast<int>(processesOf(imageName).size());
}

int countEarlierProcesses(const QString &imageName)
{
    int count = 0;
    for (const DWORD number : processesOf(imageName))
        count += isEarlier(number) ? 1 : 0;
    return count;
}

qint64 ownBegin()
{
    constexpr qint64 from1601To1970 = 11'644'473'600'000; // milliseconds
    return static_cast<qint64>(beginOf(::GetCurrentProcess()) / 10'000) - from1601To1970;
}

QString ownImageName()
{
    const QString name = QFileInfo(programFile()).fileName();
    return name.endsWith(extension, Qt::CaseInsensitive) ? name.chopped(extension.size()) : name;
}

} // namespace platform
