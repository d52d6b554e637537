#include "core/TimeZone.h"
#include "scheduling/RunHistory.h"
#include "support/Rows.h"
#include "support/Sandbox.h"

namespace {

constexpr qint64 monday = 1'711'929'600'123; // 2024-04-01 00:00:00.123 UTC
constexpr qint64 hour = 3'600'000;

ReportRecord record(const QString &id, ReportResult result = ReportResult::Ok)
{
    ReportRecord report;
    report.id = id;
    report.start = monday;
    report.result = result;
    return report;
}

RunRecord run(qint64 start, const std::vector<ReportRecord> &reports = {})
{
    return {start, start + 1500, "scheduled", {}, reports};
}

} // namespace

class TestRunHistory : public QObject
{
    Q_OBJECT

    std::unique_ptr<Sandbox> m_box;

private Q_SLOTS:
    void init()
    {
        m_box = std::make_unique<Sandbox>();
        gGraphDataPath = m_box->path() + u'/';
    }
    void cleanup() { m_box.reset(); }

    void readsBackWhatItWrote()
    {
        ReportRecord report = record("{R-1}", ReportResult::Partial);
        report.title = "Zürich \"A\"";
        report.dueSince = wallTime(monday - 123);
        report.start = monday + 1;
        report.end = monday + 1001;
        report.charts = 3;
        report.samples = 5'000'000'000;
        report.error = "what was wrong";
        report.chartsWithoutImage = 30;
        report.chartErrors = QStringList(30, "a chart");
        RunRecord written = run(monday, {report, record("{R-2}", ReportResult::NoData)});
        written.error = "no master list";
        written.reports[0].mixedPages = true;
        saveRun(written);

        QCOMPARE(m_box->names("RunHistory"), QStringList("20240401-000000-123.json"));
        const std::vector<RunRecord> runs = readRuns();
        QCOMPARE(runs.size(), size_t(1));
        QCOMPARE(runs[0].start, written.start);
        QCOMPARE(runs[0].end, written.end);
        QCOMPARE(runs[0].mode, written.mode);
        QCOMPARE(runs[0].error, written.error);
        QCOMPARE(runs[0].reports.size(), size_t(2));
        const ReportRecord &read = runs[0].reports[0];
        QCOMPARE(read.title, report.title);
        QCOMPARE(read.dueSince, report.dueSince);
        QCOMPARE(read.start, report.start);
        QCOMPARE(read.seconds(), 1.0);
        QCOMPARE(read.result, ReportResult::Partial);
        QCOMPARE(read.charts, 3);
        QCOMPARE(read.samples, report.samples);
        QCOMPARE(read.error, report.error);
        QCOMPARE(read.chartsWithoutImage, 30);
        QCOMPARE(read.chartErrors.size(), 20); // the count tells of the others
        QVERIFY(read.mixedPages && !runs[0].reports[1].mixedPages);
        QCOMPARE(runs[0].reports[1].result, ReportResult::NoData);
        QVERIFY(!runs[0].reports[1].dueSince.isValid());
        QCOMPARE(lastRunEnd(), written.end);
    }

    void replacesTheRecordOfOneRun()
    {
        RunRecord begun = run(monday, {record("{R-1}", ReportResult::Unfinished)});
        begun.end = 0;
        saveRun(begun);
        QCOMPARE(readRuns().at(0).reports.at(0).result, ReportResult::Unfinished);
        QCOMPARE(lastRunEnd(), qint64(0));
        saveRun(run(monday, {record("{R-1}", ReportResult::Failed)}));
        QCOMPARE(readRuns().size(), size_t(1));
        QCOMPARE(readRuns().at(0).reports.at(0).result, ReportResult::Failed);
    }

    void passesOverDamagedFiles_data()
    {
        const Rows<QByteArray> row("content");
        row("empty", "");
        row("cut", "{\"start\": \"2024-04-01T00:00:00.000Z\", \"rep");
        row("no object", "[1, 2]");
        row("no start", R"({"mode": "scheduled"})");
        row("no time", R"({"start": "yesterday"})");
        row("no result", R"({"start": "2024-04-01T00:00:00.000Z", "reports": [{"result": "?"}]})");
    }
    void passesOverDamagedFiles()
    {
        QFETCH(QByteArray, content);
        saveRun(run(monday, {record("{R-1}")}));
        m_box->write("RunHistory/20240401-010000-000.json", content);
        m_box->write("RunHistory/notes.txt", "mine");
        saveRun(run(monday + 2 * hour));
        const std::vector<RunRecord> runs = readRuns();
        QCOMPARE(runs.size(), size_t(2));
        QCOMPARE(runs[0].start, monday + 2 * hour); // newest first
        QVERIFY(lastRecord(runs, "{r-1}"));
        pruneRuns(1);
        QVERIFY(m_box->names("RunHistory").contains("notes.txt"));
    }

    void keepsTheNewestAndEachReportsLast()
    {
        ReportRecord notBegun = record("{MONTHLY}", ReportResult::Cancelled);
        notBegun.start = 0;
        saveRun(run(monday, {record("{MONTHLY}", ReportResult::Failed), record("{HOURLY}")}));
        saveRun(run(monday + hour, {record("{WEEKLY}")}));
        for (int i = 2; i < 10; ++i)
            saveRun(run(monday + i * hour, {record("{HOURLY}"), notBegun}));
        pruneRuns(10);
        QCOMPARE(readRuns().size(), size_t(10));

        pruneRuns(5);
        const std::vector<RunRecord> runs = readRuns();
        QList<qint64> hours;
        for (const RunRecord &left : runs)
            hours.append((left.start - monday) / hour);
        QCOMPARE(hours, QList<qint64>({9, 8, 7, 1, 0}));
        QCOMPARE(lastRecord(runs, "{monthly}")->result, ReportResult::Failed);
        QVERIFY(!lastRecord(runs, "{OTHER}"));

        pruneRuns(2); // too few for all last words: the oldest go
        QCOMPARE(readRuns().back().start, monday + hour);
        QCOMPARE(runsKept, qsizetype(400));
    }

    void saysWhenItCannotSave()
    {
        m_box->write("RunHistory", "a file where the folder should be");
        saveRun(run(monday));
        QCOMPARE(m_box->status.filter("Error saving run history [").size(), 1);
        QVERIFY(readRuns().empty());
    }
};

QTEST_GUILESS_MAIN(TestRunHistory)
#include "tst_runhistory.moc"
