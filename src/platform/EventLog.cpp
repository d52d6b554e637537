#include "platform/EventLog.h"

#include "base/OneLine.h"
#include "base/ProgramState.h"

#include <QMutex>

namespace {

struct Observation
{
    QMutex mutex;
    EventObserver observer;
};

const StatePart<Observation> observation;

} // namespace

void LogEvent(int eventId, EventType type, const QString &text)
{
    const QString message = oneLine(text);
    platform::writeEvent(eventId, type, message);
    const QMutexLocker locker(&observation->mutex);
    if (observation->observer)
        observation->observer(eventId, type, message);
}

void setEventObserver(EventObserver observer)
{
    const QMutexLocker locker(&observation->mutex);
    observation->observer = std::move(observer);
}
