#include "core/platform/Processes.h"

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

/// The beginning of a file of /proc; empty when it cannot be read, or its process has ended.
QByteArray readProc(const QString &path, qint64 most = 4096)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.read(most) : QByteArray();
}

/// The words of a process's command line, its program's name first; at least one.
QStringList wordsOf(const QString &processFolder)
{
    constexpr qint64 mostBytes = 1 << 20;
    QByteArray text = readProc(processFolder + QLatin1String("/cmdline"), mostBytes);
    if (text.endsWith('\0'))
        text.chop(1);
    QStringList words;
    for (const QByteArray &word : text.split('\0'))
        words.append(QFile::decodeName(word));
    return words;
}

/// The file that a process runs: its /proc/PID/exe link, or, where that may not be read (the
/// administrator's process), the first word of its command line.
QString imageOf(const QString &processFolder)
{
    QString image = QFile::symLinkTarget(processFolder + QLatin1String("/exe"));
    if (image.isEmpty())
        image = wordsOf(processFolder).constFirst();
    // A program that was rebuilt while it runs.
    if (image.endsWith(QLatin1String(" (deleted)")))
        image.chop(10);
    return QFileInfo(image).fileName();
}

/// Whether a process was started by this one's user or by root. Its folder's owner would not tell:
/// whoever hides a process's memory makes root own that.
bool isOfSameUserOrRoot(const QString &processFolder)
{
    const QByteArray status = readProc(processFolder + QLatin1String("/status"));
    const qsizetype at = status.indexOf("\nUid:\t");
    if (at < 0)
        return false;
    const uint user = status.mid(at + 6).split('\t').constFirst().toUInt();
    return user == 0 || user == ::getuid();
}

/// The numbers of the other processes that count.
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

/// When a process began, in ticks since the system did; 0 when it has ended meanwhile.
quint64 beginOf(int process)
{
    // The second of the blank-separated fields is a name in parentheses that may hold anything.
    const QByteArray text = readProc(QStringLiteral("/proc/%1/stat").arg(process));
    const QList<QByteArray> behindName = text.mid(text.lastIndexOf(')') + 2).split(' ');
    return behindName.size() > 19 ? behindName[19].toULongLong() : 0;
}

} // namespace

int countOtherProcesses(const QString &imageName, ArgumentTest counts)
{
    return static_cast<int>(processesOf(imageName, counts).size());
}

int countEarlierProcesses(const QString &imageName, ArgumentTest counts)
{
    const int own = ::getpid();
    const auto ownBegin = std::make_pair(beginOf(own), own);
    int count = 0;
    for (const int process : processesOf(imageName, counts)) {
        const quint64 begin = beginOf(process);
        if (begin > 0 && std::make_pair(begin, process) < ownBegin)
            ++count;
    }
    return count;
}

qint64 ownBegin()
{
    timespec sinceBoot{};
    ::clock_gettime(CLOCK_BOOTTIME, &sinceBoot);
    const qint64 uptime = qint64(sinceBoot.tv_sec) * 1000 + sinceBoot.tv_nsec / 1'000'000;
    const auto begin = static_cast<qint64>(beginOf(::getpid())) * 1000 / ::sysconf(_SC_CLK_TCK);
    return QDateTime::currentMSecsSinceEpoch() - (uptime - begin);
}

QString ownImageName()
{
    return imageOf(QStringLiteral("/proc/self"));
}

} // namespace platform
