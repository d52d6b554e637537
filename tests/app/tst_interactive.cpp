#include "app/Interactive.h"
#include "support/Answers.h"
#include "support/MemoryScheduler.h"
#include "support/Sandbox.h"
#include "ui/MainWindow.h"

#include <QTest>

/// The start of the window beside another instance.
class TestInteractive : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void waitsForAnotherInstance_data();
    void waitsForAnotherInstance();
    void endsAForgottenJob_data();
    void endsAForgottenJob();
};

void TestInteractive::waitsForAnotherInstance_data()
{
    using Counts = QList<bool>;
    QTest::addColumn<Counts>("runs"); // what each look finds; the last one holds on
    QTest::addColumn<QStringList>("answers");
    QTest::addColumn<bool>("goesOn");
    QTest::newRow("alone") << Counts{false} << QStringList() << true;
    QTest::newRow("gone at the second look") << Counts{true, false} << QStringList() << true;
    QTest::newRow("gone after a retry")
        << Counts{true, true, false} << QStringList{"Retry"} << true;
    QTest::newRow("gone after two")
        << Counts{true, true, true, false} << QStringList{"Retry", "Retry"} << true;
    QTest::newRow("cancelled") << Counts{true} << QStringList{"Cancel"} << false;
    QTest::newRow("cancelled as it went")
        << Counts{true, true, false} << QStringList{"Cancel"} << false;
    QTest::newRow("retried, then cancelled")
        << Counts{true} << QStringList{"Retry", "Cancel"} << false;
}

void TestInteractive::waitsForAnotherInstance()
{
    QFETCH(QList<bool>, runs);
    QFETCH(QStringList, answers);
    QFETCH(bool, goesOn);
    const Sandbox sandbox;
    MemoryScheduler scheduler;
    frmGrapherMain window(scheduler, {});
    Answers user;
    bool wasEnabled = false;
    for (const QString &answer : answers) {
        user.add([&, answer](QWidget &widget) {
            wasEnabled = wasEnabled || window.isEnabled();
            auto &box = dynamic_cast<QMessageBox &>(widget);
            QVERIFY(box.isEnabled());
            box.button(answer == "Retry" ? QMessageBox::Retry : QMessageBox::Cancel)->click();
        });
    }
    const bool result = waitForOtherInstance(
        window, scheduler, [&] { return runs.size() > 1 ? runs.takeFirst() : runs.first(); });
    QCOMPARE(result, goesOn);
    QVERIFY(user.allDone());
    QVERIFY(!wasEnabled && window.isEnabled());
    QCOMPARE(user.said.size(), answers.size());
    for (const QString &said : user.said)
        QCOMPARE(said,
                 QString("Vantrel Graphing Tool: Another instance of Vantrel Graphing Tool is "
                         "currently running.\nYou may wait for the previous instance to "
                         "complete processing"));
}

void TestInteractive::endsAForgottenJob_data()
{
    QTest::addColumn<QString>("list");
    QTest::addColumn<bool>("running");
    QTest::addColumn<bool>("ends");
    QTest::newRow("registered") << "vantrelgraphtool\n" << true << false;
    QTest::newRow("runs, though not registered") << "other\n" << true << true;
    QTest::newRow("does not run") << "" << false << false;
}

void TestInteractive::endsAForgottenJob()
{
    QFETCH(QString, list);
    QFETCH(bool, running);
    QFETCH(bool, ends);
    const Sandbox sandbox;
    MemoryScheduler scheduler;
    scheduler.list = list;
    scheduler.running = running;
    frmGrapherMain window(scheduler, {});
    QList<bool> runs = {true, false};
    QVERIFY(waitForOtherInstance(window, scheduler, [&] { return runs.takeFirst(); }));
    QCOMPARE(scheduler.ended, ends ? QStringList("VantrelGraphTool") : QStringList());
}

QTEST_MAIN(TestInteractive)
#include "tst_interactive.moc"
