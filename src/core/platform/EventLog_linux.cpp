#include "core/OneLine.h"
#include "core/platform/EventLog.h"

#include <syslog.h>

namespace {

EventObserver eventObserver = nullptr;

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

void LogEvent(int eventId, EventType type, const QString &text)
{
    const QString message = oneLine(text);
    static const bool opened = [] {
        ::openlog("VTRGRAPHER", LOG_PID, LOG_USER);
        return true;
    }();
    static_cast<void>(opened);
    ::syslog(priorityOf(type), "[%d] %s", eventId, message.toUtf8().constData());
    if (eventObserver)
        eventObserver(eventId, type, message);
}

bool registerEventSource(QString &)
{
    return true;
}

void setEventObserver(EventObserver observer)
{
    eventObserver = observer;
}
