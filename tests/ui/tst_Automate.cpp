#include "support/Answers.h"
#include "support/MemoryScheduler.h"
#include "support/Sandbox.h"
#include "ui/Automate.h"

#include <QLabel>
#include <QLineEdit>
#include <QTest>

namespace {

const QString mismatch = "Invalid Entry: The password entries do not match or are invalid.  Please "
                         "re-enter the password and verify.";
const QString added = "Automate Graphing: Scheduled task has been added.";

QLineEdit *field(const frmAutomate &dialog, const char *name)
{
    return dialog.findChild<QLineEdit *>(QLatin1String(name));
}

} // namespace

class tst_Automate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void registersUnderTheAccount_data()
    {
        QTest::addColumn<QString>("password");
        QTest::addColumn<QString>("verify");
        QTest::addColumn<QString>("says");
        QTest::newRow("both empty") << ""
                                    << "" << added;
        QTest::newRow("alike") << "Secret 1"
                               << "Secret 1" << added;
        QTest::newRow("another case") << "Secret 1"
                                      << "secret 1" << mismatch;
        QTest::newRow("one empty") << "Secret 1"
                                   << "" << mismatch;
        QTest::newRow("a blank more") << "Secret 1"
                                      << "Secret 1 " << mismatch;
    }
    void registersUnderTheAccount()
    {
        QFETCH(QString, password);
        QFETCH(QString, verify);
        QFETCH(QString, says);
        const Sandbox sandbox;
        MemoryScheduler scheduler;
        frmAutomate dialog(scheduler, {"--home", "/srv/my graphs"});
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        field(dialog, "txtUserName")->setText("OFFICE\\ann");
        QTest::keyClicks(field(dialog, "txtPassword"), password);
        QTest::keyClicks(field(dialog, "txtVerify"), verify);
        Answers answers;
        answers.add([&](QWidget &dialogItself) { QCOMPARE(&dialogItself, &dialog); });
        answers.click(QMessageBox::Ok);
        QTest::qWait(20);
        QTest::keyClick(&dialog, Qt::Key_Return);
        QCOMPARE(answers.said, QStringList(says));
        QVERIFY(dialog.findChild<QPushButton *>("cmdOK")->isEnabled());
        QVERIFY(dialog.findChild<QPushButton *>("cmdCancel")->isEnabled());
        if (says == mismatch) {
            QVERIFY(dialog.isVisible());
            QCOMPARE(dialog.tag(), QString("CANCEL"));
            QVERIFY(scheduler.list.isEmpty());
            return;
        }
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.tag(), QString("SAVE"));
        QCOMPARE(scheduler.saved.user, QString("OFFICE\\ann"));
        QCOMPARE(scheduler.saved.password, password);
        QCOMPARE(scheduler.saved.parameters, QStringList({"/AUTO", "--home", "/srv/my graphs"}));
        QCOMPARE(scheduler.saved.triggers.size(), size_t(24));
    }

    void leavesAnExistingTaskAsItIs()
    {
        const Sandbox sandbox;
        MemoryScheduler scheduler;
        scheduler.list = "other\nvantrelgraphtool\n";
        frmAutomate dialog(scheduler, {});
        dialog.show();
        Answers answers;
        answers.add([](QWidget &) {});
        answers.click(QMessageBox::Ok);
        QTest::qWait(20);
        dialog.accept();
        QCOMPARE(answers.said, QStringList(added));
        QVERIFY(scheduler.saved.name.isEmpty());
        QCOMPARE(dialog.tag(), QString("SAVE"));
    }

    void staysOpenWhenTheSchedulerFails()
    {
        const Sandbox sandbox;
        MemoryScheduler scheduler;
        frmAutomate dialog(scheduler, {});
        dialog.show();
        scheduler.fails = true;
        Answers answers;
        answers.add([](QWidget &) {});
        answers.click(QMessageBox::Ok);
        QTest::qWait(20);
        dialog.accept();
        QCOMPARE(answers.said.size(), 1);
        QVERIFY(answers.said[0].contains("[70] no rights"));
        QVERIFY(dialog.isVisible());
        QVERIFY(dialog.findChild<QPushButton *>("cmdOK")->isEnabled());
    }

    void asksForNoAccountWhereNoneIsNeeded()
    {
        const Sandbox sandbox;
        MemoryScheduler scheduler;
        scheduler.takesAccount = false;
        frmAutomate dialog(scheduler, {});
        for (const char *name : {"txtUserName", "txtPassword", "txtVerify"})
            QVERIFY2(!field(dialog, name)->isEnabled(), name);
        QVERIFY(dialog.findChild<QLabel *>("lblAccount")->text().contains("present user"));
        dialog.show();
        Answers answers;
        answers.add([](QWidget &) {});
        answers.click(QMessageBox::Ok);
        QTest::qWait(20);
        dialog.accept();
        QCOMPARE(scheduler.list, QString("VantrelGraphTool\n"));
        QVERIFY(scheduler.saved.user.isEmpty());
    }

    void proposesThePresentUser_data()
    {
        QTest::addColumn<QByteArray>("domain");
        QTest::addColumn<QByteArray>("user");
        QTest::addColumn<QString>("proposed");
        QTest::newRow("no domain") << QByteArray() << QByteArray("ann") << "ann";
        QTest::newRow("domain") << QByteArray("OFFICE") << QByteArray("ann") << "OFFICE\\ann";
        QTest::newRow("unknown") << QByteArray() << QByteArray() << "*unknown*";
    }
    void proposesThePresentUser()
    {
        QFETCH(QByteArray, domain);
        QFETCH(QByteArray, user);
        QFETCH(QString, proposed);
        const Sandbox sandbox;
        for (const char *name : {"USERNAME", "USER", "LOGNAME", "USERDOMAIN"})
            qunsetenv(name);
        qputenv("USERDOMAIN", domain);
        qputenv("USER", user);
        MemoryScheduler scheduler;
        const frmAutomate dialog(scheduler, {});
        QCOMPARE(field(dialog, "txtUserName")->text(), proposed);
        QVERIFY(field(dialog, "txtPassword")->text().isEmpty());
        QCOMPARE(field(dialog, "txtPassword")->echoMode(), QLineEdit::Password);
        QCOMPARE(field(dialog, "txtVerify")->echoMode(), QLineEdit::Password);
    }
};

QTEST_MAIN(tst_Automate)
#include "tst_Automate.moc"
