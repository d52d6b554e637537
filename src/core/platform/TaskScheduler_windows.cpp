#include "core/Error.h"
#include "core/platform/TaskScheduler.h"
#include "core/platform/TaskService_windows.h"

#include <QDir>

#include <utility>

namespace platform {

namespace {

constexpr long accessDenied = static_cast<long>(0x80070005);

Error errorOf(const tasks::Failure &failure, const QString &name)
{
    if (failure.code == tasks::notFound && !name.isEmpty())
        return Error(ItemNotFound, QStringLiteral("There is no scheduled task '%1'").arg(name));
    const QString text = QString::fromUtf8(failure.what());
    if (failure.code == accessDenied)
        return Error(PermissionDenied,
                     text + QStringLiteral(". Start the program as administrator for this."));
    return Error(DeviceIO, text);
}

/// Calls `work` and turns a failure of the service into Error.
template <typename Work>
auto guarded(const QString &name, Work work)
{
    try {
        return work();
    } catch (const tasks::Failure &failure) {
        throw errorOf(failure, name);
    }
}

tasks::Trigger plain(const DailyTrigger &trigger)
{
    const QDate date = trigger.begin.date();
    const QTime time = trigger.begin.time();
    const auto number = [](int value) { return static_cast<unsigned short>(value); };
    return {number(trigger.interval), number(date.year()), number(date.month()),
            number(date.day()),       number(time.hour()), number(time.minute())};
}

DailyTrigger fromPlain(const tasks::Trigger &trigger)
{
    return {trigger.interval, QDateTime(QDate(trigger.year, trigger.month, trigger.day),
                                        QTime(trigger.hour, trigger.minute), Qt::UTC)};
}

class WindowsTaskScheduler : public TaskScheduler
{
public:
    QString taskList() override
    {
        QStringList names;
        for (const std::wstring &name : guarded({}, [this] { return service().names(); }))
            names.append(QString::fromStdWString(name));
        return names.join(u'\n');
    }

    ScheduledTask createTask(const QString &name) override
    {
        ScheduledTask task;
        task.name = name;
        return task;
    }

    ScheduledTask openTask(const QString &name) override
    {
        const tasks::Task plainTask =
            guarded(name, [&] { return service().read(name.toStdWString()); });
        ScheduledTask task = createTask(name);
        task.application = QString::fromStdWString(plainTask.application);
        task.workingDirectory = QString::fromStdWString(plainTask.workingDirectory);
        task.comment = QString::fromStdWString(plainTask.comment);
        task.creator = QString::fromStdWString(plainTask.creator);
        task.user = QString::fromStdWString(plainTask.user);
        task.maximumRunMinutes = static_cast<int>(plainTask.maximumRunTime / 60'000);
        for (const tasks::Trigger &trigger : plainTask.triggers)
            task.triggers.push_back(fromPlain(trigger));
        task.commandLine = QString::fromStdWString(tasks::quoted({plainTask.application}) + L' ' +
                                                   plainTask.parameters)
                               .trimmed();
        return task;
    }

    void saveTask(const ScheduledTask &task) override
    {
        tasks::Task plainTask;
        plainTask.name = task.name.toStdWString();
        plainTask.application = QDir::toNativeSeparators(task.application).toStdWString();
        std::vector<std::wstring> parameters;
        for (const QString &parameter : task.parameters)
            parameters.push_back(parameter.toStdWString());
        plainTask.parameters = tasks::quoted(parameters);
        plainTask.workingDirectory = QDir::toNativeSeparators(task.workingDirectory).toStdWString();
        plainTask.comment = task.comment.toStdWString();
        plainTask.creator = task.creator.toStdWString();
        plainTask.flags = static_cast<unsigned long>(task.priorityFlags);
        plainTask.maximumRunTime = static_cast<unsigned long>(task.maximumRunMinutes) * 60'000;
        plainTask.user = task.user.toStdWString();
        plainTask.password = task.password.toStdWString();
        for (const DailyTrigger &trigger : task.triggers)
            plainTask.triggers.push_back(plain(trigger));
        guarded({}, [&] { service().save(plainTask); });
    }

    void deleteTask(const QString &name) override
    {
        guarded(name, [&] { service().remove(name.toStdWString()); });
    }

    bool isRunning(const QString &name) override
    {
        return guarded(name,
                       [&] { return service().status(name.toStdWString()) == tasks::running; });
    }

    void endTask(const QString &name) override
    {
        guarded(name, [&] { service().terminate(name.toStdWString()); });
    }

    QString advice() override
    {
        return QStringLiteral("A task without a password runs only while its user is logged on. "
                              "To have it run always, unregister it and register it in the window, "
                              "menu \"Tools\", \"Automated Reporting\", with the password of "
                              "its account.");
    }

private:
    /// The window opens also where the system's scheduler does not answer.
    tasks::Service &service()
    {
        if (!m_service)
            m_service = std::make_unique<tasks::Service>();
        return *m_service;
    }

    std::unique_ptr<tasks::Service> m_service;
};

} // namespace

std::unique_ptr<TaskScheduler> systemTaskScheduler()
{
    return std::make_unique<WindowsTaskScheduler>();
}

} // namespace platform
