#include "app/SingleInstance.h"

#include "core/Clock.h"
#include "core/Files.h"
#include "core/Paths.h"
#include "core/StartUp.h"
#include "core/State.h"
#include "core/platform/EventLog.h"
#include "core/platform/InstanceLock.h"
#include "core/platform/Processes.h"
#include "scheduling/RunHistory.h"

#include <memory>
#include <thread>

namespace {

std::unique_ptr<platform::InstanceLock> instanceLock;

/// Waits until the earlier processes have ended, or their number has not changed for a while.
bool earlierOnesStay(std::chrono::milliseconds patience)
{
    constexpr std::chrono::milliseconds step(50);
    const QString image = platform::ownImageName();
    std::chrono::milliseconds unchanged(0);
    int count = platform::countEarlierProcesses(image, makesReports);
    while (count > 0 && unchanged < patience) {
        std::this_thread::sleep_for(step);
        const int before = count;
        count = platform::countEarlierProcesses(image, makesReports);
        unchanged = count == before ? unchanged + step : std::chrono::milliseconds(0);
    }
    return count > 0;
}

/// Whether another instance's run ended since this process began. A record from the future, left by
/// a clock that was wrong once, tells nothing.
bool ranWhileStarting()
{
    const qint64 end = lastRunEnd();
    return end > platform::ownBegin() && end <= currentInstant();
}

/// Takes the lock, and keeps it unless `isOther()` finds another instance all the same.
template <typename IsOther>
bool isAnother(IsOther isOther)
{
    if (!instanceLock) {
        QString message; // a folder that cannot be made shows in the lock
        EnsureFolder(runHistoryFolder(), message);
        instanceLock = std::make_unique<platform::InstanceLock>(nativePath(runHistoryFolder()) +
                                                                QLatin1String("running.lock"));
    }
    bool another = false;
    switch (instanceLock->tryLock()) {
    case platform::InstanceLock::HeldByOther:
        another = true;
        break;
    case platform::InstanceLock::Held:
        another = isOther();
        break;
    default:
        LogEvent(runEvent, EventWarning,
                 QLatin1String("No lock against a second instance: ") + instanceLock->reason);
        another = earlierOnesStay(std::chrono::milliseconds(0));
    }
    if (another)
        releaseInstance();
    return another;
}

} // namespace

bool anotherInstanceRuns(std::chrono::milliseconds patience)
{
    return isAnother([patience] { return ranWhileStarting() || earlierOnesStay(patience); });
}

bool anotherInstanceWorks()
{
    return isAnother([] { return earlierOnesStay(std::chrono::milliseconds(0)); });
}

void releaseInstance()
{
    instanceLock.reset();
}
