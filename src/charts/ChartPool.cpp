#include "charts/ChartPool.h"

#include "charts/ChartPainter.h"
#include "charts/ImageFile.h"
#include "charts/TextCache.h"
#include "core/Files.h"
#include "core/Status.h"

#include <algorithm>
#include <chrono>
#include <new>

namespace {

/// Enough waiting jobs for each worker that it never runs dry while the main thread reads data.
constexpr size_t waitingPerThread = 8;
/// Between two looks at the user's events.
constexpr std::chrono::milliseconds patience(10);

Compression compressionOf(const Chart &chart)
{
    const int quality = std::visit([](const auto &kind) { return kind.frame.quality; }, chart);
    return quality <= 0 ? Compression::Small : Compression::Fast;
}

Outcome outcomeOf(const std::function<void()> &work)
{
    try {
        work();
        return {};
    } catch (const Error &error) {
        return error;
    } catch (const std::bad_alloc &) {
        return Error(Overflow, QStringLiteral("Out of memory"));
    } catch (const std::exception &error) {
        return Error(DeviceIO, QString::fromLocal8Bit(error.what()));
    }
}

} // namespace

Outcome awaited(const PendingOutcome &outcome)
{
    while (outcome.wait_for(patience) != std::future_status::ready)
        yieldToUser();
    return outcome.get();
}

ChartPool::ChartPool(int threads)
{
    const int cores = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
    const int count = threads > 0 ? threads : cores + 1;
    for (int i = 0; i < count; ++i)
        m_threads.emplace_back([this] { run(); });
}

ChartPool::~ChartPool()
{
    cancel();
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_changed.notify_all();
    for (std::thread &thread : m_threads)
        thread.join();
}

PendingOutcome ChartPool::submit(Chart chart, const QString &path, QString format)
{
    return enqueue(path, [chart = std::move(chart), path, format = std::move(format)] {
        saveFile(path, encodeImage(drawChart(chart), format, compressionOf(chart)));
    });
}

PendingOutcome ChartPool::submitFile(const QString &path, QByteArray bytes)
{
    return enqueue(path, [path, bytes = std::move(bytes)] { saveFile(path, bytes); });
}

PendingOutcome ChartPool::enqueue(QString path, std::function<void()> work)
{
    Job job{std::move(work), std::move(path), {}};
    PendingOutcome outcome = job.outcome.get_future().share();
    {
        std::unique_lock lock(m_mutex);
        const auto hasRoom = [this] {
            return m_queue.size() < m_threads.size() * waitingPerThread;
        };
        while (!m_changed.wait_for(lock, patience, hasRoom)) {
            lock.unlock();
            yieldToUser();
            lock.lock();
        }
        m_queue.push_back(std::move(job));
    }
    m_changed.notify_all();
    return outcome;
}

void ChartPool::run()
{
    TextCache texts;
    std::unique_lock lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return m_stopping || !m_queue.empty(); });
        if (m_queue.empty())
            return;
        Job job = std::move(m_queue.front());
        m_queue.pop_front();
        ++m_running;
        lock.unlock();
        m_changed.notify_all();

        Outcome outcome = outcomeOf(job.work);
        job.work = nullptr; // frees the chart before anyone hears that it is done

        lock.lock();
        if (outcome)
            m_failures.push_back({job.path, *outcome});
        --m_running;
        job.outcome.set_value(std::move(outcome));
        m_changed.notify_all();
    }
}

bool ChartPool::waitForDone(int milliseconds)
{
    std::unique_lock lock(m_mutex);
    const auto done = [this] { return m_queue.empty() && m_running == 0; };
    if (milliseconds >= 0)
        return m_changed.wait_for(lock, std::chrono::milliseconds(milliseconds), done);
    m_changed.wait(lock, done);
    return true;
}

void ChartPool::cancel()
{
    std::deque<Job> dropped;
    {
        const std::lock_guard lock(m_mutex);
        dropped.swap(m_queue);
    }
    for (Job &job : dropped)
        job.outcome.set_value(
            Error(JobCancelled, QStringLiteral("'%1' was cancelled").arg(job.path)));
    m_changed.notify_all();
}

std::vector<ChartPool::Failure> ChartPool::takeFailures()
{
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_failures, {});
}
