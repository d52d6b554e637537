#pragma once

#include <QString>

/// Running processes of the system.
namespace platform {

/// How many running processes have the given image name ("VantrelGrapher"; ".exe" is added where
/// the system has it), this process included.
int countProcesses(const QString &imageName);

/// How many of them began before this process did; this process not included. Of two that began in
/// the same tick of the system's clock one counts as earlier, the same one to both.
int countEarlierProcesses(const QString &imageName);

/// The instant at which this process began, to a hundredth of a second.
qint64 ownBegin();

/// The image name of this process, as countProcesses takes it.
QString ownImageName();

} // namespace platform
