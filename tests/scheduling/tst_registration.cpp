#include "core/Clock.h"
#include "scheduling/Registration.h"
#include "support/MemoryScheduler.h"
#include "support/Sandbox.h"

#include <QCoreApplication>
#include <QTest>

class TestRegistration : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void registersAnHourlyTask()
    {
        const Sandbox box;
        const FrozenClock clock("2024-03-31T02:30:00");
        MemoryScheduler scheduler;
        scheduler.list = "Other\n";
        QVERIFY(!unregisterTask(scheduler));
        QVERIFY(registerTask(scheduler, {"HOST\\me", "secret"}, {"--home", "/a b"}));
        const platform::ScheduledTask &task = scheduler.saved;
        QCOMPARE(task.name, "VantrelGraphTool");
        QCOMPARE(task.application,
                 QDir::toNativeSeparators(QCoreApplication::applicationFilePath()));
        QCOMPARE(task.parameters, QStringList({"/AUTO", "--home", "/a b"}));
        QCOMPARE(task.workingDirectory, box.path());
        QCOMPARE(task.comment, "This task runs the Vantrel Graphing tool once per hour and "
                               "automatically generates the graphs according to their schedule "
                               "definition.");
        QCOMPARE(task.creator, "Vantrel Graphing Tool");
        QCOMPARE(task.priorityFlags, 0);
        QCOMPARE(task.maximumRunMinutes, 60);
        QCOMPARE(task.user, "HOST\\me");
        QCOMPARE(task.password, "secret");
        QCOMPARE(task.triggers.size(), size_t(24));
        for (int hour = 0; hour < 24; ++hour) {
            const platform::DailyTrigger &trigger = task.triggers[size_t(hour)];
            QCOMPARE(trigger.interval, 1);
            QCOMPARE(trigger.begin.date(), QDate(2024, 3, 31));
            QCOMPARE(trigger.begin.time(), QTime(hour, 0, 1));
        }
        QVERIFY(unregisterTask(scheduler));
        QCOMPARE(scheduler.deleted, QStringList("VantrelGraphTool"));
        QVERIFY(!isTaskRegistered(scheduler));
    }

    void leavesAnExistingTaskAlone()
    {
        MemoryScheduler scheduler;
        scheduler.list = "a folder\\VANTRELGRAPHTOOL.job";
        QVERIFY(!registerTask(scheduler));
        QVERIFY(scheduler.saved.name.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestRegistration)
#include "tst_registration.moc"
