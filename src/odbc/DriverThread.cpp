#include "odbc/DriverThread.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <utility>

namespace {
/// For a driver that keeps its time but needs a moment to say so.
constexpr std::chrono::milliseconds grace(500);
} // namespace

struct DriverThread::Shared
{
    std::mutex mutex;
    std::condition_variable changed;
    std::function<void()> work;
    std::exception_ptr failure;
    bool isDone = true;
    bool ends = false;
};

DriverThread::DriverThread()
    : m_shared(std::make_shared<Shared>())
    , m_thread([shared = m_shared] { loop(*shared); })
{}

DriverThread::~DriverThread()
{
    {
        const std::lock_guard lock(m_shared->mutex);
        m_shared->ends = true;
    }
    m_shared->changed.notify_all();
    if (m_isGivenUp)
        m_thread.detach();
    else
        m_thread.join();
}

void DriverThread::loop(Shared &shared)
{
    std::unique_lock lock(shared.mutex);
    for (;;) {
        shared.changed.wait(lock, [&] { return shared.work || shared.ends; });
        if (!shared.work)
            return;
        std::function<void()> work = std::move(shared.work);
        shared.work = nullptr;
        lock.unlock();
        std::exception_ptr failure;
        try {
            work();
        } catch (...) {
            failure = std::current_exception();
        }
        work = nullptr;
        lock.lock();
        shared.failure = std::move(failure);
        shared.isDone = true;
        shared.changed.notify_all();
    }
}

bool DriverThread::run(std::function<void()> work, std::chrono::seconds time,
                       std::function<void()> cancel)
{
    const auto isDone = [this] { return m_shared->isDone; };
    std::unique_lock lock(m_shared->mutex);
    m_shared->work = std::move(work);
    m_shared->isDone = false;
    m_shared->changed.notify_all();

    bool isInTime = true;
    if (time.count() > 0)
        isInTime = m_shared->changed.wait_for(lock, time, isDone);
    else
        m_shared->changed.wait(lock, isDone);
    if (!isInTime) {
        if (cancel)
            std::thread(std::move(cancel)).detach();
        m_isGivenUp = !m_shared->changed.wait_for(lock, grace, isDone);
    }
    if (m_isGivenUp)
        return false;
    if (const std::exception_ptr failure = std::exchange(m_shared->failure, nullptr); failure)
        std::rethrow_exception(failure);
    return isInTime;
}
