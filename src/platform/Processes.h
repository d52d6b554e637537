#pragma once

#include <QString>
#include <QStringList>

#include <vector>

/// Running processes of the system.
namespace platform {

/// Whether a process counts, by its arguments without the program's name.
using ArgumentTest = bool (*)(const QStringList &arguments);

/// How many other processes of an image name ("VantrelGrapher"; on Windows ".exe" is added) run
/// with arguments that `counts` accepts. Only processes of the same user and of root count, so that
/// no other user can block this one. On Windows, processes with unreadable arguments count too.
int countOtherProcesses(const QString &imageName, ArgumentTest counts);

/// Their arguments, without the program's name.
std::vector<QStringList> argumentsOfOthers(const QString &imageName, ArgumentTest counts);

/// How many of them started before this process. Of two that started in the same tick of the
/// system's clock, both agree on which one is earlier.
int countEarlierProcesses(const QString &imageName, ArgumentTest counts);

/// The instant at which this process started, or up to a hundredth of a second later, in
/// milliseconds since 1970. It is never earlier, so that what ended before the start stays before.
qint64 ownStart();

/// The image name of this process, for countOtherProcesses.
QString ownImageName();

} // namespace platform
