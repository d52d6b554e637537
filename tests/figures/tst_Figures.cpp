#include "figures/Forecast.h"
#include "figures/Incidents.h"
#include "figures/ReportFigures.h"
#include "figures/ServiceTime.h"
#include "figures/Targets.h"
#include "support/Rows.h"

#include <cmath>
#include <random>

namespace {

constexpr qint64 step = 60; // seconds for each character of a line of tests

/// Tests from a line: "." succeeded, "x" failed, " " none.
std::vector<Test> testsIn(const QString &line)
{
    std::vector<Test> tests;
    for (qsizetype i = 0; i < line.size(); ++i) {
        if (line[i] != u' ')
            tests.push_back({i * step, line[i] == u'.'});
    }
    return tests;
}

/// "2-4 x2" for each outage, in characters of the line: begin and end, failed tests; "<" where it
/// began before, "?" where no data follows, ">" where it is still failing.
QString textOf(const std::vector<Outage> &outages)
{
    QStringList texts;
    for (const Outage &outage : outages) {
        static const QString endings[] = {"", "?", ">"};
        texts.append(QString("%1%2-%3%4 x%5")
                         .arg(outage.beganBefore ? "<" : "")
                         .arg(outage.begin / step)
                         .arg(outage.end / step)
                         .arg(endings[static_cast<int>(outage.ending)])
                         .arg(outage.failedTests));
    }
    return texts.join(", ");
}

} // namespace

class tst_Figures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void track()
    {
        std::mt19937 random(1);
        std::vector<Test> expected;
        TestTrack ordered;
        TestTrack shuffled;
        qint64 second = -5;
        for (int i = 0; i < 1000; ++i) {
            second += i % 100 == 99 ? 1'000'000'000 : 290 + random() % 20;
            expected.push_back({second, random() % 3 != 0});
            ordered.add(second, expected.back().succeeded);
        }
        QCOMPARE(ordered.tests(), expected);
        QVERIFY(ordered.bytes() < 4096);
        std::vector<Test> mixed = expected;
        std::shuffle(mixed.begin(), mixed.end(), random);
        for (const Test &test : mixed)
            shuffled.add(test.second, test.succeeded);
        QCOMPARE(shuffled.tests(), expected);
    }
    void outages_data()
    {
        const Rows<QString, QString, QString> row("tests", "before", "outages");
        row("none", "............", "x..", "");
        row("one", "...xx.......", "", "3-5 x2");
        row("two", ".x..xx......", "", "1-2 x1, 4-6 x2");
        row("from before", "xx..........", ".x", "<0-2 x2");
        row("good before", "xx..........", "x.", "0-2 x2");
        row("gap after before", "xx..........", "x    ", "0-2 x2");
        row("begins late after before", "   x..........", "x", "3-4 x1");
        row("still failing", "..........xx", "", "10-11> x2");
        row("no data after", "..........xx      ", "", "10-12? x2");
        row("gap inside", "......xx     x......", "", "6-8? x2, 13-14 x1");
        row("no gap inside", "......xx  x.......", "", "6-11 x3");
        row("good after gap", "......xx    .......", "", "6-8? x2");
        row("few tests know no gap", "x          x   .", "", "0-15 x2");
        row("all fail", "xxxxxxxxxxxx", ".", "0-11> x12");
    }
    void outages()
    {
        QFETCH(QString, tests);
        QFETCH(QString, before);
        const std::vector<Test> all = testsIn(tests);
        const Period period{0, (tests.size() - 1) * step};
        std::optional<Test> last;
        if (!before.trimmed().isEmpty()) {
            last = testsIn(before).back();
            last->second -= before.size() * step;
        }
        QTEST(textOf(outagesOf(all, last, period, testRate(all, period))), "outages");
    }
    void rate()
    {
        const Period period{0, 100 * step};
        const std::vector<Test> regular = testsIn(QString(100, '.'));
        QCOMPARE(testRate(regular, period).interval, step);
        QCOMPARE(testRate(regular, period).coverage, 1.0);
        QVERIFY(!testRate(std::span(regular).first(9), period).interval);
        QCOMPARE(testRate(std::span(regular).first(10), period).coverage, 0.1);
        // Differences 1 1 1 1 1 2 2 2 2 2, less one of no length: the lower middle.
        std::vector<Test> uneven = testsIn("...... . . . . .");
        uneven.push_back(uneven.back());
        QCOMPARE(testRate(uneven, period).interval, step);
        const TestRate whole = testRate(regular, period);
        QCOMPARE(gapsOf(testsIn("    ..........   ..    ."), {0, 30 * step}, whole),
                 (std::vector<Gap>{{0, 4 * step},
                                   {13 * step, 17 * step},
                                   {18 * step, 23 * step},
                                   {23 * step, 30 * step}}));
    }
    void serviceTime()
    {
        const Period period{0, 19 * step};
        const std::vector<Test> all = testsIn("..xxxx........xxxxxx");
        const auto outages = outagesOf(all, {}, period, testRate(all, period));
        const ServiceTime counted(period, Stretches{{-step, 4 * step}, {5 * step, 16 * step}},
                                  {{10 * step, 15 * step}, {12 * step, 13 * step}});
        QCOMPARE(counted.excludedSeconds(), 9 * step);
        QList<qint64> inside;
        for (const Test &test : all) {
            if (counted.contains(test.second))
                inside.append(test.second / step);
        }
        QCOMPARE(inside, (QList<qint64>{0, 1, 2, 3, 5, 6, 7, 8, 9, 15}));
        const Outage first = *counted.cut(outages[0], all);
        QCOMPARE(textOf({first, *counted.cut(outages[1], all)}), "2-6 x3, 15-16> x1");
        QCOMPARE(first.seconds, 3 * step);
        QVERIFY(ServiceTime(period, {}, {}).contains(period.to));
        QVERIFY(!ServiceTime(period, Stretches{}, {}).cut(outages[0], all));
    }
    void incidents()
    {
        const auto outage = [](size_t device, qint64 begin, qint64 end, int failed) {
            return DeviceOutage{device, {.begin = begin, .end = end, .failedTests = failed}, 60};
        };
        const auto found = incidentsOf({outage(2, 1000, 1500, 5), outage(1, 880, 2000, 9),
                                        outage(1, 900, 1900, 9), outage(0, 1001, 1100, 2),
                                        outage(0, 5000, 5060, 1), outage(3, 5121, 5400, 3)},
                                       {{0, 10000}});
        QCOMPARE(found.size(), 4u);
        QCOMPARE(found[0].begin, 880);
        QCOMPARE(found[0].end, 2000);
        QCOMPARE(found[0].deviceSeconds, 1120 + 500);
        QCOMPARE(found[0].devices.size(), 2u);
        QCOMPARE(found[0].devices[0].index, 1u);
        QCOMPARE(found[0].devices[0].seconds, 1120);
        QVERIFY(!found[0].isBrief);
        QCOMPARE(found[1].deviceSeconds, 279);
        QVERIFY(!found[1].isBrief);
        QCOMPARE(found[2].deviceSeconds, 99); // one second too late for the first
        QVERIFY(found[2].isBrief);
        QCOMPARE(found[3].begin, 5000);
    }
    void timeline()
    {
        // A test in the middle of each part, or in every third: the last one holds until the next.
        for (const int every : {1, 3}) {
            const auto width = static_cast<qint64>(timelinePartCount) * 100;
            const ServiceTime service({0, width}, {}, {{40 * 100, 50 * 100 + 99}});
            std::vector<Test> tests;
            for (int i = 0; i < 168; i += every) {
                if (i < 60 || i >= 90)
                    tests.push_back({i * 100 + 50, i < 30 || i >= 36});
            }
            TimelineParts parts;
            addToTimeline(parts, tests, service, testRate(tests, service.period()));
            addToTimeline(parts, tests, service, testRate(tests, service.period()));
            const std::vector<bool> excluded = excludedParts(service);
            QString looks;
            for (size_t i = 0; i < parts.size(); ++i)
                looks += parts[i].failures == 2 ? u'x'
                         : parts[i].tests == 2  ? u'.'
                         : excluded[i]          ? u'-'
                                                : u' ';
            QString expected = QString(168, u'.');
            expected.replace(30, 6, "xxxxxx").replace(40, 11, "-----------");
            const int dark = every == 1 ? 60 : 58; // after the last test before the gap
            for (int i = dark; i < 90; ++i)
                expected[i] = u' ';
            QCOMPARE(looks, expected);
        }
    }
    void timelineDevicesAreFolded()
    {
        ReportFigures figures;
        const auto add = [&](qint64 tests, qint64 failures) {
            DeviceFigures &device = figures.devices.emplace_back();
            device.present.tests = tests;
            device.present.failures = failures;
            device.timeline.resize(timelinePartCount, {1, 0});
            if (tests == 0)
                device.timeline.assign(timelinePartCount, {});
            device.timeline[7].failures = static_cast<quint32>(failures);
        };
        const auto text = [&](size_t maxRows) {
            const TimelineDevices devices = timelineDevices(figures, {}, maxRows);
            QStringList shown;
            for (const size_t index : devices.shown)
                shown.append(QString::number(index));
            return QString("%1, %2 quiet, %3 more")
                .arg(shown.join(' '))
                .arg(devices.quiet)
                .arg(devices.more);
        };
        add(10, 0);
        add(0, 0);
        add(10, 1);
        add(10, 4);
        figures.devices.emplace_back(); // without items that count
        QCOMPARE(text(60), "3 2 1 0, 0 quiet, 0 more");
        for (int i = 0; i < 30; ++i)
            add(10, 0);
        QCOMPARE(text(60), "3 2 1, 31 quiet, 0 more");
        QCOMPARE(text(2), "3 2, 31 quiet, 1 more");
    }
    void targets()
    {
        for (const auto &[target, tests, allowed] : {std::tuple(99.5, 2000, 10),
                                                     {99.5, 1999, 9},
                                                     {99.9, 1000, 1},
                                                     {100.0, 5000, 0},
                                                     {0.0, 7, 7},
                                                     {99.9999, 1'000'000, 1}}) {
            QCOMPARE((TargetResult{target, tests, 0}.allowedFailures()), allowed);
            QVERIFY((TargetResult{target, tests, allowed}.isMet()));
            QVERIFY(!(TargetResult{target, tests, allowed + 1}.isMet()));
        }
        QCOMPARE((TargetResult{99.5, 1000, 10}.margin()), -0.5);
    }
    void forecasts()
    {
        std::mt19937 random(7);
        std::normal_distribution<double> noise(0, 1);
        constexpr int series = 400;
        int told = 0;
        int inRange = 0;
        int falseAlarms = 0;
        for (int i = 0; i < series; ++i) {
            const int count = 20 + i % 70;
            const double slope = 0.1 + 0.01 * (i % 40);
            const qint64 reached = count + 5 + i % 120;
            std::vector<DailyMean> rising;
            std::vector<DailyMean> flat;
            for (int day = 0; day < count; ++day) {
                if (day % 11 == 10)
                    continue; // a day without data
                rising.push_back({2'460'000 + day, slope * day + noise(random)});
                flat.push_back({2'460'000 + day, 50 + noise(random)});
            }
            if (const auto result = forecast(rising, slope * static_cast<double>(reached))) {
                ++told;
                inRange += result->earliest <= 2'460'000 + reached &&
                           (!result->latest || *result->latest >= 2'460'000 + reached);
                QVERIFY(result->earliest <= result->day);
            }
            falseAlarms += forecast(flat, 55).has_value();
        }
        QVERIFY2(told > series * 9 / 10, qPrintable(QString::number(told)));
        QVERIFY2(inRange >= told * 9 / 10, qPrintable(QString("%1 of %2").arg(inRange).arg(told)));
        QVERIFY2(falseAlarms <= series / 20, qPrintable(QString::number(falseAlarms)));

        std::vector<DailyMean> line;
        for (int day = 0; day < 14; ++day)
            line.push_back({day, 10.0 + day});
        QCOMPARE(forecast(line, 30.5)->day, 20);
        QVERIFY(!forecast(line, 23)); // reached already
        QVERIFY(!forecast(line, 10 + 13 + 180));
        line.pop_back();
        QVERIFY(!forecast(line, 30));
    }
};

QTEST_GUILESS_MAIN(tst_Figures)
#include "tst_Figures.moc"
