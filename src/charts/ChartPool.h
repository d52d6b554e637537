#pragma once

#include "charts/ChartJob.h"
#include "core/Error.h"

#include <QByteArray>
#include <QString>

#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

/// What became of one job of the pool: nothing when its file stands whole, else the error.
using Outcome = std::optional<Error>;
using PendingOutcome = std::shared_future<Outcome>;

/// Waits for a job's end; the user's events are looked after meanwhile. Main thread only.
Outcome awaited(const PendingOutcome &outcome);

/// Draws, compresses and saves charts, and saves other files, on worker threads. Used from one
/// thread; jobs run in the order of their submission, several at a time.
///
/// The queue is bounded: submitting waits while it is full, never longer than a running job takes,
/// so that memory does not grow with the number of charts. It yields to the user meanwhile.
class ChartPool
{
public:
    /// `threads` 0: one for each core, and one more that keeps the cores busy while files are
    /// synced to the disk.
    explicit ChartPool(int threads = 0);
    /// Drops what has not started and waits for what runs.
    ~ChartPool();
    ChartPool(const ChartPool &) = delete;
    ChartPool &operator=(const ChartPool &) = delete;

    /// Draws a chart into an image file of the given format (see charts/ImageFile.h).
    PendingOutcome submit(Chart chart, const QString &path, QString format);
    /// Saves bytes as they are.
    PendingOutcome submitFile(const QString &path, QByteArray bytes);

    /// Waits until every job is done; false when `milliseconds` (negative: no limit) were not
    /// enough, so that a main thread can look after its events meanwhile.
    bool waitForDone(int milliseconds = -1);

    /// Drops the jobs that have not started; their outcome is Error(JobCancelled).
    void cancel();

    /// The jobs that failed so far, cancelled ones not among them, as they ended; empties the list.
    struct Failure
    {
        QString path;
        Error error;
    };
    std::vector<Failure> takeFailures();

    static constexpr int JobCancelled = 18; ///< number of the error of a dropped job

private:
    struct Job
    {
        std::function<void()> work; ///< throws what goes wrong
        QString path;
        std::promise<Outcome> outcome;
    };
    PendingOutcome enqueue(QString path, std::function<void()> work);
    void run();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Job> m_queue;
    std::vector<Failure> m_failures;
    size_t m_running = 0;
    bool m_stopping = false;
    std::vector<std::thread> m_threads; ///< last: they use all of the above
};
