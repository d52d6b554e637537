#include "base/Error.h"
#include "base/WindowsApi_windows.h"
#include "platform/TaskScheduler.h"

#include <QDir>

#include <initguid.h> // defines the identifiers of mstask.h here
#include <lmcons.h>
#include <mstask.h>
#include <objidl.h>
#include <utility>

// The Windows Task Scheduler through its COM interfaces of version 1.0, which every Windows has.

namespace platform {

namespace {

/// The system's text for a result; the service has its texts in its own library.
QString textOf(HRESULT result)
{
    const HMODULE library = ::LoadLibraryExW(
        L"mstask.dll", nullptr, LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_SEARCH_SYSTEM32);
    wchar_t buffer[512];
    const DWORD size =
        ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS |
                             (library ? FORMAT_MESSAGE_FROM_HMODULE : 0u),
                         library, static_cast<DWORD>(result), 0, buffer, 512, nullptr);
    if (library)
        ::FreeLibrary(library);
    return size > 0 ? QString::fromWCharArray(buffer, static_cast<int>(size)).trimmed()
                    : QStringLiteral("The system has no text for this error.");
}

/// Throws Error with what was tried and the system's text, unless the call succeeded.
void require(HRESULT result, const char *what)
{
    if (SUCCEEDED(result))
        return;
    const QString text = QStringLiteral("%1: %2 (0x%3)")
                             .arg(QLatin1String(what), textOf(result),
                                  QString::number(static_cast<quint32>(result), 16).toUpper());
    if (result == E_ACCESSDENIED)
        throw Error(PermissionDenied,
                    text + QStringLiteral(". Start the program as administrator for this."));
    throw Error(DeviceIO, text);
}

/// The same for a call about a task of that name, which may not exist.
void require(HRESULT result, const char *what, const QString &name)
{
    if (result == HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND))
        throw Error(ItemNotFound, QStringLiteral("There is no scheduled task '%1'").arg(name));
    require(result, what);
}

/// The service reads a task's file right after it was saved: a call that fails because of that is
/// tried again for a second.
template <typename Call>
HRESULT patiently(Call call)
{
    HRESULT result = call();
    for (int tries = 0; tries < 20 && result == HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION);
         ++tries) {
        ::Sleep(50);
        result = call();
    }
    return result;
}

/// One interface of an object, released at the end.
template <typename Interface>
class Held
{
public:
    Held() = default;
    Held(Held &&other) noexcept
        : m_interface(std::exchange(other.m_interface, nullptr))
    {}
    Held(const Held &) = delete;
    Held &operator=(const Held &) = delete;
    ~Held()
    {
        if (m_interface)
            m_interface->Release();
    }

    Interface *operator->() const { return m_interface; }
    Interface **address() { return &m_interface; }
    IUnknown **unknownAddress() { return reinterpret_cast<IUnknown **>(&m_interface); }
    void **anyAddress() { return reinterpret_cast<void **>(&m_interface); }

private:
    Interface *m_interface = nullptr;
};

/// A text that the service allocated.
QString taken(wchar_t *text)
{
    const QString result = QString::fromWCharArray(text ? text : L"");
    ::CoTaskMemFree(text);
    return result;
}

/// A text setting of a task; empty where it has none.
template <typename Interface>
QString textSetting(Interface *task, HRESULT (WINAPI Interface::*get)(LPWSTR *))
{
    LPWSTR text = nullptr;
    return SUCCEEDED((task->*get)(&text)) ? taken(text) : QString();
}

void removeTriggers(const Held<ITask> &task)
{
    WORD count = 0;
    require(task->GetTriggerCount(&count), "Reading the triggers of the task");
    while (count > 0)
        require(task->DeleteTrigger(--count), "Removing a trigger of the task");
}

/// The service knows whole minutes.
void addTrigger(const Held<ITask> &task, const DailyTrigger &trigger)
{
    WORD index = 0;
    Held<ITaskTrigger> added;
    require(task->CreateTrigger(&index, added.address()), "Adding a trigger to the task");
    const QDate date = trigger.begin.date();
    const QTime time = trigger.begin.time();
    TASK_TRIGGER daily{};
    daily.cbTriggerSize = sizeof(daily);
    daily.wBeginYear = static_cast<WORD>(date.year());
    daily.wBeginMonth = static_cast<WORD>(date.month());
    daily.wBeginDay = static_cast<WORD>(date.day());
    daily.wStartHour = static_cast<WORD>(time.hour());
    daily.wStartMinute = static_cast<WORD>(time.minute());
    daily.TriggerType = TASK_TIME_TRIGGER_DAILY;
    daily.Type.Daily.DaysInterval = static_cast<WORD>(trigger.interval);
    require(added->SetTrigger(&daily), "Setting a trigger of the task");
}

std::vector<DailyTrigger> readTriggers(const Held<ITask> &task)
{
    WORD count = 0;
    require(task->GetTriggerCount(&count), "Reading the triggers of the task");
    std::vector<DailyTrigger> triggers;
    for (WORD i = 0; i < count; ++i) {
        Held<ITaskTrigger> trigger;
        require(task->GetTrigger(i, trigger.address()), "Reading a trigger of the task");
        TASK_TRIGGER daily{};
        daily.cbTriggerSize = sizeof(daily);
        require(trigger->GetTrigger(&daily), "Reading a trigger of the task");
        if (daily.TriggerType == TASK_TIME_TRIGGER_DAILY)
            triggers.push_back(
                {daily.Type.Daily.DaysInterval,
                 QDateTime(QDate(daily.wBeginYear, daily.wBeginMonth, daily.wBeginDay),
                           QTime(daily.wStartHour, daily.wStartMinute), Qt::UTC)});
    }
    return triggers;
}

/// "DOMAIN\user" of the account under which this program runs.
QString currentUser()
{
    wchar_t name[UNLEN + 1];
    DWORD size = UNLEN + 1;
    if (!::GetUserNameW(name, &size))
        require(HRESULT_FROM_WIN32(::GetLastError()), "Reading the name of the user");
    const QString user = QString::fromWCharArray(name);
    const QString domain = qEnvironmentVariable("USERDOMAIN");
    return domain.isEmpty() ? user : domain + u'\\' + user;
}

void setAccount(const Held<ITask> &task, const ScheduledTask &settings)
{
    const QString user = settings.user.isEmpty() ? currentUser() : settings.user;
    const bool whileLoggedOn = settings.password.isEmpty();
    require(task->SetFlags(static_cast<DWORD>(settings.priorityFlags) |
                           (whileLoggedOn ? TASK_FLAG_RUN_ONLY_IF_LOGGED_ON : 0u)),
            "Setting the flags of the task");
    require(
        task->SetAccountInformation(wide(user), whileLoggedOn ? nullptr : wide(settings.password)),
        "Setting the account of the task");
}

/// The service, and COM for as long as this lives. For one thread.
class Service
{
public:
    Service()
        : m_joined(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))
    {
        try {
            // A thread with the other threading model will do as well.
            require(m_joined == RPC_E_CHANGED_MODE ? S_FALSE : m_joined, "Joining COM");
            require(::CoCreateInstance(CLSID_CTaskScheduler, nullptr, CLSCTX_INPROC_SERVER,
                                       IID_ITaskScheduler, m_scheduler.anyAddress()),
                    "Reaching the Task Scheduler");
        } catch (...) {
            leave();
            throw;
        }
    }

    ~Service()
    {
        {
            const Held<ITaskScheduler> released(std::move(m_scheduler));
        } // before COM goes
        leave();
    }

    Service(const Service &) = delete;
    Service &operator=(const Service &) = delete;

    ITaskScheduler *operator->() const { return m_scheduler.operator->(); }

    Held<ITask> open(const QString &name) const
    {
        Held<ITask> task;
        require(patiently([&] {
                    return m_scheduler->Activate(wide(name), IID_ITask, task.unknownAddress());
                }),
                "Opening the task", name);
        return task;
    }

    /// The task of that name, new unless it is there already.
    Held<ITask> create(const QString &name) const
    {
        Held<ITask> task;
        const HRESULT result =
            m_scheduler->NewWorkItem(wide(name), CLSID_CTask, IID_ITask, task.unknownAddress());
        if (result == HRESULT_FROM_WIN32(ERROR_FILE_EXISTS))
            return open(name);
        require(result, "Creating the task");
        return task;
    }

private:
    void leave() const
    {
        if (SUCCEEDED(m_joined))
            ::CoUninitialize();
    }

    HRESULT m_joined;
    Held<ITaskScheduler> m_scheduler;
};

class WindowsTaskScheduler : public TaskScheduler
{
public:
    QString taskList() override
    {
        Held<IEnumWorkItems> items;
        require(service()->Enum(items.address()), "Listing the tasks");
        QStringList names;
        for (;;) {
            LPWSTR *batch = nullptr;
            ULONG count = 0;
            require(items->Next(16, &batch, &count), "Listing the tasks");
            if (count == 0)
                return names.join(u'\n');
            for (ULONG i = 0; i < count; ++i) {
                QString name = taken(batch[i]);
                if (name.size() > 4 && name.endsWith(QLatin1String(".job")))
                    name.chop(4);
                names.append(name);
            }
            ::CoTaskMemFree(batch);
        }
    }

    ScheduledTask createTask(const QString &name) override
    {
        ScheduledTask task;
        task.name = name;
        return task;
    }

    ScheduledTask openTask(const QString &name) override
    {
        const Held<ITask> held = service().open(name);
        ITask *const saved = held.operator->();
        ScheduledTask task = createTask(name);
        task.application = textSetting(saved, &ITask::GetApplicationName);
        task.workingDirectory = textSetting(saved, &ITask::GetWorkingDirectory);
        task.comment = textSetting<IScheduledWorkItem>(saved, &IScheduledWorkItem::GetComment);
        task.creator = textSetting<IScheduledWorkItem>(saved, &IScheduledWorkItem::GetCreator);
        task.user =
            textSetting<IScheduledWorkItem>(saved, &IScheduledWorkItem::GetAccountInformation);
        DWORD milliseconds = 0;
        require(saved->GetMaxRunTime(&milliseconds), "Reading the run time of the task");
        task.maximumRunMinutes = static_cast<int>(milliseconds / 60'000);
        task.triggers = readTriggers(held);
        task.commandLine =
            (commandLine({task.application}) + u' ' + textSetting(saved, &ITask::GetParameters))
                .trimmed();
        return task;
    }

    void saveTask(const ScheduledTask &task) override
    {
        const Held<ITask> saved = service().create(task.name);
        require(saved->SetApplicationName(wide(QDir::toNativeSeparators(task.application))),
                "Setting the program of the task");
        require(saved->SetParameters(wide(commandLine(task.parameters))),
                "Setting the parameters of the task");
        require(saved->SetWorkingDirectory(wide(QDir::toNativeSeparators(task.workingDirectory))),
                "Setting the folder of the task");
        require(saved->SetComment(wide(task.comment)), "Setting the comment of the task");
        require(saved->SetCreator(wide(task.creator)), "Setting the creator of the task");
        require(saved->SetMaxRunTime(static_cast<DWORD>(task.maximumRunMinutes) * 60'000),
                "Setting the run time of the task");
        removeTriggers(saved);
        for (const DailyTrigger &trigger : task.triggers)
            addTrigger(saved, trigger);
        setAccount(saved, task);
        Held<IPersistFile> file;
        require(saved->QueryInterface(__uuidof(IPersistFile), file.anyAddress()),
                "Saving the task");
        require(patiently([&] { return file->Save(nullptr, TRUE); }), "Saving the task");
    }

    void deleteTask(const QString &name) override
    {
        require(patiently([&] { return service()->Delete(wide(name)); }), "Deleting the task",
                name);
    }

    bool isRunning(const QString &name) override
    {
        HRESULT status = S_OK;
        require(service().open(name)->GetStatus(&status), "Reading the status of the task");
        return status == SCHED_S_TASK_RUNNING;
    }

    void endTask(const QString &name) override
    {
        require(service().open(name)->Terminate(), "Ending the task");
    }

    QString advice() override
    {
        return QStringLiteral("A task without a password runs only while its user is logged on. "
                              "To have it run always, unregister it and register it in the window, "
                              "menu \"Tools\", \"Automated Reporting\", with the password of "
                              "its account.");
    }

private:
    /// Made on first use, so that the window opens even if the service does not answer.
    Service &service()
    {
        if (!m_service)
            m_service = std::make_unique<Service>();
        return *m_service;
    }

    std::unique_ptr<Service> m_service;
};

} // namespace

std::unique_ptr<TaskScheduler> systemTaskScheduler()
{
    return std::make_unique<WindowsTaskScheduler>();
}

} // namespace platform
