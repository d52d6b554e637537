#pragma once

#include "base/Error.h"
#include "charts/ChartJob.h"

#include <QByteArray>
#include <QString>

#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <latch>
#include <mutex>
#include <optional>
#include <vector>

/// What became of one job of the pool: nothing when its file stands whole, else the error.
using Outcome = std::optional<Error>;
using PendingOutcome = std::shared_future<Outcome>;

/// Waits for all of them. Throws the first error.
void awaitAll(const std::vector<PendingOutcome> &outcomes);

/// Worker threads for the jobs of a run: devices, charts and files. Jobs run in the order of their
/// submission, several at a time. Submitted by one thread, but for parts of a job.
///
/// The workers are threads of QThreadPool::globalInstance(), taken in addition to those that it has
/// for others: from any other thread Qt hands parts of larger fills to that pool and waits for
/// them, which takes longer than the fills themselves.
///
/// The queue is bounded: submitting waits while it is full, never longer than a running job takes,
/// so that memory does not grow with the number of jobs.
///
/// Where the system gives fewer threads than wanted, those do the work; where it gives none, each
/// job is done before its submission returns.
class WorkerPool
{
public:
    /// `threads` 0: one for each core, and one more that keeps the cores busy while files are
    /// synced to the disk.
    explicit WorkerPool(int threads = 0);
    /// Drops what has not started and waits for what runs.
    ~WorkerPool();
    WorkerPool(const WorkerPool &) = delete;
    WorkerPool &operator=(const WorkerPool &) = delete;

    /// Draws a chart into an image file of the given format (see charts/ImageFile.h).
    PendingOutcome submit(Chart chart, const QString &path, QString format);
    /// Runs some work, which throws what goes wrong. `name` tells what it is for in errors.
    PendingOutcome submitWork(const QString &name, std::function<void()> work);
    /// The same for a part of the job that is running on the calling worker: it comes before all
    /// that waits, and is never waited for in here. Once all parts are submitted the job may end.
    PendingOutcome submitPart(const QString &name, std::function<void()> work);

    /// Threads that work.
    size_t size() const { return static_cast<size_t>(m_workers); }
    /// Threads that were asked for.
    size_t wanted() const { return static_cast<size_t>(m_wanted); }

    /// Waits until every job is done.
    void waitForDone();

    /// Drops the jobs that have not started; their outcome is Error(JobCancelled).
    void cancel();

    static constexpr int JobCancelled = 18; ///< number of the error of a dropped job

private:
    struct Job
    {
        std::function<void()> work; ///< throws what goes wrong
        QString name;
        std::promise<Outcome> outcome;
    };
    enum class Place { Back, Front };
    PendingOutcome enqueue(const QString &name, std::function<void()> work, Place place);
    void work(); ///< a worker's whole life

    std::mutex m_mutex;
    std::condition_variable m_added; ///< a job for a worker, or the end
    std::condition_variable m_eased; ///< a job was taken from the queue, or has ended
    std::deque<Job> m_queue;
    size_t m_running = 0;
    bool m_stopping = false;
    const int m_wanted;
    const int m_workers;
    std::latch m_ended; ///< counts the workers that will not touch this object again
};
