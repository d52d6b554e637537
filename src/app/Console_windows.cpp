// VantrelGrapher.com: the program as a command for consoles and scripts.
//
// VantrelGrapher.exe has windows, so that a console neither waits for it nor flashes up for a
// scheduled run. A console that is asked for "VantrelGrapher" takes this one: it starts the program
// beside it with the same arguments and streams, waits for its end and returns its exit status.
// Started without arguments it shows the window and does not wait. Plain C++, no Qt.

#include <cstdio>
#include <string>
#include <vector>
#include <windows.h>

namespace {

constexpr int failed = 2; // as the program's own status for wrong use

std::wstring ownFile()
{
    std::vector<wchar_t> buffer(32768); // the maximum length of a path
    const DWORD size =
        ::GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
    return std::wstring(buffer.data(), size);
}

/// The command line after the program's own name, which ends at a blank unless it is quoted.
std::wstring argumentText()
{
    const wchar_t *text = ::GetCommandLineW();
    bool isQuoted = false;
    for (; *text && (isQuoted || (*text != L' ' && *text != L'\t')); ++text) {
        if (*text == L'"')
            isQuoted = !isQuoted;
    }
    while (*text == L' ' || *text == L'\t')
        ++text;
    return text;
}

/// The program gets the interrupt keys of the console as well, and decides.
BOOL WINAPI leaveToProgram(DWORD)
{
    return TRUE;
}

int fail(const char *what)
{
    std::fprintf(stderr, "VantrelGrapher: %s (error %lu)\n", what, ::GetLastError());
    return failed;
}

} // namespace

int main()
{
    std::wstring program = ownFile();
    program.replace(program.size() - 4, 4, L".exe");
    const std::wstring arguments = argumentText();
    std::wstring commandLine = L'"' + program + L"\" " + arguments;

    STARTUPINFOW start{};
    start.cb = sizeof(start);
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = ::GetStdHandle(STD_INPUT_HANDLE);
    start.hStdOutput = ::GetStdHandle(STD_OUTPUT_HANDLE);
    start.hStdError = ::GetStdHandle(STD_ERROR_HANDLE);
    ::SetConsoleCtrlHandler(leaveToProgram, TRUE);
    PROCESS_INFORMATION process{};
    if (!::CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr,
                          nullptr, &start, &process))
        return fail("cannot start VantrelGrapher.exe, which has to stand beside this command");
    ::CloseHandle(process.hThread);
    if (arguments.empty())
        return 0;
    ::WaitForSingleObject(process.hProcess, INFINITE);
    DWORD status = failed;
    if (!::GetExitCodeProcess(process.hProcess, &status))
        return fail("cannot read the exit status");
    return static_cast<int>(status);
}
