#include "definitions/Definitions.h"
#include "mail/MailSite.h"
#include "mail/TestServer.h"
#include "support/Answers.h"
#include "support/Rows.h"
#include "support/Sandbox.h"
#include "ui/Controls.h"
#include "ui/editors/frmMail.h"
#include "ui/editors/frmMailSubscription.h"

#include <QDoubleSpinBox>
#include <QPlainTextEdit>
#include <QTabWidget>
#include <QThreadPool>
#include <QTreeWidget>

namespace {

const QByteArray settingsFile =
    "<MAILSETTINGS><!-- ours -->"
    "<SERVER Host='mail.example' Port='2525' Security='TLS' Auth='NONE' User='u' "
    "From='R &lt;r@example.org>' Timeout='20' SizeLimit='5' PagesUrl='https://x/r' Note='kept'/>"
    "<SUBSCRIPTION SubscriptionID='{S1}' ReportID='{A}' To='ann@x.org' When='WORSE' Points='0.25'/>"
    "<SUBSCRIPTION SubscriptionID='{S2}' ReportID='{GONE}' To='bob@x.org' Csv='True'/>"
    "<FAILURES To='ops@x.org'/></MAILSETTINGS>";

/// A site with two reports, and the dialog over it.
struct Site
{
    explicit Site(const QByteArray &file = {})
    {
        program().gGraphDataPath = box.path() + '/';
        for (const char *id : {"{A}", "{B}"}) {
            auto report = std::make_shared<clsReportDef>();
            report->ReportID = id;
            report->ReportTitle = QString("Report ") + id[1];
            definitions().gReportDefs.add(id, report);
        }
        if (!file.isEmpty())
            box.write("MailSettings.XML", file);
        open();
    }
    ~Site()
    {
        dialog.reset();
        QThreadPool::globalInstance()->waitForDone(); // for a test that was cancelled
    }
    void open()
    {
        dialog.reset();
        dialog = std::make_unique<Controls<frmMail>>(mailSite());
        dialog->show();
        answers.emplace();
    }
    QLineEdit *field(const char *name) const { return dialog->find<QLineEdit>(name); }
    QTreeWidget *list() const { return dialog->find<QTreeWidget>("lvSubscriptions"); }
    QTreeWidgetItem *row(const QString &recipients) const
    {
        return list()->findItems(recipients, Qt::MatchExactly, 1).at(0);
    }
    int page() const { return dialog->find<QTabWidget>("tabMail")->currentIndex(); }
    void enterServer() const
    {
        field("txtServer")->setText("localhost");
        field("txtUser")->setText("ann");
        field("txtFrom")->setText("r@example.org");
    }
    MailSettings saved() const { return MailSettings::load(mailSettingsPath()); }

    Sandbox box;
    std::optional<Answers> answers; ///< for the windows above the dialog
    std::unique_ptr<Controls<frmMail>> dialog;
};

} // namespace

class tst_frmMail : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsAndKeepsWhatIsThere()
    {
        Site site(settingsFile);
        site.saved().save(mailSettingsPath()); // as it writes texts
        const QByteArray before = site.box.read("MailSettings.XML");
        site.box.restart();
        site.open(); // the reports are not defined now
        QCOMPARE(site.dialog->find<QComboBox>("cboEncryption")->currentText(),
                 QString("TLS from the start"));
        QCOMPARE(site.list()->topLevelItemCount(), 2);
        QVERIFY(site.list()->topLevelItem(0)->text(0).startsWith("Not defined any more: {A}"));
        QVERIFY(!site.dialog->hasChanges());
        site.dialog->accept();
        QCOMPARE(site.dialog->tag(), QString("SAVE"));
        QCOMPARE(site.box.read("MailSettings.XML"), before);
    }

    void savesTheServerAndThePasswordApart()
    {
        Site site;
        QVERIFY(!site.dialog->hasChanges());
        site.enterServer();
        site.field("txtPassword")->setText(" s3cret ");
        site.field("txtFailures")->setText("ops@x.org");
        site.dialog->accept();
        QCOMPARE(site.saved().server.user, QString("ann"));
        QCOMPARE(site.saved().failureRecipients, QString("ops@x.org"));
        QCOMPARE(readMailSecret(mailSite()), QString(" s3cret "));
        QVERIFY(!site.box.read("MailSettings.XML").contains("s3cret"));

        site.open();
        QVERIFY(site.field("txtPassword")->text().isEmpty());
        QVERIFY(site.field("txtPassword")->placeholderText().contains("password is saved"));
        site.field("txtUser")->setText("bob");
        site.dialog->accept();
        QCOMPARE(readMailSecret(mailSite()), QString(" s3cret "));

#ifndef Q_OS_WIN // there it would have to be another account's
        QFile::setPermissions(site.box.path("Mail/MailSecret"), QFile::Permissions(0x6644));
        site.open();
        QVERIFY(site.dialog->text("lblResult").contains("cannot be used; type it anew"));
        site.field("txtPassword")->setText("new");
        site.dialog->accept();
        QCOMPARE(readMailSecret(mailSite()), QString("new"));
#endif

        site.open();
        site.dialog->click("cmdForget");
        QVERIFY(site.dialog->hasChanges() && site.dialog->error().contains("enter the password"));
        site.dialog->find<QComboBox>("cboAuthentication")->setCurrentIndex(2);
        site.dialog->accept();
        QVERIFY(!readMailSecret(mailSite()));
    }

    void encryptionDecidesOnPortAndLogin()
    {
        const Site site;
        site.enterServer();
        auto *encryption = site.dialog->find<QComboBox>("cboEncryption");
        auto *port = site.dialog->find<QSpinBox>("txtPort");
        encryption->setCurrentIndex(1);
        QCOMPARE(port->value(), 465);
        encryption->setCurrentIndex(2);
        QCOMPARE(port->value(), 25);
        QVERIFY(!site.field("txtPassword")->isEnabled() && site.dialog->error().isEmpty());
        QVERIFY(site.dialog->text("lblWarnings").startsWith("Without encryption"));
        port->setValue(2500);
        encryption->setCurrentIndex(0);
        QVERIFY(port->value() == 2500 && site.field("txtPassword")->isEnabled());
        QVERIFY(!site.dialog->find<QLabel>("lblWarnings")->isVisible());
    }

    void namesTheFieldThatIsWrong_data()
    {
        const Rows<QByteArray, QString, QString, int> row("field", "typed", "says", "page");
        row("no server", "txtServer", " ", "enter the name of the mail server", 0);
        row("odd server", "txtServer", "a b", "'a b' is not the name of a server", 0);
        row("no user", "txtUser", "", "enter the user name", 0);
        row("no password", "txtPassword", "", "enter the password", 0);
        row("no sender", "txtFrom", "", "enter the address from which", 0);
        row("odd sender", "txtFrom", "me", "'me' is not a mail address", 0);
        row("no web address", "txtPages", "ftp://x", "begins with https://", 0);
        row("odd recipient", "txtFailures", "a@b.org, x", "'x' is not a mail address", 1);
    }
    void namesTheFieldThatIsWrong()
    {
        QFETCH(QByteArray, field);
        QFETCH(QString, typed);
        QFETCH(QString, says);
        QFETCH(int, page);
        Site site;
        site.enterServer();
        site.field("txtPassword")->setText("x");
        QCOMPARE(site.dialog->error(), QString());
        site.field(field.constData())->setText(typed);
        site.dialog->find<QTabWidget>("tabMail")->setCurrentIndex(1 - page);
        site.answers->click(QMessageBox::Ok);
        site.dialog->accept();
        QVERIFY2(site.answers->said.value(0).contains(says),
                 qPrintable(site.answers->said.value(0)));
        QCOMPARE(site.page(), page);
        QCOMPARE(site.dialog->focusWidget(), site.field(field.constData()));
        QVERIFY(site.dialog->isVisible() && !site.box.names().contains("MailSettings.XML"));
    }

    void subscriptionsAreFoundAddedChangedAndRemoved()
    {
        Site site(settingsFile);
        auto *search = site.field("txtSearch");
        search->setText("X.ORG ann");
        for (const char *address : {"ann@x.org", "bob@x.org"})
            QCOMPARE(site.row(address)->isHidden(), *address == 'b');

        site.answers->add([](QWidget &editor) {
            control<QComboBox>(editor, "cboReport")->setCurrentText("Report B");
            control<QPlainTextEdit>(editor, "txtRecipients")->setPlainText("c@x.org\nD <d@x.org>");
            control<QRadioButton>(editor, "optWhen2")->click();
            QVERIFY(control<QLabel>(editor, "lblWarnings")->text().contains("no target"));
            control<QCheckBox>(editor, "chkCsv")->click();
            control<QPushButton>(editor, "cmdOK")->click();
        });
        site.answers->click(QMessageBox::Yes); // new warnings
        site.dialog->click("cmdSubscriptionAdd");
        QVERIFY(search->text().isEmpty());
        QCOMPARE(site.list()->currentItem()->text(1), QString("c@x.org, D <d@x.org>"));

        site.answers->add([](QWidget &editor) {
            QVERIFY(!control<QDoubleSpinBox>(editor, "txtPoints")->isEnabled());
            control<QRadioButton>(editor, "optWhen3")->click();
            control<QDoubleSpinBox>(editor, "txtPoints")->setValue(2.5);
            control<QPushButton>(editor, "cmdOK")->click();
        });
        site.dialog->click("cmdSubscriptionModify");
        QCOMPARE(site.list()->topLevelItemCount(), 3);

        site.list()->setCurrentItem(site.row("bob@x.org"));
        for (const auto answer : {QMessageBox::No, QMessageBox::Yes}) {
            site.answers->click(answer);
            site.dialog->click("cmdSubscriptionRemove");
            QCOMPARE(site.list()->topLevelItemCount(), answer == QMessageBox::No ? 3 : 2);
        }
        QVERIFY(site.dialog->hasChanges());
        site.dialog->accept();
        const auto kept = site.saved().subscriptions;
        QCOMPARE(kept.size(), size_t(2));
        QCOMPARE(kept[0].recipients, QString("ann@x.org"));
        QCOMPARE(kept[1].reportId, QString("{B}"));
        QVERIFY(kept[1].when == MailWhen::Worse && kept[1].points == 2.5 && kept[1].csv);
        QVERIFY(site.box.read("MailSettings.XML").contains("Note=\"kept\""));
    }

    void testsWhatIsInTheFields_data()
    {
        const Rows<QStringList, QString, QString> row("server", "password", "says");
        row("nobody there", {}, "pass", "Not sent. Nothing answers at 127.0.0.1");
#ifndef Q_OS_WIN // the others need Python and OpenSSL
        const QStringList tls = {"--tls", "--user", "ann", "--password", "pass"};
        row("logs in", tls, "pass", "Sent. The server has taken the message for r@example.org.");
        row("wrong password", tls, "wrong", "does not accept the user 'ann' with this password");
        row("mute", {"--fault", "mute"}, "pass", "The test was cancelled.");
#endif
    }
    void testsWhatIsInTheFields()
    {
        QFETCH(QStringList, server);
        QFETCH(QString, password);
        QFETCH(QString, says);
        std::optional<Certificate> certificate;
        std::optional<TestServer> running;
        Site site;
        site.enterServer();
        if (server.contains("--tls")) {
            certificate.emplace("IP:127.0.0.1", "20991231235959Z");
            server += certificate->options();
            site.field("txtCertificates")->setText(certificate->file);
        }
        if (!server.isEmpty())
            running.emplace(server);
        site.field("txtServer")->setText("127.0.0.1");
        site.dialog->find<QComboBox>("cboEncryption")->setCurrentIndex(1);
        site.dialog->find<QSpinBox>("txtPort")->setValue(running ? running->settings().port : 1);
        site.field("txtPassword")->setText(password);
        auto *result = site.dialog->find<QLabel>("lblResult");
        site.dialog->click("cmdTest");
        const QRegularExpression countdown("127.0.0.1, which has (60|59) seconds");
        QVERIFY(countdown.match(result->text()).hasMatch());
        if (says.contains("cancelled"))
            site.dialog->click("cmdTest");
        QTRY_VERIFY_WITH_TIMEOUT(result->text().contains(says), 20'000);
        QCOMPARE(site.dialog->find<QPushButton>("cmdTest")->text(), QString("Se&nd Test"));
        QCOMPARE(running ? running->taken().size() : 0, says.startsWith("Sent") ? 1 : 0);
    }

    void lettersDoNotClash()
    {
        Site().dialog->checkLetters();
    }
};

QTEST_MAIN(tst_frmMail)
#include "tst_frmMail.moc"
