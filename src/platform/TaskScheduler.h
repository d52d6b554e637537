#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

/// The system's service that starts programs at set times: the Task Scheduler on Windows; here the
/// user's systemd manager, and the user's crontab where no such manager answers.
namespace platform {

/// Starts a task every `interval` days at the time of day of `begin`, a wall time.
struct DailyTrigger
{
    int interval = 1;
    QDateTime begin;
};

struct ScheduledTask
{
    QString name;
    QString application;    ///< absolute path
    QStringList parameters; ///< one entry an argument; the system's own quoting is added
    QString workingDirectory;
    QString comment;
    QString creator;
    int priorityFlags = 0;      ///< 0: the system's usual priority and no special treatment
    int maximumRunMinutes = 60; ///< a run that lasts longer is ended
    QString user;               ///< empty: the current user
    QString password;           ///< not needed for the current user's own timers
    std::vector<DailyTrigger> triggers;

    QString commandLine; ///< what a saved task starts, as the system has it; set by openTask only
};

/// Main thread only. All members throw Error with the system's own text when the service fails.
class TaskScheduler
{
public:
    virtual ~TaskScheduler() = default;

    /// The names of the registered tasks, one a line.
    virtual QString taskList() = 0;

    /// A new task of that name, known to the system once it is saved.
    virtual ScheduledTask createTask(const QString &name) = 0;

    /// A registered task; Error(ItemNotFound) when there is none. Only `name`, `commandLine` and
    /// `workingDirectory` (empty for a task without one) are always set.
    virtual ScheduledTask openTask(const QString &name) = 0;

    /// Writes all settings and triggers; replaces a task of the same name.
    virtual void saveTask(const ScheduledTask &task) = 0;

    /// Error(ItemNotFound) when there is none.
    virtual void deleteTask(const QString &name) = 0;

    /// Whether a registered task is running, as far as the system knows; and ending it.
    virtual bool isRunning(const QString &name) = 0;
    virtual void endTask(const QString &name) = 0;

    /// What a user has to know about tasks here, such as that they need a log-in; may be empty.
    virtual QString advice() = 0;

    /// Whether a task needs an account and its password; else it runs as the current user.
    virtual bool needsAccount() { return true; }
};

std::unique_ptr<TaskScheduler> systemTaskScheduler();

} // namespace platform
