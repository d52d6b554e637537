#include "base/WindowsApi_windows.h"
#include "platform/Terminal.h"

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

/// Whether a stream was redirected to a file, a pipe or another device. Works once the process has
/// a console.
bool isRedirected(HANDLE stream)
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
    if (cancelHandler)
        cancelHandler();
    // When the console closes the system ends the process as soon as this returns, or some seconds
    // later: the run uses those to end by itself.
    if (event == CTRL_CLOSE_EVENT || event == CTRL_LOGOFF_EVENT || event == CTRL_SHUTDOWN_EVENT)
        ::Sleep(INFINITE);
    return TRUE;
}

} // namespace

QStringList programArguments(int, char *[])
{
    // In main()'s arguments characters outside the system's code page are lost.
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
    // A program with windows has no console of its own. Without its caller's, as in a scheduled
    // run, output is discarded.
    const HANDLE output = ::GetStdHandle(STD_OUTPUT_HANDLE);
    const HANDLE errors = ::GetStdHandle(STD_ERROR_HANDLE);
    if (!::AttachConsole(ATTACH_PARENT_PROCESS))
        return;
    if (!isRedirected(output))
        static_cast<void>(std::freopen("CONOUT$", "w", stdout));
    if (!isRedirected(errors))
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
        return 0; // old consoles do not understand escape sequences
    return info.srWindow.Right - info.srWindow.Left + 1;
}

bool haveSameTarget(std::FILE *a, std::FILE *b)
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
    if (!handler)
        return;
    wasAsked = false;
    ::SetConsoleCtrlHandler(onConsoleEvent, TRUE);
}

} // namespace platform
