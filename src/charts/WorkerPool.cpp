#include "charts/WorkerPool.h"

#include "charts/ChartPainter.h"
#include "charts/TextCache.h"
#include "core/Files.h"
#include "core/Status.h"

#include <QThread>
#include <QThreadPool>

#include <algorithm>
#include <chrono>
#include <system_error>
#include <thread>

namespace {

/// Enough waiting jobs for each worker that it never runs dry while data is read.
constexpr int waitingPerThread = 4;
/// Between two looks at the user's events.
constexpr std::chrono::milliseconds patience(10);

Outcome outcomeOf(const std::function<void()> &work)
{
    try {
        work();
        return {};
    } catch (const std::exception &exception) {
        return errorOf(exception);
    }
}

/// How many of the wanted threads the system gives. Asked beforehand: a thread pool of Qt counts
/// one that could not start as busy for ever.
int threadsToBeHad(int wanted)
{
    std::promise<void> end;
    const std::shared_future<void> ended = end.get_future().share();
    std::vector<std::thread> threads;
    threads.reserve(static_cast<size_t>(wanted));
    try {
        for (int i = 0; i < wanted; ++i)
            threads.emplace_back([ended] { ended.wait(); });
    } catch (const std::system_error &) {
        ShowStatus(QStringLiteral("Only %1 of %2 threads can be started to draw charts.")
                       .arg(threads.size())
                       .arg(wanted));
    }
    end.set_value();
    for (std::thread &thread : threads)
        thread.join();
    return static_cast<int>(threads.size());
}

} // namespace

Outcome awaited(const PendingOutcome &outcome)
{
    while (outcome.wait_for(patience) != std::future_status::ready)
        yieldToUser();
    return outcome.get();
}

void awaitAll(const std::vector<PendingOutcome> &outcomes)
{
    for (const PendingOutcome &outcome : outcomes) {
        if (const Outcome error = awaited(outcome))
            throw Error(*error);
    }
}

WorkerPool::WorkerPool(int threads)
    : m_workers(threadsToBeHad(threads > 0 ? threads : QThread::idealThreadCount() + 1))
{
    QThreadPool &pool = *QThreadPool::globalInstance();
    pool.setMaxThreadCount(pool.maxThreadCount() + m_workers);
    for (int i = 0; i < m_workers; ++i)
        pool.start([this] {
            work();
            m_ended.release();
        });
}

WorkerPool::~WorkerPool()
{
    cancel();
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_added.notify_all();
    m_ended.acquire(m_workers);
    QThreadPool &pool = *QThreadPool::globalInstance();
    pool.setMaxThreadCount(pool.maxThreadCount() - m_workers);
}

PendingOutcome WorkerPool::submit(Chart chart, const QString &path, QString format)
{
    return enqueue(
        path,
        [chart = std::move(chart), path, format = std::move(format)] {
            saveChart(chart, path, format);
        },
        Place::Back);
}

PendingOutcome WorkerPool::submitFile(const QString &path, QByteArray bytes)
{
    return enqueue(
        path, [path, bytes = std::move(bytes)] { saveExactFile(path, bytes); }, Place::Back);
}

PendingOutcome WorkerPool::submitWork(const QString &name, std::function<void()> work)
{
    return enqueue(name, std::move(work), Place::Back);
}

PendingOutcome WorkerPool::submitPart(const QString &name, std::function<void()> work)
{
    return enqueue(name, std::move(work), Place::Front);
}

PendingOutcome WorkerPool::enqueue(const QString &name, std::function<void()> work, Place place)
{
    Job job{std::move(work), name, {}};
    PendingOutcome outcome = job.outcome.get_future().share();
    if (m_workers == 0) {
        job.outcome.set_value(outcomeOf(job.work));
        return outcome;
    }
    {
        std::unique_lock lock(m_mutex);
        if (place == Place::Front) {
            m_queue.push_front(std::move(job));
        } else {
            const auto hasRoom = [this] {
                return m_queue.size() < static_cast<size_t>(m_workers * waitingPerThread);
            };
            while (!m_eased.wait_for(lock, patience, hasRoom)) {
                lock.unlock();
                yieldToUser();
                lock.lock();
            }
            m_queue.push_back(std::move(job));
        }
    }
    m_added.notify_one();
    return outcome;
}

void WorkerPool::work()
{
    TextCache texts;
    std::unique_lock lock(m_mutex);
    while (true) {
        m_added.wait(lock, [this] { return m_stopping || !m_queue.empty(); });
        if (m_queue.empty())
            return;
        Job job = std::move(m_queue.front());
        m_queue.pop_front();
        ++m_running;
        lock.unlock();
        m_eased.notify_all();

        Outcome outcome = outcomeOf(job.work);
        job.work = nullptr; // frees the chart before anyone hears that it is done

        lock.lock();
        --m_running;
        job.outcome.set_value(std::move(outcome));
        m_eased.notify_all();
    }
}

void WorkerPool::waitForDone()
{
    std::unique_lock lock(m_mutex);
    m_eased.wait(lock, [this] { return m_queue.empty() && m_running == 0; });
}

void WorkerPool::cancel()
{
    std::deque<Job> dropped;
    {
        const std::lock_guard lock(m_mutex);
        dropped.swap(m_queue);
    }
    for (Job &job : dropped)
        job.outcome.set_value(
            Error(JobCancelled, QStringLiteral("'%1' was cancelled").arg(job.name)));
}
