#include "scheduling/Registration.h"

#include "core/Clock.h"
#include "core/Paths.h"

#include <QCoreApplication>
#include <QDir>

bool isTaskRegistered(platform::TaskScheduler &scheduler)
{
    return scheduler.taskList().contains(scheduledTaskName, Qt::CaseInsensitive);
}

bool registerTask(platform::TaskScheduler &scheduler, const TaskAccount &account,
                  const QStringList &moreParameters)
{
    if (isTaskRegistered(scheduler))
        return false;
    platform::ScheduledTask task = scheduler.createTask(scheduledTaskName);
    task.application = QDir::toNativeSeparators(QCoreApplication::applicationFilePath());
    task.comment = QStringLiteral("This task runs the Vantrel Graphing tool once per hour and "
                                  "automatically generates the graphs according to their schedule "
                                  "definition.");
    task.creator = QStringLiteral("Vantrel Graphing Tool");
    task.priorityFlags = 0;
    task.maximumRunMinutes = 60;
    task.parameters = QStringList(QStringLiteral("/AUTO")) + moreParameters;
    task.workingDirectory = programFolder();
    const QDateTime present = now();
    for (int hour = 0; hour < 24; ++hour) {
        platform::DailyTrigger trigger;
        trigger.begin = present;
        trigger.begin.setTime(QTime(hour, 0, 1));
        task.triggers.push_back(trigger);
    }
    task.user = account.user;
    task.password = account.password;
    scheduler.saveTask(task);
    return true;
}

bool unregisterTask(platform::TaskScheduler &scheduler)
{
    if (!isTaskRegistered(scheduler))
        return false;
    scheduler.deleteTask(scheduledTaskName);
    return true;
}
