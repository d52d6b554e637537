#include "base/WindowsApi_windows.h"
#include "platform/Processes.h"

#include <QFileInfo>

#include <memory>
#include <shellapi.h>
#include <tlhelp32.h>
#include <utility>
#include <vector>

namespace platform {

namespace {

const QString extension = QStringLiteral(".exe");

struct CloseHandle
{
    void operator()(void *handle) const { ::CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, CloseHandle>;

/// The user of a process as the system's record; empty when it is not accessible.
std::vector<char> userOf(HANDLE process)
{
    HANDLE opened = nullptr;
    if (!::OpenProcessToken(process, TOKEN_QUERY, &opened))
        return {};
    const Handle token(opened);
    DWORD size = 0;
    ::GetTokenInformation(opened, TokenUser, nullptr, 0, &size);
    std::vector<char> user(size);
    if (!::GetTokenInformation(opened, TokenUser, user.data(), size, &size))
        user.clear();
    return user;
}

bool isOfSameUserOrSystem(HANDLE process)
{
    const std::vector<char> user = userOf(process);
    const std::vector<char> own = userOf(::GetCurrentProcess());
    if (user.empty() || own.empty())
        return false;
    const auto id = [](const std::vector<char> &record) {
        return reinterpret_cast<const TOKEN_USER *>(record.data())->User.Sid;
    };
    return ::EqualSid(id(user), id(own)) || ::IsWellKnownSid(id(user), WinLocalSystemSid);
}

/// The arguments without the program's name; none when they cannot be read.
QStringList argumentsOf(HANDLE process)
{
    struct Text // the system's UNICODE_STRING
    {
        USHORT bytes;
        USHORT room;
        wchar_t *characters;
    };
    using Query = LONG(WINAPI *)(HANDLE, int, void *, ULONG, ULONG *);
    constexpr int commandLine = 60;
    static const auto query = reinterpret_cast<Query>(reinterpret_cast<void *>(
        ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "NtQueryInformationProcess")));
    std::vector<quint64> buffer(16'384); // the maximum length of a command line
    ULONG size = 0;
    if (!query || query(process, commandLine, buffer.data(),
                        static_cast<ULONG>(buffer.size() * sizeof(quint64)), &size) < 0)
        return {};
    const auto *text = reinterpret_cast<const Text *>(buffer.data());
    const QString line = QString::fromWCharArray(text->characters, text->bytes / 2);
    int count = 0;
    wchar_t **words = ::CommandLineToArgvW(wide(line), &count);
    QStringList arguments;
    for (int i = 1; words && i < count; ++i)
        arguments.append(QString::fromWCharArray(words[i]));
    ::LocalFree(words);
    return arguments;
}

/// Whether another process counts. One that is not accessible is another user's.
bool isOneThatCounts(DWORD number, ArgumentTest counts)
{
    if (number == ::GetCurrentProcessId())
        return false;
    const Handle process(::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, number));
    return process && isOfSameUserOrSystem(process.get()) && counts(argumentsOf(process.get()));
}

/// The ids of the other processes that count.
std::vector<DWORD> processesOf(const QString &imageName, ArgumentTest counts)
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
        if (image.compare(imageName + extension, Qt::CaseInsensitive) == 0 &&
            isOneThatCounts(entry.th32ProcessID, counts))
            numbers.push_back(entry.th32ProcessID);
    }
    ::CloseHandle(snapshot);
    return numbers;
}

/// When a process started, in units of 100 ns since 1601. 0 when it has ended.
quint64 startOf(HANDLE process)
{
    FILETIME begin{};
    FILETIME end{};
    FILETIME kernel{};
    FILETIME user{};
    if (!::GetProcessTimes(process, &begin, &end, &kernel, &user))
        return 0;
    return quint64(begin.dwHighDateTime) << 32 | begin.dwLowDateTime;
}

/// Whether a process started before this one.
bool isEarlier(DWORD number)
{
    const Handle process(::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, number));
    const quint64 start = process ? startOf(process.get()) : 0;
    return start > 0 && std::make_pair(start, number) <
                            std::make_pair(startOf(::GetCurrentProcess()), ::GetCurrentProcessId());
}

} // namespace

int countOtherProcesses(const QString &imageName, ArgumentTest counts)
{
    return static_cast<int>(processesOf(imageName, counts).size());
}

int countEarlierProcesses(const QString &imageName, ArgumentTest counts)
{
    int count = 0;
    for (const DWORD number : processesOf(imageName, counts))
        count += isEarlier(number) ? 1 : 0;
    return count;
}

std::vector<QStringList> argumentsOfOthers(const QString &imageName, ArgumentTest counts)
{
    std::vector<QStringList> arguments;
    for (const DWORD number : processesOf(imageName, counts)) {
        const Handle process(::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, number));
        arguments.push_back(process ? argumentsOf(process.get()) : QStringList());
    }
    return arguments;
}

qint64 ownStart()
{
    constexpr qint64 from1601To1970 = 11'644'473'600'000; // milliseconds
    return static_cast<qint64>(startOf(::GetCurrentProcess()) / 10'000) - from1601To1970;
}

QString ownImageName()
{
    const QString name = QFileInfo(programFile()).fileName();
    return name.endsWith(extension, Qt::CaseInsensitive) ? name.chopped(extension.size()) : name;
}

} // namespace platform
