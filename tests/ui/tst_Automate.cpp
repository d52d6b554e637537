#include "support/Answers.h"
#include "support/MemoryScheduler.h"
#include "support/Rows.h"
#include "support/Sandbox.h"
#include "ui/Automate.h"
#include "ui/Controls.h"

namespace {

const QString mismatch = "Invalid Entry: The password entries do not match or are invalid.  Please "
                         "re-enter the password and verify.";
const QString added = "Automate Graphing: Scheduled task has been added.";

} // namespace

class tst_Automate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void registersUnderTheAccount_data()
    {
        const Rows<QString, QString, bool, QString> row("password", "verify", "fails", "says");
        row("both empty", "", "", false, added);
        row("alike", "Secret 1", "Secret 1", false, added);
        row("another case", "Secret 1", "secret 1", false, mismatch);
        row("one empty", "Secret 1", "", false, mismatch);
        row("a blank more", "Secret 1", "Secret 1 ", false, mismatch);
        row("scheduler fails", "a", "a", true,
            "Automate Graphing: The scheduled task could not be added.\n\n[70] no rights");
    }
    void registersUnderTheAccount()
    {
        QFETCH(QString, password);
        QFETCH(QString, verify);
        QFETCH(QString, says);
        QFETCH(bool, fails);
        const Sandbox sandbox;
        MemoryScheduler scheduler;
        scheduler.fails = fails;
        frmAutomate dialog(scheduler, {"--home", "/srv/my graphs"});
        dialog.show();
        control<QLineEdit>(dialog, "txtUserName")->setText("OFFICE\\ann");
        QTest::keyClicks(control<QLineEdit>(dialog, "txtPassword"), password);
        QTest::keyClicks(control<QLineEdit>(dialog, "txtVerify"), verify);
        Answers answers;
        answers.click(QMessageBox::Ok);
        QTest::keyClick(&dialog, Qt::Key_Return);
        QCOMPARE(answers.said, QStringList(says));
        const bool saves = says == added;
        QCOMPARE(dialog.isVisible(), !saves);
        QCOMPARE(dialog.tag(), QString(saves ? "SAVE" : "CANCEL"));
        QVERIFY(control<QPushButton>(dialog, "cmdOK")->isEnabled());
        QVERIFY(control<QPushButton>(dialog, "cmdCancel")->isEnabled());
        QCOMPARE(scheduler.list.isEmpty(), !saves);
        QCOMPARE(scheduler.saved.user, QString(saves ? "OFFICE\\ann" : ""));
        QCOMPARE(scheduler.saved.password, saves ? password : QString());
        QCOMPARE(scheduler.saved.parameters.mid(1),
                 saves ? QStringList({"--home", "/srv/my graphs"}) : QStringList());
    }

    void asksForNoAccountWhereNoneIsNeeded()
    {
        const Sandbox sandbox;
        MemoryScheduler scheduler;
        scheduler.takesAccount = false;
        frmAutomate dialog(scheduler, {});
        dialog.show();
        for (const char *name : {"txtUserName", "txtPassword", "txtVerify"})
            QVERIFY2(!control<QLineEdit>(dialog, name)->isVisible(), name);
        QVERIFY(!control<QLabel>(dialog, "lblExplain")->text().contains("credentials"));
        QVERIFY(control<QLabel>(dialog, "lblAccount")->text().contains("present user"));
        Answers answers;
        answers.click(QMessageBox::Ok);
        dialog.accept();
        QCOMPARE(answers.said, QStringList(added));
        QVERIFY(scheduler.saved.user.isEmpty());
    }

    void proposesThePresentUser_data()
    {
        const Rows<QByteArray, QByteArray, QString> row("domain", "user", "proposed");
        row("no domain", "", "ann", "ann");
        row("domain", "OFFICE", "ann", "OFFICE\\ann");
        row("unknown", "", "", "*unknown*");
    }
    void proposesThePresentUser()
    {
        QFETCH(QByteArray, domain);
        QFETCH(QByteArray, user);
        const Sandbox sandbox;
        for (const char *name : {"USERNAME", "LOGNAME"})
            qunsetenv(name);
        qputenv("USERDOMAIN", domain);
        qputenv("USER", user);
        MemoryScheduler scheduler;
        const frmAutomate dialog(scheduler, {});
        QTEST(control<QLineEdit>(dialog, "txtUserName")->text(), "proposed");
        for (const char *name : {"txtPassword", "txtVerify"}) {
            QVERIFY(control<QLineEdit>(dialog, name)->text().isEmpty());
            QCOMPARE(control<QLineEdit>(dialog, name)->echoMode(), QLineEdit::Password);
        }
    }
};

QTEST_MAIN(tst_Automate)
#include "tst_Automate.moc"
