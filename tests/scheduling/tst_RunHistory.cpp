#include "base/TimeZone.h"
#include "scheduling/Metrics.h"
#include "scheduling/RunHistory.h"
#include "support/Sandbox.h"

#include <QTest>

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
        program().gGraphDataPath = m_box->path() + u'/';
    }
    void cleanup() { m_box.reset(); }

    void readsBackWhatItWrote()
    {
        const QDateTime due = wallTime(monday - 123);
        RunRecord written =
            run(monday, {{"{R-1}", "Zürich \"A\"", due, monday + 1, monday + 1001,
                          ReportResult::Partial, 3, 5'000'000'000, "what was wrong", 30,
                          QStringList(30, "a chart"), true, SummaryFigures{4, 2, 1, 5, 1}},
                         record("{R-2}", ReportResult::NoData)});
        written.error = "no master list";
        runHistory().save(written);
        const QString file = "RunHistory/20240401-000000-123.json";
        const QByteArray text = m_box->read(file);
        const RunRecord read = runHistory().runs().at(0);
        m_box->write(file, "");
        runHistory().save(read);
        QCOMPARE(m_box->read(file), text);
        QCOMPARE(read.reports.at(0).seconds(), 1.0);
        QCOMPARE(read.reports[0].samples, 5'000'000'000);
        QCOMPARE(read.reports[0].dueSince, due);
        QCOMPARE(read.reports[0].error + read.error, "what was wrongno master list");
        QCOMPARE(read.reports[0].chartErrors.size(), 20); // the count tells of the others
        QVERIFY(read.reports[0].mixedPages && !read.reports[1].mixedPages);
        QCOMPARE(fillTemplate("%%total.rate%% of %%total.tests%%, %%total.failed%% failed at "
                              "%%total.troubled%%, %%total.silent%% silent of %%total.devices%%",
                              read.reports[0].figures->placeholders()),
                 "83.33 of 6, 1 failed at 2, 1 silent of 4");
        QVERIFY(!read.reports[1].figures && !read.reports[1].dueSince.isValid());
        QCOMPARE(runHistory().lastEnd(), written.end);
    }

    void tellsAMonitoringSystem()
    {
        RunRecord failed = run(monday + hour, {record("{r-1}", ReportResult::Failed)});
        failed.reports[0].title = "A \"quoted\\\nname";
        failed.reports[0].end = monday + 2500;
        RunRecord earlier = run(monday, {record("{R-1}"), record("{R-2}")});
        earlier.reports[1].samples = 5'000'000'000;
        runHistory().save(failed);
        runHistory().save(earlier);
        const QString path = m_box->path("m.prom");
        QVERIFY(saveMetrics(path, runHistory(), {1, 3}));
        const QString text = m_box->read("m.prom");
        const QString first = "report=\"A \\\"quoted\\\\\\nname\",id=\"{r-1}\"";
        for (const QString &line :
             {QString("vantrel_run_status 1"), QString("vantrel_outbox_messages 3"),
              QString("# TYPE vantrel_report_ok gauge"),
              QString("vantrel_run_start_timestamp_seconds 1711933200.123"),
              QString("vantrel_run_end_timestamp_seconds 1711933201.623"),
              "vantrel_report_ok{" + first + "} 0", "vantrel_report_seconds{" + first + "} 2.500",
              "vantrel_report_result{" + first + ",result=\"failed\"} 1",
              QString("vantrel_report_ok{report=\"\",id=\"{R-2}\"} 1"),
              QString("vantrel_report_samples{report=\"\",id=\"{R-2}\"} 5000000000")})
            QVERIFY2(text.contains('\n' + line + '\n') || text.startsWith(line + '\n'),
                     qPrintable(line + "\nin\n" + text));
        QCOMPARE(text.count("vantrel_report_charts{"), 2); // the last run of each
        QVERIFY(saveMetrics({}, runHistory(), {}));
        QString error;
        QVERIFY(!saveMetrics(m_box->path("m.prom/below"), runHistory(), {}, &error));
        QVERIFY(error.startsWith("Error saving metrics ") && m_box->events.size() == 1);
    }

    void replacesTheRecordOfOneRun()
    {
        RunRecord begun = run(monday, {record("{R-1}", ReportResult::Unfinished)});
        begun.end = 0;
        runHistory().save(begun);
        QCOMPARE(runHistory().runs().at(0).reports.at(0).result, ReportResult::Unfinished);
        QCOMPARE(runHistory().lastEnd(), qint64(0));
        runHistory().save(run(monday, {record("{R-1}", ReportResult::Failed)}));
        QCOMPARE(runHistory().runs().size(), size_t(1));
        QCOMPARE(runHistory().runs().at(0).reports.at(0).result, ReportResult::Failed);
    }
    void passesOverDamagedFiles()
    {
        runHistory().save(run(monday, {record("{R-1}")}));
        m_box->write("RunHistory/notes.txt", "mine");
        runHistory().save(run(monday + 2 * hour));
        for (const char *content :
             {"", "{\"start\": \"2024-04-01T00:00:00.000Z\", \"rep", "[1, 2]",
              R"({"mode": "scheduled"})", R"({"start": "yesterday"})",
              R"({"start": "2024-04-01T00:00:00.000Z", "reports": [{"result": "?"}]})"}) {
            m_box->write("RunHistory/20240401-010000-000.json", content);
            const std::vector<RunRecord> runs = runHistory().runs();
            QCOMPARE(runs.size(), size_t(2));
            QCOMPARE(runs[0].start, monday + 2 * hour); // newest first
            QVERIFY(lastRecord(runs, "{r-1}"));
        }
        runHistory().prune(1);
        QVERIFY(m_box->names("RunHistory").contains("notes.txt"));
    }

    void keepsTheNewestAndEachReportsLast()
    {
        ReportRecord notBegun = record("{MONTHLY}", ReportResult::Cancelled);
        notBegun.start = 0;
        runHistory().save(
            run(monday, {record("{MONTHLY}", ReportResult::Failed), record("{HOURLY}")}));
        runHistory().save(run(monday + hour, {record("{WEEKLY}")}));
        for (int i = 2; i < 10; ++i)
            runHistory().save(run(monday + i * hour, {record("{HOURLY}"), notBegun}));
        runHistory().prune(10);
        QCOMPARE(runHistory().runs().size(), size_t(10));

        runHistory().prune(5);
        const std::vector<RunRecord> runs = runHistory().runs();
        QList<qint64> hours;
        for (const RunRecord &left : runs)
            hours.append((left.start - monday) / hour);
        QCOMPARE(hours, QList<qint64>({9, 8, 7, 1, 0}));
        QCOMPARE(lastRecord(runs, "{monthly}")->result, ReportResult::Failed);
        QVERIFY(!lastRecord(runs, "{OTHER}"));

        runHistory().prune(2); // too few for all last words: the oldest go
        QCOMPARE(runHistory().runs().back().start, monday + hour);
    }
};

QTEST_GUILESS_MAIN(TestRunHistory)
#include "tst_RunHistory.moc"
