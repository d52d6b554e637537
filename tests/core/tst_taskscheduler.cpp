#include "core/Error.h"
#include "core/platform/TaskScheduler.h"
#include "core/platform/UserTimer_linux.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

using namespace platform;

namespace {

ScheduledTask hourlyTask()
{
    ScheduledTask task;
    task.name = "VantrelGraphTool";
    task.application = "/opt/a b/Vantrel\"Grapher";
    task.parameters = QStringList{"/AUTO", "--home", "/srv/100% of $HOME/it's"};
    task.workingDirectory = "/tmp";
    task.comment = "Draws 100 % of the graphs.";
    task.creator = "Vantrel Graphing Tool";
    for (int hour = 0; hour < 24; ++hour)
        task.triggers.push_back({1, QDateTime(QDate(2024, 4, 1), QTime(hour, 0, 1), Qt::UTC)});
    return task;
}

QByteArray lineOf(const QByteArray &text, const QByteArray &begin)
{
    for (const QByteArray &line : text.split('\n')) {
        if (line.startsWith(begin))
            return line;
    }
    return QByteArray();
}

} // namespace

/// The scheduled task as systemd units and as crontab lines, and the change of both: with doubles
/// of "systemctl" and "crontab" first on PATH and a home of the test's own.
class TestTaskScheduler : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void writesUnitsThatSystemdTakes();
    void startsWhatItSays();
    void gathersHours_data();
    void gathersHours();
    void leavesTheRestOfACrontab_data();
    void leavesTheRestOfACrontab();
    void refusesWhatNoTimerCanCarry();
    void usesTheUserManager();
    void usesTheCrontabElse();
    void movesToTheUserManager();
    void passesOnFailures();
    void worksWithTheRealCrontab();

private:
    void writeProgram(const QString &name, const QByteArray &script)
    {
        QFile file(m_folder->filePath("bin/" + name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\n" + script);
        file.close();
        QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }
    /// A systemctl that keeps a protocol, and makes and removes the link of an enabled timer.
    void writeSystemctl(int status)
    {
        writeProgram("systemctl", "echo \"$*\" >> " + path("calls") + "\n[ " +
                                      QByteArray::number(status) +
                                      " = 0 ] || { echo no manager >&2; exit 1; }\n"
                                      "U=$XDG_CONFIG_HOME/systemd/user; W=$U/timers.target.wants\n"
                                      "case $2 in\n"
                                      "enable) mkdir -p $W && ln -sf $U/$4 $W/$4;;\n"
                                      "disable) rm -f $W/$4;;\n"
                                      "is-active) echo activating;;\n"
                                      "esac\n");
    }
    void writeCrontab()
    {
        writeProgram("crontab", "F=" + path("crontab") +
                                    "\ncase $1 in\n"
                                    "-l) [ -f $F ] || { echo no crontab for me >&2; exit 1; };"
                                    " cat $F;;\n-r) rm $F;;\n-) cat > $F;;\nesac\n");
    }
    QByteArray path(const QString &name) const { return m_folder->filePath(name).toUtf8(); }
    QByteArray read(const QString &name) const
    {
        QFile file(m_folder->filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QByteArray m_path = qgetenv("PATH");
};

void TestTaskScheduler::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(m_folder->path()).mkdir("bin"));
    qputenv("PATH", path("bin") + ':' + m_path);
    qputenv("HOME", path("home"));
    qputenv("XDG_CONFIG_HOME", path("home/.config"));
    qputenv("XDG_RUNTIME_DIR", m_folder->path().toUtf8());
    writeSystemctl(0);
    writeCrontab();
}

void TestTaskScheduler::writesUnitsThatSystemdTakes()
{
    ScheduledTask task = hourlyTask();
    task.application = "/bin/true";
    const auto write = [&](const QString &name, const QByteArray &text) {
        QFile file(m_folder->filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text);
    };
    write("VantrelGraphTool.service", serviceUnit(task));
    write("VantrelGraphTool.timer", timerUnit(task));
    QProcess verify;
    verify.setProcessChannelMode(QProcess::MergedChannels);
    verify.start("systemd-analyze",
                 {"verify", "--user", "--man=no", m_folder->filePath("VantrelGraphTool.service"),
                  m_folder->filePath("VantrelGraphTool.timer")});
    QVERIFY2(verify.waitForFinished(60'000), qPrintable(verify.errorString()));
    const QByteArray said = verify.readAll();
    QVERIFY2(verify.exitCode() == 0 && !said.contains("VantrelGraphTool"), said.constData());

    QCOMPARE(lineOf(timerUnit(task), "OnCalendar="), QByteArray("OnCalendar=*-*-* *:00:01"));
    QCOMPARE(lineOf(serviceUnit(task), "TimeoutStartSec="), QByteArray("TimeoutStartSec=60min"));
    QCOMPARE(lineOf(serviceUnit(hourlyTask()), "ExecStart="),
             QByteArray("ExecStart=\"/opt/a b/Vantrel\\\"Grapher\" \"/AUTO\" \"--home\" "
                        "\"/srv/100%% of $$HOME/it's\""));
}

/// The crontab's command, run by a shell as cron does it, gets the arguments unchanged.
void TestTaskScheduler::startsWhatItSays()
{
    ScheduledTask task = hourlyTask();
    task.application = m_folder->filePath("bin/it's a tool");
    writeProgram("it's a tool", "pwd; for word; do echo \"<$word>\"; done\n");
    QByteArray command = lineOf(withTask("", task), "0 * * * * sleep 1; ");
    QVERIFY(!command.isEmpty());
    command.remove(0, int(sizeof "0 * * * * sleep 1; ") - 1);
    command.replace("\\%", "%"); // as cron does
    QProcess shell;
    shell.start("sh", {"-c", QString::fromUtf8(command)});
    QVERIFY(shell.waitForFinished());
    QCOMPARE(shell.readAll(), QByteArray("/tmp\n</AUTO>\n<--home>\n</srv/100% of $HOME/it's>\n"));
}

void TestTaskScheduler::gathersHours_data()
{
    QTest::addColumn<QList<QTime>>("times");
    QTest::addColumn<QByteArray>("calendar");
    QTest::addColumn<QByteArray>("cron");
    QTest::newRow("one") << QList<QTime>{QTime(7, 30)} << QByteArray("*-*-* 7:30:00")
                         << QByteArray("30 7 * * * cd ");
    QTest::newRow("two hours") << QList<QTime>{QTime(19, 0, 5), QTime(7, 0, 5)}
                               << QByteArray("*-*-* 7,19:00:05")
                               << QByteArray("0 7,19 * * * sleep 5; cd ");
}

void TestTaskScheduler::gathersHours()
{
    QFETCH(QList<QTime>, times);
    QFETCH(QByteArray, cron);
    ScheduledTask task = hourlyTask();
    task.triggers.clear();
    for (const QTime &time : times)
        task.triggers.push_back({1, QDateTime(QDate(2024, 4, 1), time, Qt::UTC)});
    QTEST(lineOf(timerUnit(task), "OnCalendar=").mid(11), "calendar");
    QVERIFY(withTask("", task).contains('\n' + cron));
}

void TestTaskScheduler::leavesTheRestOfACrontab_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");
    const QByteArray latin = "# \xE4\n1 2 * * * x\n";
    QTest::newRow("empty") << QByteArray() << QByteArray();
    QTest::newRow("other lines") << latin << latin;
    QTest::newRow("no last line break") << QByteArray("1 2 * * * x") << QByteArray("1 2 * * * x\n");
    QTest::newRow("longer name") << QByteArray("# begin of task VantrelGraphTool2\n")
                                 << QByteArray("# begin of task VantrelGraphTool2\n");
}

void TestTaskScheduler::leavesTheRestOfACrontab()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    const ScheduledTask task = hourlyTask();
    const QByteArray with = withTask(before, task);
    QVERIFY(with.startsWith(after));
    QVERIFY(platform::tasksOf(with).contains(task.name));
    QCOMPARE(withTask(with, task), with); // replaced, not doubled
    QCOMPARE(withoutTask(with, task.name), after);
    QCOMPARE(withoutTask(with + "9 9 * * * y\n", task.name), after + "9 9 * * * y\n");
    QVERIFY(linesOf(with, task.name).contains("0 * * * * sleep 1; cd '/tmp' && exec "));
}

void TestTaskScheduler::refusesWhatNoTimerCanCarry()
{
    ScheduledTask task = hourlyTask();
    task.workingDirectory = "/srv/a\nb";
    QVERIFY_EXCEPTION_THROWN(serviceUnit(task), Error);
    QVERIFY_EXCEPTION_THROWN(withTask("", task), Error);
    // Half a block: cutting to the end would take what is not ours.
    QVERIFY_EXCEPTION_THROWN(
        withoutTask("# begin of task VantrelGraphTool\n1 2 * * * x\n", "VantrelGraphTool"), Error);
}

void TestTaskScheduler::usesTheUserManager()
{
    const auto scheduler = platform::systemTaskScheduler();
    QCOMPARE(scheduler->taskList(), QString());
    QVERIFY_EXCEPTION_THROWN(scheduler->openTask("VantrelGraphTool"), Error);
    ScheduledTask task = hourlyTask();
    scheduler->saveTask(task);
    QCOMPARE(scheduler->taskList(), QString("VantrelGraphTool"));
    QCOMPARE(read("home/.config/systemd/user/VantrelGraphTool.timer"), timerUnit(task));
    QCOMPARE(read("home/.config/systemd/user/VantrelGraphTool.service"), serviceUnit(task));
    QVERIFY(read("calls").contains(
        "--user daemon-reload\n--user enable --now VantrelGraphTool.timer\n"));
    QVERIFY(scheduler->openTask(task.name).commandLine.startsWith("\"/opt/a b/"));
    QVERIFY(scheduler->isRunning(task.name));
    scheduler->endTask(task.name);
    QVERIFY(read("calls").endsWith("--user stop VantrelGraphTool.service\n"));
    QVERIFY(!QFile::exists(path("crontab")));

    scheduler->deleteTask(task.name);
    QCOMPARE(scheduler->taskList(), QString());
    QVERIFY(read("calls").contains("--user disable --now VantrelGraphTool.timer\n"));
    QCOMPARE(QDir(path("home/.config/systemd/user")).entryList(QDir::Files), QStringList());
    QVERIFY_EXCEPTION_THROWN(scheduler->deleteTask(task.name), Error);
}

void TestTaskScheduler::usesTheCrontabElse()
{
    writeSystemctl(1);
    const auto scheduler = platform::systemTaskScheduler();
    const ScheduledTask task = hourlyTask();
    scheduler->saveTask(task);
    QCOMPARE(read("crontab"), withTask("", task));
    QCOMPARE(scheduler->taskList(), QString("VantrelGraphTool"));
    QVERIFY(scheduler->openTask(task.name).commandLine.contains("0 * * * * sleep 1; "));
    QVERIFY(!scheduler->isRunning(task.name));
    QVERIFY(!QFile::exists(path("home/.config/systemd/user/VantrelGraphTool.timer")));
    scheduler->deleteTask(task.name);
    QVERIFY(!QFile::exists(path("crontab")));
}

void TestTaskScheduler::movesToTheUserManager()
{
    writeSystemctl(1);
    const auto scheduler = platform::systemTaskScheduler();
    scheduler->saveTask(hourlyTask());
    writeSystemctl(0);
    scheduler->saveTask(hourlyTask());
    QVERIFY(!QFile::exists(path("crontab")));
    QCOMPARE(scheduler->taskList(), QString("VantrelGraphTool"));
}

void TestTaskScheduler::passesOnFailures()
{
    const auto scheduler = platform::systemTaskScheduler();
    ScheduledTask task = hourlyTask();
    task.user = "DOMAIN\\somebody-else";
    QVERIFY_EXCEPTION_THROWN(scheduler->saveTask(task), Error);
    writeProgram("crontab", "echo the spool is gone >&2; exit 1\n");
    try {
        scheduler->taskList();
        QFAIL("no error");
    } catch (const Error &error) {
        QVERIFY2(error.description.contains("the spool is gone"), qPrintable(error.description));
    }
}

/// In a mount namespace, so that the tester's own crontab is neither seen nor changed.
void TestTaskScheduler::worksWithTheRealCrontab()
{
    if (::geteuid() != 0)
        QSKIP("only root can give crontab(1) a spool of the test's own");
    QFile added(m_folder->filePath("added"));
    QVERIFY(added.open(QIODevice::WriteOnly));
    added.write(withTask("5 4 * * * keep\n", hourlyTask()));
    added.close();
    QVERIFY(QDir(m_folder->path()).mkdir("spool"));
    QProcess shell;
    shell.setProcessChannelMode(QProcess::MergedChannels);
    shell.start("unshare", {"--mount", "sh", "-ec",
                            "mount --bind " + m_folder->filePath("spool") +
                                " /var/spool/cron/crontabs; PATH=/usr/bin:/bin; crontab - < " +
                                m_folder->filePath("added") + "; crontab -l"});
    QVERIFY(shell.waitForFinished());
    const QByteArray listed = shell.readAll();
    QVERIFY2(shell.exitCode() == 0, listed.constData()); // taken: no error in its lines
    QCOMPARE(listed, withTask("5 4 * * * keep\n", hourlyTask()));
}

QTEST_GUILESS_MAIN(TestTaskScheduler)
#include "tst_taskscheduler.moc"
