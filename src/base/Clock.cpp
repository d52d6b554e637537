#include "base/Clock.h"

#include "base/ProgramState.h"
#include "base/TimeZone.h"

#include <optional>

namespace {

struct Clock
{
    std::optional<qint64> frozen;
};

const StatePart<Clock> theClock;

} // namespace

qint64 currentInstant()
{
    return theClock->frozen.value_or(QDateTime::currentMSecsSinceEpoch());
}

QDateTime now()
{
    return wallTime(currentInstant());
}

FrozenClock::FrozenClock(qint64 instant)
{
    theClock->frozen = instant;
}

FrozenClock::FrozenClock(const QString &wallTime)
{
    QDateTime wall = QDateTime::fromString(wallTime, Qt::ISODate);
    wall.setTimeSpec(Qt::UTC);
    theClock->frozen = instantOf(wall);
}

FrozenClock::~FrozenClock()
{
    theClock->frozen.reset();
}

void FrozenClock::advance(qint64 milliseconds)
{
    *theClock->frozen += milliseconds;
}
