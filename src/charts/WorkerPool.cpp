#include "charts/WorkerPool.h"

#include "charts/ChartPainter.h"
#include "charts/TextCache.h"

#include <QThread>
#include <QThreadPool>

#include <algorithm>
#include <system_error>
#include <thread>

namespace {

/// Enough waiting jobs for each worker that it never runs dry while data is read.
constexpr int waitingPerThread = 4;

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
    } catch (const std::system_error &) { // WorkerPool::size() says so
    }
    end.set_value();
    for (std::thread &thread : threads)
        thread.join();
    return static_cast<int>(threads.size());
}

} // namespace

void awaitAll(const std::vector<PendingOutcome> &outcomes)
{
    for (const PendingOutcome &outcome : outcomes) {
        if (const Outcome &error = outcome.get())
            throw Error(*error);
    }
}

WorkerPool::WorkerPool(int threads)
    : m_wanted(threads > 0 ? threads : QThread::idealThreadCount() + 1)
    , m_workers(threadsToBeHad(m_wanted))
    , m_ended(m_workers)
{
    QThreadPool &pool = *QThreadPool::globalInstance();
    pool.setMaxThreadCount(pool.maxThreadCount() + m_workers);
    const std::lock_guard lock(m_mutex); // they begin when it is released
    for (int i = 0; i < m_workers; ++i)
        pool.start([this] {
            work();
            m_ended.count_down();
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
    m_ended.wait();
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
            m_eased.wait(lock, [this] {
                return m_queue.size() < static_cast<size_t>(m_workers * waitingPerThread);
            });
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
