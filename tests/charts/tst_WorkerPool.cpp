#include "ChartSamples.h"
#include "base/Files.h"
#include "base/ProgramState.h"
#include "charts/ChartPainter.h"
#include "charts/ChartStyle.h"
#include "charts/ImageFile.h"
#include "charts/WorkerPool.h"

#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#ifdef Q_OS_LINUX
#include <pthread.h>
#endif

namespace {

/// Lets the system refuse to start threads.
class NoThreads
{
public:
#ifdef Q_OS_LINUX
    NoThreads()
    {
        pthread_getattr_default_np(&m_usual);
        pthread_attr_t impossible;
        pthread_attr_init(&impossible);
        pthread_attr_setstacksize(&impossible, size_t(1) << 46);
        pthread_setattr_default_np(&impossible);
    }
    ~NoThreads()
    {
        pthread_setattr_default_np(&m_usual);
    }

private:
    pthread_attr_t m_usual{};
#endif
};

std::vector<Chart> someCharts()
{
    std::vector<Chart> charts;
    for (int i = 0; i < 24; ++i) {
        QList<double> means;
        Counts counts;
        for (int k = 0; k < 168; ++k) {
            means.append(k % 41 == i ? noValue : 50 + i + 20 * std::sin(k * 0.26));
            counts.append({k % 37 == i ? 0 : 58, k % 29 == i ? 2 : 0});
        }
        charts.emplace_back(
            CounterChart{sampleFrame({640, 390}, i % 4), "", "ms", counterSeries(means, 9)});
        charts.emplace_back(StateChart{sampleFrame({400 + i, 300}), stateSeries(counts)});
    }
    return charts;
}

} // namespace

class WorkerPoolTest : public QObject
{
    Q_OBJECT

    const ProgramState m_state;

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(fontsAvailable());
        warmUpFonts();
    }

    /// With the text caches of the workers and without one.
    void sameBytesOnAnyNumberOfThreads()
    {
        const std::vector<Chart> charts = someCharts();
        for (const int threads : {0, 1, 8}) {
            const std::optional<NoThreads> none =
                threads == 0 ? std::optional<NoThreads>(std::in_place) : std::nullopt;
            const QTemporaryDir folder;
            WorkerPool pool(threads);
            std::vector<PendingOutcome> outcomes;
            for (size_t i = 0; i < charts.size(); ++i)
                outcomes.push_back(
                    pool.submit(charts[i], folder.filePath(QString::number(i)), "png"));
            for (size_t i = 0; i < charts.size(); ++i) {
                QVERIFY(!outcomes[i].get());
                const bool isSmall = i % 8 == 0; // the counter charts of quality 0
                const Compression compression = isSmall ? Compression::Small : Compression::Fast;
                QCOMPARE(readFile(folder.filePath(QString::number(i))),
                         encodePng(drawChart(charts[i]), compression));
            }
        }
    }

    void aFailedJobTellsItsPathAndStopsNoOther()
    {
        const QTemporaryDir folder;
        const QString missing = folder.filePath("no such folder/a.png");
        const QString fine = folder.filePath("fine.png");
        const StateChart chart{sampleFrame(), {}};
        WorkerPool pool(1);
        const PendingOutcome bad = pool.submit(chart, missing, "PNG");
        const PendingOutcome good = pool.submit(chart, fine, "PNG");
        QVERIFY(!good.get());
        QVERIFY(fileExists(fine));
        QVERIFY(bad.get().has_value());
        QCOMPARE(bad.get()->number, int(PathNotFound));
        QVERIFY(bad.get()->description.contains(missing));
    }

    void cancelDropsWhatHasNotStarted()
    {
        const QTemporaryDir folder;
        const CounterChart large{sampleFrame({3840, 2160}, 3), "", "",
                                 counterSeries(QList<double>(500, 3.0), 1)};
        std::vector<PendingOutcome> outcomes;
        WorkerPool pool(1);
        for (int i = 0; i < 6; ++i)
            outcomes.push_back(pool.submit(large, folder.filePath(QString::number(i)), "PNG"));
        pool.cancel();
        pool.waitForDone();
        int dropped = 0;
        for (size_t i = 0; i < outcomes.size(); ++i) {
            const Outcome outcome = outcomes[i].get();
            QCOMPARE(fileExists(folder.filePath(QString::number(i))), !outcome.has_value());
            dropped += outcome && outcome->number == WorkerPool::JobCancelled ? 1 : 0;
        }
        QVERIFY(dropped >= 4);
    }

    void destructionLeavesNoOutcomeOpen()
    {
        const QTemporaryDir folder;
        std::vector<PendingOutcome> outcomes;
        {
            WorkerPool pool(2);
            for (int i = 0; i < 10; ++i) {
                const QString path = folder.filePath(QString::number(i));
                outcomes.push_back(pool.submitWork(path, [path] { saveExactFile(path, "abc"); }));
            }
        }
        for (const PendingOutcome &outcome : outcomes)
            QVERIFY(outcome.wait_for(std::chrono::seconds(0)) == std::future_status::ready);
        QCOMPARE(readFile(folder.filePath("0")), QByteArray("abc"));
    }
};

QTEST_MAIN(WorkerPoolTest)
#include "tst_WorkerPool.moc"
