#include "platform/Terminal.h"

#include <QByteArray>

#include <csignal>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

void (*cancelHandler)() = nullptr;

/// Restores the default action for the next signal.
void onSignal(int)
{
    if (cancelHandler)
        cancelHandler();
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
}

} // namespace

QStringList programArguments(int argc, char *argv[])
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    return arguments;
}

void attachTerminal() {}

int terminalColumns(std::FILE *stream)
{
    const int file = ::fileno(stream);
    const QByteArray kind = qgetenv("TERM");
    if (!::isatty(file) || kind.isEmpty() || kind == "dumb")
        return 0;
    winsize size{};
    if (::ioctl(file, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return 80;
    return size.ws_col;
}

bool haveSameTarget(std::FILE *a, std::FILE *b)
{
    struct stat first
    {};
    struct stat second
    {};
    if (::isatty(::fileno(a)) && ::isatty(::fileno(b)))
        return true;
    return ::fstat(::fileno(a), &first) == 0 && ::fstat(::fileno(b), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

void letLimitedWritesFail()
{
    std::signal(SIGXFSZ, SIG_IGN);
}

void onCancelRequest(void (*handler)())
{
    cancelHandler = handler;
    if (!handler)
        return;
    std::signal(SIGINT, onSignal);
    std::signal(SIGTERM, onSignal);
    std::signal(SIGPIPE, SIG_IGN);
}

} // namespace platform
