#pragma once

#include "platform/TaskScheduler.h"

#include <QString>
#include <QStringList>

/// The scheduled task that starts the program every hour with "/AUTO". Main thread only; all throw
/// Error when the system's task scheduler fails.

inline const QString scheduledTaskName = QStringLiteral("VantrelGraphTool");

/// Whether the task is in the scheduler's list, without regard to case: for any program folder.
bool isTaskRegistered(platform::TaskScheduler &scheduler);

/// The program folder of a registered task if it is not this process's; empty when it is, or no
/// task is registered.
QString otherTaskHome(platform::TaskScheduler &scheduler);

/// The account under which the task runs; empty: the current user's.
struct TaskAccount
{
    QString user;
    QString password;
};

/// Registers the task: one second past every full hour. `moreParameters` follow "/AUTO". False when
/// there is one already, which keeps its settings and account.
bool registerTask(platform::TaskScheduler &scheduler, const TaskAccount &account = {},
                  const QStringList &moreParameters = {});

/// The same, replacing a registered task.
void replaceTask(platform::TaskScheduler &scheduler, const TaskAccount &account,
                 const QStringList &moreParameters);

/// False when there is none.
bool unregisterTask(platform::TaskScheduler &scheduler);
