#include "scheduling/Registration.h"

#include "base/Clock.h"
#include "base/Paths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

bool isTaskRegistered(platform::TaskScheduler &scheduler)
{
    return scheduler.taskList().contains(scheduledTaskName, Qt::CaseInsensitive);
}

QString otherTaskHome(platform::TaskScheduler &scheduler)
{
    if (!isTaskRegistered(scheduler))
        return {};
    QString home = scheduler.openTask(scheduledTaskName).workingDirectory;
    if (home.isEmpty()) // the timer that the package brings
        home = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    return QFileInfo(home) == QFileInfo(programFolder()) ? QString()
                                                         : QDir::toNativeSeparators(home);
}

bool registerTask(platform::TaskScheduler &scheduler, const TaskAccount &account,
                  const QStringList &moreParameters)
{
    if (isTaskRegistered(scheduler))
        return false;
    replaceTask(scheduler, account, moreParameters);
    return true;
}

void replaceTask(platform::TaskScheduler &scheduler, const TaskAccount &account,
                 const QStringList &moreParameters)
{
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
}

bool unregisterTask(platform::TaskScheduler &scheduler)
{
    if (!isTaskRegistered(scheduler))
        return false;
    scheduler.deleteTask(scheduledTaskName);
    return true;
}
