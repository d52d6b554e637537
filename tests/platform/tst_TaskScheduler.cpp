#include "platform/TaskScheduler.h"
#include "platform/UserTimer_linux.h"
#include "support/Ended.h"
#include "support/Errors.h"
#include "support/Sandbox.h"

#include <QTest>

using namespace platform;

namespace {
const QString timerFile = "home/.config/systemd/user/VantrelGraphTool.timer";
const QString serviceFile = "home/.config/systemd/user/VantrelGraphTool.service";

ScheduledTask taskAt(const QList<QTime> &times)
{
    ScheduledTask task;
    task.name = "VantrelGraphTool";
    task.application = "/opt/a b/Vantrel\"Grapher";
    task.parameters = QStringList{"/AUTO", "--home", "/srv/100% of $HOME/it's"};
    task.workingDirectory = "/tmp";
    task.comment = "Draws 100 % of the graphs.";
    task.creator = "Vantrel Graphing Tool";
    for (const QTime &time : times)
        task.triggers.push_back({1, QDateTime(QDate(2024, 4, 1), time, Qt::UTC)});
    return task;
}

ScheduledTask hourlyTask()
{
    QList<QTime> times;
    for (int hour = 0; hour < 24; ++hour)
        times.append(QTime(hour, 0, 1));
    return taskAt(times);
}

/// What follows the line's beginning.
QByteArray restOfLine(const QByteArray &text, const QByteArray &begin)
{
    for (const QByteArray &line : text.split('\n')) {
        if (line.startsWith(begin))
            return line.mid(begin.size());
    }
    return "no such line";
}

} // namespace

/// The scheduled task as systemd units and as crontab lines, and the change of both: with doubles
/// of "systemctl" and "crontab" first on PATH and a home of the test's own.
class TestTaskScheduler : public QObject
{
    Q_OBJECT

    const ProgramState m_state;

    std::unique_ptr<Sandbox> box;
    QByteArray searchPath = qgetenv("PATH");

    void writeProgram(const QString &name, const QByteArray &script)
    {
        box->write("bin/" + name, "#!/bin/sh\n" + script);
        QFile::setPermissions(box->path("bin/" + name), QFile::ReadOwner | QFile::ExeOwner);
    }
    /// A systemctl that keeps a protocol, and makes and removes the link of an enabled timer.
    void writeSystemctl(int status)
    {
        writeProgram("systemctl", "echo \"$*\" >> $HOME/calls\n[ " + QByteArray::number(status) +
                                      " = 0 ] || { echo no manager >&2; exit 1; }\n"
                                      "U=$XDG_CONFIG_HOME/systemd/user; W=$U/timers.target.wants\n"
                                      "case $2 in\n"
                                      "enable) mkdir -p $W && ln -sf $U/$4 $W/$4;;\n"
                                      "disable) rm -f $W/$4;;\n"
                                      "is-active) echo activating;;\n"
                                      "esac\n");
    }

private Q_SLOTS:
    void init()
    {
        box = std::make_unique<Sandbox>();
        QVERIFY(QDir(box->path()).mkpath("home"));
        qputenv("PATH", box->path("bin").toUtf8() + ':' + searchPath);
        qputenv("HOME", box->path("home").toUtf8());
        qputenv("XDG_CONFIG_HOME", box->path("home/.config").toUtf8());
        qputenv("XDG_RUNTIME_DIR", box->path().toUtf8());
        writeSystemctl(0);
        writeProgram("crontab", "F=$HOME/crontab\n"
                                "case $1 in\n"
                                "-l) [ -f $F ] || { echo no crontab for me >&2; exit 1; };"
                                " cat $F;;\n"
                                "-r) rm $F;;\n"
                                "-) cat > $F;;\n"
                                "esac\n");
    }

    void writesUnitsThatSystemdTakes()
    {
        ScheduledTask task = hourlyTask();
        QCOMPARE(restOfLine(serviceUnit(task), "ExecStart="),
                 "\"/opt/a b/Vantrel\\\"Grapher\" \"/AUTO\" \"--home\" "
                 "\"/srv/100%% of $$HOME/it's\"");
        QCOMPARE(restOfLine(serviceUnit(task), "TimeoutStartSec="), "60min");
        // What the package's own unit may not do this one may not either.
        QFile packaged(QFINDTESTDATA("../../packaging/VantrelGraphTool.service"));
        QVERIFY(packaged.open(QIODevice::ReadOnly));
        const QByteArray unit = packaged.readAll();
        const qsizetype restrictions = unit.indexOf("NoNewPrivileges=yes\n");
        QVERIFY(restrictions > 0 && serviceUnit(task).endsWith(unit.mid(restrictions)));
        task.application = "/bin/true";
        box->write(serviceFile, serviceUnit(task));
        box->write(timerFile, timerUnit(task));
        const Ended said = run("systemd-analyze", {"verify", "--user", "--man=no",
                                                   box->path(serviceFile), box->path(timerFile)});
        QVERIFY2(said.status == 0 && !said.all().contains("VantrelGraphTool"),
                 qPrintable(said.all()));
    }

    /// The crontab's command, run by a shell as cron does it, gets the arguments unchanged.
    void startsWhatItSays()
    {
        ScheduledTask task = hourlyTask();
        task.application = box->path("bin/it's a tool");
        writeProgram("it's a tool", "pwd; for word; do echo \"<$word>\"; done\n");
        QByteArray command = restOfLine(withTask("", task), "0 * * * * sleep 1; ");
        command.replace("\\%", "\x01").replace('%', '\n').replace('\x01', '%'); // as cron does
        QCOMPARE(run("sh", {"-c", QString::fromUtf8(command)}).all(),
                 "/tmp\n</AUTO>\n<--home>\n</srv/100% of $HOME/it's>\n");
    }

    void gathersHours()
    {
        const auto calendar = [](const ScheduledTask &task) {
            return restOfLine(timerUnit(task), "OnCalendar=");
        };
        QCOMPARE(calendar(hourlyTask()), "*-*-* *:00:01");
        QCOMPARE(calendar(taskAt({QTime(7, 30)})), "*-*-* 7:30:00");
        const ScheduledTask twice = taskAt({QTime(19, 0, 5), QTime(7, 0, 5)});
        QCOMPARE(calendar(twice), "*-*-* 7,19:00:05");
        QVERIFY(withTask("", twice).contains("\n0 7,19 * * * sleep 5; cd "));
    }

    void leavesTheRestOfACrontab()
    {
        const ScheduledTask task = hourlyTask();
        for (const char *const text :
             {"", "# \xE4\n1 2 * * * x\n", "1 2 * * * x", "# begin of task VantrelGraphTool2\n"}) {
            const QByteArray before = text;
            const bool isOpen = !before.isEmpty() && !before.endsWith('\n');
            const QByteArray after = isOpen ? before + '\n' : before;
            const QByteArray with = withTask(before, task);
            QVERIFY(with.startsWith(after));
            QVERIFY(tasksOf(with).contains(task.name));
            QCOMPARE(withTask(with, task), with); // replaced, not doubled
            QCOMPARE(withoutTask(with, task.name), after);
            QCOMPARE(withoutTask(with + "9 9 * * * y\n", task.name), after + "9 9 * * * y\n");
            QVERIFY(linesOf(with, task.name).contains("0 * * * * sleep 1; cd '/tmp' && exec "));
        }
    }

    void carriesTheDirectoryOrRefuses()
    {
        ScheduledTask task = hourlyTask();
        for (const QString folder : {"/tmp", "/srv/it's 100% '\\%' \\"}) {
            task.workingDirectory = folder;
            QCOMPARE(directoryOfService(serviceUnit(task)), folder);
            QCOMPARE(directoryOfLines(linesOf(withTask("", task), task.name)), folder);
        }
        task.workingDirectory = "/srv/a\nb";
        QVERIFY_EXCEPTION_THROWN(serviceUnit(task), Error);
        QVERIFY_EXCEPTION_THROWN(withTask("", task), Error);
        // Half a block: cutting to the end would take what is not ours.
        const QByteArray half = "# begin of task VantrelGraphTool\n1 2 * * * x\n";
        QVERIFY_EXCEPTION_THROWN(withoutTask(half, task.name), Error);
    }

    void usesTheUserManager()
    {
        const auto scheduler = systemTaskScheduler();
        const ScheduledTask task = hourlyTask();
        QCOMPARE(scheduler->taskList(), "");
        QVERIFY_EXCEPTION_THROWN(scheduler->openTask(task.name), Error);
        scheduler->saveTask(task);
        QCOMPARE(scheduler->taskList(), "VantrelGraphTool");
        QCOMPARE(box->read(timerFile), timerUnit(task));
        QCOMPARE(box->read(serviceFile), serviceUnit(task));
        QVERIFY(box->read("home/calls")
                    .contains("--user daemon-reload\n"
                              "--user enable --now VantrelGraphTool.timer\n"));
        QVERIFY(scheduler->openTask(task.name).commandLine.startsWith("\"/opt/a b/"));
        QVERIFY(scheduler->isRunning(task.name));
        scheduler->endTask(task.name);
        QVERIFY(box->read("home/calls").endsWith("--user stop VantrelGraphTool.service\n"));
        QVERIFY(!fileExists(box->path("home/crontab")));

        scheduler->deleteTask(task.name);
        QCOMPARE(scheduler->taskList(), "");
        QVERIFY(box->read("home/calls").contains("disable --now VantrelGraphTool.timer\n"));
        QVERIFY(!fileExists(box->path(timerFile)) && !fileExists(box->path(serviceFile)));
        QVERIFY_EXCEPTION_THROWN(scheduler->deleteTask(task.name), Error);
        QVERIFY(scheduler->isRunning(task.name)); // a job outlives its registration
    }

    /// And moves to the user's manager once there is one.
    void usesTheCrontabElse()
    {
        writeSystemctl(1);
        const auto scheduler = systemTaskScheduler();
        const ScheduledTask task = hourlyTask();
        scheduler->saveTask(task);
        QCOMPARE(box->read("home/crontab"), withTask("", task));
        QCOMPARE(scheduler->taskList(), task.name);
        QCOMPARE(scheduler->openTask(task.name).workingDirectory, "/tmp");
        QVERIFY(!scheduler->isRunning(task.name) && !fileExists(box->path(timerFile)));
        scheduler->deleteTask(task.name);
        QVERIFY(!fileExists(box->path("home/crontab")));

        scheduler->saveTask(task);
        writeSystemctl(0);
        scheduler->saveTask(task);
        QVERIFY(!fileExists(box->path("home/crontab")));
        QCOMPARE(scheduler->taskList(), task.name);
    }

    void passesOnFailures()
    {
        const auto scheduler = systemTaskScheduler();
        ScheduledTask task = hourlyTask();
        task.user = "DOMAIN\\somebody-else";
        QVERIFY_EXCEPTION_THROWN(scheduler->saveTask(task), Error);
        writeProgram("crontab", "echo the spool is gone >&2; exit 1\n");
        QCOMPARE(scheduler->taskList(), ""); // cron is not needed
        writeSystemctl(1);
        const Error error = errorOf([&] { scheduler->taskList(); });
        QVERIFY2(error.description.contains("the spool is gone"), error.what());
    }
};

QTEST_GUILESS_MAIN(TestTaskScheduler)
#include "tst_TaskScheduler.moc"
