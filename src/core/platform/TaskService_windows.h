#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

/// The Windows Task Scheduler through its COM interfaces of version 1.0, which every Windows has.
/// Plain C++: nothing here knows Qt. For one thread; a Service joins COM for as long as it lives.
namespace tasks {

/// What the service answered: `code` is its HRESULT, the text says what was tried and what the
/// system says to it, in UTF-8.
class Failure : public std::runtime_error
{
public:
    Failure(const std::string &text, long resultCode)
        : std::runtime_error(text)
        , code(resultCode)
    {}

    const long code;
};

inline constexpr long notFound = static_cast<long>(0x80070002); ///< there is no such task
inline constexpr long running = 0x00041301;                     ///< status of a task that runs now

/// Starts a task every `interval` days at a local time. The service knows whole minutes.
struct Trigger
{
    unsigned short interval = 1;
    unsigned short year = 0;
    unsigned short month = 0; ///< 1 to 12
    unsigned short day = 0;   ///< of the month
    unsigned short hour = 0;
    unsigned short minute = 0;
};

struct Task
{
    std::wstring name;
    std::wstring application;
    std::wstring parameters; ///< one text, quoted as the application takes it
    std::wstring workingDirectory;
    std::wstring comment;
    std::wstring creator;
    unsigned long flags = 0;          ///< TASK_FLAG_...
    unsigned long maximumRunTime = 0; ///< milliseconds
    std::wstring user;                ///< "DOMAIN\user"; empty: the present user
    std::wstring password;            ///< empty: the task runs only while the user is logged on
    std::vector<Trigger> triggers;
};

class Service
{
public:
    Service();
    ~Service();
    Service(const Service &) = delete;
    Service &operator=(const Service &) = delete;

    /// The names of the registered tasks.
    std::vector<std::wstring> names() const;

    /// A registered task, without its password. Failure(notFound) when there is none.
    Task read(const std::wstring &name) const;

    /// Creates a task, or gives an existing one these settings and no other triggers.
    void save(const Task &task) const;

    void remove(const std::wstring &name) const;

    /// `running`, or another status of the service's.
    long status(const std::wstring &name) const;

    /// Ends the running program of a task.
    void terminate(const std::wstring &name) const;

private:
    struct Com;
    std::unique_ptr<Com> m_com;
};

/// "DOMAIN\user" of the account under which this program runs.
std::wstring presentUser();

/// Arguments as one text which a program splits into the same ones again.
std::wstring quoted(const std::vector<std::wstring> &arguments);

} // namespace tasks
