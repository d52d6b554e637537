#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

/// A thread of its own for the calls into a driver. A driver may wait for its server longer than it
/// was told to, and nothing can stop it then; the caller goes on without it, and the thread ends
/// by itself when the driver comes back.
class DriverThread
{
public:
    DriverThread();
    /// Lets the thread end; waits for it unless it was given up.
    ~DriverThread();
    DriverThread(const DriverThread &) = delete;
    DriverThread &operator=(const DriverThread &) = delete;

    /// Runs `work` on the thread and waits, yielding to the user; what it throws is thrown here.
    /// `work` is destroyed on the thread, and must own all that it touches: it may outlive the
    /// caller. When the time is over (zero: none), `cancel` is called on a third thread, since it
    /// may block as well; if `work` does not end soon after, the thread is given up. False when
    /// `work` was not done in time, whether or not it ended then.
    bool run(std::function<void()> work, std::chrono::seconds time,
             std::function<void()> cancel = {});

    bool isGivenUp() const { return m_isGivenUp; }

private:
    using Clock = std::chrono::steady_clock;
    struct Shared;
    static void loop(Shared &shared);
    /// False when the work has not ended by then.
    bool waitForEnd(std::unique_lock<std::mutex> &lock, Clock::time_point latest);

    std::shared_ptr<Shared> m_shared;
    std::thread m_thread;
    bool m_isGivenUp = false;
};
