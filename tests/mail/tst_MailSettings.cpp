#include "base/Xml.h"
#include "mail/MailSettings.h"
#include "mail/MailSite.h"
#include "support/Errors.h"
#include "support/Rows.h"
#include "support/Sandbox.h"

/// MailSettings.XML, addresses as people write them, and the secret beside.
class TestMailSettings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsAddresses_data()
    {
        const Rows<QString, QString> row("text", "read");
        row.each({
            {"a@b.org", "a@b.org"},
            {" Ops Team <ops@x.example> ; \"Müller, Jörg\"<j.m@x>\n",
             "Ops Team <ops@x.example>, \"Müller, Jörg\" <j.m@x>"},
            {"a@bücher.example", "a@xn--bcher-kva.example"},
            {"\"a \\\"b\\\"\" <a@b>", "\"a \\\"b\\\"\" <a@b>"},
            {"jörg@x.org",
             "'jörg@x.org' is not a mail address: only ASCII letters are possible before the '@'"},
            {"a@b, A@B", "'A@b' is there twice"},
            {"a", "'a' is not a mail address: it has to have the form name@domain"},
            {"a b@c", "'a b@c' is not a mail address: 'a b' cannot stand before the '@'"},
            {"a@-b", "'a@-b' is not a mail address: '-b' is not the name of a domain"},
            {"a>", "'a>' is not a mail address: the '<' is missing"},
            {"x <a@b\tc>", "'x <a@b c>' is not a mail address: it has a control character"},
        });
    }
    void readsAddresses()
    {
        QFETCH(QString, text);
        QString read;
        const Error error = errorOf([&] { read = addressListText(mailAddresses(text)); });
        QTEST(error.number == 0 ? read : error.description, "read");
    }

    void encodesHeaders_data()
    {
        const Rows<QString, QByteArray> row("text", "header");
        row("plain", "Servers: 98.7 %", "Subject: Servers: 98.7 %");
        row("letters", "Zürich", "Subject: =?UTF-8?B?WsO8cmljaA==?=");
        row("no second header", "a\r\nBcc: x@y", "Subject: a Bcc: x@y");
        row("looks encoded", "=?x", "Subject: =?UTF-8?B?PT94?=");
        row("folded", QString("word ").repeated(18),
            "Subject: word word word word word word word word word word word word word\r\n"
            " word word word word word");
        row("whole characters", QString("é").repeated(23),
            "Subject: =?UTF-8?B?w6nDqcOpw6nDqcOpw6nDqcOpw6nDqcOpw6nDqcOpw6nDqcOpw6nDqcOpw6k=?=\r\n"
            " =?UTF-8?B?w6k=?=");
    }
    void encodesHeaders()
    {
        QFETCH(QString, text);
        QTEST(textHeader("Subject", text), "header");
        QCOMPARE(addressHeader("To", mailAddresses("Jö <a@b>, \"C, D\" <c@d>")),
                 "To: =?UTF-8?B?SsO2?= <a@b>,\r\n \"C, D\" <c@d>");
    }

    void readsWhatItWrote()
    {
        const Sandbox sandbox;
        MailSettings settings;
        settings.server = {"mail.example",
                           465,
                           MailSecurity::Tls,
                           MailAuthentication::XOAuth2,
                           "u",
                           "R <r@example.org>",
                           20,
                           5,
                           "ca.pem",
                           "https://x/reports"};
        settings.failureRecipients = "ops@example.org";
        settings.subscriptions = {{"{A}", "{R}", "a@b", MailWhen::Worse, 0.5, true, false},
                                  {"{B}", "{R}", "c@d", MailWhen::TargetMissed, 1, false, true}};
        settings.save(mailSettingsPath());
        const QByteArray first = sandbox.read("MailSettings.XML");
        MailSettings again = MailSettings::load(mailSettingsPath());
        QVERIFY(again.isUsable() && again.errors.isEmpty());
        QCOMPARE(again.subscriptions.size(), size_t(2));
        QCOMPARE(again.subscriptions[0].points, 0.5);
        QFile::remove(sandbox.path("MailSettings.XML"));
        again.save(mailSettingsPath());
        QCOMPARE(sandbox.read("MailSettings.XML"), first);
    }

    void keepsWhatItDoesNotKnow()
    {
        const Sandbox sandbox;
        sandbox.write("MailSettings.XML",
                      "<MAILSETTINGS><!--own--><SERVER Host='h' From='a@b' Auth='NONE' X='1'/>"
                      "<SUBSCRIPTION ReportID='{R}' To='first@x' Y='2'/>"
                      "<!--odd--><SUBSCRIPTION SubscriptionID='{O}' ReportID='{R}' To='nobody'/>"
                      "<SUBSCRIPTION SubscriptionID='{G}' ReportID='{R}' To='gone@x'/>"
                      "</MAILSETTINGS>");
        MailSettings settings = MailSettings::load(mailSettingsPath());
        QCOMPARE(settings.errors.size(), 1);
        QVERIFY(settings.errors[0].endsWith("MailSettings.XML: subscription '{O}': To: 'nobody' is "
                                            "not a mail address: it has to have the form "
                                            "name@domain"));
        QCOMPARE(settings.subscriptions.size(), size_t(2));
        settings.subscriptions.pop_back();
        settings.subscriptions[0].recipients = "second@x";
        settings.save(mailSettingsPath());
        const QByteArray text = sandbox.read("MailSettings.XML");
        for (const char *kept :
             {"<!--own-->", "X=\"1\"", "Y=\"2\"", "<!--odd-->", "\"nobody\"", "\"second@x\""})
            QVERIFY2(text.contains(kept), kept);
        QVERIFY(!text.contains("gone@x") && !text.contains("first@x"));
    }

    void saysWhatIsWrong_data()
    {
        const Rows<QByteArray, QString> row("attributes", "fault");
        row.each({
            {"Host=''", "Host names no server"},
            {"Host='a b'", "Host 'a b' is not the name of a server"},
            {"From=''", "From: '' is not a mail address: it has to have the form name@domain"},
            {"Port='0'", "Port '0' is not a whole number from 1 to 65535"},
            {"Security='SSL'", "Security 'SSL' is none of STARTTLS, TLS, NONE"},
            {"Security='NONE'",
             "Security NONE would send the password readable: use STARTTLS or TLS, or Auth NONE"},
            {"User=''", "User names nobody: Auth needs a user"},
            {"PagesUrl='javascript:x'",
             "PagesUrl 'javascript:x' is not an address that begins with https:// or http://"},
        });
    }
    void saysWhatIsWrong()
    {
        QFETCH(QByteArray, attributes);
        pugi::xml_document document;
        parseXml(document, QByteArray("<SERVER " + attributes + "/>"));
        pugi::xml_node element = document.document_element();
        for (const auto &[name, value] : {std::pair("Host", "h"), {"From", "a@b"}, {"User", "u"}}) {
            if (!element.attribute(name))
                setAttr(element, name, QString(value));
        }
        QStringList faults;
        readMailServer(element, [&](const char *, const QString &fault) { faults.append(fault); });
        QTEST(faults.join(u'|'), "fault");
    }

    void keepsTheSecretFromOthers()
    {
        const Sandbox sandbox;
        program().gGraphDataPath = sandbox.path() + pathSeparator;
        const MailSite site = mailSite();
        QCOMPARE(readMailSecret(site), std::nullopt);
        saveMailSecret(site, "pä ss");
        QCOMPARE(*readMailSecret(site), "pä ss");
#ifndef Q_OS_WIN
        const QString path = sandbox.path("Mail/MailSecret");
        QCOMPARE(QFile::permissions(path) & QFile::Permissions(0x77), QFile::Permissions());
        QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadGroup);
        const QString refusal = failureOf([&] { readMailSecret(site); });
        QVERIFY(refusal.contains("other users have access") && !refusal.contains("pä"));
        sandbox.write("cred/vantrel-mail", "handed\n");
        qputenv("CREDENTIALS_DIRECTORY", sandbox.path("cred").toLocal8Bit());
        QCOMPARE(*readMailSecret(site), "handed");
        qunsetenv("CREDENTIALS_DIRECTORY");
#endif
        removeMailSecret(site);
        QCOMPARE(readMailSecret(site), std::nullopt);
    }
};

QTEST_GUILESS_MAIN(TestMailSettings)
#include "tst_MailSettings.moc"
