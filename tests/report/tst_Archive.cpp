#include "base/TimeZone.h"
#include "report/Archive.h"
#include "support/Errors.h"
#include "support/Rows.h"
#include "support/Sandbox.h"

#include <QTest>

/// What is kept of a report's finished runs.
class ArchiveTest : public QObject
{
    Q_OBJECT

    static ArchivedRun run(const QByteArray &from, const QByteArray &to,
                           std::optional<double> rate = {})
    {
        return {utc(from) / 1000, utc(to) / 1000, rate};
    }
    /// As a run over these times leaves its report's folder, kept.
    static void finish(const Sandbox &box, const QByteArray &from, const QByteArray &to,
                       const QByteArray &rate, int max, bool withPdf = false)
    {
        box.write("R/report.json", "{\"period\": {\"from\": \"" + from + "+00:00\", \"to\": \"" +
                                       to + "+00:00\"}, \"rate\": " + rate + '}');
        box.write("R/repsum.csv", "csv of " + from);
        if (withPdf)
            box.write("R/REPORT.PDF", "pdf of " + from);
        else
            QFile::remove(box.path("R/REPORT.PDF"));
        ReportArchive(box.path("R") + '/').keep(max);
    }
    static QString shown(const Sandbox &box)
    {
        QStringList texts;
        for (const ArchivedRun &run : ReportArchive(box.path("R") + '/').runs())
            texts.append(run.folder + (run.rate ? u' ' + QString::number(*run.rate) : QString()) +
                         (run.hasPdf ? " pdf" : ""));
        return texts.join(", ");
    }

private Q_SLOTS:
    void namesPeriods_data()
    {
        const Rows<QByteArray, QByteArray, QString, QString> row("from", "to", "folder", "label");
        row("month", "2024-09-30T22:00:00", "2024-10-31T22:59:59", "2024-10", "October 2024");
        row("year", "2023-12-31T23:00:00", "2024-12-31T22:59:59", "2024", "2024");
        row("day", "2024-10-05T22:00:00", "2024-10-06T21:59:59", "2024-10-06", "2024-10-06");
        row("week", "2024-10-05T22:00:00", "2024-10-12T21:59:59", "2024-10-06_2024-10-12",
            "2024-10-06 to 2024-10-12");
        row("up to now", "2024-10-31T23:00:00", "2024-11-02T07:31:10",
            "2024-11-01T0000_2024-11-02T0831", "2024-11-01 00:00 to 2024-11-02 08:31");
    }
    void namesPeriods()
    {
        const Sandbox box;
        const LocalZone zone("Europe/Berlin");
        QFETCH(QByteArray, from);
        QFETCH(QByteArray, to);
        QTEST(run(from, to).folder, "folder");
        QTEST(run(from, to).label(), "label");
    }

    void keepsTheNewestAndTheOnlyGoodOne()
    {
        const Sandbox box;
        const LocalZone zone("UTC");
        const auto day = [&](int number, const QByteArray &rate, int max, bool withPdf = false) {
            const QByteArray date = "2024-10-0" + QByteArray::number(number);
            finish(box, date + "T00:00:00", date + "T23:59:59", rate, max, withPdf);
        };
        QCOMPARE(shown(box), "");
        day(1, "98.5", 2, true);
        day(2, "97", 2);
        day(1, "99", 2); // once more: in place of the other, whose PDF goes
        QCOMPARE(shown(box), "2024-10-02 97, 2024-10-01 99");
        QCOMPARE(box.names("R/Archive/2024-10-01"), QStringList({"report.json", "repsum.csv"}));
        box.write("R/Archive/mine/notes.txt", "a user's own");
        day(3, "96", 2, true);
        QCOMPARE(shown(box), "2024-10-03 96 pdf, 2024-10-02 97");
        day(4, "null", 2);
        day(5, "null", 2); // 3 is the only one with a rate
        QCOMPARE(shown(box), "2024-10-05, 2024-10-03 96 pdf");
        day(1, "50", 1); // an old period, but the new run
        QCOMPARE(shown(box), "2024-10-03 96 pdf, 2024-10-01 50");
        QCOMPARE(box.names("R/Archive"),
                 QStringList({"2024-10-01", "2024-10-03", "mine", "runs.json"}));
        // Without the list of runs their own files say the same.
        box.write("R/Archive/runs.json", "{\"runs\": 7");
        QCOMPARE(shown(box), "2024-10-03 96 pdf, 2024-10-01 50");
    }

    void failsByName()
    {
        const Sandbox box;
        box.write("R/report.json", "{\"period\": {\"from\": \"yesterday\"}}");
        QVERIFY(failureOf([&] {
                    ReportArchive(box.path("R") + '/').keep(1);
                }).endsWith("report.json' has no valid period"));
        QVERIFY(QDir().mkpath(box.path("elsewhere")));
        QVERIFY(QFile::link(box.path("elsewhere"), box.path("R/Archive")));
        QVERIFY(failureOf([&] {
                    finish(box, "2024-10-01T00:00:00", "2024-10-01T23:59:59", "1", 1);
                }).contains("is a symbolic link"));
        QCOMPARE(box.names("elsewhere"), QStringList());
    }

    void listsForPages()
    {
        const Sandbox box;
        const LocalZone zone("UTC");
        std::vector<ArchivedRun> runs = {run("2024-10-01T00:00:00", "2024-10-31T23:59:59", 99.126),
                                         run("2024-09-01T00:00:00", "2024-09-30T23:59:59"),
                                         run("2024-08-01T00:00:00", "2024-08-31T23:59:59", 98),
                                         run("2023-01-01T00:00:00", "2023-12-31T23:59:59", 100)};
        runs[2].hasPdf = true;
        QCOMPARE(archiveLine(runs, "R-1", "REPORT.HTM").markup(),
                 "\n<span class=\"note archive\">Archive: "
                 "<a href=\"R-1/Archive/2024-10/repsum.csv\">October 2024: 99.13 %</a> "
                 "<a href=\"R-1/Archive/2024-09/repsum.csv\">September 2024: no tests</a> "
                 "<a href=\"R-1/Archive/2024-08/REPORT.PDF\">August 2024: 98.00 %</a> "
                 "<a href=\"R-1/REPORT.HTM#archive\">1 more</a></span>");
        const QString section = archiveSection(runs, runs.front()).markup();
        QCOMPARE(section.count("<li>"), 3); // not the present one
        QVERIFY(section.contains("\"Success rate of 3 runs, lowest 98.00 %, highest 100.00 %\""));
        QVERIFY(section.contains("points=\"6.0,6.0 180.0,58.0 354.0,28.7\""));
        QCOMPARE(archiveSection({runs.front()}, runs.front()).markup(), "");
    }
};

QTEST_GUILESS_MAIN(ArchiveTest)
#include "tst_Archive.moc"
