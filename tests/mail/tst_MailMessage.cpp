#include "base/Clock.h"
#include "base/TimeZone.h"
#include "mail/MailMessage.h"
#include "mail/MailsDue.h"
#include "mail/ReportMail.h"
#include "support/Rows.h"
#include "support/Sandbox.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>

namespace {

/// What Python's own parser of mails finds, an object for each part, and the headers first.
constexpr char readMessage[] = R"(
import email, email.policy, json, sys
message = email.message_from_bytes(sys.stdin.buffer.read(), policy=email.policy.default)
parts = [dict((k.lower(), str(v)) for k, v in message.items())]
for part in message.walk():
    content = None if part.is_multipart() else part.get_content()
    parts.append({"type": part.get_content_type(), "file": part.get_filename(),
                  "id": part["Content-ID"], "defects": len(part.defects),
                  "text": content if isinstance(content, str) else None,
                  "bytes": content.hex() if isinstance(content, bytes) else None})
json.dump(parts, sys.stdout)
)";

QJsonArray parsed(const QByteArray &message)
{
    QProcess python;
    python.start("/usr/bin/python3", {"-c", readMessage});
    python.write(message);
    python.closeWriteChannel();
    python.waitForFinished();
    return QJsonDocument::fromJson(python.readAllStandardOutput()).array();
}

ReportRecord reportOf(const QString &id, ReportResult result, const QString &error = {})
{
    ReportRecord report;
    report.id = report.title = id;
    report.start = report.end = 1;
    report.result = result;
    report.error = error;
    return report;
}

QJsonObject jsonOf(const QByteArray &text)
{
    return QJsonDocument::fromJson(text).object();
}

} // namespace

class TestMailMessage : public QObject
{
    Q_OBJECT

    Sandbox m_sandbox;

private Q_SLOTS:
    void isReadByAnotherProgram()
    {
        const FrozenClock clock(QStringLiteral("2026-11-22T07:37:25"));
        MailContent content;
        content.subject = "Zürich: 98 %\r\nBcc: evil@x.org";
        content.title = "<script>alert(1)</script> & \"Core\"";
        content.verdict = "From here on\n.\n." + QString("long ").repeated(60);
        content.sentences = {".", QString(1200, u'x'), "=2E umlaut ü, 東京"};
        content.figures = {{"Rate", "98 %", "note"}};
        content.images = {{"DEVSUM.PNG", "image/png", "\x89PNG\r\n\r\n--=_", "by \"device\""}};
        content.attachments = {{"Zürich \"a\".pdf", "application/pdf", QByteArray(5000, '\n')}};
        content.pages = "https://x/?a=1&b='2'";
        const MailEnvelope envelope{mailAddress("Jö <a@b.org>"),
                                    mailAddresses("\"X, Y\" <c@d>, e@f"), "id@b.org",
                                    currentInstant()};
        const QByteArray message =
            mailMessage(content, envelope, "<p>%%mail.title%%</p>%%mail.images%%%%mail.pages%%");
        const QList<QByteArray> lines = message.split('\n');
        for (const QByteArray &line : lines)
            QVERIFY2(line.size() <= 78 && (line.isEmpty() || line.endsWith('\r')),
                     line.constData());

        const QJsonArray parts = parsed(message);
        const QJsonObject headers = parts[0].toObject();
        QCOMPARE(headers["subject"].toString(), "Zürich: 98 % Bcc: evil@x.org");
        QVERIFY(!headers.contains("bcc"));
        QCOMPARE(headers["from"].toString(), "Jö <a@b.org>");
        QCOMPARE(headers["to"].toString(), "\"X, Y\" <c@d>, e@f");
        QCOMPARE(headers["message-id"].toString(), "<id@b.org>");
        QVERIFY(headers["date"].toString().startsWith("Sun, 22 Nov 2026 07:37:25 "));
        QStringList types;
        for (const QJsonValue part : parts) {
            QCOMPARE(part["defects"].toInt(), 0);
            types.append(part["type"].toString());
        }
        QCOMPARE(types.mid(1).join(' '), "multipart/mixed multipart/alternative text/plain "
                                         "multipart/related text/html image/png application/pdf");
        QCOMPARE(parts[3]["text"].toString().remove('\r').trimmed(),
                 plainMailText(content).trimmed());
        const QString html = parts[5]["text"].toString();
        QVERIFY(html.contains("<p>&lt;script>alert(1)&lt;/script> &amp; &quot;Core&quot;</p>"));
        QVERIFY(html.contains("href=\"https://x/?a=1&amp;b=&#39;2&#39;\""));
        QVERIFY(html.contains("cid:" + parts[6]["id"].toString().mid(1).chopped(1)));
        QCOMPARE(parts[6]["bytes"].toString(), QString(content.images[0].bytes.toHex()));
        QCOMPARE(parts[7]["bytes"].toString(), QString(content.attachments[0].bytes.toHex()));
        QCOMPARE(parts[7]["file"].toString(), "Zürich \"a\".pdf");
    }

    void leavesOutWhatIsTooLarge()
    {
        MailContent content;
        content.images = {{"I", "image/png", QByteArray(1'000'000, 'i')}};
        content.attachments = {{"big.pdf", "application/pdf", QByteArray(2'500'000, 'p')},
                               {"small.csv", "text/csv", QByteArray(1000, 'c')}};
        fitInto(content, 4'000'000, "/reports/R");
        QCOMPARE(content.images.size(), size_t(1));
        QCOMPARE(content.attachments.size(), size_t(1));
        QCOMPARE(content.notes, QStringList{"big.pdf (2.5 MB) is not attached, because mails are "
                                            "limited to 4 MB. It is in /reports/R"});
        const MailEnvelope envelope{mailAddress("a@b"), mailAddresses("c@d"), "i@b", 0};
        QVERIFY(mailMessage(content, envelope, "%%mail.images%%").size() <= 4'000'000);
    }

    void knowsTheOccasions_data()
    {
        using enum ReportResult;
        const Rows<int, QByteArray, QString> row("result", "figures", "when");
        const QByteArray good = R"({"devicesMissedTarget":0,"comparison":null})";
        row("all is well", int(Ok), good, "always");
        row("no data", int(NoData), good, "always");
        row("failed", int(Failed), "", "always trouble");
        row("charts are missing", int(Partial), good, "always trouble");
        row("cancelled", int(Cancelled), good, "");
        row("missed", int(Ok), R"({"devicesMissedTarget":1})", "always missed");
        row("worse", int(Ok), R"({"comparison":{"comparable":true,"ratePoints":-0.5}})",
            "always worse");
        row("a little worse", int(Ok), R"({"comparison":{"comparable":true,"ratePoints":-0.49}})",
            "always");
        row("better", int(Ok), R"({"comparison":{"comparable":true,"ratePoints":3}})", "always");
        row("not comparable", int(Ok), R"({"comparison":{"comparable":false,"ratePoints":-9}})",
            "always");
    }
    void knowsTheOccasions()
    {
        QFETCH(int, result);
        QFETCH(QByteArray, figures);
        QStringList when;
        for (const auto &[kind, name] : {std::pair(MailWhen::Always, "always"),
                                         {MailWhen::Trouble, "trouble"},
                                         {MailWhen::TargetMissed, "missed"},
                                         {MailWhen::Worse, "worse"}}) {
            const MailSubscription subscription{"S", "R", "a@b", kind, 0.5, false, false};
            const auto json = figures.isEmpty() ? std::nullopt : std::optional(jsonOf(figures));
            if (isOccasion(subscription, reportOf("R", ReportResult(result)), json))
                when.append(name);
        }
        QTEST(when.join(' '), "when");
    }

    /// Runs at 06:00, 07:00, ..., each as "mode result-of-A", the last one at 09:00.
    void knowsWhatIsDue_data()
    {
        const Rows<QStringList, int, QString, QString> row("runs", "toldUntil", "reports",
                                                           "troubles");
        row("one", {"s ok"}, 0, "09 A", "");
        row("told already", {"s ok"}, 9, "", "");
        row("since the last time", {"s ok", "s ok"}, 7, "09 A", "");
        row("the first time", {"s ok", "s failed"}, 0, "09 A", "Report 'A' failed: E");
        row("not by schedule", {"w ok"}, 8, "", "");
        row("fails every hour", {"s failed", "s failed"}, 8, "", "");
        row("failed, then well", {"s failed", "s ok"}, 7, "09 A", "Report 'A' failed: E");
        row("broken off", {"s broken", "s ok"}, 7, "09 A", "A run was broken off.");
        row("is running", {"s ok", "s broken"}, 7, "08 A", "");
    }
    void knowsWhatIsDue()
    {
        QFETCH(QStringList, runs);
        QFETCH(int, toldUntil);
        const FrozenClock clock(QStringLiteral("2026-11-22T09:30:00"));
        const auto hour = [](qsizetype number) {
            return instantOf(QDateTime(QDate(2026, 11, 22), QTime(int(number), 0), Qt::UTC));
        };
        std::vector<RunRecord> records;
        for (qsizetype i = runs.size() - 1; i >= 0; --i) {
            const qint64 start = hour(10 - runs.size() + i);
            RunRecord run{start, start, runs[i].startsWith('s') ? scheduledMode : "window", {}, {}};
            run.end = runs[i].endsWith("broken") ? 0 : start;
            if (run.end != 0)
                run.reports = {reportOf(
                    "A", runs[i].endsWith("ok") ? ReportResult::Ok : ReportResult::Failed, "E")};
            if (!run.reports.empty())
                run.reports[0].start = run.reports[0].end = start;
            records.push_back(run);
        }
        const MailsDue due =
            mailsDue(records, toldUntil == 0 ? std::nullopt : std::optional(hour(toldUntil)));
        QStringList reports;
        for (const ReportRecord *report : due.reports)
            reports.append(wallTime(report->start).toString("HH ") + report->id);
        QTEST(reports.join(','), "reports");
        QTEST(due.troubles.join(','), "troubles");
    }
};

QTEST_GUILESS_MAIN(TestMailMessage)
#include "tst_MailMessage.moc"
