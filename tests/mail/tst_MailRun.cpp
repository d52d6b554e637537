#include "base/Clock.h"
#include "mail/MailMessage.h"
#include "mail/MailRun.h"
#include "mail/Outbox.h"
#include "mail/TestServer.h"
#include "support/Sandbox.h"

#include <QTest>

#include <csignal>
#include <sys/resource.h>

namespace {

/// As if the disk were full, for as long as it lives.
class FullDisk
{
public:
    FullDisk()
    {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit none = m_before;
        none.rlim_cur = 0;
        ::setrlimit(RLIMIT_FSIZE, &none);
    }
    ~FullDisk() { ::setrlimit(RLIMIT_FSIZE, &m_before); }
    FullDisk(const FullDisk &) = delete;
    FullDisk &operator=(const FullDisk &) = delete;

private:
    rlimit m_before{};
};

/// A site whose report "Servers" has just been made, with subscribers.
class Site : public Sandbox
{
public:
    Site(const MailServer &server, const QString &recipients)
    {
        program().gGraphDataPath = path() + pathSeparator;
        gConfig().storedOutput = "%%app.path%%/Reports";
        gConfig().TOU_REPORT = "REPORT.HTM";
        write("Mail.HTML", "<h1>%%mail.title%%</h1>%%mail.images%%");
        m_settings.server = server;
        m_settings.failureRecipients = "ops@x";
        m_settings.subscriptions = {{"{S}", "{R}", recipients, MailWhen::Always, 1, true, true}};
        m_settings.save(mailSettingsPath());
        const MailSite site = mailSite();
        const QString folder = "Reports/" + QDir(site.tree.reportFolder("{R}")).dirName();
        write(folder + "/report.json",
              R"({"verdict":"98 %","sentences":["All <b>well</b>."],"period":{"from":)"
              R"("2026-11-14T00:00:00+00:00","to":"2026-11-21T00:00:00+00:00"},"tests":100,)"
              R"("failures":2,"devices":[{"name":"Core","failures":2,"tests":100}]})");
        write(folder + "/OVERALL.PNG", "\x89PNG overall");
        write(folder + "/DEVSUM.PNG", "GIF89a transparent");
        write(folder + "/repsum.csv", "a,b\r\n");
        addRun(ReportResult::Ok);
    }

    void addRun(ReportResult result, const QString &error = {})
    {
        const qint64 start = currentInstant() - 1000 + m_runs++;
        ReportRecord report;
        report.id = "{R}";
        report.title = "Servers";
        report.start = start;
        report.end = start + 1;
        report.result = result;
        report.error = error;
        mailSite().history.save({start, start + 1, scheduledMode, {}, {report}});
    }

    MailResult send()
    {
        errors.clear();
        Observer watcher;
        watcher.trouble = [this](const QString &text) { errors.append(text); };
        return mailAfterRun(mailSite(), watcher);
    }
    std::vector<OutboxEntry> waiting() const { return Outbox(mailSite().outbox()).entries(); }

    QStringList errors;

private:
    MailSettings m_settings;
    int m_runs = 0;
};

} // namespace

/// Mails after runs, and the outbox.
class TestMailRun : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sendsEachMailOnce()
    {
        const TestServer server;
        Site site(server.settings(), "a@x, Bé <b@x>");
        const MailResult result = site.send();
        QCOMPARE(result.sent, 2);
        QVERIFY(!result.failed());
        QCOMPARE(server.recipients(), QStringList({"a@x", "b@x"}));
        const QByteArray message = server.taken()[0];
        QCOMPARE(TestServer::line(message, "Subject: "), "Servers, 2026-11-14 to 2026-11-20: 98 %");
        for (const char *part : {"OVERALL.PNG", "Servers.csv", "has made no REPORT.PDF"})
            QVERIFY2(message.contains(part), part);
        QVERIFY(!message.contains("DEVSUM")); // transparent: there was nothing to draw
        const RunRecord run = mailSite().history.runs()[0];
        QCOMPARE(run.mails.size(), 2);
        QVERIFY(run.mails[0].endsWith("to a@x was sent"));
        QCOMPARE(site.send().lines, QStringList());
        QCOMPARE(server.taken().size(), 2);
        QVERIFY(site.names("Mail/Outbox") == QStringList{"outbox.lock"});
    }

    void keepsWhatCannotBeSentForTwoDays()
    {
        const TestServer server;
        Site site(server.settings(), "later@x, refused@x, a@x");
        FrozenClock clock(QDateTime::currentMSecsSinceEpoch());
        MailResult result = site.send();
        QCOMPARE((QList{result.sent, result.waiting, result.lost}), (QList{1, 1, 1}));
        QVERIFY(result.failed()); // the refused one is lost
        QCOMPARE(site.waiting().size(), size_t(1));
        QCOMPARE(site.waiting()[0].tries, 1);
        QVERIFY(site.waiting()[0].error.contains("Greylisted"));
        QCOMPARE(site.events.size(), 2);
        clock.advance(47 * 3'600'000);
        result = site.send();
        QCOMPARE((QList{result.sent, result.waiting, result.lost}), (QList{0, 1, 0}));
        clock.advance(3'600'000);
        result = site.send();
        QCOMPARE((QList{result.sent, result.waiting, result.lost}), (QList{0, 0, 1}));
        QVERIFY(site.events.last().contains("is given up after two days"));
        QVERIFY(site.waiting().empty());
        QCOMPARE(server.recipients(), QStringList{"a@x"});
    }

    void tellsOfAFailureOnceADay()
    {
        const TestServer server;
        Site site(server.settings(), "a@x");
        site.send();
        site.addRun(ReportResult::Failed, "no database");
        site.send();
        site.addRun(ReportResult::Failed, "no database");
        site.send();
        QCOMPARE(server.recipients(), QStringList({"a@x", "a@x", "ops@x"}));
        QVERIFY(TestServer::line(server.taken()[2], "Subject: ")
                    .endsWith("Report 'Servers' failed: no database"));
    }

    void asksADeadServerOnce()
    {
        MailServer dead;
        {
            const TestServer server;
            dead = server.settings();
        }
        Site site(dead, "a@x, b@x, c@x");
        const MailResult result = site.send();
        QCOMPARE(result.waiting, 3);
        QVERIFY(!result.failed()); // they are tried again
        QCOMPARE(site.waiting()[2].tries, 0);
        QVERIFY(site.waiting()[2].error.startsWith("Nothing answers at"));
        QCOMPARE(site.errors.size(), 3);
    }

    void losesNothingOnAFullDisk()
    {
        const TestServer server;
        Site site(server.settings(), "a@x");
        {
            const FullDisk disk;
            QVERIFY(site.send().failed());
        }
        QCOMPARE(server.taken().size(), 0);
        QCOMPARE(site.send().sent, 1);
        QCOMPARE(server.taken().size(), 1);
    }

    void leavesTheOutboxToAnotherProcess()
    {
        const TestServer server;
        Site site(server.settings(), "a@x");
        Outbox outbox(mailSite().outbox());
        outbox.lock([] { return false; });
        program().CancelRequested = true; // or it waits for a while
        QVERIFY(site.send().error.contains("Another process is sending mails"));
        QCOMPARE(server.taken().size(), 0);
    }

    void sendsWhatWaitsOnAFullDisk()
    {
        const TestServer server;
        Site site(server.settings(), "a@x");
        site.send();
        site.addRun(ReportResult::Ok);
        {
            Outbox outbox(mailSite().outbox());
            outbox.lock([] { return false; });
            outbox.add({{"x-1.json", "x.eml", "i@x", "f@x", "b@x", "S", currentInstant()}},
                       "Subject: S\r\n\r\n");
        }
        {
            const FullDisk disk;
            QCOMPARE(site.send().sent, 1);
        }
        QCOMPARE(server.recipients(), QStringList({"a@x", "b@x"}));
        QCOMPARE(site.send().sent, 1); // what was due then
        QCOMPARE(server.recipients().size(), 3);
    }

    void saysWhatKeepsItFromSending()
    {
        const TestServer server;
        Site site(server.settings(), "a@x");
        const QByteArray good = site.read("MailSettings.XML");
        site.write("MailSettings.XML", "<MAILSETTINGS>\n<SERVER");
        QVERIFY(site.send().error.contains("MailSettings.XML:2:"));
        site.write("MailSettings.XML", QByteArray(good)
                                           .replace("\"NONE\"", "\"TLS\"")
                                           .replace("Auth=\"TLS\"", "Auth=\"PASSWORD\"")
                                           .replace("User=\"\"", "User=\"u\""));
        QVERIFY(site.send().error.contains("No password for the mail server is saved"));
        site.write("MailSettings.XML", good);
        QCOMPARE(site.send().sent, 1);
    }

    /// The program itself, ended while the server has the message and does not confirm it.
    void survivesKills()
    {
        const TestServer server;
        MailServer patient = server.settings();
        patient.timeout = 600; // but a cancel is heard at once
        Site site(patient, "slow@x");
        QVERIFY(QProcess::execute(VANTREL_PROGRAM, {"--home", site.path(), "--list"}) >= 0);
        site.write("Config/ChartSelection.XML",
                   "<REPORTDEFINITIONS><CUSTOMREPORT ReportID='{R}' ReportTitle='Servers'/>"
                   "</REPORTDEFINITIONS>");
        QDir().mkpath(site.path("VTRDataRoot"));
        QFile::rename(site.path("RunHistory"), site.path("VTRDataRoot/RunHistory"));
        site.write("Config/MailSettings.XML", site.read("MailSettings.XML"));
        program().gGraphDataPath = site.path("VTRDataRoot") + pathSeparator;
        const auto endWhenTaken = [&](int messages, int signal) {
            QProcess process;
            process.start(VANTREL_PROGRAM, {"--home", site.path(), "/AUTO"});
            while (server.taken().size() < messages && process.state() != QProcess::NotRunning)
                process.waitForFinished(20);
            ::kill(static_cast<pid_t>(process.processId()), signal);
            process.waitForFinished();
            return process.exitStatus() == QProcess::CrashExit ? -1 : process.exitCode();
        };
        {
            Outbox outbox(mailSite().outbox());
            outbox.lock([] { return false; });
            outbox.add({{"x-1.json", "x.eml", "i@x", "f@x", "slow@x", "S", currentInstant()}},
                       "Message-ID: <i@x>\r\nSubject: S\r\n\r\n");
        }
        QCOMPARE(endWhenTaken(1, SIGKILL), -1);
        QVERIFY(site.waiting().at(0).isTrying);
        QCOMPARE(endWhenTaken(2, SIGTERM), 1); // the run itself fails: there is no database
        QVERIFY(!site.waiting().at(0).isTrying);
        QCOMPARE(site.waiting().at(0).tries, 2);
        for (const QByteArray &message : server.taken())
            QCOMPARE(TestServer::line(message, "Message-ID: "), "<i@x>");
    }
};

QTEST_GUILESS_MAIN(TestMailRun)
#include "tst_MailRun.moc"
