#pragma once

#include "base/Error.h"
#include "platform/TaskScheduler.h"

/// A task scheduler that only remembers.
class MemoryScheduler : public platform::TaskScheduler
{
public:
    QString taskList() override
    {
        fail();
        return list;
    }
    platform::ScheduledTask createTask(const QString &name) override
    {
        platform::ScheduledTask task;
        task.name = name;
        return task;
    }
    platform::ScheduledTask openTask(const QString &) override { return saved; }
    void saveTask(const platform::ScheduledTask &task) override
    {
        fail();
        saved = task;
        list += task.name + u'\n';
    }
    void deleteTask(const QString &name) override
    {
        fail();
        deleted.append(name);
        list.remove(name);
    }
    bool isRunning(const QString &) override { return running; }
    void endTask(const QString &name) override { ended.append(name); }
    QString advice() override { return {}; }
    bool needsAccount() override { return takesAccount; }

    QString list;
    platform::ScheduledTask saved;
    QStringList deleted;
    QStringList ended;
    bool running = false;
    bool takesAccount = true;
    bool fails = false; ///< every call throws

private:
    void fail() const
    {
        if (fails)
            throw Error(PermissionDenied, QStringLiteral("no rights"));
    }
};
