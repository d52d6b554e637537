#include "core/platform/Terminal.h"

#include <QByteArray>

#include <sys/ioctl.h>
#include <unistd.h>

namespace platform {

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

} // namespace platform
