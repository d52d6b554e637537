#include "core/platform/Terminal.h"
#include "core/platform/WindowsApi_windows.h"

#include <atomic>
#include <cstdlib>
#include <io.h>
#include <shellapi.h>

namespace platform {

namespace {

void (*cancelHandler)() = nullptr;
std::atomic<bool> wasAsked = false;
UINT codePageBefore = 0;

HANDLE handleOf(std::FILE *stream)
{
    const int file = ::_fileno(stream);
    return file < 0 ? INVALID_HANDLE_VALUE : reinterpret_cast<HANDLE>(::_get_osfhandle(file));
}

/// Whether whoever started the program gave a stream a place of its own: a file, a pipe, nothing.
/// Consoles can be told from other devices once the process has one.
bool leadsElsewhere(HANDLE stream)
{
    DWORD mode = 0;
    const DWORD kind = ::GetFileType(stream);
    return kind == FILE_TYPE_DISK || kind == FILE_TYPE_PIPE ||
           (kind == FILE_TYPE_CHAR && !::GetConsoleMode(stream, &mode));
}

void restoreCodePage()
{
    std::fflush(stdout);
    ::SetConsoleOutputCP(codePageBefore);
}

/// Runs on a thread of the system's.
BOOL WINAPI onConsoleEvent(DWORD event)
{
    if (wasAsked.exchange(true))
        return FALSE; // the system ends the process
    cancelHandler();
    // When the console closes the system ends the process as soon as this returns, and some seconds
    // later in any case: the run gets these to end by itself.
    if (event == CTRL_CLOSE_EVENT || event == CTRL_LOGOFF_EVENT || event == CTRL_SHUTDOWN_EVENT)
        ::Sleep(INFINITE);
    return TRUE;
}

} // namespace

QStringList programArguments(int, char *[])
{
    // What main() gets has lost every character outside of the system's code page.
    QStringList arguments;
    int count = 0;
    wchar_t **words = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    for (int i = 1; i < count; ++i)
        arguments.append(QString::fromWCharArray(words[i]));
    ::LocalFree(words);
    return arguments;
}

void attachTerminal()
{
    // A program with windows has no console by itself. Without a caller's one, as in a scheduled
    // run, what is written goes nowhere.
    const HANDLE output = ::GetStdHandle(STD_OUTPUT_HANDLE);
    const HANDLE errors = ::GetStdHandle(STD_ERROR_HANDLE);
    if (!::AttachConsole(ATTACH_PARENT_PROCESS))
        return;
    if (!leadsElsewhere(output))
        static_cast<void>(std::freopen("CONOUT$", "w", stdout));
    if (!leadsElsewhere(errors))
        static_cast<void>(std::freopen("CONOUT$", "w", stderr));
    codePageBefore = ::GetConsoleOutputCP();
    ::SetConsoleOutputCP(CP_UTF8);
    std::atexit(restoreCodePage);
}

int terminalColumns(std::FILE *stream)
{
    const HANDLE console = handleOf(stream);
    DWORD mode = 0;
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (!::GetConsoleMode(console, &mode) || !::GetConsoleScreenBufferInfo(console, &info))
        return 0;
    constexpr DWORD escapes = ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING;
    if ((mode & escapes) != escapes && !::SetConsoleMode(console, mode | escapes))
        return 0; // consoles of old show the escapes themselves
    return info.srWindow.Right - info.srWindow.Left + 1;
}

bool endTogether(std::FILE *a, std::FILE *b)
{
    const HANDLE first = handleOf(a);
    const HANDLE second = handleOf(b);
    DWORD mode = 0;
    if (::GetConsoleMode(first, &mode) && ::GetConsoleMode(second, &mode))
        return true;
    BY_HANDLE_FILE_INFORMATION one{};
    BY_HANDLE_FILE_INFORMATION other{};
    return ::GetFileInformationByHandle(first, &one) &&
           ::GetFileInformationByHandle(second, &other) &&
           one.dwVolumeSerialNumber == other.dwVolumeSerialNumber &&
           one.nFileIndexHigh == other.nFileIndexHigh && one.nFileIndexLow == other.nFileIndexLow;
}

void letLimitedWritesFail() {}

void onCancelRequest(void (*handler)())
{
    cancelHandler = handler;
    wasAsked = false;
    ::SetConsoleCtrlHandler(onConsoleEvent, TRUE);
}

} // namespace platform
