#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <thread>

/// A separate thread for the calls into a driver. A driver may wait for its server longer than it
/// was told to, and nothing can stop it then: the caller goes on without it, and the thread ends
/// when the driver returns.
class DriverThread
{
public:
    DriverThread();
    /// Ends the thread and waits for it, unless it was given up.
    ~DriverThread();
    DriverThread(const DriverThread &) = delete;
    DriverThread &operator=(const DriverThread &) = delete;

    /// Runs `work` on the thread and waits; what it throws is thrown here.
    /// `work` is destroyed on the thread, and must own all that it touches: it may outlive the
    /// caller. When the time is over (zero: none), `cancel` is called on a third thread, since it
    /// may block as well; if `work` does not end soon after, the thread is given up. False when
    /// `work` was not done in time, whether or not it ended then.
    bool run(std::function<void()> work, std::chrono::seconds time,
             std::function<void()> cancel = {});

    bool isGivenUp() const { return m_isGivenUp; }

private:
    struct Shared;
    static void loop(Shared &shared);

    std::shared_ptr<Shared> m_shared;
    std::thread m_thread;
    bool m_isGivenUp = false;
};
