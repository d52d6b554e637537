#pragma once

#include "scheduling/ReportRunner.h"

#include <QObject>
#include <QStringList>
#include <QTimer>

#include <mutex>
#include <optional>
#include <thread>

/// A run on a thread of its own. What it says arrives on the thread of this object, gathered: many
/// status lines cost the window no more than a few.
class RunThread : public QObject
{
    Q_OBJECT

public:
    /// Starts the run.
    explicit RunThread(RunPlan plan, QObject *parent = nullptr);
    /// Cancels the run and waits for its end.
    ~RunThread() override;

Q_SIGNALS:
    void linesShown(const QStringList &lines); ///< the newest ones, where they are too many
    void progressMade(const Progress &progress);
    void reportChanged(const ReportRecord &report); ///< it has begun, or ended
    void ended(const RunResult &result);            ///< after all else

private:
    void addLine(const QString &line); ///< on the run's thread
    void deliver();
    void end();

    QTimer m_delivery;
    std::mutex m_mutex;      ///< of the next four
    QStringList m_lines;     ///< not yet delivered
    qsizetype m_waiting = 0; ///< characters in them
    std::optional<Progress> m_progress;
    std::vector<ReportRecord> m_reports;
    RunResult m_result; ///< once the thread has ended
    std::thread m_thread;
};
