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
        row("alike", "Secret 1", "Secret 1", false, added);
        row("another case", "Secret 1", "secret 1", false, mismatch);
        row("one empty", "Secret 1", "", false, mismatch);
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
        QVERIFY(!control<QLineEdit>(dialog, "txtPassword")->isVisible());
        Answers answers;
        answers.click(QMessageBox::Ok);
        dialog.accept();
        QCOMPARE(answers.said, QStringList(added));
        QVERIFY(scheduler.saved.user.isEmpty());
    }

    void proposesThePresentUser()
    {
        const Sandbox sandbox;
        MemoryScheduler scheduler;
        const auto proposed = [&](const QByteArray &domain, const QByteArray &user) {
            qputenv("USERDOMAIN", domain);
            for (const char *name : {"USERNAME", "LOGNAME", "USER"})
                qputenv(name, user);
            const frmAutomate dialog(scheduler, {});
            return control<QLineEdit>(dialog, "txtUserName")->text();
        };
        QCOMPARE(proposed("", "ann"), "ann");
        QCOMPARE(proposed("OFFICE", "ann"), "OFFICE\\ann");
        QCOMPARE(proposed("", ""), "*unknown*");
    }
};

QTEST_MAIN(tst_Automate)
#include "tst_Automate.moc"
