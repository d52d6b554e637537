#include "base/Clock.h"
#include "base/ProgramState.h"
#include "base/TimeZone.h"
#include "definitions/clsGraphDef.h"
#include "report/DeviceFacts.h"
#include "support/Zones.h"

#include <QTest>

/// A report's numbers, from rows and samples to facts.
class FactsTest : public QObject
{
    Q_OBJECT

    const ProgramState m_state;

private Q_SLOTS:
    void sortsDevices()
    {
        PlannedReport plan;
        for (const char *muid : {"d1", "gone", "d2", "d3", "it's", "d4"})
            plan.devices.push_back({muid, {}});
        plan.sortDevices(Inventory({{1, "D1", "zeta", {}, false},
                                    {2, "d2", "Beta", {}, false},
                                    {3, "d3", "alpha", {}, false},
                                    {4, "d4", "beta", {}, false},
                                    {5, "IT'S", "Gamma", {}, false},
                                    {6, "d3", "zz", {}, false}},
                                   {}, {}));
        QStringList order;
        for (const PlannedReport::Device &device : plan.devices)
            order.append(device.muid);
        QCOMPARE(order.join(u' '), "gone d3 d2 d4 it's d1");
    }

    /// Charted and counted items overlap; another device's item, and one that overflows.
    void deviceFacts()
    {
        setZone("UTC");
        const Inventory inventory({{1, "d1", "core", "about", false}, {2, "d2", "edge", "", false}},
                                  {{10, 1, "Ping", "", stateScale, true},
                                   {11, 1, "Web", "", stateScale, true},
                                   {12, 1, "Test", "", stateScale, false},
                                   {13, 1, "Load", "", 5, true},
                                   {14, 1, "Huge", "", 5, false},
                                   {20, 2, "Ping", "", stateScale, true}},
                                  {{stateScale, "State", ""}, {5, "Percent", "%"}});
        const qint64 start = utc("2024-03-01T00:00:00");
        constexpr qint64 hour = 3'600'000;
        PlannedReport plan;
        plan.latest = start + 2 * hour;
        plan.chart.StartTime = wallTime(start);
        plan.chart.EndTime = wallTime(start + 4 * hour);
        plan.service = ServiceTime({start / 1000, plan.latest / 1000}, {}, {});
        plan.axis = std::make_shared<const BucketAxis>(start, start + 4 * hour, ByHour, 0);
        const PlannedReport::Device device{"D1", {12, 20, 10, 13, 14, 99}, 40, {{13, 70}}};
        DeviceQuestions questions(plan, device, inventory);
        QVector<qint64> asked;
        for (const ItemQuestion &question : questions.items) {
            if (question.lastBefore) {
                question.answer->addSampleBefore(start - hour, 0);
                continue;
            }
            asked.append(question.dataIdent);
            const bool isHuge = question.dataIdent == 14;
            question.answer->addSample(start, 1, isHuge ? 1e15 : 40);
            question.answer->addSample(start + hour, 0, 60);
        }
        QCOMPARE(asked, QVector<qint64>({12, 10, 13, 14, 11})); // charted, then counted alone
        questions.summary.answer = {{10, 1, 2}, {11, 3, 7}};
        const DeviceFacts facts = questions.takeFacts();

        QCOMPARE(facts.counts.name, "core");
        QCOMPARE(facts.counts.successes, 4);
        QCOMPARE(facts.counts.failures, 5);
        QStringList items;
        for (const ItemFacts &item : facts.items)
            items.append(QString("%1 %2 %3 %4%5")
                             .arg(item.number)
                             .arg(item.name, item.unit)
                             .arg(item.series.buckets.size())
                             .arg(item.error    ? " fails"
                                  : item.counts ? " counts"
                                                : ""));
        QCOMPARE(items.join(u','), "1 Test  3,3 Ping  3 counts,4 Load % 3,5 Huge % 0 fails");
        QCOMPARE(facts.counted.size(), size_t(2));
        QCOMPARE(facts.counted[0].number, 3);
        QCOMPARE(facts.counted[1].number, 0);
        QCOMPARE(facts.counted[1].failures, 4);
        QCOMPARE(facts.tests.buckets[0].count, 2); // of both counted items, nothing of "Test"
        QCOMPARE(facts.tests.buckets[0].successes, 2);
        QCOMPARE(facts.tests.buckets[1].successes, 0);

        // Both items fail from the second test up to the run.
        const DeviceFigures &figures = facts.figures;
        QCOMPARE(figures.items.size(), size_t(5));
        QCOMPARE(*figures.items[2].present.mean, 50);
        QCOMPARE(*figures.items[2].limit, 70);
        QCOMPARE(figures.present.tests, 4);
        QCOMPARE(figures.present.downtime.outages, 2);
        QCOMPARE(figures.present.downtime.seconds, 3600);
        QVERIFY(figures.target->isMet());
    }

    void axisEndsWithThePeriodOrTheRun()
    {
        setZone("UTC");
        clsGraphDef chart;
        chart.ChartFrequency = ByMinute;
        chart.MinuteInterval = 1;
        chart.SubFrequency = FixedPeriod;
        chart.ChartDuration = ThisYear;
        clsReportDef report;
        const qint64 run = utc("2024-01-02T00:00:30");
        const FrozenClock clock(run);
        const PlannedReport plan = plannedReport(report, &chart, run);
        // The whole year has more minutes than a chart can have.
        QVERIFY(!plan.axisError);
        QVERIFY((*plan.axis)[plan.axis->size() - 1].end <= run + 30'000);
        QVERIFY(plannedReport(report, nullptr, run).error);
    }
};

QTEST_GUILESS_MAIN(FactsTest)
#include "tst_DeviceFacts.moc"
