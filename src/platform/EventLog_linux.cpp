#include "platform/EventLog.h"

#include <syslog.h>

namespace {

int priorityOf(EventType type)
{
    switch (type) {
    case EventError:
        return LOG_ERR;
    case EventWarning:
        return LOG_WARNING;
    case EventInformation:
        break;
    }
    return LOG_INFO;
}

} // namespace

void platform::writeEvent(int eventId, EventType type, const QString &message)
{
    static const bool opened = [] {
        ::openlog("VTRGRAPHER", LOG_PID, LOG_USER);
        return true;
    }();
    static_cast<void>(opened);
    ::syslog(priorityOf(type), "[%d] %s", eventId, message.toUtf8().constData());
}

void registerEventSource() {}
