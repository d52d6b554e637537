#include "base/Error.h"
#include "base/Files.h"
#include "platform/TaskScheduler.h"
#include "platform/UserTimer_linux.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

#include <pwd.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr int timeOut = 60'000; // milliseconds for one call of a system program

struct Answer
{
    int status = -1; ///< -1: there is no such program, or it crashed or timed out
    QByteArray output;
    QString errors;
};

Answer ask(const QString &program, const QStringList &arguments, const QByteArray &input = {})
{
    QProcess process;
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(timeOut) || process.exitStatus() != QProcess::NormalExit) {
        const QString why = process.errorString();
        process.kill();
        process.waitForFinished();
        return {-1, {}, why};
    }
    return {process.exitCode(), process.readAllStandardOutput(),
            QString::fromLocal8Bit(process.readAllStandardError()).trimmed()};
}

/// Throws Error with the program's own message when it fails.
void require(const QString &program, const QStringList &arguments, const QByteArray &input = {})
{
    const Answer answer = ask(program, arguments, input);
    if (answer.status != 0)
        throw Error(DeviceIO, QStringLiteral("%1 %2: %3")
                                  .arg(program, arguments.join(u' '),
                                       answer.errors.isEmpty()
                                           ? QStringLiteral("status %1").arg(answer.status)
                                           : answer.errors));
}

/// The current user's log-in name.
QString logInName()
{
    const passwd *entry = ::getpwuid(::geteuid());
    return entry ? QString::fromLocal8Bit(entry->pw_name) : qEnvironmentVariable("USER");
}

void requireOwnAccount(const QString &user)
{
    // A domain before the name has no meaning here.
    const QString name = user.mid(user.lastIndexOf(u'\\') + 1);
    if (!name.isEmpty() && name != logInName())
        throw Error(PermissionDenied,
                    QStringLiteral("The timers of another user ('%1') cannot be changed; log in "
                                   "as that user")
                        .arg(name));
}

/// The user's own unit files, and the timers that are enabled.
class SystemdTimers
{
public:
    static bool answers()
    {
        return ask(QStringLiteral("systemctl"),
                   {QStringLiteral("--user"), QStringLiteral("show-environment")})
                   .status == 0;
    }

    QStringList names() const
    {
        QStringList names;
        // Dangling links count too, so that they can be deleted.
        const QStringList files = QDir(wants()).entryList(
            {QStringLiteral("*.timer")}, QDir::Files | QDir::System | QDir::Hidden);
        for (const QString &file : files)
            names.append(file.chopped(6));
        return names;
    }

    void read(ScheduledTask &task) const
    {
        // The unit may be the user's own or from a package.
        const QString folder = QFileInfo(QFile::symLinkTarget(link(task.name))).path();
        const QByteArray unit = readFile(folder + u'/' + task.name + QLatin1String(".service"));
        task.workingDirectory = directoryOfService(unit);
        for (const QByteArray &line : unit.split('\n')) {
            if (line.startsWith("ExecStart="))
                task.commandLine = QString::fromUtf8(line.mid(10));
        }
    }

    void save(const ScheduledTask &task) const
    {
        if (!QDir().mkpath(folder()))
            throw Error(PathNotFound, QStringLiteral("Cannot create folder '%1'").arg(folder()));
        saveFile(folder() + task.name + QLatin1String(".service"), serviceUnit(task));
        saveFile(folder() + task.name + QLatin1String(".timer"), timerUnit(task));
        require(QStringLiteral("systemctl"),
                {QStringLiteral("--user"), QStringLiteral("daemon-reload")});
        require(QStringLiteral("systemctl"),
                {QStringLiteral("--user"), QStringLiteral("enable"), QStringLiteral("--now"),
                 task.name + QLatin1String(".timer")});
    }

    void remove(const QString &name) const
    {
        const bool live = answers();
        if (live)
            require(QStringLiteral("systemctl"),
                    {QStringLiteral("--user"), QStringLiteral("disable"), QStringLiteral("--now"),
                     name + QLatin1String(".timer")});
        for (const QString &file : {link(name), folder() + name + QLatin1String(".timer"),
                                    folder() + name + QLatin1String(".service")}) {
            if ((QFileInfo::exists(file) || QFileInfo(file).isSymLink()) && !QFile::remove(file))
                throw Error(PermissionDenied, QStringLiteral("Cannot remove '%1'").arg(file));
        }
        if (live)
            require(QStringLiteral("systemctl"),
                    {QStringLiteral("--user"), QStringLiteral("daemon-reload")});
    }

    bool isRunning(const QString &name) const
    {
        const QByteArray state =
            ask(QStringLiteral("systemctl"), {QStringLiteral("--user"), QStringLiteral("is-active"),
                                              name + QLatin1String(".service")})
                .output.trimmed();
        return state == "active" || state == "activating";
    }

    void end(const QString &name) const
    {
        require(QStringLiteral("systemctl"), {QStringLiteral("--user"), QStringLiteral("stop"),
                                              name + QLatin1String(".service")});
    }

private:
    static QString folder()
    {
        return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
               QLatin1String("/systemd/user/");
    }
    static QString wants() { return folder() + QLatin1String("timers.target.wants/"); }
    static QString link(const QString &name) { return wants() + name + QLatin1String(".timer"); }
};

class Crontab
{
public:
    static bool isThere()
    {
        return !QStandardPaths::findExecutable(QStringLiteral("crontab")).isEmpty();
    }

    QByteArray read() const
    {
        if (!isThere())
            return QByteArray();
        const Answer answer = ask(QStringLiteral("crontab"), {QStringLiteral("-l")});
        if (answer.status == 0)
            return answer.output;
        // A user without access to cron has no crontab, and systemd is enough.
        if (answer.errors.contains(QLatin1String("no crontab for")) || SystemdTimers::answers())
            return QByteArray();
        throw Error(DeviceIO, QStringLiteral("crontab -l: ") + answer.errors);
    }

    void write(const QByteArray &text) const
    {
        if (text.isEmpty())
            require(QStringLiteral("crontab"), {QStringLiteral("-r")});
        else
            require(QStringLiteral("crontab"), {QStringLiteral("-")}, text);
    }
};

class LinuxTaskScheduler : public TaskScheduler
{
public:
    QString taskList() override
    {
        QStringList names = m_timers.names() + tasksOf(m_crontab.read());
        names.removeDuplicates();
        return names.join(u'\n');
    }

    ScheduledTask createTask(const QString &name) override
    {
        ScheduledTask task;
        task.name = name;
        return task;
    }

    ScheduledTask openTask(const QString &name) override
    {
        ScheduledTask task = createTask(name);
        if (m_timers.names().contains(name)) {
            m_timers.read(task);
        } else if (const QByteArray lines = linesOf(m_crontab.read(), name); !lines.isEmpty()) {
            task.commandLine = QString::fromUtf8(lines.trimmed());
            task.workingDirectory = directoryOfLines(lines);
        } else {
            throw notThere(name);
        }
        return task;
    }

    void saveTask(const ScheduledTask &task) override
    {
        requireOwnAccount(task.user);
        const bool systemd = SystemdTimers::answers();
        if (!systemd && !Crontab::isThere())
            throw Error(FileNotFound,
                        QStringLiteral("There is neither a systemd user manager nor a program "
                                       "'crontab'"));
        const QByteArray crontab = m_crontab.read();
        if (systemd) {
            m_timers.save(task);
            if (tasksOf(crontab).contains(task.name))
                m_crontab.write(withoutTask(crontab, task.name));
        } else {
            m_crontab.write(withTask(crontab, task));
            if (m_timers.names().contains(task.name))
                m_timers.remove(task.name);
        }
    }

    void deleteTask(const QString &name) override
    {
        const QByteArray crontab = m_crontab.read();
        const bool inTimers = m_timers.names().contains(name);
        const bool inCrontab = tasksOf(crontab).contains(name);
        if (!inTimers && !inCrontab)
            throw notThere(name);
        if (inTimers)
            m_timers.remove(name);
        if (inCrontab)
            m_crontab.write(withoutTask(crontab, name));
    }

    bool isRunning(const QString &name) override
    {
        return m_timers.isRunning(name); // also when its timer is gone
    }

    void endTask(const QString &name) override { m_timers.end(name); }

    QString advice() override
    {
        const QString name = logInName();
        if (!SystemdTimers::answers() ||
            QFileInfo::exists(QLatin1String("/var/lib/systemd/linger/") + name))
            return QString();
        return QStringLiteral("The timer runs while you are logged in. To have it run always:\n"
                              "    loginctl enable-linger %1")
            .arg(name);
    }

    bool needsAccount() override { return false; }

private:
    static Error notThere(const QString &name)
    {
        return Error(ItemNotFound, QStringLiteral("There is no scheduled task '%1'").arg(name));
    }

    SystemdTimers m_timers;
    Crontab m_crontab;
};

} // namespace

std::unique_ptr<TaskScheduler> systemTaskScheduler()
{
    return std::make_unique<LinuxTaskScheduler>();
}

} // namespace platform
