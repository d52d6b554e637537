#include "base/ProgramState.h"
#include "mail/MailRun.h"
#include "mail/SmtpReply.h"
#include "mail/TestServer.h"
#include "support/Rows.h"

#include <atomic>
#include <chrono>
#include <curl/curl.h>
#include <thread>

using namespace std::chrono_literals;

/// What servers do with a message, and what is said of it.
class TestSmtpSender : public QObject
{
    Q_OBJECT

    const ProgramState m_state;
    const Certificate m_good{"IP:127.0.0.1", "20991231235959Z"};
    const Certificate m_expired{"IP:127.0.0.1", "20200201000000Z"};
    const Certificate m_other{"DNS:mail.example", "20991231235959Z"};

    static Delivery send(const MailServer &server, const QString &to,
                         const std::optional<QString> &secret = {})
    {
        return sendTestMail(server, secret, to, [] { return false; });
    }

private Q_SLOTS:
    void saysWhatServersAnswer_data()
    {
        using enum Delivery::Outcome;
        const Rows<QString, QString, int, QString> row("to", "from", "outcome", "says");
        row("taken", "a@x", "reports@x", int(Sent), "");
        row("refused for good", "refused@x", "reports@x", int(Refused),
            "127.0.0.1 takes no mail for refused@x: 550 5.1.1 No such user  [31mhere");
        row("refused for now", "later@x", "reports@x", int(Failed),
            "127.0.0.1 takes no mail for later@x at present: 451 4.7.1 Greylisted, try again");
        row("message refused", "toolarge@x", "reports@x", int(Refused),
            "127.0.0.1 does not take this message: 552 5.3.4 Message too big");
        row("sender refused", "a@x", "spoofed@x", int(Unusable),
            "127.0.0.1 takes no mail from 'spoofed@x': check the sender, and whether the server "
            "wants a user and a password: 553 5.7.1 Sender address rejected");
        row("stall", "stall@x", "reports@x", int(Unusable), "did not answer within 2 seconds");
        row("stall after the message", "slow@x", "reports@x", int(Failed),
            "did not answer within 2 seconds before it confirmed the message");
        row("cut after the message", "cut@x", "reports@x", int(Failed),
            "before it confirmed the message");
    }
    void saysWhatServersAnswer()
    {
        QFETCH(QString, to);
        QFETCH(QString, from);
        static const TestServer server;
        MailServer settings = server.settings();
        settings.from = from;
        settings.timeout = to.startsWith('s') ? 2 : 20;
        const Delivery delivery = send(settings, to);
        QTEST(int(delivery.outcome), "outcome");
        QFETCH(QString, says);
        QVERIFY2(delivery.text.simplified().contains(says.simplified()), qPrintable(delivery.text));
    }

    void understandsWindows_data()
    {
        const Rows<QString, QString> row("detail", "says");
        const QString trust = "schannel: CertGetCertificateChain trust error CERT_TRUST_IS_";
        row.each({
            {trust + "NOT_TIME_VALID", "The certificate of h has expired"},
            {trust + "UNTRUSTED_ROOT", "comes from an issuer that is not trusted"},
            {trust + "PARTIAL_CHAIN", "comes from an issuer that is not trusted"},
            {"schannel: SNI or certificate check failed: SEC_E_WRONG_PRINCIPAL (0x80090322)",
             "is not one for 'h'"},
            {"schannel: CertGetNameString() failed to match connection hostname (h) against "
             "server certificate names",
             "is not one for 'h'"},
        });
    }
    void understandsWindows()
    {
        QFETCH(QString, detail);
        SmtpAttempt attempt;
        attempt.code = CURLE_PEER_FAILED_VERIFICATION;
        attempt.detail = detail;
        MailServer server;
        server.host = "h";
        QFETCH(QString, says);
        QVERIFY(deliveryOf(attempt, server, "a@x").text.contains(says));
    }

    void provesTheServerAndTheUser_data()
    {
        using enum MailSecurity;
        constexpr int password = int(MailAuthentication::Password);
        constexpr int token = int(MailAuthentication::XOAuth2);
        constexpr int nobody = int(MailAuthentication::None);
        const Rows<QStringList, int, int, QString, QString, QString> row(
            "server", "security", "login", "host", "ca", "says");
        const QStringList good = m_good.options();
        const QStringList user = {"--user", "u", "--password", "s\u00e4sam"};
        const QString ip = "127.0.0.1";
        const QStringList startTls = QStringList{"--starttls"} + good + user;
        const QStringList tls = QStringList{"--tls"} + good + user;
        row("STARTTLS", startTls, int(StartTls), password, ip, m_good.file, "");
        row("TLS", tls, int(Tls), password, ip, m_good.file, "");
        row("token", startTls, int(StartTls), token, ip, m_good.file, "");
        row("wrong password", startTls, int(StartTls), -password, ip, m_good.file,
            "does not accept the user 'u' with this password: check both");
        row("expired token", startTls, int(StartTls), -token, ip, m_good.file,
            "does not accept the access token of 'u': get a new one");
        row("untrusted", startTls, int(StartTls), password, ip, "",
            "comes from an issuer that is not trusted here: add the issuer's certificate");
        row("expired", QStringList{"--tls"} + m_expired.options(), int(Tls), nobody, ip,
            m_expired.file, "The certificate of 127.0.0.1 has expired");
        row("other name", QStringList{"--tls"} + m_other.options(), int(Tls), nobody, ip,
            m_other.file, "is not one for '127.0.0.1': enter the name that the certificate has");
        row("no STARTTLS", user, int(StartTls), password, ip, m_good.file,
            "offers no encryption (STARTTLS), and nothing was sent without it");
        row("TLS at a plain port", user, int(Tls), password, ip, m_good.file,
            "agree on no encryption");
        row("plain at a TLS port", tls, int(StartTls), password, ip, m_good.file,
            "did not answer within 2 seconds");
        row("password without encryption", user, int(None), password, ip, "",
            "Security NONE would send the password readable");
        row("no such file", startTls, int(StartTls), password, ip, "/nowhere.pem",
            "The certificates in '/nowhere.pem' (CaFile) cannot be read");
        // A name too long to ask for: no network is needed to know that.
        const QString nowhere = QString(64, 'n') + ".invalid";
        row("no such server", user, int(StartTls), password, nowhere, "",
            "There is no server '" + nowhere + "'");
    }
    void provesTheServerAndTheUser()
    {
        QFETCH(QStringList, server);
        QFETCH(int, security);
        QFETCH(int, login);
        QFETCH(QString, host);
        QFETCH(QString, ca);
        QFETCH(QString, says);
        const TestServer real(server);
        MailServer settings = real.settings();
        settings.security = MailSecurity(security);
        settings.authentication = MailAuthentication(qAbs(login));
        settings.host = host;
        settings.caFile = ca;
        settings.user = "u";
        settings.timeout = says.contains("2 seconds") ? 2 : 20;
        const QString secret = login < 0 ? "wr\u00f6ng-secret" : "s\u00e4sam";
        const Delivery delivery = send(settings, "a@x.org", secret);
        QVERIFY2(says.isEmpty() ? delivery.isSent() : delivery.text.contains(says),
                 qPrintable(delivery.text));
        QCOMPARE(real.taken().size(), says.isEmpty() ? 1 : 0);
        QVERIFY(!delivery.text.contains(secret));
        QVERIFY(!delivery.text.contains(QString::fromLatin1(secret.toUtf8().toBase64())));
    }

    void survivesFaultyServers_data()
    {
        const Rows<QString, QString> row("fault", "says");
        row.each({{"mute", "did not answer within 2 seconds"},
                  {"garbage", "broke off"},
                  {"endless", "127.0.0.1, port"},
                  {"hostile", "takes no mail from"}});
    }
    void survivesFaultyServers()
    {
        QFETCH(QString, fault);
        const TestServer server({"--fault", fault});
        MailServer settings = server.settings();
        settings.timeout = 2;
        const Delivery delivery = send(settings, "a@x");
        QVERIFY(delivery.outcome == Delivery::Outcome::Unusable);
        QFETCH(QString, says);
        QVERIFY2(delivery.text.contains(says), qPrintable(delivery.text));
        QVERIFY(delivery.text.size() < 600 && !delivery.text.contains(QChar(0x1b)));
    }

    void isCancelledWhileItWaits()
    {
        const TestServer server;
        MailServer settings = server.settings();
        settings.timeout = 600;
        std::atomic<bool> isCancelled = false;
        std::thread canceller([&] {
            std::this_thread::sleep_for(300ms);
            isCancelled = true;
        });
        const Delivery delivery =
            sendTestMail(settings, {}, "stall@x", [&] { return isCancelled.load(); });
        canceller.join();
        QVERIFY(delivery.outcome == Delivery::Outcome::Cancelled);
    }
};

QTEST_GUILESS_MAIN(TestSmtpSender)
#include "tst_SmtpSender.moc"
