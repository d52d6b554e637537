#include "platform/Processes.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <ctime>
#include <unistd.h>
#include <utility>
#include <vector>

namespace platform {

namespace {

/// The beginning of a file in /proc; empty when it cannot be read, or its process has ended.
QByteArray readProc(const QString &path, qint64 maxBytes = 4096)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.read(maxBytes) : QByteArray();
}

/// The words of a process's command line, its program's name first; at least one.
QStringList wordsOf(const QString &processFolder)
{
    QByteArray text = readProc(processFolder + QLatin1String("/cmdline"), 1 << 20);
    if (text.endsWith('\0'))
        text.chop(1);
    QStringList words;
    for (const QByteArray &word : text.split('\0'))
        words.append(QFile::decodeName(word));
    return words;
}

/// The file that a process runs: its /proc/PID/exe link, or, if that cannot be read (root's
/// processes), the first word of its command line.
QString imageOf(const QString &processFolder)
{
    QString image = QFile::symLinkTarget(processFolder + QLatin1String("/exe"));
    if (image.isEmpty())
        image = wordsOf(processFolder).constFirst();
    // The program was rebuilt while it runs.
    if (image.endsWith(QLatin1String(" (deleted)")))
        image.chop(10);
    return QFileInfo(image).fileName();
}

/// Whether a process was started by this one's user or by root. The folder's owner does not say: it
/// is root for every process that is not dumpable.
bool isOfSameUserOrRoot(const QString &processFolder)
{
    const QByteArray status = readProc(processFolder + QLatin1String("/status"));
    const qsizetype at = status.indexOf("\nUid:\t");
    if (at < 0)
        return false;
    const uint user = status.mid(at + 6).split('\t').constFirst().toUInt();
    return user == 0 || user == ::getuid();
}

/// The ids of the other processes that count.
std::vector<int> processesOf(const QString &imageName, ArgumentTest counts)
{
    std::vector<int> numbers;
    const QStringList names = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    for (const QString &name : names) {
        bool isProcess = false;
        const int number = name.toInt(&isProcess);
        const QString folder = QLatin1String("/proc/") + name;
        if (isProcess && number != ::getpid() && imageOf(folder) == imageName &&
            isOfSameUserOrRoot(folder) && counts(wordsOf(folder).mid(1)))
            numbers.push_back(number);
    }
    return numbers;
}

/// When a process started, in ticks since the system's boot; 0 when it has ended.
quint64 startOf(int process)
{
    // The second of the blank-separated fields is a name in parentheses that may contain anything.
    const QByteArray text = readProc(QStringLiteral("/proc/%1/stat").arg(process));
    const QList<QByteArray> afterName = text.mid(text.lastIndexOf(')') + 2).split(' ');
    return afterName.size() > 19 ? afterName[19].toULongLong() : 0;
}

} // namespace

int countOtherProcesses(const QString &imageName, ArgumentTest counts)
{
    return static_cast<int>(processesOf(imageName, counts).size());
}

int countEarlierProcesses(const QString &imageName, ArgumentTest counts)
{
    const int own = ::getpid();
    const auto ownStart = std::make_pair(startOf(own), own);
    int count = 0;
    for (const int process : processesOf(imageName, counts)) {
        const quint64 start = startOf(process);
        if (start > 0 && std::make_pair(start, process) < ownStart)
            ++count;
    }
    return count;
}

std::vector<QStringList> argumentsOfOthers(const QString &imageName, ArgumentTest counts)
{
    std::vector<QStringList> arguments;
    for (const int process : processesOf(imageName, counts))
        arguments.push_back(wordsOf(QStringLiteral("/proc/%1").arg(process)).mid(1));
    return arguments;
}

qint64 ownStart()
{
    timespec sinceBoot{};
    ::clock_gettime(CLOCK_BOOTTIME, &sinceBoot);
    const qint64 uptime = qint64(sinceBoot.tv_sec) * 1000 + sinceBoot.tv_nsec / 1'000'000;
    // The system rounds down to a tick; its end is never before the true start.
    const auto tick = static_cast<qint64>(startOf(::getpid())) + 1;
    const qint64 start = tick * 1000 / ::sysconf(_SC_CLK_TCK);
    return QDateTime::currentMSecsSinceEpoch() - (uptime - start);
}

QString ownImageName()
{
    return imageOf(QStringLiteral("/proc/self"));
}

} // namespace platform
