#include "app/Interactive.h"
#include "support/Answers.h"
#include "support/MemoryScheduler.h"
#include "support/Rows.h"
#include "support/Sandbox.h"
#include "ui/main/frmGrapherMain.h"

using Looks = QList<bool>;
using Buttons = QList<QMessageBox::StandardButton>;

/// The start of the window beside another instance.
class TestInteractive : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void waitsForAnotherInstance_data()
    {
        const auto retry = QMessageBox::Retry;
        const auto cancel = QMessageBox::Cancel;
        // runs: what each look finds; the last one holds on
        const Rows<Looks, Buttons, bool> row("runs", "answers", "goesOn");
        row("alone", {false}, {}, true);
        row("gone at the second look", {true, false}, {}, true);
        row("gone after two", {true, true, true, false}, {retry, retry}, true);
        row("cancelled as it went", {true, true, false}, {cancel}, false);
    }
    void waitsForAnotherInstance()
    {
        QFETCH(Looks, runs);
        QFETCH(Buttons, answers);
        const Sandbox sandbox;
        MemoryScheduler scheduler;
        frmGrapherMain window(scheduler, {});
        Answers user;
        for (const QMessageBox::StandardButton answer : answers) {
            user.add([&, answer](QWidget &box) {
                QVERIFY(box.isEnabled() && !window.isEnabled());
                static_cast<QMessageBox &>(box).button(answer)->click();
            });
        }
        QTEST(waitForOtherInstance(window, scheduler,
                                   [&] { return runs.size() > 1 ? runs.takeFirst() : runs[0]; }),
              "goesOn");
        QVERIFY(window.isEnabled());
        QCOMPARE(user.said.filter("Another instance of").size(), answers.size());
    }

    void endsAForgottenJob()
    {
        const Sandbox sandbox;
        MemoryScheduler scheduler;
        frmGrapherMain window(scheduler, {});
        for (const QString list : {"vantrelgraphtool\n", "other\n"}) {
            for (const bool isRunning : {false, true}) {
                QVERIFY(scheduler.ended.isEmpty());
                scheduler.list = list;
                scheduler.running = isRunning;
                Looks runs = {true, false};
                QVERIFY(waitForOtherInstance(window, scheduler, [&] { return runs.takeFirst(); }));
            }
        }
        QCOMPARE(scheduler.ended, QStringList("VantrelGraphTool")); // it ran, though not registered
    }
};

QTEST_MAIN(TestInteractive)
#include "tst_Interactive.moc"
