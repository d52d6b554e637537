#include "base/Durations.h"
#include "base/ProgramState.h"
#include "report/ReportStory.h"
#include "support/Rows.h"
#include "support/Zones.h"

namespace {

constexpr qint64 day = 86'400;

/// Tests of a line: "." succeeded, "x" failed, " " none; spread over a period.
std::vector<Test> testsIn(const QString &line, const Period &period)
{
    std::vector<Test> tests;
    for (qsizetype i = 0; i < line.size(); ++i) {
        if (line[i] != u' ')
            tests.push_back(
                {period.from + i * period.seconds() / (line.size() - 1), line[i] == u'.'});
    }
    return tests;
}

/// The figures of a report over a week against the one before. `devices` by ";": "name", or
/// "name=present" or "name=present/preceding".
ReportFigures figuresOf(const QString &devices, std::optional<double> target, bool compare = true)
{
    const qint64 start = utc("2026-11-09T00:00:00") / 1000;
    ReportFigures report;
    report.period = {start, start + 7 * day};
    const ServiceTime service(report.period, {}, {});
    std::optional<ServiceTime> preceding;
    if (compare) {
        report.precedingPeriod = {start - 7 * day, start - 1};
        preceding.emplace(*report.precedingPeriod, std::nullopt, Stretches());
    }
    for (const QString &entry : devices.split(';', Qt::SkipEmptyParts)) {
        DeviceFigures &device = report.devices.emplace_back();
        device.name = entry.section('=', 0, 0);
        if (entry.contains('=')) {
            ItemFigures &item = device.items.emplace_back();
            const QString lines = entry.section('=', 1);
            item.name = "Ping";
            item.isState = item.counts = true;
            item.present =
                periodFigures(testsIn(lines.section('/', 0, 0), report.period), {}, service, true);
            if (compare)
                item.preceding =
                    periodFigures(testsIn(lines.section('/', 1, 1), *report.precedingPeriod), {},
                                  *preceding, true);
        }
        summarize(device, service, preceding, target);
    }
    summarize(report, service, preceding);
    return report;
}

QString tilesText(const ReportStory &story)
{
    QStringList texts;
    for (const StoryTile &tile : story.tiles)
        texts.append(QString("%1: %2 (%3)%4")
                         .arg(tile.label, tile.value, tile.detail,
                              QStringList{"", "+", "!"}.at(static_cast<int>(tile.tone))));
    return texts.join(" | ");
}

} // namespace

class tst_ReportStory : public QObject
{
    Q_OBJECT

    const ProgramState m_state;
    const QString well = QString(28, u'.') + u'.';

private Q_SLOTS:
    void init() { setZone("UTC"); }

    void durations_data()
    {
        const Rows<QString, int> row("text", "seconds");
        row.each({{"0 seconds", -5}, {"1 second", 1}, {"59 seconds", 59}, {"1 minute", 60}});
        row.each({{"2 minutes", 90}, {"59 minutes", 3569}, {"1 h 00 min", 3570}});
        row.each({{"5 h 03 min", 18'180}, {"1,203 h 05 min", 4'331'100}});
    }
    void durations()
    {
        QFETCH(int, seconds);
        QTEST(durationText(seconds), "text");
    }

    void sentences_data()
    {
        const Rows<QString, double, QString, QString> row("devices", "target", "sentences",
                                                          "verdict");
        const QString bad = "..xxx........................";
        const QString brief = ".x...........................";
        row("all well, as before", "A=" + well + '/' + well, 99.5,
            "All 29 tests succeeded, as in the week before. The device with a target met 99.5 %. "
            "No incidents.",
            "all tests succeeded");
        row("worse, one incident", "A=" + bad + '/' + well + ";B=" + well + '/' + well, 99.5,
            "94.83 % of 58 tests succeeded, 5.17 points less than in the week before. "
            "1 of 2 devices missed 99.5 %: A. "
            "1 incident: 18 h 00 min, A, from 2026-11-09 12:00.",
            "94.83 %, 1 of 2 devices missed 99.5 %");
        row("several devices, names first to fail", "B=." + bad + "/;A=." + bad + "/;C=" + well, -1,
            "93.26 % of 89 tests succeeded. Not compared with the week before: it has no tests. "
            "1 incident: 17 h 23 min, 2 devices, first B, from 2026-11-09 17:22.",
            "93.26 %, 1 incident");
        row("brief ones are counted", "A=" + brief + '/' + brief, -1,
            "96.55 % of 29 tests succeeded, as in the week before. "
            "No incidents but 1 brief one of single devices.",
            "96.55 %, no incidents");
        row("still failing, hostile name", "<b>\n%1%2=" + well.chopped(4) + "xxxx/" + well, -1,
            "86.21 % of 29 tests succeeded, 13.79 points less than in the week before. "
            "1 incident: 18 h 00 min, <b> %1%2, from 2026-11-15 06:00. "
            "1 device was still failing at the end: <b> %1%2.",
            "86.21 %, 1 incident");
        row("without data", "A=" + well + '/' + well + ";B= ;C=;D=;E=", -1,
            "All 29 tests succeeded, as in the week before. No incidents. "
            "4 of 5 devices had no data: B, C, D and 1 more.",
            "all tests succeeded, 4 devices without data");
        row("no tests", "A=", 99.5, "No tests in this period. The only device had no data: A.",
            "no data");
        row("no state items", "A;B", 99.5,
            "No state items count in this report: it shows 0 counters of 2 devices. "
            "2 of 2 devices had no data: A and B.",
            "0 counters of 2 devices, 2 devices without data");
    }
    void sentences()
    {
        QFETCH(QString, devices);
        QFETCH(double, target);
        const ReportStory story =
            storyOf(figuresOf(devices, target < 0 ? std::nullopt : std::optional(target)));
        QTEST(story.sentences.join(' '), "sentences");
        QTEST(story.verdict, "verdict");
    }

    void rates()
    {
        const auto text = [](qint64 tests, qint64 failures) {
            Availability availability;
            availability.tests = tests;
            availability.failures = failures;
            return rateText(availability);
        };
        QCOMPARE(text(1'000'000, 1), "> 99.99 %");
        QCOMPARE(text(1'000'000, 999'999), "< 0.01 %");
        QCOMPARE(text(3, 1), "66.67 %");
        QCOMPARE(text(0, 0), "no data");
    }

    void periodNames_data()
    {
        const Rows<QString, QString, QString> row("preceding", "present", "end");
        row("the day before", "2026-03-28T00:00:00", "2026-03-29T00:00:00", "2026-03-28T23:59:59");
        row("the month before", "2026-02-01T00:00:00", "2026-03-01T00:00:00",
            "2026-02-28T23:59:00");
        row("the year before", "2025-01-01T00:00:00", "2026-01-01T00:00:00", "2025-12-31T23:59:59");
        row("the 30 days before", "2026-03-02T10:00:00", "2026-04-01T10:00:00",
            "2026-04-01T09:59:59");
        row("the 6 h 00 min before", "2026-03-02T10:00:00", "2026-03-02T16:00:00",
            "2026-03-02T15:59:59");
        row("the same time a week before", "2026-03-02T00:00:00", "2026-03-09T00:00:00",
            "2026-03-05T10:00:00");
    }
    void periodNames()
    {
        QFETCH(QString, preceding);
        QFETCH(QString, present);
        QFETCH(QString, end);
        const auto second = [](const QString &text) { return utc(qPrintable(text)) / 1000; };
        ReportFigures figures = figuresOf("A=" + well + '/' + well, {});
        figures.precedingPeriod = {second(preceding), second(end)};
        figures.period = {second(present), second(present) + day};
        QCOMPARE(storyOf(figures).sentences.first(),
                 QString("All 29 tests succeeded, as in %1.").arg(QTest::currentDataTag()));
    }

    void tiles()
    {
        const QString bad = "..xxx..............x.........";
        QCOMPARE(
            tilesText(storyOf(figuresOf("A=" + bad + '/' + bad + ";B=" + well + '/' + bad, 99))),
            "Success rate: 93.10 % (+6.90 points against the week before) | "
            "Target 99 % missed: 1 (of 2 devices)! | "
            "Downtime, all devices: 24 h 00 min (was 48 h 00 min) | "
            "Incidents: 1 (beside 1 brief one, was 2) | Without data: 0 (of 2 devices)");
        QCOMPARE(tilesText(storyOf(figuresOf("A=" + well + ";B", {}, false))),
                 "Success rate: 100.00 % ()+ | Downtime, all devices: 0 seconds ()+ | "
                 "Incidents: 0 ()+ | Without data: 1 (B)!");
    }
};

QTEST_GUILESS_MAIN(tst_ReportStory)
#include "tst_ReportStory.moc"
