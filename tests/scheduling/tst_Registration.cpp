#include "base/Clock.h"
#include "scheduling/Registration.h"
#include "support/MemoryScheduler.h"
#include "support/Sandbox.h"

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
        QCOMPARE(task.parameters, QStringList({"/AUTO", "--home", "/a b"}));
        QCOMPARE(task.workingDirectory, box.path());
        QCOMPARE(task.user + ' ' + task.password, "HOST\\me secret");
        QCOMPARE(task.triggers.size(), size_t(24));
        for (int hour = 0; hour < 24; ++hour)
            QCOMPARE(task.triggers[size_t(hour)].begin,
                     QDateTime(QDate(2024, 3, 31), QTime(hour, 0, 1), Qt::UTC));
        QVERIFY(unregisterTask(scheduler));
        QCOMPARE(scheduler.deleted, QStringList("VantrelGraphTool"));
        QVERIFY(!isTaskRegistered(scheduler));
        scheduler.list = "a folder\\VANTRELGRAPHTOOL.job";
        scheduler.saved = {};
        QVERIFY(!registerTask(scheduler) && scheduler.saved.name.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestRegistration)
#include "tst_Registration.moc"
