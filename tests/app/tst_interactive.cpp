#include "app/Interactive.h"
#include "support/Answers.h"
#include "support/MemoryScheduler.h"
#include "support/Rows.h"
#include "support/Sandbox.h"
#include "ui/MainWindow.h"

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
        row("gone after a retry", {true, true, false}, {retry}, true);
        row("gone after two", {true, true, true, false}, {retry, retry}, true);
        row("cancelled", {true}, {cancel}, false);
        row("cancelled as it went", {true, true, false}, {cancel}, false);
        row("retried, then cancelled", {true}, {retry, cancel}, false);
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
        QVERIFY(user.allDone() && window.isEnabled());
        QCOMPARE(user.said,
                 QStringList(answers.size(),
                             "Vantrel Graphing Tool: Another instance of Vantrel Graphing Tool is "
                             "currently running.\nYou may wait for the previous instance to "
                             "complete processing"));
    }

    void endsAForgottenJob_data()
    {
        const Rows<QString, bool, QStringList> row("list", "running", "ended");
        row("registered", "vantrelgraphtool\n", true, {});
        row("runs, though not registered", "other\n", true, {"VantrelGraphTool"});
        row("does not run", "", false, {});
    }
    void endsAForgottenJob()
    {
        const Sandbox sandbox;
        MemoryScheduler scheduler;
        QFETCH(QString, list);
        scheduler.list = list;
        QFETCH(bool, running);
        scheduler.running = running;
        frmGrapherMain window(scheduler, {});
        Looks runs = {true, false};
        QVERIFY(waitForOtherInstance(window, scheduler, [&] { return runs.takeFirst(); }));
        QTEST(scheduler.ended, "ended");
    }
};

QTEST_MAIN(TestInteractive)
#include "tst_interactive.moc"
