#include "core/Clock.h"
#include "core/Error.h"
#include "scheduling/Registration.h"
#include "support/MemoryScheduler.h"
#include "support/Sandbox.h"

#include <QCoreApplication>
#include <QDir>
#include <QTest>

class TestRegistration : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void registersAnHourlyTask();
    void leavesAnExistingTaskAlone();
    void unregisters();
};

void TestRegistration::registersAnHourlyTask()
{
    const Sandbox box;
    const FrozenClock clock(QStringLiteral("2024-03-31T02:30:00"));
    MemoryScheduler scheduler;
    scheduler.list = "Other\n";
    QVERIFY(!isTaskRegistered(scheduler));
    QVERIFY(registerTask(scheduler, {"HOST\\me", "secret"}, {"--home", "/a b"}));
    const platform::ScheduledTask &task = scheduler.saved;
    QCOMPARE(task.name, QString("VantrelGraphTool"));
    QCOMPARE(task.application, QDir::toNativeSeparators(QCoreApplication::applicationFilePath()));
    QCOMPARE(task.parameters, QStringList({"/AUTO", "--home", "/a b"}));
    QCOMPARE(task.workingDirectory, box.path());
    QCOMPARE(task.comment, QString("This task runs the Vantrel Graphing tool once per hour and "
                                   "automatically generates the graphs according to their schedule "
                                   "definition."));
    QCOMPARE(task.creator, QString("Vantrel Graphing Tool"));
    QCOMPARE(task.priorityFlags, 0);
    QCOMPARE(task.maximumRunMinutes, 60);
    QCOMPARE(task.user, QString("HOST\\me"));
    QCOMPARE(task.password, QString("secret"));
    QCOMPARE(task.triggers.size(), size_t(24));
    for (int hour = 0; hour < 24; ++hour) {
        const platform::DailyTrigger &trigger = task.triggers[size_t(hour)];
        QCOMPARE(trigger.interval, 1);
        QCOMPARE(trigger.begin.date(), QDate(2024, 3, 31));
        QCOMPARE(trigger.begin.time(), QTime(hour, 0, 1));
    }
    QVERIFY(isTaskRegistered(scheduler));
}

void TestRegistration::leavesAnExistingTaskAlone()
{
    MemoryScheduler scheduler;
    scheduler.list = "a folder\\VANTRELGRAPHTOOL.job";
    QVERIFY(!registerTask(scheduler));
    QVERIFY(scheduler.saved.name.isEmpty());
}

void TestRegistration::unregisters()
{
    const Sandbox box;
    MemoryScheduler scheduler;
    QVERIFY(!unregisterTask(scheduler));
    QVERIFY(registerTask(scheduler));
    QVERIFY(unregisterTask(scheduler));
    QCOMPARE(scheduler.deleted, QStringList("VantrelGraphTool"));
    QVERIFY(!isTaskRegistered(scheduler));
}

QTEST_GUILESS_MAIN(TestRegistration)
#include "tst_registration.moc"
