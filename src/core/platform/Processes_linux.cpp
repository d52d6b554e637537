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

/// The file that a process runs: its /proc/PID/exe link, or, where that may not be read (another
/// user's process), the first word of its command line.
QString imageOf(const QString &processFolder)
{
    QString image = QFile::symLinkTarget(processFolder + QLatin1String("/exe"));
    if (image.isEmpty()) {
        QFile commandLine(processFolder + QLatin1String("/cmdline"));
        if (commandLine.open(QIODevice::ReadOnly))
            image = QFile::decodeName(commandLine.read(4096).split('\0').constFirst());
    }
    // A program that was rebuilt while it runs.
    if (image.endsWith(QLatin1String(" (deleted)")))
        image.chop(10);
    return QFileInfo(image).fileName();
}

/// The numbers of all processes with an image name.
std::vector<int> processesOf(const QString &imageName)
{
    std::vector<int> numbers;
    const QStringList folders = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    for (const QString &folder : folders) {
        bool isProcess = false;
        const int number = folder.toInt(&isProcess);
        if (isProcess && imageOf(QLatin1String("/proc/") + folder) == imageName)
            numbers.push_back(number);
    }
    return numbers;
}

/// When a process began, in ticks since the system did; 0 when it has ended meanwhile.
quint64 beginOf(int process)
{
    QFile file(QStringLiteral("/proc/%1/stat").arg(process));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    // The second of the blank-separated fields is a name in parentheses that may hold anything.
    const QByteArray text = file.read(4096);
    const QList<QByteArray> behindName = text.mid(text.lastIndexOf(')') + 2).split(' ');
    return behindName.size() > 19 ? behindName[19].toULongLong() : 0;
}

} // namespace

int countProcesses(const QString &imageName)
{
    return static_cast<int>(processesOf(imageName).size());
}

int countEarlierProcesses(const QString &imageName)
{
    const int own = ::getpid();
    const auto ownBegin = std::make_pair(beginOf(own), own);
    int count = 0;
    for (const int process : processesOf(imageName)) {
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
