#include "ChartSamples.h"
#include "charts/ChartPainter.h"
#include "charts/ChartPool.h"
#include "charts/ChartStyle.h"
#include "charts/ImageFile.h"
#include "core/Files.h"

#include <QDir>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

namespace {

std::vector<Chart> someCharts()
{
    std::vector<Chart> charts;
    for (int i = 0; i < 24; ++i) {
        QList<double> means;
        QList<std::pair<qint64, qint64>> counts;
        for (int k = 0; k < 168; ++k) {
            means.append(k % 41 == i ? noValue : 50 + i + 20 * std::sin(k * 0.26));
            counts.append({k % 37 == i ? 0 : 58, k % 29 == i ? 2 : 0});
        }
        CounterChart counter;
        counter.frame = sampleFrame({640, 390}, i % 4);
        counter.unit = QStringLiteral("ms");
        counter.series = counterSeries(means, 9);
        charts.emplace_back(counter);
        StateChart state;
        state.frame = sampleFrame({400 + i, 300});
        state.series = stateSeries(counts);
        charts.emplace_back(state);
    }
    return charts;
}

} // namespace

class ChartPoolTest : public QObject
{
    Q_OBJECT

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
        for (const int threads : {1, 8}) {
            const QTemporaryDir folder;
            ChartPool pool(threads);
            for (size_t i = 0; i < charts.size(); ++i)
                pool.submit(charts[i], folder.filePath(QString::number(i)), QStringLiteral("png"));
            QVERIFY(pool.waitForDone());
            QVERIFY(pool.takeFailures().empty());
            for (size_t i = 0; i < charts.size(); ++i) {
                const auto quality =
                    std::visit([](const auto &kind) { return kind.frame.quality; }, charts[i]);
                const Compression compression =
                    quality == 0 ? Compression::Small : Compression::Fast;
                QCOMPARE(readFile(folder.filePath(QString::number(i))),
                         encodePng(drawChart(charts[i]), compression));
            }
        }
    }

    void filesAreSavedWhole()
    {
        const QTemporaryDir folder;
        ChartPool pool(2);
        const PendingOutcome outcome =
            pool.submitFile(folder.filePath(QStringLiteral("a.htm")), QByteArray(100'000, 'x'));
        QVERIFY(!outcome.get());
        QCOMPARE(readFile(folder.filePath(QStringLiteral("a.htm"))), QByteArray(100'000, 'x'));
    }

    void aFailedJobTellsItsPathAndStopsNoOther()
    {
        const QTemporaryDir folder;
        const QString missing = folder.filePath(QStringLiteral("no such folder/a.png"));
        const QString fine = folder.filePath(QStringLiteral("fine.png"));
        StateChart chart;
        chart.frame = sampleFrame();
        ChartPool pool(1);
        const PendingOutcome bad = pool.submit(chart, missing, QStringLiteral("PNG"));
        const PendingOutcome unknown = pool.submit(chart, fine, QStringLiteral("WMF9"));
        const PendingOutcome good = pool.submit(chart, fine, QStringLiteral("PNG"));
        QVERIFY(bad.get().has_value());
        QVERIFY(unknown.get().has_value());
        QVERIFY(!good.get());
        QVERIFY(pool.waitForDone());
        const std::vector<ChartPool::Failure> failures = pool.takeFailures();
        QCOMPARE(failures.size(), size_t(2));
        QCOMPARE(failures[0].path, missing);
        QCOMPARE(failures[0].error.number, int(PathNotFound));
        QVERIFY(fileExists(fine));
        QVERIFY(pool.takeFailures().empty());
    }

    void cancelDropsWhatHasNotStarted()
    {
        const QTemporaryDir folder;
        CounterChart large;
        large.frame = sampleFrame({3840, 2160}, 3);
        large.series = counterSeries(QList<double>(500, 3.0), 1);
        std::vector<PendingOutcome> outcomes;
        ChartPool pool(1);
        for (int i = 0; i < 6; ++i)
            outcomes.push_back(
                pool.submit(large, folder.filePath(QString::number(i)), QStringLiteral("PNG")));
        pool.cancel();
        QVERIFY(pool.waitForDone());
        int dropped = 0;
        for (size_t i = 0; i < outcomes.size(); ++i) {
            const Outcome outcome = outcomes[i].get();
            QCOMPARE(fileExists(folder.filePath(QString::number(i))), !outcome.has_value());
            dropped += outcome && outcome->number == ChartPool::JobCancelled ? 1 : 0;
        }
        QVERIFY(dropped >= 4);
        QVERIFY(pool.takeFailures().empty());
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files).size(), 6 - dropped);
        QVERIFY(!pool.submitFile(folder.filePath(QStringLiteral("later")), "x").get());
    }

    void destructionLeavesNoOutcomeOpen()
    {
        const QTemporaryDir folder;
        std::vector<PendingOutcome> outcomes;
        {
            ChartPool pool(2);
            for (int i = 0; i < 10; ++i)
                outcomes.push_back(pool.submitFile(folder.filePath(QString::number(i)), "abc"));
        }
        for (const PendingOutcome &outcome : outcomes)
            QVERIFY(outcome.wait_for(std::chrono::seconds(0)) == std::future_status::ready);
    }
};

QTEST_MAIN(ChartPoolTest)
#include "tst_chart_pool.moc"
