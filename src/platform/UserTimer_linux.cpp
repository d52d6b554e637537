#include "platform/UserTimer_linux.h"

#include "base/Error.h"

#include <QMap>

namespace platform {

namespace {

const QByteArray beginMark = "# begin of task ";
const QByteArray endMark = "# end of task ";

void requireOneLine(const QString &text)
{
    for (const QChar character : text) {
        if (character.category() == QChar::Other_Control)
            throw Error(InvalidFileFormat,
                        QStringLiteral("'%1' holds a control character").arg(text));
    }
}

/// A word of a systemd command line. "$" is special in arguments, not in the program's path.
QString systemdWord(QString word, bool isProgram)
{
    requireOneLine(word);
    word.replace(u'\\', QLatin1String("\\\\")).replace(u'"', QLatin1String("\\\""));
    word.replace(u'%', QLatin1String("%%"));
    if (!isProgram)
        word.replace(u'$', QLatin1String("$$"));
    return u'"' + word + u'"';
}

QString systemdText(QString text)
{
    requireOneLine(text);
    return text.replace(u'\\', QLatin1String("\\\\")).replace(u'%', QLatin1String("%%"));
}

/// A word of a shell command in a crontab, where "%" is a line break unless escaped.
QString cronWord(QString word)
{
    requireOneLine(word);
    word.replace(u'\'', QLatin1String("'\\''")).replace(u'%', QLatin1String("'\\%'"));
    return u'\'' + word + u'\'';
}

/// Triggers that differ only in the hour: one time with several hours.
struct HourlyTimes
{
    int interval = 1;
    QTime time;
    QStringList hours;

    QString hourText() const { return hours.size() == 24 ? QStringLiteral("*") : hours.join(u','); }
};

std::vector<HourlyTimes> gathered(const std::vector<DailyTrigger> &triggers)
{
    QMap<std::pair<int, QTime>, QMap<int, bool>> hours;
    for (const DailyTrigger &trigger : triggers) {
        const QTime time = trigger.begin.time();
        hours[{trigger.interval, QTime(0, time.minute(), time.second())}][time.hour()] = true;
    }
    std::vector<HourlyTimes> result;
    for (auto entry = hours.cbegin(); entry != hours.cend(); ++entry) {
        HourlyTimes times{entry.key().first, entry.key().second, {}};
        for (const int hour : entry->keys())
            times.hours.append(QString::number(hour));
        result.push_back(times);
    }
    return result;
}

QString twoDigits(int number)
{
    return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
}

/// A task's lines in a crontab, as offsets.
struct TaskLines
{
    qsizetype begin = -1; ///< of the begin mark; -1: there are none
    qsizetype inner = 0;  ///< after that mark
    qsizetype innerEnd = 0;
    qsizetype end = 0; ///< after the end mark
};

TaskLines taskLines(const QByteArray &crontab, const QString &name)
{
    const QByteArray begin = beginMark + name.toUtf8() + '\n';
    const QByteArray end = endMark + name.toUtf8();
    TaskLines block;
    qsizetype at = crontab.startsWith(begin) ? 0 : crontab.indexOf('\n' + begin);
    if (at < 0)
        return block;
    block.begin = at == 0 && crontab.startsWith(begin) ? 0 : at + 1;
    block.inner = block.begin + begin.size();
    block.innerEnd = crontab.indexOf(end, block.inner);
    if (block.innerEnd < 0)
        throw Error(InvalidFileFormat,
                    QStringLiteral("The crontab has the line '%1' but not '%2'; please repair it "
                                   "with 'crontab -e'")
                        .arg(QString::fromUtf8(begin.trimmed()), QString::fromUtf8(end)));
    block.end = block.innerEnd + end.size();
    if (block.end < crontab.size() && crontab[block.end] == '\n')
        ++block.end;
    return block;
}

/// The text between two others; empty when they are not found.
QByteArray valueIn(const QByteArray &text, const QByteArray &before, const QByteArray &after)
{
    const qsizetype at = text.indexOf(before);
    const qsizetype begin = at + before.size();
    const qsizetype end = at < 0 ? -1 : text.indexOf(after, begin);
    return end < 0 ? QByteArray() : text.mid(begin, end - begin);
}

/// What a run may do, as in the package's own unit: read and write files anywhere, talk to database
/// servers and to the log, and look at the processes of its own name.
const QByteArray restrictions = "NoNewPrivileges=yes\n"
                                "LockPersonality=yes\n"
                                "RestrictAddressFamilies=AF_UNIX AF_INET AF_INET6\n"
                                "RestrictNamespaces=yes\n"
                                "RestrictRealtime=yes\n"
                                "RestrictSUIDSGID=yes\n"
                                "SystemCallArchitectures=native\n"
                                "SystemCallFilter=@system-service\n"
                                "SystemCallErrorNumber=EPERM\n";

} // namespace

QByteArray serviceUnit(const ScheduledTask &task)
{
    QString command = systemdWord(task.application, true);
    for (const QString &parameter : task.parameters)
        command += u' ' + systemdWord(parameter, false);
    return QStringLiteral("[Unit]\n"
                          "Description=%1\n"
                          "Documentation=man:VantrelGrapher(1)\n"
                          "\n"
                          "[Service]\n"
                          "Type=oneshot\n"
                          "ExecStart=%2\n"
                          "WorkingDirectory=%3\n"
                          "# Longer runs are cancelled.\n"
                          "TimeoutStartSec=%4min\n"
                          "# Another instance was at work: no failure.\n"
                          "SuccessExitStatus=3\n"
                          "StandardOutput=journal\n"
                          "StandardError=journal\n"
                          "SyslogIdentifier=%5\n")
               .arg(systemdText(task.comment), command, systemdText(task.workingDirectory),
                    QString::number(task.maximumRunMinutes), systemdText(task.name))
               .toUtf8() +
           restrictions;
}

QByteArray timerUnit(const ScheduledTask &task)
{
    QString text = QStringLiteral("[Unit]\nDescription=%1\n\n[Timer]\n")
                       .arg(systemdText(task.creator) + QLatin1String(", every hour"));
    for (const HourlyTimes &times : gathered(task.triggers)) {
        if (times.interval != 1)
            throw Error(TypeMismatch,
                        QStringLiteral("A timer here starts every day, it cannot be every %1 days")
                            .arg(times.interval));
        text += QStringLiteral("OnCalendar=*-*-* %1:%2:%3\n")
                    .arg(times.hourText(), twoDigits(times.time.minute()),
                         twoDigits(times.time.second()));
    }
    return (text + QLatin1String("AccuracySec=1s\n\n[Install]\nWantedBy=timers.target\n")).toUtf8();
}

QByteArray withoutTask(const QByteArray &crontab, const QString &name)
{
    const TaskLines block = taskLines(crontab, name);
    return block.begin < 0 ? crontab : crontab.left(block.begin) + crontab.mid(block.end);
}

QByteArray withTask(const QByteArray &crontab, const ScheduledTask &task)
{
    requireOneLine(task.name);
    requireOneLine(task.comment);
    QString command = QLatin1String("cd ") + cronWord(task.workingDirectory) +
                      QLatin1String(" && exec ") + cronWord(task.application);
    for (const QString &parameter : task.parameters)
        command += u' ' + cronWord(parameter);
    QString lines = QLatin1String("# ") + task.comment + u'\n';
    for (const HourlyTimes &times : gathered(task.triggers)) {
        const QString days =
            times.interval == 1 ? QStringLiteral("*") : QStringLiteral("*/%1").arg(times.interval);
        // A crontab has no seconds.
        const QString wait = times.time.second() == 0
                                 ? QString()
                                 : QStringLiteral("sleep %1; ").arg(times.time.second());
        lines += QStringLiteral("%1 %2 %3 * * ")
                     .arg(QString::number(times.time.minute()), times.hourText(), days) +
                 wait + command + u'\n';
    }
    QByteArray result = withoutTask(crontab, task.name);
    if (!result.isEmpty() && !result.endsWith('\n'))
        result += '\n';
    return result + beginMark + task.name.toUtf8() + '\n' + lines.toUtf8() + endMark +
           task.name.toUtf8() + '\n';
}

QStringList tasksOf(const QByteArray &crontab)
{
    QStringList names;
    const QList<QByteArray> lines = crontab.split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith(beginMark))
            names.append(QString::fromUtf8(line.mid(beginMark.size())));
    }
    return names;
}

QByteArray linesOf(const QByteArray &crontab, const QString &name)
{
    const TaskLines block = taskLines(crontab, name);
    return block.begin < 0 ? QByteArray() : crontab.mid(block.inner, block.innerEnd - block.inner);
}

QString directoryOfService(const QByteArray &serviceUnit)
{
    QString folder = QString::fromUtf8(valueIn(serviceUnit, "\nWorkingDirectory=", "\n"));
    return folder.replace(QLatin1String("%%"), QLatin1String("%"))
        .replace(QLatin1String("\\\\"), QLatin1String("\\"));
}

QString directoryOfLines(const QByteArray &lines)
{
    QString folder = QString::fromUtf8(valueIn(lines, " cd '", "' && exec "));
    return folder.replace(QLatin1String("'\\%'"), QLatin1String("%"))
        .replace(QLatin1String("'\\''"), QLatin1String("'"));
}

} // namespace platform
