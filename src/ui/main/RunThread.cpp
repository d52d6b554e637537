#include "ui/main/RunThread.h"

#include "config/Program.h"
#include "mail/MailRun.h"
#include "scheduling/Metrics.h"
#include "ui/main/StatusBox.h"

#include <chrono>
#include <system_error>
#include <utility>

using namespace std::chrono_literals;

RunThread::RunThread(RunPlan plan, QObject *parent)
    : QObject(parent)
{
    connect(&m_delivery, &QTimer::timeout, this, &RunThread::deliver);
    m_delivery.start(30ms);
    Observer watcher;
    watcher.status = [this](const QString &line) { addLine(line); };
    watcher.progress = [this](const Progress &progress) {
        const std::lock_guard lock(m_mutex);
        m_progress = progress;
    };
    const auto endSoon = [this] {
        QMetaObject::invokeMethod(this, &RunThread::end, Qt::QueuedConnection);
    };
    try {
        m_thread = std::thread(
            [this, endSoon, watcher, site = mailSite(), plan = std::move(plan)]() mutable {
                const QString metrics = plan.settings.metricsPath();
                m_result = executeRun(std::move(plan), watcher, [this](const ReportRecord &report) {
                    const std::lock_guard lock(m_mutex);
                    m_reports.push_back(report);
                });
                const RunState state{m_result.exitStatus(), waitingMails(site)};
                if (QString error; !saveMetrics(metrics, site.history, state, &error))
                    addLine(error);
                endSoon();
            });
    } catch (const std::system_error &error) { // the system gives no thread
        m_result.error = QLatin1String("Error running reports ") + errorTail(errorOf(error));
        endSoon();
    }
}

RunThread::~RunThread()
{
    if (!m_thread.joinable())
        return;
    program().CancelRequested = true;
    m_thread.join();
}

void RunThread::addLine(const QString &line)
{
    const std::lock_guard lock(m_mutex);
    m_lines.append(line);
    m_waiting += line.size();
    while (m_waiting > StatusBox::maxCharacters && m_lines.size() > 1)
        m_waiting -= m_lines.takeFirst().size(); // the box would cut them
}

void RunThread::deliver()
{
    QStringList lines;
    std::optional<Progress> progress;
    std::vector<ReportRecord> reports;
    {
        const std::lock_guard lock(m_mutex);
        lines.swap(m_lines);
        progress.swap(m_progress);
        reports.swap(m_reports);
        m_waiting = 0;
    }
    if (!lines.isEmpty())
        Q_EMIT linesShown(lines);
    for (const ReportRecord &report : reports)
        Q_EMIT reportChanged(report);
    if (progress)
        Q_EMIT progressMade(*progress);
}

void RunThread::end()
{
    if (m_thread.joinable())
        m_thread.join();
    m_delivery.stop();
    deliver();
    Q_EMIT ended(m_result);
}
