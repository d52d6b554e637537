#include "app/Listings.h"
#include "app/RunDisplay.h"
#include "base/TimeZone.h"
#include "support/Rows.h"
#include "support/Sandbox.h"

class TestDisplay : public QObject
{
    Q_OBJECT

    const ProgramState m_state;

private Q_SLOTS:
    void showsProgressInOneLine_data()
    {
        const QString name = "Report";
        const Rows<Progress, int, int, QString> row("progress", "seconds", "columns", "line");
        row("time left", {name, "Dev", "Ping", 10, 40}, 10, 80,
            "25 % (10 of 40), 0:30 left: Report, Dev, Ping");
        row("hours", {name, {}, {}, 1, 101}, 73, 80, "0 % (1 of 101), 2:01:40 left: Report");
        row("nothing to chart", {name, {}, {}, 0, 0}, 1, 80, "0 % (0 of 0): Report");
        row("narrow", {name, {}, {}, 0, 40}, 3, 15, "0 % (0 of 40)…");
        row("wide characters", {"東京東京", {}, {}, 0, 4}, 3, 20, "0 % (0 of 4): 東京…");
        row("control characters", {"a\x1b[2Jb\n", {}, {}, 0, 1}, 0, 80, "0 % (0 of 1): a [2Jb ");
    }
    void showsProgressInOneLine()
    {
        QFETCH(Progress, progress);
        QFETCH(int, seconds);
        QFETCH(int, columns);
        const QString line = progressLine(progress, seconds * qint64(1000), columns);
        QTEST(line, "line");
        QVERIFY(line.size() < columns);
    }

    void listsRunsNewestLast()
    {
        const LocalZone zone("UTC");
        QCOMPARE(historyText({}), "No run is on record.\n");
        ReportRecord report;
        report.title = "Ni\x1bght\n";
        report.result = ReportResult::Partial;
        report.start = 1'711'976'401'000;
        report.end = report.start + 2'000;
        report.dueSince = wallTime(1'711'976'400'000);
        report.charts = 3;
        report.samples = 12'345;
        report.chartsWithoutImage = 1;
        report.chartErrors = QStringList("G1.PNG [61] full");
        const RunRecord older{report.start, report.end + 500, "scheduled", {}, {report}};
        const RunRecord newer{report.start + 3'600'000, 0, "on request", "no list", {}};
        QCOMPARE(historyText({newer, older}),
                 "2024-04-01 13:00:01  scheduled: 1 report, 2.5 s\n"
                 "    partial    Ni ght   due since 2024-04-01 13:00, 3 charts, 12,345 samples, "
                 "2.0 s, 1 without image\n"
                 "        G1.PNG [61] full\n"
                 "2024-04-01 14:00:01  on request: no report, not finished: it runs still, or "
                 "was broken off\n"
                 "    no list\n");
    }
};

QTEST_GUILESS_MAIN(TestDisplay)
#include "tst_RunDisplay.moc"
