#include "core/platform/Processes.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

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

} // namespace

int countProcesses(const QString &imageName)
{
    int count = 0;
    const QStringList folders = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    for (const QString &folder : folders) {
        bool isProcess = false;
        folder.toInt(&isProcess);
        if (isProcess && imageOf(QLatin1String("/proc/") + folder) == imageName)
            ++count;
    }
    return count;
}

QString ownImageName()
{
    return imageOf(QStringLiteral("/proc/self"));
}

} // namespace platform
