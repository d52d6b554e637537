#pragma once

#include "charts/WorkerPool.h"
#include "report/DevicePage.h"
#include "report/PaperChart.h"
#include "report/RunSession.h"

#include <atomic>
#include <chrono>
#include <future>
#include <memory>

/// What is left of a device once its files are written.
struct DeviceResult
{
    DeviceCounts counts;
    bool hasCounted = false; ///< it has state items that count
    DataSeries tests;        ///< of those, by time
    std::optional<Error> testsError;
    DeviceFigures figures;
    qint64 samples = 0; ///< in its charts
    int charts = 0;     ///< drawn
    struct ChartError
    {
        QString path;
        Error error;
    };
    std::vector<ChartError> chartErrors;
    std::vector<PaperChart> paper; ///< only where the report becomes a PDF
};

/// The chart of an item that can be charted.
Chart chartOf(const ReportContext &context, const DeviceFacts &device, const ItemFacts &item);

/// One device of a report on its way from answered questions to files: its facts, charts and pages
/// are made on the pool's threads, each chart as a part of its own.
class DeviceJob : public std::enable_shared_from_this<DeviceJob>
{
public:
    /// `context` has to outlive the job; `folder` is the device's, ending in a separator. The
    /// session names the images. A report that becomes a PDF alone has no files.
    DeviceJob(const ReportContext &context, std::unique_ptr<DeviceQuestions> questions,
              QString folder, Neighbours neighbours, RunSession &session);

    /// Hands the device to the pool, whose threads write its files. Waits while the pool is full.
    void start(WorkerPool &pool);

    /// Whether the files are written, at the latest after `patience`.
    bool waitUntilDone(std::chrono::milliseconds patience) const
    {
        return m_result.wait_for(patience) == std::future_status::ready;
    }

    /// How many charts are drawn, or failed, so far.
    int itemsDone() const { return m_itemsDone; }

    /// Waits until the files are written. Throws Error when one of them could not be. Called once,
    /// on the thread that started the job, and not for jobs that the pool has dropped.
    DeviceResult result() { return m_result.get(); }

private:
    void computeFacts(WorkerPool &pool);
    void drawChart(size_t item);
    void endPart();
    void writeFiles();
    std::vector<PaperChart> paperCharts();
    void removeStaleCharts() const;
    QString imagePath(size_t item) const { return m_folder + m_files[item].image; }

    const ReportContext &m_context;
    std::unique_ptr<DeviceQuestions> m_questions;
    QString m_folder;
    Neighbours m_neighbours;
    DeviceFacts m_facts;
    const bool m_hasFiles;
    std::vector<ItemFiles> m_files; ///< of the items, in their order
    std::atomic<size_t> m_partsLeft = 0;
    std::atomic<int> m_itemsDone = 0;
    std::promise<DeviceResult> m_done;
    std::future<DeviceResult> m_result = m_done.get_future();
};
