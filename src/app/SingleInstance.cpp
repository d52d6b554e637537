#include "app/SingleInstance.h"

#include "base/Clock.h"
#include "base/Error.h"
#include "base/Files.h"
#include "base/Paths.h"
#include "base/ProgramState.h"
#include "config/Program.h"
#include "config/StartUp.h"
#include "platform/EventLog.h"
#include "platform/InstanceLock.h"
#include "platform/Processes.h"
#include "scheduling/RunHistory.h"

#include <QDir>

#include <memory>
#include <thread>

namespace {

struct Instance
{
    std::unique_ptr<platform::InstanceLock> lock;
};

const StatePart<Instance> instance;

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

/// Whether another instance's run ended since this process started. A record from the future, left
/// by a clock that was wrong, is ignored.
bool ranWhileStarting()
{
    const qint64 end = runHistory().lastEnd();
    return end > platform::ownStart() && end <= currentInstant();
}

/// Takes the lock, and keeps it unless `isOther()` still finds another instance.
template <typename IsOther>
bool isAnother(IsOther isOther)
{
    std::unique_ptr<platform::InstanceLock> &lock = instance->lock;
    if (!lock) {
        QString message; // if the folder cannot be created, the lock fails
        const QString folder = runHistory().folder();
        EnsureFolder(folder, message);
        lock = std::make_unique<platform::InstanceLock>(nativePath(folder) +
                                                        QLatin1String("running.lock"));
    }
    bool another = false;
    try {
        another = !lock->tryLock() || isOther();
    } catch (const Error &error) {
        LogEvent(runEvent, EventWarning,
                 QLatin1String("No lock against a second instance: ") + error.description);
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

QString otherHome()
{
    const QString option = QStringLiteral("--home");
    for (const QStringList &words :
         platform::argumentsOfOthers(platform::ownImageName(), makesReports)) {
        const qsizetype at = words.indexOf(option);
        QString home = at >= 0 ? words.value(at + 1) : QString();
        for (const QString &word : words) {
            if (word.startsWith(option + u'='))
                home = word.mid(option.size() + 1);
        }
        if (!home.isEmpty() && QDir::cleanPath(home) != QDir::cleanPath(programFolder()))
            return home;
    }
    return {};
}

QString workOf(const QString &home)
{
    return home.isEmpty() ? home : QStringLiteral(" It makes the reports of '%1'.").arg(home);
}

void releaseInstance()
{
    instance->lock.reset();
}
