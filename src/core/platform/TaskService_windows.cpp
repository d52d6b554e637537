#include "core/platform/TaskService_windows.h"

// The interfaces' identifiers are wanted here and not in a library.
#include <initguid.h>
#include <lmcons.h>
#include <mstask.h>
#include <objidl.h>
#include <utility>
#include <windows.h>

namespace tasks {

namespace {

std::string utf8(const std::wstring &text)
{
    const int length = static_cast<int>(text.size());
    const int size =
        ::WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(size), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.data(), length, result.data(), size, nullptr, nullptr);
    return result;
}

/// The system's text for a result; those of the service itself stand in its own library.
std::wstring textOf(HRESULT result)
{
    const HMODULE library = ::LoadLibraryExW(
        L"mstask.dll", nullptr, LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_SEARCH_SYSTEM32);
    wchar_t buffer[512];
    DWORD size = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS |
                                      (library ? FORMAT_MESSAGE_FROM_HMODULE : 0u),
                                  library, static_cast<DWORD>(result), 0, buffer, 512, nullptr);
    if (library)
        ::FreeLibrary(library);
    while (size > 0 && buffer[size - 1] <= L' ')
        --size;
    return size > 0 ? std::wstring(buffer, size) : L"The system has no text for this error.";
}

std::string hexadecimal(HRESULT result)
{
    constexpr char digits[] = "0123456789ABCDEF";
    std::string text = "0x";
    for (int shift = 28; shift >= 0; shift -= 4)
        text += digits[(static_cast<unsigned long>(result) >> shift) & 0xF];
    return text;
}

/// Throws Failure unless the call went well.
void require(HRESULT result, const char *what)
{
    if (FAILED(result))
        throw Failure(std::string(what) + ": " + utf8(textOf(result)) + " (" + hexadecimal(result) +
                          ")",
                      result);
}

/// The service looks into a task's file right after it was saved: a call that meets it there is
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
    Interface **place() { return &m_interface; }
    IUnknown **unknownPlace() { return reinterpret_cast<IUnknown **>(&m_interface); }
    void **anyPlace() { return reinterpret_cast<void **>(&m_interface); }

private:
    Interface *m_interface = nullptr;
};

/// A text that the service allocated.
std::wstring taken(wchar_t *text)
{
    const std::wstring result = text ? text : L"";
    ::CoTaskMemFree(text);
    return result;
}

/// A text setting of a task; empty where it has none.
template <typename Interface>
std::wstring textSetting(Interface *task, HRESULT (WINAPI Interface::*get)(LPWSTR *))
{
    LPWSTR text = nullptr;
    return SUCCEEDED((task->*get)(&text)) ? taken(text) : std::wstring();
}

void removeTriggers(const Held<ITask> &task)
{
    WORD count = 0;
    require(task->GetTriggerCount(&count), "Reading the triggers of the task");
    while (count > 0)
        require(task->DeleteTrigger(--count), "Removing a trigger of the task");
}

void addTrigger(const Held<ITask> &task, const Trigger &trigger)
{
    WORD index = 0;
    Held<ITaskTrigger> added;
    require(task->CreateTrigger(&index, added.place()), "Adding a trigger to the task");
    TASK_TRIGGER daily{};
    daily.cbTriggerSize = sizeof(daily);
    daily.wBeginYear = trigger.year;
    daily.wBeginMonth = trigger.month;
    daily.wBeginDay = trigger.day;
    daily.wStartHour = trigger.hour;
    daily.wStartMinute = trigger.minute;
    daily.TriggerType = TASK_TIME_TRIGGER_DAILY;
    daily.Type.Daily.DaysInterval = trigger.interval;
    require(added->SetTrigger(&daily), "Setting a trigger of the task");
}

std::vector<Trigger> readTriggers(const Held<ITask> &task)
{
    WORD count = 0;
    require(task->GetTriggerCount(&count), "Reading the triggers of the task");
    std::vector<Trigger> triggers;
    for (WORD i = 0; i < count; ++i) {
        Held<ITaskTrigger> trigger;
        require(task->GetTrigger(i, trigger.place()), "Reading a trigger of the task");
        TASK_TRIGGER daily{};
        daily.cbTriggerSize = sizeof(daily);
        require(trigger->GetTrigger(&daily), "Reading a trigger of the task");
        if (daily.TriggerType == TASK_TIME_TRIGGER_DAILY)
            triggers.push_back({daily.Type.Daily.DaysInterval, daily.wBeginYear, daily.wBeginMonth,
                                daily.wBeginDay, daily.wStartHour, daily.wStartMinute});
    }
    return triggers;
}

void setAccount(const Held<ITask> &task, const Task &settings)
{
    const std::wstring user = settings.user.empty() ? presentUser() : settings.user;
    const bool whileLoggedOn = settings.password.empty();
    require(task->SetFlags(settings.flags | (whileLoggedOn ? TASK_FLAG_RUN_ONLY_IF_LOGGED_ON : 0u)),
            "Setting the flags of the task");
    require(task->SetAccountInformation(user.c_str(),
                                        whileLoggedOn ? nullptr : settings.password.c_str()),
            "Setting the account of the task");
}

} // namespace

struct Service::Com
{
    Com()
        : joined(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))
    {
        try {
            // A thread that chose the other way of threads before serves as well.
            require(joined == RPC_E_CHANGED_MODE ? S_FALSE : joined, "Joining COM");
            require(::CoCreateInstance(CLSID_CTaskScheduler, nullptr, CLSCTX_INPROC_SERVER,
                                       IID_ITaskScheduler, scheduler.anyPlace()),
                    "Reaching the Task Scheduler");
        } catch (...) {
            leave();
            throw;
        }
    }

    ~Com()
    {
        {
            const Held<ITaskScheduler> released(std::move(scheduler));
        } // before COM goes
        leave();
    }

    Com(const Com &) = delete;
    Com &operator=(const Com &) = delete;

    void leave() const
    {
        if (SUCCEEDED(joined))
            ::CoUninitialize();
    }

    Held<ITask> open(const std::wstring &name) const
    {
        Held<ITask> task;
        require(patiently([&] {
                    return scheduler->Activate(name.c_str(), IID_ITask, task.unknownPlace());
                }),
                "Opening the task");
        return task;
    }

    /// The task of that name, new unless it is there already.
    Held<ITask> create(const std::wstring &name) const
    {
        Held<ITask> task;
        const HRESULT result =
            scheduler->NewWorkItem(name.c_str(), CLSID_CTask, IID_ITask, task.unknownPlace());
        if (result == HRESULT_FROM_WIN32(ERROR_FILE_EXISTS))
            return open(name);
        require(result, "Creating the task");
        return task;
    }

    HRESULT joined;
    Held<ITaskScheduler> scheduler;
};

Service::Service()
    : m_com(std::make_unique<Com>())
{}

Service::~Service() = default;

std::vector<std::wstring> Service::names() const
{
    Held<IEnumWorkItems> items;
    require(m_com->scheduler->Enum(items.place()), "Listing the tasks");
    std::vector<std::wstring> names;
    for (;;) {
        LPWSTR *batch = nullptr;
        ULONG count = 0;
        require(items->Next(16, &batch, &count), "Listing the tasks");
        if (count == 0)
            return names;
        for (ULONG i = 0; i < count; ++i) {
            std::wstring name = taken(batch[i]);
            if (name.size() > 4 && name.compare(name.size() - 4, 4, L".job") == 0)
                name.erase(name.size() - 4);
            names.push_back(std::move(name));
        }
        ::CoTaskMemFree(batch);
    }
}

Task Service::read(const std::wstring &name) const
{
    const Held<ITask> task = m_com->open(name);
    Task settings;
    settings.name = name;
    settings.application = textSetting(task.operator->(), &ITask::GetApplicationName);
    settings.parameters = textSetting(task.operator->(), &ITask::GetParameters);
    settings.workingDirectory = textSetting(task.operator->(), &ITask::GetWorkingDirectory);
    settings.comment =
        textSetting<IScheduledWorkItem>(task.operator->(), &IScheduledWorkItem::GetComment);
    settings.creator =
        textSetting<IScheduledWorkItem>(task.operator->(), &IScheduledWorkItem::GetCreator);
    settings.user = textSetting<IScheduledWorkItem>(task.operator->(),
                                                    &IScheduledWorkItem::GetAccountInformation);
    require(task->GetFlags(&settings.flags), "Reading the flags of the task");
    require(task->GetMaxRunTime(&settings.maximumRunTime), "Reading the run time of the task");
    settings.triggers = readTriggers(task);
    return settings;
}

void Service::save(const Task &settings) const
{
    const Held<ITask> task = m_com->create(settings.name);
    require(task->SetApplicationName(settings.application.c_str()),
            "Setting the program of the task");
    require(task->SetParameters(settings.parameters.c_str()), "Setting the parameters of the task");
    require(task->SetWorkingDirectory(settings.workingDirectory.c_str()),
            "Setting the folder of the task");
    require(task->SetComment(settings.comment.c_str()), "Setting the comment of the task");
    require(task->SetCreator(settings.creator.c_str()), "Setting the creator of the task");
    require(task->SetMaxRunTime(settings.maximumRunTime), "Setting the run time of the task");
    removeTriggers(task);
    for (const Trigger &trigger : settings.triggers)
        addTrigger(task, trigger);
    setAccount(task, settings);
    Held<IPersistFile> file;
    require(task->QueryInterface(IID_IPersistFile, file.anyPlace()), "Saving the task");
    require(patiently([&] { return file->Save(nullptr, TRUE); }), "Saving the task");
}

void Service::remove(const std::wstring &name) const
{
    require(patiently([&] { return m_com->scheduler->Delete(name.c_str()); }), "Deleting the task");
}

long Service::status(const std::wstring &name) const
{
    HRESULT status = S_OK;
    require(m_com->open(name)->GetStatus(&status), "Reading the status of the task");
    return status;
}

void Service::terminate(const std::wstring &name) const
{
    require(m_com->open(name)->Terminate(), "Ending the task");
}

std::wstring presentUser()
{
    wchar_t name[UNLEN + 1];
    DWORD size = UNLEN + 1;
    if (!::GetUserNameW(name, &size))
        require(HRESULT_FROM_WIN32(::GetLastError()), "Reading the name of the user");
    wchar_t domain[UNLEN + 1];
    const DWORD length = ::GetEnvironmentVariableW(L"USERDOMAIN", domain, UNLEN + 1);
    return length > 0 && length <= UNLEN ? std::wstring(domain) + L'\\' + name : name;
}

std::wstring quoted(const std::vector<std::wstring> &arguments)
{
    // The rules of CommandLineToArgvW: backslashes count as themselves unless a quote follows.
    std::wstring text;
    for (const std::wstring &argument : arguments) {
        if (!text.empty())
            text += L' ';
        if (!argument.empty() && argument.find_first_of(L" \t\"") == std::wstring::npos) {
            text += argument;
            continue;
        }
        text += L'"';
        std::size_t backslashes = 0;
        for (const wchar_t character : argument) {
            if (character == L'"')
                text.append(backslashes + 1, L'\\');
            backslashes = character == L'\\' ? backslashes + 1 : 0;
            text += character;
        }
        text.append(backslashes, L'\\');
        text += L'"';
    }
    return text;
}

} // namespace tasks
