#pragma once

#include "core/platform/TaskScheduler.h"

#include <QString>
#include <QStringList>

/// The scheduled task that starts the program every hour with "/AUTO". Main thread only; all throw
/// Error when the system's task scheduler fails.

inline const QString scheduledTaskName = QStringLiteral("VantrelGraphTool");

/// Whether the scheduler's list of tasks names it, without regard to case: for any program folder.
bool isTaskRegistered(platform::TaskScheduler &scheduler);

/// The program folder of a registered task that works for another one than this process's; empty
/// when it works for this one, or none is registered.
QString otherTaskHome(platform::TaskScheduler &scheduler);

/// The account under which the task runs; empty: the present user's.
struct TaskAccount
{
    QString user;
    QString password;
};

/// Registers the task: one second past every full hour. `moreParameters` follow "/AUTO". False when
/// there is one already, which keeps its settings and account.
bool registerTask(platform::TaskScheduler &scheduler, const TaskAccount &account = {},
                  const QStringList &moreParameters = {});

/// The same, in the place of a task that is there.
void replaceTask(platform::TaskScheduler &scheduler, const TaskAccount &account,
                 const QStringList &moreParameters);

/// False when there is none.
bool unregisterTask(platform::TaskScheduler &scheduler);
