#include "core/Clock.h"

#include "core/TimeZone.h"

#include <optional>

namespace {
std::optional<qint64> frozen;
}

qint64 currentInstant()
{
    return frozen ? *frozen : QDateTime::currentMSecsSinceEpoch();
}

QDateTime now()
{
    return wallTime(currentInstant());
}

FrozenClock::FrozenClock(qint64 instant)
{
    frozen = instant;
}

FrozenClock::FrozenClock(const QString &wallTime)
{
    QDateTime wall = QDateTime::fromString(wallTime, Qt::ISODate);
    wall.setTimeSpec(Qt::UTC);
    frozen = instantOf(wall);
}

FrozenClock::~FrozenClock()
{
    frozen.reset();
}

void FrozenClock::advance(qint64 milliseconds)
{
    *frozen += milliseconds;
}
