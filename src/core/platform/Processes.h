#pragma once

#include <QString>
#include <QStringList>

/// Running processes of the system.
namespace platform {

/// Whether a process counts, by the arguments behind its program's name.
using ArgumentTest = bool (*)(const QStringList &arguments);

/// How many other processes of an image name ("VantrelGrapher"; ".exe" is added where the system
/// has it) run with arguments that `counts` accepts. Those of other users do not count, but for
/// the administrator's (root): nobody else is to stand in the way. On Windows one whose arguments
/// the system does not give away counts.
int countOtherProcesses(const QString &imageName, ArgumentTest counts);

/// How many of them began before this process did. Of two that began in the same tick of the
/// system's clock one counts as earlier, the same one to both.
int countEarlierProcesses(const QString &imageName, ArgumentTest counts);

/// The instant at which this process began, to a hundredth of a second.
qint64 ownBegin();

/// The image name of this process, as countProcesses takes it.
QString ownImageName();

} // namespace platform
